#include <dlfcn.h>
#include <link.h>

#include <cstdint>
#include <fstream>

#include "platform/dynamic_linker.h"

namespace pelion_core::platform {

// The dynamic linker maps what the headers promise and then touches it: a file that was cut short,
// by a full disk or a broken download, would end the process with SIGBUS.
bool isCutShort(const char* path) {
  std::ifstream file(path, std::ios::binary | std::ios::ate);
  const auto size = static_cast<std::uint64_t>(file.tellg());
  const auto read = [&file](std::uint64_t offset, auto& out) {
    file.seekg(static_cast<std::streamoff>(offset));
    return static_cast<bool>(file.read(reinterpret_cast<char*>(&out), sizeof out));
  };
  ElfW(Ehdr) header;
  if (!file || !read(0, header)) return false;  // the linker tells
  for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment;
    if (!read(header.e_phoff + i * sizeof segment, segment)) return false;
    const bool isInside = segment.p_filesz <= size && segment.p_offset <= size - segment.p_filesz;
    if (segment.p_type == PT_LOAD && !isInside) return true;
  }
  return false;
}

const char* nameOfOpened(void* handle) {
  link_map* map = nullptr;
  return dlinfo(handle, RTLD_DI_LINKMAP, &map) == 0 ? map->l_name : nullptr;
}

}  // namespace pelion_core::platform
