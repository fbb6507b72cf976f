#pragma once

#include <string>
#include <vector>

#include "pelion_core/host/settings.h"

/// The commands of the program, each with its exit status as result.
namespace pelion {

enum ExitStatus { done = 0, unusable = 1, wrongUsage = 2 };

int list(bool asJson);

struct DoctorOptions {
  std::string what;
  bool asJson = false;
  bool start = true;
};
int doctor(const DoctorOptions& options);

/// The child process of `host::probe`.
int start(const std::string& settings);

}  // namespace pelion
