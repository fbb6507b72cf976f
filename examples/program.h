#pragma once

#include <pelion_core/host.h>

#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

/// What the examples share as programs: their options, their exit statuses.
namespace example {

namespace py = pelion_core::host;

/// The exit statuses, beside 0.
enum ExitStatus {
  pythonRaised = 1,  ///< Python raised an error
  wrongUsage = 2,    ///< the command line makes no sense
  noPython = 3,      ///< no Python could be found or started
  badInput = 4,      ///< the data to work on cannot be used
  noPackage = 5,     ///< a Python package is missing
};

/// Why an example cannot go on, in words for its user.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

/// Adds `--python`, `--program`, `--home` and `--path`.
void addPythonOptions(CLI::App& app, py::Settings& settings);

/// Parses the command line. What `main` is to return when the program ends there: after `--help` or
/// for wrong usage.
std::optional<int> parse(CLI::App& app, int argc, char** argv);

/// Runs `work` in a session with the Python of these settings, completed. Returns the exit status
/// of the process: that of `work`, or of what went wrong, which standard error then tells after
/// `program`.
int runWithPython(const char* program, const py::Settings& given,
                  const std::function<int(py::Session&)>& work);

}  // namespace example
