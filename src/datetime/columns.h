#pragma once

#include <boost/predef/other/endian.h>

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#include "api/expression.h"

/// Reading columns: the elements of a flat array as NumPy stores them where that is possible, else
/// one object after the other.
namespace pelion_core::detail {

/// The storage of a flat array, valid while the array lives.
/// https://numpy.org/doc/stable/reference/arrays.interface.html
struct Block {
  std::string type;  ///< NumPy's type string: "<i8", "<M8[ns]"
  const void* data;

  template <class Element>
  Element at(std::size_t index) const {
    Element element;
    std::memcpy(&element, static_cast<const char*>(data) + index * sizeof element, sizeof element);
    return element;
  }
};

/// The storage of `count` elements; nothing unless `flat` is of NumPy's own type and lies in one
/// piece.
std::optional<Block> blockOf(Borrowed flat, std::size_t count);

/// Calls `use(index, item)` with the items 0 to `count` - 1 of a sequence while it returns true.
/// Counted by hand in the caller's frame: a `Reference` would be a fifth of what an element costs.
template <class Use>
void eachItem(const Frame& api, Borrowed sequence, std::size_t count, Use use) {
  for (std::size_t i = 0; i < count; ++i) {
    PyObject* const element = api->PySequence_GetItem(sequence, static_cast<std::int64_t>(i));
    bool goesOn = false;
    try {
      goesOn = use(i, element);
    } catch (...) {
      api->Py_DecRef(element);
      throw;
    }
    api->Py_DecRef(element);
    if (!goesOn) return;
  }
}

/// Which elements are not-a-time.
struct NotATime {
  std::vector<bool> marks;
  bool any = false;
};

// How an element becomes a number: the operation that reads an object, and what it amounts to for
// the machine types that it accepts.

struct AsTruth {
  static constexpr auto read = &PyAPIImpl::PyObject_IsTrue;
  static bool from(bool value) { return value; }
  template <class Number>
  static constexpr bool accepts = std::is_same_v<Number, bool>;
};

struct AsDouble {
  static constexpr auto read = &PyAPIImpl::PyFloat_AsDouble;
  template <class Number>
  static double from(Number value) {
    return static_cast<double>(value);
  }
  template <class Number>
  static constexpr bool accepts = !std::is_same_v<Number, bool>;
};

struct AsHostLong {
  static constexpr auto read = &PyAPIImpl::intAsLong;
  static std::int64_t from(std::int64_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
  }
  template <class Number>
  static constexpr bool accepts = std::is_integral_v<Number> && !std::is_same_v<Number, bool>;
};

struct AsInt64 {
  static constexpr auto read = &PyAPIImpl::PyLong_AsLongLong;
  static std::int64_t from(std::int64_t value) { return value; }
  template <class Number>
  static constexpr bool accepts = AsHostLong::accepts<Number>;
};

/// Reads a flat array into `out`, which is as long. Elements that are not-a-time are not looked at
/// and become zero.
template <class As, class Column>
void readColumn(Borrowed flat, const NotATime& nat, Column& out) {
  using Value = typename Column::value_type;
  const auto readBlock = [&](const Block& block, auto element) {
    using Element = decltype(element);
    if constexpr (As::template accepts<Element>) {
      for (std::size_t i = 0; i < out.size(); ++i) out[i] = As::from(block.at<Element>(i));
      for (std::size_t i = 0; nat.any && i < out.size(); ++i) {
        if (nat.marks[i]) out[i] = Value();
      }
      return true;
    } else {
      return false;
    }
  };
  if (const auto block = blockOf(flat, out.size())) {
    if (block->type == "<i8" && readBlock(*block, std::int64_t{})) return;
    if (block->type == "<i4" && readBlock(*block, std::int32_t{})) return;
    if (block->type == "<f8" && readBlock(*block, double{})) return;
    if (block->type == "|b1" && readBlock(*block, bool{})) return;
  }
  const Frame api;
  for (std::size_t i = 0; i < out.size(); ++i) {
    const auto index = static_cast<std::int64_t>(i);
    out[i] = nat.any && nat.marks[i] ? Value() : ((*api).*As::read)(item(flat, index).get());
  }
}

}  // namespace pelion_core::detail
