// The allocation functions of the fault tests. In a file of their own: a compiler that sees them
// inlined beside their callers takes them for mismatched.

#include <dlfcn.h>

#include <cstdlib>
#include <new>
#include <string_view>

int failingAllocation = 0;

// Extension modules share the operator too, and are not what is under test. The standard library
// allocates on behalf of its caller.
static bool isOurs(void* caller) {
  Dl_info info = {};
  const std::string_view object = dladdr(caller, &info) != 0 ? info.dli_fname : "";
  return object.find("libpelion_core") != object.npos || object.find("libstdc++") != object.npos;
}

void* operator new(std::size_t size) {
  const bool fails = failingAllocation > 0 && isOurs(__builtin_return_address(0));
  void* const block =
      fails && --failingAllocation == 0 ? nullptr : std::malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
