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
using Stored = std::conditional_t<
    std::is_same_v<T, std::string_view>, std::string,
    std::conditional_t<std::is_same_v<T, std::u16string_view>, std::u16string, T>>;

/// Throws the `TypeError` of a wrong number of arguments.
void requireArguments(std::size_t given, std::size_t wanted);

template <class Result, class... Parameters>
Callback adapted(std::function<Result(Parameters...)> function) {
  return [function = std::move(function)](const std::vector<Owned>& arguments) {
    requireArguments(arguments.size(), sizeof...(Parameters));
    [[maybe_unused]] auto argument = arguments.begin();
    std::tuple<Stored<std::decay_t<Parameters>>...> values{
        fromPython<Stored<std::decay_t<Parameters>>>(*argument++)...};
    const auto call = [&](auto&... each) { return function(static_cast<Parameters>(each)...); };
    if constexpr (std::is_void_v<Result>) {
      std::apply(call, values);
      return toPython(nullptr);
    } else {
      return toPython(std::apply(call, values));
    }
  };
}

}  // namespace pelion_core::host::detail
