#pragma once

#include <cstdint>
#include <string>

#include "pelion_core/loader/c_api/find_symbol_decorator.h"
#include "pelion_core/loader/c_api/py_object.h"
#include "pelion_core/loader/c_api/python_lib_holder.h"
#include "pelion_core/platform/export.h"

namespace pelion_core {

/// The C API that only major version 3 offers, bound by symbol name: wide-character configuration,
/// bytes, text, memory views. A value; copies share the loaded library and keep it loaded.
///
/// Members follow the rules of `PythonFuncs`. The wide-character setters take UTF-16 and hand the
/// interpreter a zero-terminated wide text that lives as the interpreter needs it:
/// - `Py_SetPath`: until the call returns;
/// - `Py_SetPythonHome`: until the process ends, or the next call replaces it;
/// - `Py_SetProgramName`, `PySys_AddXOption`: until the process ends. The first value wins: a later
///   call passes the first value again, since these are set once for a process.
///
/// `PySys_SetArgv()` passes an empty argument list.
class PythonThreeFuncs {
 public:
  /// Binds every name, also after one is missing. Throws nothing but std::bad_alloc.
  PELION_CORE_EXPORT PythonThreeFuncs(const PythonLibHolder& library);

  /// Whether every symbol of the table was found.
  bool acquired() const noexcept { return symbols_.acquired(); }

  /// The path of the runtime library, as it was given.
  std::u16string getLibrary() const { return library_.getLibraryName(); }

#define PELION_C_API(result, name, parameters, arguments, failure) \
  result name parameters const { return name##_ arguments; }
#define PELION_C_API_ADAPTED(result, name, cParameters, parameters, failure) \
  PELION_CORE_EXPORT result name parameters const;
#include "pelion_core/loader/c_api/python_three_funcs.def"

 private:
  /// The step that `PythonFuncs` has before the functions: this table binds no type objects.
  void findTypes(const PythonLibHolder&) {}
  void findFunctions(const PythonLibHolder& library);

  PythonLibHolder library_;
  FindSymbolDecorator symbols_;

#define PELION_C_API_IN_STORAGE_ORDER
#define PELION_C_API(result, name, parameters, arguments, failure) \
  result(*name##_) parameters = nullptr;
#define PELION_C_API_ADAPTED(result, name, cParameters, parameters, failure) \
  result(*name##_) cParameters = nullptr;
#include "pelion_core/loader/c_api/python_three_funcs.def"
};

}  // namespace pelion_core
