#pragma once

#include <cstdint>
#include <string>

#include "pelion_core/loader/c_api/py_object.h"
#include "pelion_core/platform/export.h"
#include "pelion_core/platform/host_long.h"

namespace pelion_core {
class PythonFuncs;
class PythonThreeFuncs;
}  // namespace pelion_core

/// The interface to the interpreter.
namespace python {

/// The single door to the loaded interpreter: the C API with its error conventions turned into
/// exceptions. One instance per process, made by the loader.
///
/// Every operation requires the interpreter lock, taken with `acquireLock` (or by an
/// `APIAccessor`), but `initialize`, `Py_IsInitialized` and the two that take and give it back;
/// none takes it itself. Objects passed in are borrowed; an object returned is a new reference that
/// the caller releases with `Py_DecRef`.
///
/// The order of the operations is the binary interface: new ones are appended.
///
/// All failures are `pelion_core::InternalPyException`; the interpreter's own error stays pending:
/// - a null object argument: "NULL pointer passed to Python.";
/// - a null result of the C API: "NULL pointer returned from Python.";
/// - a test whose C API call returns -1: "Introspection API failed.";
/// - a setter whose C API call returns -1: "Python API (probably set) failed.".
/// Names given as `const char*` are UTF-8, zero-terminated and not checked. A size above 2^63-1
/// throws `boost::numeric::positive_overflow`.
class PELION_CORE_EXPORT IPythonAPI {
 public:
  /// One interpreter object.
  using PyObject = pelion_core::PyObject;
  /// The host's 32-bit `long`.
  using HostLong = pelion_core::HostLong;

  IPythonAPI() = default;
  /// Nothing to copy: the interface has no state.
  IPythonAPI(const IPythonAPI&) {}
  /// Nothing to copy.
  IPythonAPI& operator=(const IPythonAPI&) { return *this; }
  virtual ~IPythonAPI();

  /// Configures and starts the interpreter, then corrects the paths in `sys`; does nothing when one
  /// is already initialised. Leaves the calling thread holding the interpreter lock.
  virtual void initialize(const std::u16string& programName, const std::u16string& pythonHome,
                          const std::u16string& path) = 0;
  /// Finalises the interpreter. Called under the lock; after it lock operations are inert.
  virtual void Py_Finalize() = 0;
  /// Whether the interpreter runs.
  virtual bool Py_IsInitialized() = 0;
  /// Adds a reference.
  virtual void Py_IncRef(PyObject* object) = 0;
  /// Drops a reference; the last one ends the object.
  virtual void Py_DecRef(PyObject* object) = 0;

  /// Takes the interpreter lock, or counts one more level when it is held. Never throws.
  virtual void acquireLock() = 0;
  /// Undoes one `acquireLock`. Throws "Invalid lock state for call to release lock." when nothing
  /// was acquired since the start.
  virtual void releaseLock() = 0;

  /// `isinstance(object, types.ModuleType)`.
  virtual bool PyModule_Check(PyObject* object) = 0;
  /// "builtins".
  virtual std::u16string getBuiltinsName() = 0;
  /// The module `builtins`.
  virtual PyObject* importBuiltins() = 0;
  /// The module of this dotted name.
  virtual PyObject* importModule(const std::u16string& name) = 0;
  /// The pointer in the capsule of this dotted name; null, with the error pending, on failure.
  virtual void* PyCapsule_Import(const std::u16string& name) = 0;

  /// Drops the pending error, if any.
  virtual void PyErr_Clear() = 0;
  /// Whether an error is pending.
  virtual bool PyErr_Occurred() = 0;
  /// Takes the pending error out of the interpreter, normalised, as a tuple (type, value,
  /// traceback) with None for what is absent.
  virtual PyObject* fetchError() = 0;

  /// `hasattr(object, name)`, false also when the look-up raised.
  virtual bool PyObject_HasAttr(PyObject* object, PyObject* name) = 0;
  /// The same by a UTF-8 name.
  virtual bool PyObject_HasAttrString(PyObject* object, const char* name) = 0;
  /// `getattr(object, name)`.
  virtual PyObject* PyObject_GetAttr(PyObject* object, PyObject* name) = 0;
  /// The same by a UTF-8 name.
  virtual PyObject* PyObject_GetAttrString(PyObject* object, const char* name) = 0;
  /// `setattr(object, name, value)`; 0.
  virtual int PyObject_SetAttr(PyObject* object, PyObject* name, PyObject* value) = 0;
  /// The same by a UTF-8 name.
  virtual int PyObject_SetAttrString(PyObject* object, const char* name, PyObject* value) = 0;
  /// `object[key]`.
  virtual PyObject* PyObject_GetItem(PyObject* object, PyObject* key) = 0;
  /// `object[key] = value`; 0.
  virtual int PyObject_SetItem(PyObject* object, PyObject* key, PyObject* value) = 0;
  /// Whether `left == right`.
  virtual bool PyObject_RichCompareBool(PyObject* left, PyObject* right) = 0;
  /// `str(object)`.
  virtual PyObject* PyObject_Str(PyObject* object) = 0;
  /// `dir(object)`, a list.
  virtual PyObject* PyObject_Dir(PyObject* object) = 0;
  /// `type(object)`.
  virtual PyObject* PyObject_Type(PyObject* object) = 0;
  /// `isinstance(object, cls)`.
  virtual bool PyObject_IsInstance(PyObject* object, PyObject* cls) = 0;
  /// `issubclass(derived, cls)`.
  virtual bool PyObject_IsSubclass(PyObject* derived, PyObject* cls) = 0;
  /// `callable(object)`.
  virtual bool PyCallable_Check(PyObject* object) = 0;
  /// `callable(*args, **kwargs)` with a tuple and a dictionary or null. A null tuple throws
  /// "Arguments required to invoke Python callable." before anything else is looked at.
  virtual PyObject* PyObject_Call(PyObject* callable, PyObject* args, PyObject* kwargs) = 0;
  /// `isinstance(object, type)`.
  virtual bool PyType_Check(PyObject* object) = 0;

  /// Whether the object supports the sequence protocol (a `dict` does not).
  virtual bool PySequence_Check(PyObject* object) = 0;
  /// `isinstance(object, list)`.
  virtual bool PyList_Check(PyObject* object) = 0;
  /// `isinstance(object, tuple)`.
  virtual bool PyTuple_Check(PyObject* object) = 0;
  /// `len(object)`; "PySequence_Length failed." when it has none.
  virtual std::int64_t PySequence_Length(PyObject* object) = 0;
  /// `object[index]`.
  virtual PyObject* PySequence_GetItem(PyObject* object, std::int64_t index) = 0;
  /// `list(object)`.
  virtual PyObject* PySequence_List(PyObject* object) = 0;
  /// A tuple of empty slots, for `setTupleItem`.
  virtual PyObject* PyTuple_New(std::int64_t size) = 0;
  /// Stores `item` in a new tuple, which gets a reference of its own. The reference is added before
  /// `tuple` is checked, so a null tuple leaves it behind.
  virtual int setTupleItem(PyObject* tuple, std::int64_t index, PyObject* item) = 0;

  /// Whether the object supports the mapping protocol.
  virtual bool PyMapping_Check(PyObject* object) = 0;
  /// `isinstance(object, dict)`.
  virtual bool PyDict_Check(PyObject* object) = 0;
  /// `{}`.
  virtual PyObject* PyDict_New() = 0;

  /// Identity with `builtins.None`, which is looked up on every call, before the argument is
  /// checked.
  virtual bool isNone(PyObject* object) = 0;
  /// `builtins.None`.
  virtual PyObject* getNone() = 0;
  /// `isinstance(object, bool)`.
  virtual bool PyBool_Check(PyObject* object) = 0;
  /// `True` or `False`.
  virtual PyObject* PyBool_FromLong(bool value) = 0;
  /// `bool(object)`.
  virtual bool PyObject_IsTrue(PyObject* object) = 0;

  /// Always false: version 3 has no separate plain integer.
  virtual bool isInt(PyObject* object) = 0;
  /// An `int` from 32 bits, with its sign.
  virtual PyObject* intFromLong(HostLong value) = 0;
  /// The low 32 bits of the value, without a range check; -1 with an error pending on failure.
  virtual HostLong intAsLong(PyObject* object) = 0;
  /// `isinstance(object, int)`, true of a `bool`.
  virtual bool PyLong_Check(PyObject* object) = 0;
  /// An `int` from 64 bits, without a sign.
  virtual PyObject* PyLong_FromUnsignedLongLong(std::uint64_t value) = 0;
  /// An `int` from 64 bits, with its sign.
  virtual PyObject* PyLong_FromLongLong(std::int64_t value) = 0;
  /// The value in 64 bits with its sign; -1 with an error pending on failure, as the other numeric
  /// readers below have it (all bits set, -1.0).
  virtual std::int64_t PyLong_AsLongLong(PyObject* object) = 0;
  /// The value in 64 bits without a sign.
  virtual std::uint64_t PyLong_AsUnsignedLongLong(PyObject* object) = 0;
  /// `isinstance(object, float)`.
  virtual bool PyFloat_Check(PyObject* object) = 0;
  /// A `float`.
  virtual PyObject* PyFloat_FromDouble(double value) = 0;
  /// `float(object)`, of what has `__float__`.
  virtual double PyFloat_AsDouble(PyObject* object) = 0;
  /// `isinstance(object, complex)`.
  virtual bool PyComplex_Check(PyObject* object) = 0;
  /// A `complex`.
  virtual PyObject* PyComplex_FromDoubles(double real, double imaginary) = 0;
  /// The real part, of what `float` takes too.
  virtual double PyComplex_RealAsDouble(PyObject* object) = 0;
  /// The imaginary part; 0 of what is no `complex`.
  virtual double PyComplex_ImagAsDouble(PyObject* object) = 0;

  /// The same test as `PyUnicode_Check`.
  virtual bool isString(PyObject* object) = 0;
  /// A `str` from `size` bytes of UTF-8.
  virtual PyObject* PyUnicode_FromStringAndSize(const char* utf8, std::uint64_t size) = 0;
  /// The UTF-8 of a `str` or the bytes of a `bytes`, owned by the object; null, with the error
  /// pending, for anything else and for a `str` that UTF-8 cannot hold.
  virtual const char* getChars(PyObject* object) = 0;
  /// Copies the bytes of a `bytes` and returns 0, or returns -1 with the error pending.
  virtual int bytesToString(PyObject* object, std::string& out) = 0;
  /// As `bytesToString`, read as UTF-8.
  virtual int bytesToUString(PyObject* object, std::u16string& out) = 0;
  /// `isinstance(object, str)`.
  virtual bool PyUnicode_Check(PyObject* object) = 0;
  /// A `str` from UTF-16 in host order, strictly; a leading byte-order mark is taken as such.
  virtual PyObject* PyUnicode_DecodeUTF16(const std::u16string& utf16) = 0;
  /// Copies the text of a `str` and returns 0, or returns -1 with the error pending.
  virtual int unicodeToUString(PyObject* object, std::u16string& out) = 0;
  /// A writable view of host memory, which must outlive it.
  virtual PyObject* PyMemoryView_FromMemory(std::uint64_t size, char* data) = 0;
  /// `getattr(inspect, predicateName)(object)` when that is a bool, else false; false on failure,
  /// with the Python error left pending. Leaves behind one reference each of the module, the
  /// function, the argument tuple and the result.
  virtual bool callInspectPredicate(PyObject* object, const std::string& predicateName) = 0;
};

}  // namespace python

namespace pelion_core {
namespace python = ::python;

/// Makes the implementation over copies of the two tables. The caller owns it. Calls nothing in the
/// interpreter; lock operations are inert until `initialize` has started one.
PELION_CORE_EXPORT python::IPythonAPI* createIPythonAPI(const PythonFuncs& funcs,
                                                        const PythonThreeFuncs& threeFuncs);

}  // namespace pelion_core
