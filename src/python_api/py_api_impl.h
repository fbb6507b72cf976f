#pragma once

#include "pelion_core/loader/python_funcs.h"
#include "pelion_core/loader/python_three_funcs.h"
#include "pelion_core/python_api/ipython_api.h"
#include "python_api/interpreter_lock.h"

namespace pelion_core {

/// The one implementation of the interface, over copies of the two tables. Its type is known to the
/// call frame, so that taking and giving back the lock inlines there.
class PyAPIImpl final : public python::IPythonAPI {
 public:
  PyAPIImpl(const PythonFuncs& funcs, const PythonThreeFuncs& threeFuncs)
      : funcs_(funcs), threeFuncs_(threeFuncs) {}

  void initialize(const std::u16string& programName, const std::u16string& pythonHome,
                  const std::u16string& path) override;
  void Py_Finalize() override;
  bool Py_IsInitialized() override;
  void Py_IncRef(PyObject* object) override;
  void Py_DecRef(PyObject* object) override;
  void acquireLock() noexcept override { lock_.acquire(funcs_); }
  void releaseLock() override { lock_.release(funcs_); }
  bool PyModule_Check(PyObject* object) override;
  std::u16string getBuiltinsName() override;
  PyObject* importBuiltins() override;
  PyObject* importModule(const std::u16string& name) override;
  void* PyCapsule_Import(const std::u16string& name) override;
  void PyErr_Clear() override;
  bool PyErr_Occurred() override;
  PyObject* fetchError() override;
  bool PyObject_HasAttr(PyObject* object, PyObject* name) override;
  bool PyObject_HasAttrString(PyObject* object, const char* name) override;
  PyObject* PyObject_GetAttr(PyObject* object, PyObject* name) override;
  PyObject* PyObject_GetAttrString(PyObject* object, const char* name) override;
  int PyObject_SetAttr(PyObject* object, PyObject* name, PyObject* value) override;
  int PyObject_SetAttrString(PyObject* object, const char* name, PyObject* value) override;
  PyObject* PyObject_GetItem(PyObject* object, PyObject* key) override;
  int PyObject_SetItem(PyObject* object, PyObject* key, PyObject* value) override;
  bool PyObject_RichCompareBool(PyObject* left, PyObject* right) override;
  PyObject* PyObject_Str(PyObject* object) override;
  PyObject* PyObject_Dir(PyObject* object) override;
  PyObject* PyObject_Type(PyObject* object) override;
  bool PyObject_IsInstance(PyObject* object, PyObject* cls) override;
  bool PyObject_IsSubclass(PyObject* derived, PyObject* cls) override;
  bool PyCallable_Check(PyObject* object) override;
  PyObject* PyObject_Call(PyObject* callable, PyObject* args, PyObject* kwargs) override;
  bool PyType_Check(PyObject* object) override;
  bool PySequence_Check(PyObject* object) override;
  bool PyList_Check(PyObject* object) override;
  bool PyTuple_Check(PyObject* object) override;
  std::int64_t PySequence_Length(PyObject* object) override;
  PyObject* PySequence_GetItem(PyObject* object, std::int64_t index) override;
  PyObject* PySequence_List(PyObject* object) override;
  PyObject* PyTuple_New(std::int64_t size) override;
  int setTupleItem(PyObject* tuple, std::int64_t index, PyObject* item) override;
  bool PyMapping_Check(PyObject* object) override;
  bool PyDict_Check(PyObject* object) override;
  PyObject* PyDict_New() override;
  bool isNone(PyObject* object) override;
  PyObject* getNone() override;
  bool PyBool_Check(PyObject* object) override;
  PyObject* PyBool_FromLong(bool value) override;
  bool PyObject_IsTrue(PyObject* object) override;
  bool isInt(PyObject* object) override;
  PyObject* intFromLong(HostLong value) override;
  HostLong intAsLong(PyObject* object) override;
  bool PyLong_Check(PyObject* object) override;
  PyObject* PyLong_FromUnsignedLongLong(std::uint64_t value) override;
  PyObject* PyLong_FromLongLong(std::int64_t value) override;
  std::int64_t PyLong_AsLongLong(PyObject* object) override;
  std::uint64_t PyLong_AsUnsignedLongLong(PyObject* object) override;
  bool PyFloat_Check(PyObject* object) override;
  PyObject* PyFloat_FromDouble(double value) override;
  double PyFloat_AsDouble(PyObject* object) override;
  bool PyComplex_Check(PyObject* object) override;
  PyObject* PyComplex_FromDoubles(double real, double imaginary) override;
  double PyComplex_RealAsDouble(PyObject* object) override;
  double PyComplex_ImagAsDouble(PyObject* object) override;
  bool isString(PyObject* object) override;
  PyObject* PyUnicode_FromStringAndSize(const char* utf8, std::uint64_t size) override;
  const char* getChars(PyObject* object) override;
  int bytesToString(PyObject* object, std::string& out) override;
  int bytesToUString(PyObject* object, std::u16string& out) override;
  bool PyUnicode_Check(PyObject* object) override;
  PyObject* PyUnicode_DecodeUTF16(const std::u16string& utf16) override;
  int unicodeToUString(PyObject* object, std::u16string& out) override;
  PyObject* PyMemoryView_FromMemory(std::uint64_t size, char* data) override;
  bool callInspectPredicate(PyObject* object, const std::string& predicateName) override;

 private:
  void correctSysPaths(const std::u16string& programName, const std::u16string& pythonHome);

  PythonFuncs funcs_;
  PythonThreeFuncs threeFuncs_;
  InterpreterLock lock_;
};

}  // namespace pelion_core
