#include "platform/dll_directory.h"

namespace pelion_core::platform {

void addDllDirectoryOf(const std::u16string&) {}

}  // namespace pelion_core::platform
