#include "pelion_core/loader/c_api/python_lib_holder.h"

#include "platform/shared_library.h"
#include "platform/text.h"

namespace pelion_core {

PythonLibHolder::PythonLibHolder(const std::u16string& library) : name_(library) {
  int error = 0;
  void* const handle = platform::openSharedLibrary(platform::toUtf8(library).c_str(), &error);
  if (error == 0 && handle != nullptr) handle_.reset(handle, &platform::closeSharedLibrary);
}

void* PythonLibHolder::findSymbol(const char* name) const {
  return loaded() ? platform::findLibrarySymbol(handle_.get(), name) : nullptr;
}

bool PythonLibHolder::startable() const {
  return loaded() && platform::isAloneInSymbolScope(handle_.get());
}

void PythonLibHolder::keepLoaded() const {
  if (loaded()) platform::pinSharedLibrary(handle_.get());
}

}  // namespace pelion_core
