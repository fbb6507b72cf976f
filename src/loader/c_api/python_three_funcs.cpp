#include "pelion_core/loader/c_api/python_three_funcs.h"

#include "platform/text.h"

namespace pelion_core {

PythonThreeFuncs::PythonThreeFuncs(const PythonLibHolder& library) : library_(library) {
  findFunctions(library_);
}

void PythonThreeFuncs::findFunctions(const PythonLibHolder& library) {
#define PELION_C_API(result, name, parameters, arguments, failure) \
  name##_ = reinterpret_cast<decltype(name##_)>(symbols_.findSymbol(library, #name));
#define PELION_C_API_ADAPTED PELION_C_API
#include "pelion_core/loader/c_api/python_three_funcs.def"
}

void PythonThreeFuncs::Py_SetPath(const std::u16string& path) const {
  Py_SetPath_(platform::toWide(path).c_str());
}

// The interpreter keeps the pointer: the next value goes into the same buffer where it fits.
void PythonThreeFuncs::Py_SetPythonHome(const std::u16string& home) const {
  static std::wstring kept;
  const std::wstring wide = platform::toWide(home);
  kept.assign(wide);
  Py_SetPythonHome_(kept.c_str());
}

// The two below are configured once for a process: the first value stays, also for an interpreter
// that is started later. Every call terminates its buffer before it hands it on, so the buffer
// gains a zero each time, behind the one where the text ends.

void PythonThreeFuncs::Py_SetProgramName(const std::u16string& name) const {
  static std::wstring kept = platform::toWide(name);
  kept.push_back(L'\0');
  Py_SetProgramName_(kept.c_str());
}

void PythonThreeFuncs::PySys_AddXOption(const std::u16string& option) const {
  static std::wstring kept = platform::toWide(option);
  kept.push_back(L'\0');
  PySys_AddXOption_(kept.c_str());
}

void PythonThreeFuncs::PySys_SetArgv() const {
  wchar_t* none[] = {nullptr};
  PySys_SetArgv_(0, none);
}

}  // namespace pelion_core
