#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "pelion_core/host/convert.h"

/// How Python calls C++ functions; `Session::function` makes them.
namespace pelion_core::host::detail {

/// Takes the arguments, gives the result.
using Callback = std::function<Owned(const std::vector<Owned>&)>;

Object makeFunction(Callback callback);

/// What an argument is read as before it is passed: views need an owner.
template <class T>
struct Stored {
  using Type = std::decay_t<T>;
};
template <>
struct Stored<std::string_view> {
  using Type = std::string;
};
template <>
struct Stored<std::u16string_view> {
  using Type = std::u16string;
};

/// Throws the `TypeError` of a wrong number of arguments.
void requireArguments(std::size_t given, std::size_t wanted);

template <class Result, class... Parameters, std::size_t... positions>
Owned call(const std::function<Result(Parameters...)>& function,
           [[maybe_unused]] const std::vector<Owned>& arguments,
           std::index_sequence<positions...>) {
  std::tuple<typename Stored<std::decay_t<Parameters>>::Type...> values{
      fromPython<typename Stored<std::decay_t<Parameters>>::Type>(arguments[positions])...};
  if constexpr (std::is_void_v<Result>) {
    function(static_cast<Parameters>(std::get<positions>(values))...);
    return toPython(nullptr);
  } else {
    return toPython(function(static_cast<Parameters>(std::get<positions>(values))...));
  }
}

template <class Result, class... Parameters>
Callback adapted(std::function<Result(Parameters...)> function) {
  return [function = std::move(function)](const std::vector<Owned>& arguments) {
    requireArguments(arguments.size(), sizeof...(Parameters));
    return call(function, arguments, std::index_sequence_for<Parameters...>());
  };
}

}  // namespace pelion_core::host::detail
