#pragma once

#include "pelion_core/platform/export.h"
#include "pelion_core/python_api/ipython_api.h"

namespace pelion_core::api {

/// The frame in which the interpreter is entered: holds the interpreter lock for its lifetime. A
/// host that makes many calls in a row may hold one around them, so that the lock changes hands
/// once. Not for several threads at a time.
class PELION_CORE_EXPORT APIAccessor {
 public:
  /// Throws "Python API functions are not available." when nothing is loaded.
  APIAccessor();
  /// Gives the lock back; a failure to do so ends the process.
  ~APIAccessor();
  APIAccessor(const APIAccessor&) = delete;
  APIAccessor& operator=(const APIAccessor&) = delete;

  /// The interface to the interpreter, never null.
  python::IPythonAPI* operator->() const { return api_; }

 private:
  python::IPythonAPI* api_;
};

}  // namespace pelion_core::api
