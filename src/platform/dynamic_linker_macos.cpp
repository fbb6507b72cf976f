#include <dlfcn.h>
#include <mach-o/dyld.h>

#include <cstdint>

#include "platform/dynamic_linker.h"

namespace pelion_core::platform {

// dyld compares the segments with the file before it maps them, and refuses such a file.
bool isCutShort(const char*) { return false; }

const char* nameOfOpened(void* handle) {
  for (std::uint32_t i = _dyld_image_count(); i-- > 0;) {
    const char* const name = _dyld_get_image_name(i);
    void* const image = name != nullptr ? dlopen(name, RTLD_LAZY | RTLD_NOLOAD) : nullptr;
    if (image != nullptr) dlclose(image);
    if (image == handle) return name;
  }
  return nullptr;
}

}  // namespace pelion_core::platform
