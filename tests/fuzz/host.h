#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "support/at_hand.h"
#include "support/real_python.h"

/// What the fuzzers share: one started interpreter, in which the oracles run, and input as values.
namespace fuzz {

inline void check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

class Host : public real::Session {
 public:
  /// Ends the process with 77 where the module that the fuzzer needs cannot be imported.
  explicit Host(const char* prelude, const std::string& needed = "builtins") {
    check(real::load() == 0, "loaded");
    open();
    if (real::failure([&] { run("import " + needed); }) != "nothing thrown None") std::_Exit(77);
    run(prelude);
  }

  PyHandle bytes(const void* data, std::size_t size) {
    return call("bytes", {pyCreateNumericArray(size, 'B', const_cast<void*>(data))});
  }
  PyHandle units(const std::u16string& text) { return bytes(text.data(), 2 * text.size()); }
};

/// What `make` gives, or an empty handle when it throws and leaves a Python error, which is
/// cleared.
template <class Make>
PyHandle orEmpty(Make make) {
  try {
    return make();
  } catch (const InternalPyException&) {
    check(pyErrorOccurred(), "an error is pending");
    pyErrorClear();
    return {};
  }
}

/// Takes values off the front of the input; zeros when there is no more.
struct Input {
  const std::uint8_t* data;
  std::size_t left;

  template <class Value = std::uint8_t>
  Value take() {
    Value value = {};
    const std::size_t size = std::min(left, sizeof value);
    std::memcpy(&value, data, size);
    data += size;
    left -= size;
    return value;
  }
  std::size_t below(std::size_t limit) { return take() % limit; }
  template <class List>
  const auto& of(const List& list) {
    return list[below(std::size(list))];
  }
};

}  // namespace fuzz
