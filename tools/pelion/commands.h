#pragma once

#include <string>
#include <vector>

#include "pelion_core/host/settings.h"

/// The commands of the program, each with its exit status as result.
namespace pelion {

enum ExitStatus {
  done = 0,
  unusable = 1,        ///< no Python can be used (list, doctor)
  pythonRaised = 1,    ///< Python raised an error (call, run)
  wrongUsage = 2,      ///< the command line makes no sense
  nameNotFound = 3,    ///< a Python name has the wrong form or leads nowhere
  notLoaded = 4,       ///< the runtime library does not load
  alreadyRunning = 5,  ///< the process has an interpreter already
  noPython = 6,        ///< there is no Python that could be loaded
};

int list(bool asJson);

struct DoctorOptions {
  std::string what;
  bool asJson = false;
  bool start = true;
};
int doctor(const DoctorOptions& options);

struct RunOptions {
  pelion_core::host::Settings python;  // what was given of it
  std::vector<std::string> words;      // a name or a file, and arguments; at least one
};
int call(const RunOptions& options);
int run(const RunOptions& options);

/// The child process of `host::probe`.
int start(const std::string& settings);

}  // namespace pelion
