#pragma once

#include <stdexcept>
#include <string>

/// A whole host on top of the exported functions: see `<pelion_core/host.h>`.
namespace pelion_core::host {

/// What `loader::attemptToLoadPython` needs to know, as UTF-8.
struct Settings {
  std::string version;  ///< "3.11"
  std::string library;  ///< the runtime library
  std::string program;  ///< the Python program; a virtual environment's for what is installed there
  std::string home;     ///< the prefix under which the standard library lies
  std::string path;     ///< module search path; empty to let Python compute it
};

/// Why there is no Python to work with: what is wrong, and what to do about it.
class LoadError : public std::runtime_error {
 public:
  /// What kind of failure it is.
  enum class Reason {
    notFound,        ///< no Python, or one that cannot be embedded
    notLoaded,       ///< the runtime library does not load
    alreadyRunning,  ///< the process has an interpreter already
  };

  /// `message` is UTF-8.
  LoadError(Reason reason, const std::string& message)
      : std::runtime_error(message), reason_(reason) {}

  /// What kind of failure it is.
  Reason reason() const { return reason_; }

 private:
  Reason reason_;
};

/// The settings of a Python, checked.
///
/// @param program  what `discover` takes: a program, a runtime library, the folder of an
///                 environment or of an installation, a version; or nothing for `firstUsable()`.
///                 UTF-8
/// @throws LoadError  with the reason and the remedy of the verdict of `inspect`
Settings find(const std::string& program = {});

/// Fills in what `given` leaves empty: from its program, else from the installation of its library,
/// else from `firstUsable()`; and checks the result. The library's name tells the version.
///
/// @throws LoadError  as `find`
Settings complete(Settings given);

/// Makes sure that a start with these settings cannot end the process for a reason that shows
/// before: the library is there, made for this machine and has all the names, and the standard
/// library lies under the home (or on the path). A library named without a folder is the system's
/// to find and is not looked at.
///
/// @throws LoadError  as `find`
void check(const Settings& settings);

}  // namespace pelion_core::host
