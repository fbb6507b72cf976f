#pragma once

#include <cstdint>

#include "pelion_core/loader/c_api/find_symbol_decorator.h"
#include "pelion_core/loader/c_api/py_object.h"
#include "pelion_core/loader/c_api/python_lib_holder.h"
#include "pelion_core/platform/export.h"
#include "pelion_core/platform/host_long.h"

namespace pelion_core {

/// The C API that the interpreter has offered across major versions, bound by symbol name: ten type
/// objects and 61 functions. A value; copies share the loaded library and keep it loaded.
///
/// Each member bears the name of its C API function and calls it under the conditions of
/// <https://docs.python.org/3/c-api/>: the caller holds the interpreter lock. Calling a member when
/// `acquired()` is false is undefined. Members that differ from the C API:
/// - the type tests (`PyLong_Check`, ...) are `PyObject_IsInstance` on the bound type object, so
///   they accept subclasses and return its raw 1, 0 or -1;
/// - `PyCapsule_Import` always asks not to block;
/// - `Py_IncRef` and `Py_DecRef` do nothing for null.
class PythonFuncs {
 public:
  /// Binds every name, also after one is missing. Throws nothing but std::bad_alloc.
  PELION_CORE_EXPORT PythonFuncs(const PythonLibHolder& library);

  /// Whether every symbol of the table was found.
  bool acquired() const noexcept { return symbols_.acquired(); }

#define PELION_C_API(result, name, parameters, arguments, failure) \
  result name parameters const { return name##_ arguments; }
#define PELION_C_API_ADAPTED(result, name, cParameters, parameters, failure) \
  PELION_CORE_EXPORT result name parameters const;
#include "pelion_core/loader/c_api/python_funcs.def"

#define PELION_PYTHON_TYPE(name) \
  int name##_Check(PyObject* object) const { return PyObject_IsInstance(object, name##_Type_); }
#include "pelion_core/loader/c_api/python_types.def"

 private:
  void findTypes(const PythonLibHolder& library);
  void findFunctions(const PythonLibHolder& library);

  PythonLibHolder library_;
  FindSymbolDecorator symbols_;

#define PELION_PYTHON_TYPE(name) PyObject* name##_Type_ = nullptr;
#include "pelion_core/loader/c_api/python_types.def"

#define PELION_C_API_IN_STORAGE_ORDER
#define PELION_C_API(result, name, parameters, arguments, failure) \
  result(*name##_) parameters = nullptr;
#define PELION_C_API_ADAPTED(result, name, cParameters, parameters, failure) \
  result(*name##_) cParameters = nullptr;
#include "pelion_core/loader/c_api/python_funcs.def"
};

}  // namespace pelion_core
