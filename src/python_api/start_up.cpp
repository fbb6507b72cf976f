#include <algorithm>

#include "python_api/py_api_impl.h"

namespace pelion_core::detail {
namespace {

// The folder above the "bin" or "lib" that holds a Windows runtime library, or the library's own
// folder. Empty for the paths of other systems.
std::u16string baseHomeFromLibrary(const std::u16string& library) {
  constexpr auto npos = std::u16string::npos;
  const auto bin = library.rfind(u"\\bin\\");
  const auto lib = library.rfind(u"\\lib\\");
  const auto separator = library.rfind(u'\\');
  if (library.rfind(u".dll") == npos || separator == npos) return {};

  auto cut = separator;
  if (bin != npos && lib != npos) {
    cut = std::max(bin, lib);
  } else if (bin != npos) {
    cut = bin;
  } else if (lib != npos) {
    cut = lib;
  }
  return library.substr(0, cut);
}

}  // namespace

void PyAPIImpl::initialize(const std::u16string& programName, const std::u16string& pythonHome,
                           const std::u16string& path) {
  if (Py_IsInitialized()) return;

  if (threeFuncs_.acquired()) {
    threeFuncs_.Py_SetProgramName(programName);
    threeFuncs_.PySys_AddXOption(u"frozen_modules=off");
    threeFuncs_.Py_SetPythonHome(pythonHome);
    if (!path.empty()) threeFuncs_.Py_SetPath(path);
  }
  funcs_.Py_Initialize();
  if (threeFuncs_.acquired()) correctSysPaths(programName, pythonHome);
  funcs_.PyEval_InitThreads();
  lock_.started();
  // Every major version has an argument list, so the common table decides; the function is bound in
  // the other one because version 3 takes wide text.
  if (funcs_.acquired()) threeFuncs_.PySys_SetArgv();
}

// Inside a host the interpreter derives its prefixes and its program from the host's own. None of
// the references is released: they live as long as the interpreter.
void PyAPIImpl::correctSysPaths(const std::u16string& programName,
                                const std::u16string& pythonHome) {
  try {
    PyObject* const sys = importModule(u"sys");

    PyObject* const home = PyUnicode_DecodeUTF16(pythonHome);
    PyObject_SetAttrString(sys, "prefix", home);
    PyObject_SetAttrString(sys, "exec_prefix", home);

    PyObject* const base = PyUnicode_DecodeUTF16(baseHomeFromLibrary(threeFuncs_.getLibrary()));
    PyObject_SetAttrString(sys, "base_prefix", base);
    PyObject_SetAttrString(sys, "base_exec_prefix", base);

    PyObject_SetAttrString(sys, "executable", PyUnicode_DecodeUTF16(programName));
    PyObject_SetAttrString(sys, "_base_executable", PyUnicode_DecodeUTF16(programName));
  } catch (...) {
    PyErr_Clear();  // start-up goes on with what was corrected so far
  }
}

}  // namespace pelion_core::detail
