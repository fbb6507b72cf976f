#pragma once

#include <cstdint>

// Hosts catch its overflow classes by their own types, which they must then share with the library.
#pragma GCC visibility push(default)
#include <boost/numeric/conversion/cast.hpp>
#pragma GCC visibility pop

#include "pelion_core/loader/py_object.h"

/// The checks that turn the C API's error conventions into exceptions. Each kind of operation is a
/// combination of them, so that an operation reads as one line.
namespace pelion_core::checks {

/// Throws an `InternalPyException`. Out of line to keep the operations small.
[[noreturn]] void fail(const char* message);

inline void passed(PyObject* object) {
  if (object == nullptr) fail("NULL pointer passed to Python.");
}

// Arguments that are not objects are the C API's business.
template <class NotAnObject>
void passed(NotAnObject) {}

/// Checks arguments from the last to the first.
template <class First, class... Rest>
void allPassed(First first, Rest... rest) {
  if constexpr (sizeof...(rest) > 0) allPassed(rest...);
  passed(first);
}

inline PyObject* returned(PyObject* object) {
  if (object == nullptr) fail("NULL pointer returned from Python.");
  return object;
}

// `call` is the table's member, so that what is called is known where it is called.

/// A test: -1 is a failure, and only 1 is true.
template <auto call, class Table, class... Args>
bool predicate(const Table& table, Args... args) {
  allPassed(args...);
  const int result = (table.*call)(args...);
  if (result == -1) fail("Introspection API failed.");
  return result == 1;
}

/// Makes a new object out of other objects.
template <auto call, class Table, class... Args>
PyObject* producer(const Table& table, Args... args) {
  allPassed(args...);
  return returned((table.*call)(args...));
}

/// Makes a new object out of plain values.
template <auto call, class Table, class... Args>
PyObject* maker(const Table& table, Args... args) {
  return returned((table.*call)(args...));
}

template <auto call, class Table, class... Args>
int setter(const Table& table, Args... args) {
  allPassed(args...);
  const int result = (table.*call)(args...);
  if (result == -1) fail("Python API (probably set) failed.");
  return result;
}

/// Reads a number; an error value is the caller's to tell apart.
template <auto call, class Table>
auto extractor(const Table& table, PyObject* object) {
  passed(object);
  return (table.*call)(object);
}

/// A size as the C API takes it; throws `boost::numeric::positive_overflow`.
inline std::int64_t cSize(std::uint64_t size) { return boost::numeric_cast<std::int64_t>(size); }

}  // namespace pelion_core::checks
