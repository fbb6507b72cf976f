#pragma once

#include <string>

namespace pelion_core::platform {

/// Loads a shared library by its UTF-8 path. Writes 0 to `error` exactly when a handle comes back.
///
/// Where extension modules find the interpreter in one global symbol scope (ELF), the library is
/// added to it, unless another one was pinned: that one must stay in front.
void* openSharedLibrary(const char* utf8Path, int* error);

/// Why the last `openSharedLibrary` opened nothing, in the system's own words where it has any.
/// UTF-8; only for the thread that called it.
std::string whyNotOpened();

/// The address of an exported symbol, or null. `handle` is not null.
void* findLibrarySymbol(void* handle, const char* name);

/// Gives one `openSharedLibrary` back. `handle` is not null.
void closeSharedLibrary(void* handle);

/// Keeps an open library mapped until the process ends, whatever is closed. `handle` is not null.
void pinSharedLibrary(void* handle);

/// Whether code of this library may run as the process's interpreter: where there is one global
/// symbol scope (ELF), two builds would run each other's code, so only the pinned one may. `handle`
/// is not null.
bool isAloneInSymbolScope(void* handle);

}  // namespace pelion_core::platform
