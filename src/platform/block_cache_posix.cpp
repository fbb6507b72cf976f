#include <pthread.h>

#include <mutex>
#include <unordered_set>

#include "platform/block_cache.h"

namespace pelion_core::platform {

thread_local BlockCache blockCache = {nullptr, 0, false};

namespace {

// Knows every thread's cache. A thread_local destructor would be simpler, but one that is
// registered keeps the library mapped, closed or not, until its thread ends.
class Watcher {
 public:
  Watcher() noexcept { hasKey_ = pthread_key_create(&key_, &threadEnds) == 0; }

  ~Watcher() {
    const std::lock_guard lock(mutex_);
    for (BlockCache* const cache : caches_) cache->close();
    if (hasKey_) pthread_key_delete(key_);
    hasKey_ = false;
    isGone = true;
  }

  bool add(BlockCache& cache) {
    const std::lock_guard lock(mutex_);
    if (!hasKey_ || pthread_setspecific(key_, &cache) != 0) return false;
    caches_.insert(&cache);
    return true;
  }

  static inline bool isGone = false;  // for a handle that is released after the library's statics

 private:
  static void threadEnds(void* cache);

  void remove(BlockCache& cache) {
    const std::lock_guard lock(mutex_);
    caches_.erase(&cache);
    cache.close();
  }

  std::mutex mutex_;
  pthread_key_t key_ = {};
  bool hasKey_ = false;
  std::unordered_set<BlockCache*> caches_;
};

Watcher watcher;

void Watcher::threadEnds(void* cache) { watcher.remove(*static_cast<BlockCache*>(cache)); }

}  // namespace

bool BlockCache::watch() noexcept {
  try {
    isWatched = !Watcher::isGone && watcher.add(*this);
  } catch (...) {
    isWatched = false;  // no memory to remember it in
  }
  return isWatched;
}

void BlockCache::close() noexcept {
  while (first != nullptr) ::operator delete(allocate());
  count = limit;
}

}  // namespace pelion_core::platform
