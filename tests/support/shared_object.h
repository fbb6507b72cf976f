#pragma once

#include <filesystem>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

/// Libraries as the system itself sees them.
namespace shared_object {

using Path = std::filesystem::path;

#if defined(_WIN32)
inline void* open(const Path& path) { return LoadLibraryW(path.c_str()); }
inline void close(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }
inline void* find(void* library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
inline bool isMapped(const Path& path) { return GetModuleHandleW(path.filename().c_str()); }
#else
inline void* open(const Path& path, int flags = RTLD_NOW) { return dlopen(path.c_str(), flags); }
inline void close(void* library) { dlclose(library); }
inline void* find(void* library, const char* name) { return dlsym(library, name); }
inline bool isMapped(const Path& path) {
  void* const library = open(path, RTLD_NOW | RTLD_NOLOAD);
  if (library != nullptr) close(library);
  return library != nullptr;
}
#endif

}  // namespace shared_object
