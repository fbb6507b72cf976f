#include <dlfcn.h>

#include <cerrno>
#include <string>

#include "platform/dynamic_linker.h"
#include "platform/shared_library.h"

namespace pelion_core::platform {
namespace {

void* pinnedLibrary = nullptr;
std::string lastFailure;

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
  const char* const name = nameOfOpened(handle);
  if (name != nullptr) pinnedLibrary = dlopen(name, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}

// dlopen returns the same handle for the same file.
bool isAloneInSymbolScope(void* handle) {
  return pinnedLibrary == nullptr || handle == pinnedLibrary;
}

}  // namespace pelion_core::platform
