#pragma once

#include <cstdint>

#include "pelion_core/loader/c_api/py_object.h"

// Hosts catch its overflow classes by their own types, which they must then share with the library.
#if !defined(_MSC_VER)
#pragma GCC visibility push(default)
#endif
#include <boost/numeric/conversion/cast.hpp>
#if !defined(_MSC_VER)
#pragma GCC visibility pop
#endif

/// The questions by which the C API's error conventions become exceptions.
namespace pelion_core::detail {

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

/// A size as the C API takes it; throws `boost::numeric::positive_overflow`.
inline std::int64_t cSize(std::uint64_t size) { return boost::numeric_cast<std::int64_t>(size); }

}  // namespace pelion_core::detail
