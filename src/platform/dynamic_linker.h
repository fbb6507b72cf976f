#pragma once

/// What `dlopen` leaves to each system that has it.
namespace pelion_core::platform {

/// Whether the dynamic linker would end the process over this file instead of refusing it.
bool isCutShort(const char* path);

/// The name under which the dynamic linker knows an open library, or null.
const char* nameOfOpened(void* handle);

}  // namespace pelion_core::platform
