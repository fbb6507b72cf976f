#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "support/real_python.h"

/// What the fuzzers share: one started interpreter, in which the oracles run, and input as values.
namespace fuzz {

using namespace pelion_core;
using namespace pelion_core::api;

inline void check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

/// The interpreter lacks what a fuzzer needs.
struct Skipped : std::runtime_error {
  using runtime_error::runtime_error;
};

class Host : public real::RealPython {
 public:
  /// Throws `Skipped` where the module that the fuzzer needs cannot be imported.
  explicit Host(const char* prelude, const std::string& needed = "builtins") {
    SetUp();
    if (failure([&] { run("import " + needed); }) != "nothing thrown None") {
      throw Skipped("no " + needed + " for this interpreter");
    }
    run(prelude);
  }
  using RealPython::eval;
  using RealPython::failure;
  using RealPython::holds;
  using RealPython::number;

  /// A function of the prelude, called; it must not raise.
  PyHandle call(const char* function, const PyArguments& args) {
    return object::pyInvoke(eval(function).get(), args, PyKeywords{});
  }
  bool holds(const char* function, const PyArguments& args) {
    return primitive::pyBoolGetData(call(function, args).get());
  }

  PyHandle bytes(const void* data, std::size_t size) {
    const PyHandle array = primitive::pyCreateNumericArray(size, 'B', const_cast<void*>(data));
    return object::pyInvoke(object::pyGetMember(array.get(), "tobytes").get(), PyArguments{},
                            PyKeywords{});
  }
  PyHandle units(const std::u16string& text) { return bytes(text.data(), 2 * text.size()); }

 private:
  void TestBody() override {}
};

/// What `make` gives, or an empty handle when it throws and leaves a Python error, which is
/// cleared.
template <class Make>
PyHandle orEmpty(Make make) {
  try {
    return make();
  } catch (const InternalPyException&) {
    check(exception::pyErrorOccurred(), "an error is pending");
    exception::pyErrorClear();
    return {};
  }
}

/// Takes values off the front of the input; zeros when there is no more.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}

  bool empty() const { return left_ == 0; }
  template <class Value = std::uint8_t>
  Value take() {
    Value value = {};
    const std::size_t size = std::min(left_, sizeof value);
    std::memcpy(&value, data_, size);
    data_ += size;
    left_ -= size;
    return value;
  }
  std::size_t below(std::size_t limit) { return take() % limit; }
  template <class List>
  const auto& of(const List& list) {
    return list[below(std::size(list))];
  }

 private:
  const std::uint8_t* data_;
  std::size_t left_;
};

inline std::u16string utf16(const std::uint8_t* data, std::size_t size) {
  std::u16string text(size / 2, u'\0');
  if (!text.empty()) std::memcpy(text.data(), data, 2 * text.size());
  return text;
}

}  // namespace fuzz
