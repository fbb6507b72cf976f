#pragma once

#include <pelion_core/host.h>

#include <functional>
#include <stdexcept>

#include "commands.h"

/// What the commands that run Python share.
namespace pelion {

namespace py = pelion_core::host;

/// Why a command cannot go on.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

/// Does the work in a session with the Python that `given` completes to. The result is the exit
/// status, that of the work or of what went wrong, which standard error then tells.
int withPython(const py::Settings& given, const std::function<int(const py::Session&)>& work);

}  // namespace pelion
