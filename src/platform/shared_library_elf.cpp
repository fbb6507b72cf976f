#include <dlfcn.h>
#include <link.h>

#include <cerrno>
#include <cstdint>
#include <fstream>
#include <string>

#include "platform/shared_library.h"

namespace pelion_core::platform {
namespace {

void* pinnedLibrary = nullptr;
std::string lastFailure;

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

}  // namespace

void* openSharedLibrary(const char* utf8Path, int* error) {
  *error = EINVAL;
  lastFailure = "the path is empty";
  if (*utf8Path == '\0') return nullptr;  // dlopen would return the main program

  *error = ENOEXEC;
  lastFailure = std::string(utf8Path) + ": the file is cut short";
  if (isCutShort(utf8Path)) return nullptr;

  // RTLD_GLOBAL: extension modules look the interpreter's symbols up in the global scope and are
  // not linked against it
  // (https://docs.python.org/3/whatsnew/3.8.html#debug-build-uses-the-same-abi-as-release-build).
  const int scope = pinnedLibrary == nullptr ? RTLD_GLOBAL : RTLD_LOCAL;
  void* const handle = dlopen(utf8Path, RTLD_NOW | scope);
  *error = handle != nullptr ? 0 : ENOENT;
  if (handle == nullptr) lastFailure = dlerror();  // which names the path
  return handle;
}

std::string whyNotOpened() { return lastFailure; }

void* findLibrarySymbol(void* handle, const char* name) { return dlsym(handle, name); }

void closeSharedLibrary(void* handle) { dlclose(handle); }

void pinSharedLibrary(void* handle) {
  link_map* map = nullptr;
  if (dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) return;
  pinnedLibrary = dlopen(map->l_name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// dlopen returns the same handle for the same file.
bool isAloneInSymbolScope(void* handle) {
  return pinnedLibrary == nullptr || handle == pinnedLibrary;
}

}  // namespace pelion_core::platform
