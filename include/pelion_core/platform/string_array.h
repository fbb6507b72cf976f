#pragma once

#include <cstddef>
#include <functional>
#include <numeric>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "pelion_core/platform/export.h"

/// The parts of the string array that are not the array.
namespace Zanthic::String::detail {

/// One element of a string array: UTF-16 text, or missing.
class StringArrayVariant {
 public:
  /// Missing.
  StringArrayVariant() = default;
  /// A text; the empty one is not missing.
  StringArrayVariant(std::u16string text) : text_(std::move(text)) {}

  /// Whether there is no text.
  bool isMissing() const { return !text_; }
  /// The text; throws `std::bad_optional_access` when it is missing.
  const std::u16string& text() const { return text_.value(); }

  /// The same text, or both missing.
  friend bool operator==(const StringArrayVariant& left, const StringArrayVariant& right) {
    return left.text_ == right.text_;
  }
  /// Not equal.
  friend bool operator!=(const StringArrayVariant& left, const StringArrayVariant& right) {
    return !(left == right);
  }

 private:
  std::optional<std::u16string> text_;
};

}  // namespace Zanthic::String::detail

/// @cond
// GCC exports members of a template for Windows one by one, and takes no definitions of imported
// ones: there the linker alone finds them. Microsoft's compiler exports the instance that the
// library defines.
#if defined(_MSC_VER) || (defined(_WIN32) && !defined(PELION_CORE_BUILDING))
#define PELION_CORE_MEMBER
#else
#define PELION_CORE_MEMBER PELION_CORE_EXPORT
#endif
/// @endcond

/// Containers of the host's types.
namespace coretypes::array {

/// An n-dimensional array in column-major order: the first subscript runs fastest. A value: copies
/// share nothing.
template <class T>
class Array {
 public:
  /// No elements, in one dimension.
  Array() = default;
  /// One dimension.
  PELION_CORE_MEMBER explicit Array(std::vector<T> elements)
      : elements_(std::move(elements)), dims_{elements_.size()} {}
  /// Throws `std::invalid_argument` unless there are as many elements as the product of `dims`.
  PELION_CORE_MEMBER Array(std::vector<T> elements, std::vector<std::size_t> dims)
      : elements_(std::move(elements)), dims_(std::move(dims)) {
    if (std::accumulate(dims_.begin(), dims_.end(), std::size_t{1}, std::multiplies<>()) !=
        size()) {
      throw std::invalid_argument(std::to_string(size()) +
                                  " elements do not fill the dimensions of the array");
    }
  }
  /// One dimension, of what elements are made of: `std::vector<std::u16string>`.
  template <class Text>
  explicit Array(const std::vector<Text>& texts)
      : Array(std::vector<T>(texts.begin(), texts.end())) {}

  /// The number of elements.
  PELION_CORE_MEMBER std::size_t size() const { return elements_.size(); }
  /// The extents.
  PELION_CORE_MEMBER const std::vector<std::size_t>& dims() const { return dims_; }

  /// The element at a place in column-major order, which is not checked.
  PELION_CORE_MEMBER T& operator[](std::size_t index) { return elements_[index]; }
  /// The element at a place in column-major order, which is not checked.
  PELION_CORE_MEMBER const T& operator[](std::size_t index) const { return elements_[index]; }
  /// The element with these subscripts, counted from 0; throws `std::out_of_range` when there is
  /// none.
  PELION_CORE_MEMBER T& at(const std::vector<std::size_t>& subscripts) {
    return elements_[place(subscripts)];
  }
  /// The element with these subscripts, counted from 0; throws `std::out_of_range` when there is
  /// none.
  PELION_CORE_MEMBER const T& at(const std::vector<std::size_t>& subscripts) const {
    return elements_[place(subscripts)];
  }

  /// The elements in column-major order.
  PELION_CORE_MEMBER const std::vector<T>& elements() const { return elements_; }
  /// The strings in column-major order, `filler` for the missing ones.
  PELION_CORE_MEMBER std::vector<std::u16string> texts(const std::u16string& filler = {}) const {
    std::vector<std::u16string> all;
    all.reserve(size());
    for (const T& each : elements_) all.push_back(each.isMissing() ? filler : each.text());
    return all;
  }

  /// The same dimensions and elements.
  PELION_CORE_MEMBER bool operator==(const Array& other) const {
    return dims_ == other.dims_ && elements_ == other.elements_;
  }
  /// Not equal.
  PELION_CORE_MEMBER bool operator!=(const Array& other) const { return !(*this == other); }

 private:
  PELION_CORE_MEMBER std::size_t place(const std::vector<std::size_t>& subscripts) const {
    std::size_t index = 0;
    if (subscripts.size() != dims_.size()) throw std::out_of_range("wrong number of subscripts");
    for (std::size_t i = dims_.size(); i-- > 0;) {
      if (subscripts[i] >= dims_[i]) throw std::out_of_range("no such element in the array");
      index = index * dims_[i] + subscripts[i];
    }
    return index;
  }

  std::vector<T> elements_;
  std::vector<std::size_t> dims_{0};
};

/// @cond
// The string array of the host lives in the library.
extern template class PELION_CORE_MEMBER Array<Zanthic::String::detail::StringArrayVariant>;
/// @endcond

}  // namespace coretypes::array

#undef PELION_CORE_MEMBER
