// A host whose own static outlives the library's: it opens the library, by way of the module, only
// after that static was made, so the library's statics go first when the process ends.

#include <dlfcn.h>

#include <cstdlib>

namespace {

using Ask = bool (*)();
Ask askWhetherLoaded = nullptr;

struct LateAsker {
  ~LateAsker() {
    if (askWhetherLoaded == nullptr || askWhetherLoaded()) std::_Exit(1);
  }
} lateAsker;

}  // namespace

int main(int, char** arguments) {
  void* const module = dlopen(arguments[1], RTLD_NOW);
  if (module == nullptr) return 2;
  const auto start = reinterpret_cast<bool (*)(const char*)>(dlsym(module, "start"));
  askWhetherLoaded = reinterpret_cast<Ask>(dlsym(module, "isLoaded"));
  return start(arguments[2]) && askWhetherLoaded() ? 0 : 3;
}
