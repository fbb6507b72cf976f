#pragma once

#include "pelion_core/loader/c_api/python_lib_holder.h"

namespace pelion_core {

/// Looks symbols up and remembers whether any was missing, so that a table of look-ups can be
/// judged with one question at its end.
class FindSymbolDecorator {
 public:
  /// The address of `name`, or null; a null makes `acquired()` false for good.
  void* findSymbol(const PythonLibHolder& library, const char* name) {
    void* const address = library.findSymbol(name);
    if (address == nullptr) acquired_ = false;
    return address;
  }

  /// For a function that has two names in different builds: the address of `name`, else that of
  /// `alternative`. Only the absence of both makes `acquired()` false.
  void* findSymbol(const PythonLibHolder& library, const char* name, const char* alternative) {
    void* const address = library.findSymbol(name);
    return address != nullptr ? address : findSymbol(library, alternative);
  }

  /// Whether every look-up so far found its symbol.
  bool acquired() const noexcept { return acquired_; }

 private:
  bool acquired_ = true;
};

}  // namespace pelion_core
