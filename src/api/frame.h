#pragma once

#include "loader/instance.h"
#include "pelion_core/api/handle.h"
#include "platform/inline.h"
#include "python_api/py_api_impl.h"

namespace pelion_core::detail {

using python::pyArray;

/// Throws "Python API functions are not available.".
[[noreturn]] void failWithoutAPI();

/// Takes the interpreter lock and returns what the calls go through.
PELION_CORE_ALWAYS_INLINE PyAPIImpl* enter() {
  if (currentAPI == nullptr) failWithoutAPI();
  currentAPI->acquireLock();
  return currentAPI;
}

/// What `APIAccessor` is for hosts, over the concrete implementation: the frame then inlines to a
/// load, a test of the lock's depth and the hand-over itself, which is most of what a small
/// exported function costs.
class Frame {
 public:
  PELION_CORE_ALWAYS_INLINE Frame() : api_(enter()) {}
  PELION_CORE_ALWAYS_INLINE ~Frame() { api_->releaseLock(); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  PyAPIImpl* operator->() const { return api_; }
  PyAPIImpl& operator*() const { return *api_; }

 private:
  PyAPIImpl* api_;
};

}  // namespace pelion_core::detail
