#pragma once

#include <boost/shared_ptr.hpp>
#include <utility>
#include <vector>

#include "pelion_core/loader/c_api/py_object.h"
#include "pelion_core/platform/export.h"

namespace python {

/// One interpreter object as a host sees it. Never defined: only its address is handled.
struct pyArray;

}  // namespace python

/// The exported functions over interpreter objects.
///
/// What holds for all of them, unless a function says otherwise:
/// - **Lock.** A function takes the interpreter lock when it enters the interpreter and gives it
///   back on every way out; nested calls only count. One thread at a time may be inside the
///   library, handle releases included.
/// - **Ownership.** A `pyArray*` argument is borrowed, a `PyHandle` argument is shared, a returned
///   `PyHandle` is never empty and owns a reference of its own.
/// - **Failure.** `InternalPyException` with "Python API functions are not available." before a
///   successful load, "NULL pointer passed to Python." for a null argument, "NULL pointer returned
///   from Python." when Python raised. A Python error stays pending: take it with
///   `exception::pyErrorFetch` or drop it with `exception::pyErrorClear` before the next call.
/// - **Look-ups.** Within one call a module may be imported once and a member looked up once, for
///   however many elements need it. Between calls nothing is cached, so a module that was replaced
///   in `sys.modules` is seen by the next call.
/// - **Out-pointers** must not be null. What they point to is unspecified after a failure.
/// - **Tests** that say "false on failure" clear the pending error and throw only what is not an
///   `InternalPyException`.
namespace pelion_core::api {

using python::pyArray;

/// The deleter of handles: drops the reference under the interpreter lock. Does nothing for null;
/// otherwise throws "Python API functions are not available." when there is no API.
struct PELION_CORE_EXPORT PyArrayReleaser {
  PyArrayReleaser() = default;
  /// Nothing to copy: a releaser has no state.
  PyArrayReleaser(const PyArrayReleaser&) {}
  /// Nothing to copy.
  PyArrayReleaser& operator=(const PyArrayReleaser&) { return *this; }
  /// Nothing to move.
  PyArrayReleaser& operator=(PyArrayReleaser&&) { return *this; }

  /// Drops one reference.
  void operator()(pyArray* object) const;
};

}  // namespace pelion_core::api

namespace pelion_core {

/// Owns one strong reference to an interpreter object. Release every handle before
/// `interpreter::pyClose`, and none after the library is unloaded: that is not guarded.
using PyHandle = boost::shared_ptr<::python::pyArray>;

namespace api {
using pelion_core::PyHandle;
}

/// Positional arguments of a call.
using PyArguments = std::vector<PyHandle>;

/// Keyword arguments of a call, or items of a dictionary: (key, value).
using PyKeywords = std::vector<std::pair<PyHandle, PyHandle>>;

/// `pyArray` and `PyObject` are two names for one address.
inline PyObject* toPyObject(::python::pyArray* object) {
  return reinterpret_cast<PyObject*>(object);
}
/// The other way round.
inline ::python::pyArray* toPyArray(PyObject* object) {
  return reinterpret_cast<::python::pyArray*>(object);
}

}  // namespace pelion_core
