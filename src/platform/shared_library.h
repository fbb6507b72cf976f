#pragma once

namespace pelion_core::platform {

/// Loads a shared library by its UTF-8 path. Writes 0 to `error` exactly when a handle comes back.
///
/// Where all libraries share one symbol scope (ELF), two interpreter builds in a process would run
/// each other's code: there, once a library was pinned, opening any other one is an error.
void* openSharedLibrary(const char* utf8Path, int* error);

/// The address of an exported symbol, or null. `handle` is not null.
void* findLibrarySymbol(void* handle, const char* name);

/// Gives one `openSharedLibrary` back. `handle` is not null.
void closeSharedLibrary(void* handle);

/// Keeps an open library mapped until the process ends, whatever is closed. `handle` is not null.
void pinSharedLibrary(void* handle);

}  // namespace pelion_core::platform
