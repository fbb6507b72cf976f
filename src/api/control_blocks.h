#pragma once

#include <cstddef>
#include <new>

/// Memory for the control blocks of handles. A handle lives for one call more often than not, and
/// the heap is then a tenth of what the call costs; so each thread keeps a few blocks back.
namespace pelion_core::api {

/// A stack of free blocks of one size; trivial, so that using it needs no guard.
struct SpareBlocks {
  struct Block {
    Block* next;
  };

  static constexpr std::size_t blockSize = 64;
  static constexpr unsigned limit = 64;

  Block* first;
  unsigned count;
  bool swept;  ///< whether they go with the thread

  void* allocate() {
    if (first == nullptr) return ::operator new(blockSize);
    Block* const block = first;
    first = block->next;
    --count;
    return block;
  }

  void release(void* memory) noexcept {
    if (count >= limit) return ::operator delete(memory);
    if (!swept) sweepAtEnd();  // here, since a thread may only release what others made
    first = new (memory) Block{first};
    ++count;
  }

  /// Sees to it that the blocks go with the thread.
  static void sweepAtEnd() noexcept;
};

#if defined(_WIN32)
extern thread_local SpareBlocks spareBlocks;
#else
// One load instead of a call; the few bytes fit in what the loader reserves for such libraries.
extern thread_local SpareBlocks spareBlocks __attribute__((tls_model("initial-exec")));
#endif

/// An allocator for one control block at a time, as `boost::shared_ptr` takes it.
template <class T>
struct ControlBlockAllocator {
  using value_type = T;

  ControlBlockAllocator() = default;
  template <class U>
  ControlBlockAllocator(const ControlBlockAllocator<U>&) {}

  T* allocate(std::size_t) {
    static_assert(sizeof(T) <= SpareBlocks::blockSize);
    return static_cast<T*>(spareBlocks.allocate());
  }
  void deallocate(T* memory, std::size_t) noexcept { spareBlocks.release(memory); }

  friend bool operator==(ControlBlockAllocator, ControlBlockAllocator) { return true; }
  friend bool operator!=(ControlBlockAllocator, ControlBlockAllocator) { return false; }
};

}  // namespace pelion_core::api
