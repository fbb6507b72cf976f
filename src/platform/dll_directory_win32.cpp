#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <filesystem>

#include "platform/dll_directory.h"

namespace pelion_core::platform {

void addDllDirectoryOf(const std::u16string& library) {
  const std::filesystem::path folder =
      std::filesystem::path(library).make_preferred().parent_path();
  AddDllDirectory(folder.c_str());
}

}  // namespace pelion_core::platform
