#define WIN32_LEAN_AND_MEAN
#define NOMINMAX
#include <windows.h>

#include <boost/locale/encoding_utf.hpp>
#include <filesystem>
#include <string>

#include "platform/shared_library.h"

namespace pelion_core::platform {
namespace {

std::string lastFailure;

// The system's words for an error, which end in a full stop and a line break.
std::string describe(int error) {
  wchar_t words[1024];
  const DWORD size =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                     static_cast<DWORD>(error), 0, words, std::size(words), nullptr);
  const std::wstring text(words, size);
  const std::size_t end = text.find_last_not_of(L".\r\n ") + 1;
  return boost::locale::conv::utf_to_utf<char>(text.substr(0, end)) + " (error " +
         std::to_string(error) + ')';
}

}  // namespace

void* openSharedLibrary(const char* utf8Path, int* error) {
  *error = ERROR_INVALID_NAME;
  lastFailure = "the path is empty";
  if (*utf8Path == '\0') return nullptr;

  // The altered search path makes the library's own folder the first place for its dependencies;
  // it is defined only for native separators.
  const std::wstring path = std::filesystem::u8path(utf8Path).make_preferred().wstring();
  const HMODULE module = LoadLibraryExW(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  *error = module != nullptr ? 0 : static_cast<int>(GetLastError());
  if (module == nullptr) lastFailure = std::string(utf8Path) + ": " + describe(*error);
  return module;
}

std::string whyNotOpened() { return lastFailure; }

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
