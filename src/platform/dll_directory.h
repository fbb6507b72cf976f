#pragma once

#include <string>

namespace pelion_core::platform {

/// Adds the folder of `library` to the process's search directories for shared libraries, for good.
/// A failure is ignored. ELF systems have no such list: a library names its own search path.
void addDllDirectoryOf(const std::u16string& library);

}  // namespace pelion_core::platform
