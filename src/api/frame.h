#pragma once

#include "loader/instance.h"
#include "python_api/py_api_impl.h"

namespace pelion_core::api {

/// Throws "Python API functions are not available.".
[[noreturn]] void failWithoutAPI();

/// What `APIAccessor` is for hosts, over the concrete implementation: the frame then inlines to a
/// load, a test of the lock's depth and the hand-over itself, which is most of what a small
/// exported function costs.
class Frame {
 public:
  [[gnu::always_inline]] Frame() : api_(currentAPI) {
    if (api_ == nullptr) failWithoutAPI();
    api_->acquireLock();
  }
  [[gnu::always_inline]] ~Frame() { api_->releaseLock(); }
  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  PyAPIImpl* operator->() const { return api_; }
  PyAPIImpl& operator*() const { return *api_; }

 private:
  PyAPIImpl* api_;
};

}  // namespace pelion_core::api
