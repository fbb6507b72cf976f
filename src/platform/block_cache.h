#pragma once

#include <cstddef>
#include <new>

/// Memory for the control blocks of handles. A handle lives for one call more often than not, and
/// the heap is then a tenth of what the call costs; so each thread keeps a few blocks back.
namespace pelion_core::platform {

#if defined(_WIN32)

/// Thread-local storage is emulated by MinGW's runtime at the price of the heap: no block is kept.
struct BlockCache {
  static constexpr std::size_t blockSize = 64;

  void* allocate() { return ::operator new(blockSize); }
  void release(void* memory) noexcept { ::operator delete(memory); }
};

inline BlockCache blockCache;

#else

/// A stack of free blocks of one size; trivial, so that using it needs no guard.
struct BlockCache {
  struct Block {
    Block* next;
  };

  static constexpr std::size_t blockSize = 64;
  static constexpr unsigned limit = 64;

  Block* first;
  unsigned count;
  bool isWatched;  ///< whether the blocks go with the thread, and with the library

  void* allocate() {
    if (first == nullptr) return ::operator new(blockSize);
    Block* const block = first;
    first = block->next;
    --count;
    return block;
  }

  void release(void* memory) noexcept {
    // Watched from here, since a thread may only release what others made.
    if (count >= limit || !(isWatched || watch())) return ::operator delete(memory);
    first = new (memory) Block{first};
    ++count;
  }

  /// Has the blocks freed when the thread ends or the library is unloaded. False when that cannot
  /// be arranged: no block may then be kept.
  bool watch() noexcept;

  /// Frees all blocks; from here on none is kept.
  void close() noexcept;
};

#if defined(__GLIBC__)
// One load instead of a call; the few bytes fit in what the loader reserves for such libraries.
extern thread_local BlockCache blockCache __attribute__((tls_model("initial-exec")));
#else
extern thread_local BlockCache blockCache;
#endif

#endif

}  // namespace pelion_core::platform
