#pragma once

#include <string>

#include "api/reference.h"
#include "pelion_core/python_api/internal_py_exception.h"

/// The words in which a function is written that stands for a Python expression. Each opens a frame
/// of its own, which only counts where the caller holds one.
namespace pelion_core::detail {

// Look-ups

/// The module of a dotted name, imported.
inline Reference importModule(const std::u16string& name) {
  return own<&PyAPIImpl::importModule>(name);
}

/// The module `builtins`.
inline Reference importBuiltins() { return own<&PyAPIImpl::importBuiltins>(); }

/// `object.<name>`.
inline Reference attr(Borrowed object, const char* name) {
  return own<&PyAPIImpl::PyObject_GetAttrString>(object, name);
}

/// `sequence[index]`.
inline Reference item(Borrowed sequence, std::int64_t index) {
  return own<&PyAPIImpl::PySequence_GetItem>(sequence, index);
}

/// `type(object)`.
inline Reference typeOf(Borrowed object) { return own<&PyAPIImpl::PyObject_Type>(object); }

/// A reference of one's own to an object of the host's.
inline Reference share(Borrowed object) {
  perform<&PyAPIImpl::Py_IncRef>(object);
  return Reference(object);
}

// Values

inline Reference str(const std::u16string& utf16) {
  return own<&PyAPIImpl::PyUnicode_DecodeUTF16>(utf16);
}
inline Reference str(const std::string& utf8) {
  return own<&PyAPIImpl::PyUnicode_FromStringAndSize>(utf8.data(), utf8.size());
}
inline Reference integer(std::int64_t value) { return own<&PyAPIImpl::PyLong_FromLongLong>(value); }
inline Reference floating(double value) { return own<&PyAPIImpl::PyFloat_FromDouble>(value); }
inline Reference boolean(bool value) { return own<&PyAPIImpl::PyBool_FromLong>(value); }

/// The low 32 bits of an integer.
inline HostLong toHostLong(Borrowed object) { return perform<&PyAPIImpl::intAsLong>(object); }
inline std::int64_t toInt64(Borrowed object) {
  return perform<&PyAPIImpl::PyLong_AsLongLong>(object);
}
/// A size, an address or flags, which are not negative: a failure to read one, which would be -1,
/// throws "NULL pointer returned from Python.".
std::uint64_t toSize(Borrowed object);
inline double toDouble(Borrowed object) { return perform<&PyAPIImpl::PyFloat_AsDouble>(object); }
inline bool toBool(Borrowed object) { return perform<&PyAPIImpl::PyObject_IsTrue>(object); }

/// The characters of a `str` or `bytes`, owned by it; null, with the error pending, for a `str`
/// that UTF-8 cannot hold. Anything else throws.
const char* charsOf(Borrowed object);

/// A copy of them, or "NULL pointer returned from Python.".
std::string chars(Borrowed object);

/// The text of a `str`; lone surrogates throw "Failure to get data from Unicode.", anything else
/// "Python object is neither string nor unicode. Cannot return unicode.".
std::u16string ustring(Borrowed object);

/// An address that Python gave as an integer.
inline void* pointerTo(std::uint64_t address) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  return reinterpret_cast<void*>(static_cast<std::uintptr_t>(address));
}

// What a host calls the type: "py.int", "py.collections.OrderedDict"

/// The name without its last component.
std::string hostModuleName(Borrowed type);
std::string hostTypeName(Borrowed type);

// NumPy

/// `numpy.reshape(data, dims, "F")`; of each dimension the low 32 bits.
Reference reshape(Borrowed data, std::uint64_t ndim, const std::uint64_t* dims);

// Tests

inline bool isNone(Borrowed object) { return perform<&PyAPIImpl::isNone>(object); }
inline bool isInstance(Borrowed object, Borrowed cls) {
  return perform<&PyAPIImpl::PyObject_IsInstance>(object, cls);
}
inline bool equal(Borrowed left, Borrowed right) {
  return perform<&PyAPIImpl::PyObject_RichCompareBool>(left, right);
}

/// `attempt()`. When it throws `InternalPyException`: clears the pending error and returns
/// `otherwise()`, which may throw the exception on.
template <class Attempt, class Otherwise>
auto orElse(Attempt attempt, Otherwise otherwise) -> decltype(attempt()) {
  try {
    return attempt();
  } catch (const InternalPyException&) {
    perform<&PyAPIImpl::PyErr_Clear>();
    return otherwise();
  }
}

/// `test()`, or false when it throws `InternalPyException`; no error is left pending.
template <class Test>
bool falseOnFailure(Test test) {
  return orElse(test, [] { return false; });
}

/// `object == <module>.<name>`; false on failure.
bool equalsMember(Borrowed object, const std::u16string& module, const char* name);

/// `isinstance(object, <module>.<name>)`; false on failure.
bool isInstanceOfMember(Borrowed object, const std::u16string& module, const char* name);

}  // namespace pelion_core::detail
