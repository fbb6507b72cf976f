#pragma once

#include <vector>

#include "pelion_core/host/convert.h"

namespace pelion_core::host {

/// Numbers in the shape of an n-dimensional array, the first index running fastest (column-major
/// order): element (row, column) of a matrix is `values[row + column * shape[0]]`.
template <class T>
struct Block {
  std::vector<T> values;           ///< as many as the product of the shape
  std::vector<std::size_t> shape;  ///< the extents
};

namespace detail {

/// The `array` module's code for a number.
template <class T>
constexpr char typeCode() {
  if (std::is_floating_point_v<T>) return sizeof(T) == 4 ? 'f' : 'd';
  const char code = sizeof(T) == 1 ? 'b' : sizeof(T) == 2 ? 'h' : sizeof(T) == 4 ? 'i' : 'q';
  return std::is_signed_v<T> ? code : static_cast<char>(code - 'a' + 'A');
}

/// Numbers that lie one after the other in what `owner` keeps alive.
struct Storage {
  Owned owner;
  const void* data;
  std::size_t count;
  std::vector<std::size_t> shape;
};

/// The numbers of an array or another iterable, converted to the type when they fit.
Storage readBlock(PyObject* object, char code);
/// The same, of what Python's part of this layer has read.
Storage storageOf(PyObject* block);
Owned makeArray(const void* data, std::size_t byteCount, char code);
Owned makeNdarray(const void* data, std::size_t count, std::size_t itemSize, const char* type,
                  const std::vector<std::size_t>& shape);
/// A `memoryview` of host memory, to be gone before the memory is.
Owned makeView(const void* data, std::size_t byteCount);

template <class T>
std::vector<T> copied(const Storage& storage) {
  const T* const first = static_cast<const T*>(storage.data);
  return std::vector<T>(first, first + storage.count);
}

}  // namespace detail

/// Numbers: an `array.array`. Reads NumPy arrays (in column-major order), pandas columns,
/// `array.array` and buffers as blocks, every other iterable number by number.
template <class T>
struct Converter<std::vector<T>, std::enable_if_t<detail::isNumber<T>>> {
  static detail::Owned toPython(const std::vector<T>& values) {
    return detail::makeArray(values.data(), values.size() * sizeof(T), detail::typeCode<T>());
  }
  static std::vector<T> fromPython(PyObject* object) {
    return detail::copied<T>(detail::readBlock(object, detail::typeCode<T>()));
  }
};

/// A NumPy array in column-major order. Reads arrays of any order; of what is no NumPy array, the
/// shape is its length.
template <class T>
struct Converter<Block<T>> {
  static_assert(detail::isNumber<T>, "blocks are made of numbers");
  static detail::Owned toPython(const Block<T>& block) {
    const char type[] = {detail::typeCode<T>(), '\0'};
    return detail::makeNdarray(block.values.data(), block.values.size(), sizeof(T), type,
                               block.shape);
  }
  static Block<T> fromPython(PyObject* object) {
    detail::Storage storage = detail::readBlock(object, detail::typeCode<T>());
    return {detail::copied<T>(storage), std::move(storage.shape)};
  }
};

}  // namespace pelion_core::host
