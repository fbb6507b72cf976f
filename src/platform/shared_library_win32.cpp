#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <filesystem>

#include "platform/shared_library.h"

namespace pelion_core::platform {

void* openSharedLibrary(const char* utf8Path, int* error) {
  *error = ERROR_INVALID_NAME;
  if (*utf8Path == '\0') return nullptr;

  // The altered search path makes the library's own folder the first place for its dependencies;
  // it is defined only for native separators.
  const std::wstring path = std::filesystem::u8path(utf8Path).make_preferred().wstring();
  const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  *error = module != nullptr ? 0 : static_cast<int>(GetLastError());
  return module;
}

void* findLibrarySymbol(void* handle, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), name));
}

void closeSharedLibrary(void* handle) { FreeLibrary(static_cast<HMODULE>(handle)); }

void pinSharedLibrary(void* handle) {
  HMODULE pinned = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     static_cast<LPCWSTR>(handle), &pinned);
}

// A module is bound to the DLLs that it names.
bool isAloneInSymbolScope(void*) { return true; }

}  // namespace pelion_core::platform
