#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace example {

/// What `loader::attemptToLoadPython` needs to know, as UTF-8.
struct PythonSettings {
  std::string version;  ///< "3.11"
  std::string library;  ///< the runtime library
  std::string program;  ///< the Python program; a virtual environment's for what is installed there
  std::string home;     ///< the prefix under which the standard library lies
  std::string path;     ///< module search path; empty to let Python compute it
};

/// Adds `--python`, `--program`, `--home` and `--path`.
void addPythonOptions(CLI::App& app, PythonSettings& settings);

/// Fills in what was not given by asking `given.program`, or the machine's own `python3`. Throws
/// `Failure` when there is no such program, it has no shared library, or its standard library is
/// not where the settings say: starting an interpreter then would end the process.
PythonSettings findPython(PythonSettings given);

}  // namespace example
