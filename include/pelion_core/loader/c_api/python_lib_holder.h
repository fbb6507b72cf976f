#pragma once

#include <boost/shared_ptr.hpp>
#include <string>

#include "pelion_core/platform/export.h"

namespace pelion_core {

/// Owns one loaded Python runtime library. Copies share the library; it is unloaded when the last
/// copy goes, except that a runtime that was started stays for the life of the process.
class PythonLibHolder {
 public:
  /// Loads `library`, a UTF-16 path that is passed to the system as it is: nothing is added to it,
  /// though the system may search for a bare name. A failure to load shows only as
  /// `loaded() == false`; throws nothing but std::bad_alloc.
  PELION_CORE_EXPORT PythonLibHolder(const std::u16string& library);

  /// Whether the library is loaded.
  bool loaded() const noexcept { return static_cast<bool>(handle_); }

  /// The address of an exported function or object; null when there is none, or nothing is loaded.
  PELION_CORE_EXPORT void* findSymbol(const char* name) const;

  /// The path exactly as it was given, also after a failed load.
  std::u16string getLibraryName() const { return name_; }

  /// Whether an interpreter of this library can be started: false when nothing is loaded, and on
  /// ELF systems once another runtime was started, with which it would share its symbols.
  PELION_CORE_EXPORT bool startable() const;

  /// Keeps the library mapped until the process ends, whatever the holders do. Unmapping a runtime
  /// that has started crashes the process when one of its threads still runs at exit.
  PELION_CORE_EXPORT void keepLoaded() const;

 private:
  std::u16string name_;
  boost::shared_ptr<void> handle_;
};

}  // namespace pelion_core
