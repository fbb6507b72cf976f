#pragma once

#include "pelion_core/python_api/ipython_api.h"
#include "python_api/checked_tables.h"
#include "python_api/interpreter_lock.h"

namespace pelion_core::detail {

/// The one implementation of the interface. Its type is known to the call frame and to all that
/// calls through it, so that an operation inlines to its checks and one call through a pointer.
/// Operations that are more than that are in the sources: start_up.cpp, the others in
/// py_api_impl.cpp.
class PyAPIImpl final : public python::IPythonAPI, private CheckedTables {
 public:
  using CheckedTables::CheckedTables;

  // Lifetime and lock

  void initialize(const std::u16string& programName, const std::u16string& pythonHome,
                  const std::u16string& path) override;
  void Py_Finalize() override {
    lock_.finalised();
    funcs_.Py_Finalize();
  }
  bool Py_IsInitialized() override { return funcs_.Py_IsInitialized() != 0; }
  void Py_IncRef(PyObject* object) override {
    passed(object);
    funcs_.Py_IncRef(object);
  }
  void Py_DecRef(PyObject* object) override {
    passed(object);
    funcs_.Py_DecRef(object);
  }
  void acquireLock() noexcept override { lock_.acquire(funcs_); }
  void releaseLock() override { lock_.release(funcs_); }

  // Modules

  bool PyModule_Check(PyObject* object) override {
    return predicate<&Funcs::PyModule_Check>(object);
  }
  std::u16string getBuiltinsName() override { return u"builtins"; }
  PyObject* importBuiltins() override { return importModule(getBuiltinsName()); }
  PyObject* importModule(const std::u16string& name) override {
    return returned(importOrNull(name));
  }
  void* PyCapsule_Import(const std::u16string& name) override;

  // The pending error

  void PyErr_Clear() override { funcs_.PyErr_Clear(); }
  bool PyErr_Occurred() override { return funcs_.PyErr_Occurred() != nullptr; }
  PyObject* fetchError() override;

  // Objects

  bool PyObject_HasAttr(PyObject* object, PyObject* name) override {
    return predicate<&Funcs::PyObject_HasAttr>(object, name);
  }
  bool PyObject_HasAttrString(PyObject* object, const char* name) override {
    return predicate<&Funcs::PyObject_HasAttrString>(object, name);
  }
  PyObject* PyObject_GetAttr(PyObject* object, PyObject* name) override {
    return producer<&Funcs::PyObject_GetAttr>(object, name);
  }
  PyObject* PyObject_GetAttrString(PyObject* object, const char* name) override {
    return producer<&Funcs::PyObject_GetAttrString>(object, name);
  }
  int PyObject_SetAttr(PyObject* object, PyObject* name, PyObject* value) override {
    return setter<&Funcs::PyObject_SetAttr>(object, name, value);
  }
  int PyObject_SetAttrString(PyObject* object, const char* name, PyObject* value) override {
    return setter<&Funcs::PyObject_SetAttrString>(object, name, value);
  }
  PyObject* PyObject_GetItem(PyObject* object, PyObject* key) override {
    return producer<&Funcs::PyObject_GetItem>(object, key);
  }
  int PyObject_SetItem(PyObject* object, PyObject* key, PyObject* value) override {
    return setter<&Funcs::PyObject_SetItem>(object, key, value);
  }
  bool PyObject_RichCompareBool(PyObject* left, PyObject* right) override {
    constexpr int pyEq = 2;  // Py_EQ, https://docs.python.org/3/c-api/typeobj.html#c.Py_EQ
    return predicate<&Funcs::PyObject_RichCompareBool>(left, right, pyEq);
  }
  PyObject* PyObject_Str(PyObject* object) override {
    return producer<&Funcs::PyObject_Str>(object);
  }
  PyObject* PyObject_Dir(PyObject* object) override {
    return producer<&Funcs::PyObject_Dir>(object);
  }
  PyObject* PyObject_Type(PyObject* object) override {
    return producer<&Funcs::PyObject_Type>(object);
  }
  bool PyObject_IsInstance(PyObject* object, PyObject* cls) override {
    return predicate<&Funcs::PyObject_IsInstance>(object, cls);
  }
  bool PyObject_IsSubclass(PyObject* derived, PyObject* cls) override {
    return predicate<&Funcs::PyObject_IsSubclass>(derived, cls);
  }
  bool PyCallable_Check(PyObject* object) override {
    return predicate<&Funcs::PyCallable_Check>(object);
  }
  PyObject* PyObject_Call(PyObject* callable, PyObject* args, PyObject* kwargs) override {
    if (args == nullptr) fail("Arguments required to invoke Python callable.");
    passed(callable);
    return returned(funcs_.PyObject_Call(callable, args, kwargs));
  }
  bool PyType_Check(PyObject* object) override { return predicate<&Funcs::PyType_Check>(object); }

  // Sequences and mappings

  bool PySequence_Check(PyObject* object) override {
    return predicate<&Funcs::PySequence_Check>(object);
  }
  bool PyList_Check(PyObject* object) override { return predicate<&Funcs::PyList_Check>(object); }
  bool PyTuple_Check(PyObject* object) override { return predicate<&Funcs::PyTuple_Check>(object); }
  std::int64_t PySequence_Length(PyObject* object) override {
    passed(object);
    const std::int64_t length = funcs_.PySequence_Length(object);
    if (length == -1) fail("PySequence_Length failed.");
    return length;
  }
  PyObject* PySequence_GetItem(PyObject* object, std::int64_t index) override {
    return producer<&Funcs::PySequence_GetItem>(object, index);
  }
  PyObject* PySequence_List(PyObject* object) override {
    return producer<&Funcs::PySequence_List>(object);
  }
  PyObject* PyTuple_New(std::int64_t size) override { return maker<&Funcs::PyTuple_New>(size); }
  int setTupleItem(PyObject* tuple, std::int64_t index, PyObject* item) override {
    passed(item);
    funcs_.Py_IncRef(item);
    return setter<&Funcs::PyTuple_SetItem>(tuple, index, item);
  }
  bool PyMapping_Check(PyObject* object) override {
    return predicate<&Funcs::PyMapping_Check>(object);
  }
  bool PyDict_Check(PyObject* object) override { return predicate<&Funcs::PyDict_Check>(object); }
  PyObject* PyDict_New() override { return maker<&Funcs::PyDict_New>(); }

  // None, bool, numbers

  bool isNone(PyObject* object) override;
  PyObject* getNone() override;
  bool PyBool_Check(PyObject* object) override { return predicate<&Funcs::PyBool_Check>(object); }
  PyObject* PyBool_FromLong(bool value) override {
    return maker<&Funcs::PyBool_FromLong>(HostLong{value});
  }
  bool PyObject_IsTrue(PyObject* object) override {
    return predicate<&Funcs::PyObject_IsTrue>(object);
  }
  bool isInt(PyObject*) override { return false; }
  PyObject* intFromLong(HostLong value) override {
    return maker<&Funcs::PyLong_FromLongLong>(std::int64_t{value});
  }
  HostLong intAsLong(PyObject* object) override {
    return static_cast<HostLong>(static_cast<std::uint32_t>(PyLong_AsLongLong(object)));
  }
  bool PyLong_Check(PyObject* object) override { return predicate<&Funcs::PyLong_Check>(object); }
  PyObject* PyLong_FromUnsignedLongLong(std::uint64_t value) override {
    return maker<&Funcs::PyLong_FromUnsignedLongLong>(value);
  }
  PyObject* PyLong_FromLongLong(std::int64_t value) override {
    return maker<&Funcs::PyLong_FromLongLong>(value);
  }
  std::int64_t PyLong_AsLongLong(PyObject* object) override {
    return extractor<&Funcs::PyLong_AsLongLong>(object);
  }
  std::uint64_t PyLong_AsUnsignedLongLong(PyObject* object) override {
    return extractor<&Funcs::PyLong_AsUnsignedLongLong>(object);
  }
  bool PyFloat_Check(PyObject* object) override { return predicate<&Funcs::PyFloat_Check>(object); }
  PyObject* PyFloat_FromDouble(double value) override {
    return maker<&Funcs::PyFloat_FromDouble>(value);
  }
  double PyFloat_AsDouble(PyObject* object) override {
    return extractor<&Funcs::PyFloat_AsDouble>(object);
  }
  bool PyComplex_Check(PyObject* object) override {
    return predicate<&Funcs::PyComplex_Check>(object);
  }
  PyObject* PyComplex_FromDoubles(double real, double imaginary) override {
    return maker<&Funcs::PyComplex_FromDoubles>(real, imaginary);
  }
  double PyComplex_RealAsDouble(PyObject* object) override {
    return extractor<&Funcs::PyComplex_RealAsDouble>(object);
  }
  double PyComplex_ImagAsDouble(PyObject* object) override {
    return extractor<&Funcs::PyComplex_ImagAsDouble>(object);
  }

  // Strings, bytes, memory

  bool isString(PyObject* object) override { return predicate<&Funcs::PyUnicode_Check>(object); }
  PyObject* PyUnicode_FromStringAndSize(const char* utf8, std::uint64_t size) override {
    return maker<&Three::PyUnicode_FromStringAndSize>(utf8, cSize(size));
  }
  const char* getChars(PyObject* object) override {
    return PyUnicode_Check(object) ? threeFuncs_.PyUnicode_AsUTF8AndSize(object, nullptr)
                                   : threeFuncs_.PyBytes_AsString(object);
  }
  int bytesToString(PyObject* object, std::string& out) override;
  int bytesToUString(PyObject* object, std::u16string& out) override;
  bool PyUnicode_Check(PyObject* object) override {
    return predicate<&Funcs::PyUnicode_Check>(object);
  }
  PyObject* PyUnicode_DecodeUTF16(const std::u16string& utf16) override {
    const std::int64_t byteCount = cSize(std::uint64_t{2} * utf16.size());
    const char* const data = reinterpret_cast<const char*>(utf16.data());
    return maker<&Three::PyUnicode_DecodeUTF16>(data, byteCount, nullptr, nullptr);
  }
  int unicodeToUString(PyObject* object, std::u16string& out) override;
  PyObject* PyMemoryView_FromMemory(std::uint64_t size, char* data) override {
    constexpr int pyBufWrite = 0x200;  // https://docs.python.org/3/c-api/memoryview.html
    return maker<&Three::PyMemoryView_FromMemory>(data, cSize(size), pyBufWrite);
  }
  bool callInspectPredicate(PyObject* object, const std::string& predicateName) override;

  // What only the library itself asks: the same look-ups, where finding nothing is no failure. Null
  // then, and no error is pending.

  PyObject* importModuleIfThere(const std::u16string& name) {
    return foundOrCleared(importOrNull(name));
  }
  PyObject* getAttrIfThere(PyObject* object, PyObject* name) {
    return foundOrCleared(funcs_.PyObject_GetAttr(object, name));
  }

 private:
  void correctSysPaths(const std::u16string& programName, const std::u16string& pythonHome);
  PyObject* importOrNull(const std::u16string& name);
  PyObject* foundOrCleared(PyObject* found) {
    if (found == nullptr) funcs_.PyErr_Clear();
    return found;
  }

  InterpreterLock lock_;
};

}  // namespace pelion_core::detail
