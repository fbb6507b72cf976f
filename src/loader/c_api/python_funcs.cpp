#include "pelion_core/loader/c_api/python_funcs.h"

namespace pelion_core {

PythonFuncs::PythonFuncs(const PythonLibHolder& library) : library_(library) {
  findTypes(library_);
  findFunctions(library_);
}

void PythonFuncs::findTypes(const PythonLibHolder& library) {
#define PELION_PYTHON_TYPE(name) \
  name##_Type_ = static_cast<PyObject*>(symbols_.findSymbol(library, #name "_Type"));
#include "pelion_core/loader/c_api/python_types.def"
}

void PythonFuncs::findFunctions(const PythonLibHolder& library) {
#define PELION_C_API(result, name, parameters, arguments, failure) \
  name##_ = reinterpret_cast<decltype(name##_)>(symbols_.findSymbol(library, #name));
#define PELION_C_API_ADAPTED PELION_C_API
#include "pelion_core/loader/c_api/python_funcs.def"
}

void* PythonFuncs::PyCapsule_Import(const char* name) const { return PyCapsule_Import_(name, 1); }

void PythonFuncs::Py_IncRef(PyObject* object) const {
  if (object != nullptr) Py_IncRef_(object);
}

void PythonFuncs::Py_DecRef(PyObject* object) const {
  if (object != nullptr) Py_DecRef_(object);
}

PyObject* PythonFuncs::PyBool_FromLong(HostLong value) const { return PyBool_FromLong_(value); }

}  // namespace pelion_core
