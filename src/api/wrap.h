#pragma once

#include "api/frame.h"
#include "pelion_core/api/handle.h"
#include "platform/block_cache.h"

namespace pelion_core::api {

/// An allocator for one control block at a time, as `boost::shared_ptr` takes it.
template <class T>
struct ControlBlockAllocator {
  using value_type = T;

  ControlBlockAllocator() = default;
  template <class U>
  ControlBlockAllocator(const ControlBlockAllocator<U>&) {}

  T* allocate(std::size_t) {
    static_assert(sizeof(T) <= platform::BlockCache::blockSize);
    return static_cast<T*>(platform::blockCache.allocate());
  }
  void deallocate(T* memory, std::size_t) noexcept { platform::blockCache.release(memory); }

  friend bool operator==(ControlBlockAllocator, ControlBlockAllocator) { return true; }
  friend bool operator!=(ControlBlockAllocator, ControlBlockAllocator) { return false; }
};

/// Takes a new reference over. Called inside the frame that made it.
inline PyHandle wrap(PyObject* newReference) {
  return PyHandle(toPyArray(newReference), PyArrayReleaser(), ControlBlockAllocator<char>());
}

}  // namespace pelion_core::api
