#pragma once

#include <string>

#include "pelion_core/host/inspect.h"

namespace pelion_core::host {

/// What a program said of itself.
struct Answer {
  Settings settings;                  ///< `library` is empty when it has no shared one
  Verdict verdict = Verdict::usable;  ///< or why there are no settings
  std::string detail;                 ///< of that verdict
};

/// Runs a Python program to have its settings.
Answer ask(const std::string& program);

}  // namespace pelion_core::host
