// A part of a host that is loaded for a while and takes the library with it when it goes.

#include <pelion_core/pelion_core.h>

#include <filesystem>
#include <thread>

using namespace pelion_core;
using namespace pelion_core::api;

#if defined(_WIN32)
extern "C" __declspec(dllexport) int usePython();
#else
extern "C" __attribute__((visibility("default"))) int usePython();
#endif

// Zero when the library was fresh and did its work.
extern "C" int usePython() {
  if (loader::isPythonLoaded()) return 1;
  const std::u16string runtime = std::filesystem::u8path(STAND_IN).u16string();
  if (loader::attemptToLoadPython(u"3.11", runtime, u"/prog", u"/home", u"", true) != 0) return 2;
  // Blocks of freed handles are kept back by two threads: one that is over, one that is not.
  std::thread([] { primitive::pyCreateInt(1); }).join();
  primitive::pyCreateInt(1);
  interpreter::pyClose();
  return 0;
}
