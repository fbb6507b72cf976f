#include "allocations.h"

#include <dlfcn.h>

#include <cstdlib>
#include <new>
#include <string_view>

namespace allocations {

int failing = 0;
std::int64_t blocks = 0;

// Extension modules share the operator too, and are not what is under test. The standard library
// allocates on behalf of its caller.
static bool isOurs(void* caller) {
  Dl_info info = {};
  if (dladdr(caller, &info) == 0) return false;
  const std::string_view object = info.dli_fname;
  return object.find("libpelion_core") != object.npos || object.find("libstdc++") != object.npos;
}

static bool failsNow(void* caller) { return failing > 0 && isOurs(caller) && --failing == 0; }

}  // namespace allocations

void* operator new(std::size_t size) {
  if (allocations::failsNow(__builtin_return_address(0))) throw std::bad_alloc();
  void* const block = std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  ++allocations::blocks;
  return block;
}

void operator delete(void* block) noexcept {
  if (block != nullptr) --allocations::blocks;
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
