#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "pelion_core/host/inspect.h"

/// @file
/// Trying a Python where it cannot hurt.

namespace pelion_core::host {

/// How `probe` works.
struct ProbeOptions {
  /// The program `pelion`, which the child process runs; empty for the one beside the running
  /// program, in `../bin` from there, or on `PATH`.
  std::string pelion;

  /// For all steps together.
  std::chrono::milliseconds limit{60000};

  /// Called with the name of each step as it begins.
  std::function<void(const std::string& step)> onStep = nullptr;
};

/// Starts a Python in a child process as `loader::attemptToLoadPython` does it, with the variables
/// and the folder of this process, imports `math`, `ctypes`, NumPy and pandas, and closes it. A
/// crash, an abort, a start that ends the process and one that never returns are results: the last
/// check then says which step it was, how the process ended, and what Python last said. A package
/// that is not installed passes.
///
/// @return a check for each step that was begun: "start", "import math", ..., "close", with its
/// time Throws nothing but std::bad_alloc.
std::vector<Check> probe(const Settings& settings, const ProbeOptions& options = {});

}  // namespace pelion_core::host
