// The part of the late host that is linked to the library.

#include <filesystem>

#include "pelion_core/pelion_core.h"

extern "C" __attribute__((visibility("default"))) bool start(const char* library) {
  const std::u16string path = std::filesystem::u8path(library).u16string();
  return loader::attemptToLoadPython(u"3.11", path, u"", u"", u"", true) == 0;
}

extern "C" __attribute__((visibility("default"))) bool isLoaded() {
  return loader::isPythonLoaded();
}
