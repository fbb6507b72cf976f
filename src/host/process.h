#pragma once

#include <optional>
#include <string>
#include <vector>

namespace pelion_core::host {

/// What a program prints to its standard output, run with these arguments, no input and no window;
/// none when it does not start or does not end with status 0. `command` is UTF-8 and begins with
/// the program, which is looked for on the system's path when it has no folder.
std::optional<std::string> outputOf(const std::vector<std::string>& command);

}  // namespace pelion_core::host
