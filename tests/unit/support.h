#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "fake_runtime.h"
#include "pelion_core/pelion_core.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

using namespace pelion_core;
using Calls = std::vector<std::string>;
using Counts = std::map<std::string, std::int64_t>;  ///< of references, by label

inline std::u16string utf16Path(const std::string& utf8) {
  return std::filesystem::u8path(utf8).u16string();
}

inline const std::u16string fakePath = utf16Path(FAKE_RUNTIME);

/// Whether the system itself says that the library is in the process.
inline bool isMapped(const std::u16string& library) {
  const std::filesystem::path path(library);
#if defined(_WIN32)
  return GetModuleHandleW(path.filename().c_str()) != nullptr;
#else
  void* const handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
#endif
}

inline fake::Runtime& control(const PythonLibHolder& holder) {
  return *reinterpret_cast<fake::Control>(holder.findSymbol("fake_control"))();
}

/// The message with which `action` fails; empty when it does not.
template <class Action>
std::string failure(Action action) {
  try {
    action();
  } catch (const InternalPyException& error) {
    return error.what();
  }
  return {};
}

constexpr char nullPassed[] = "NULL pointer passed to Python.";

/// The stand-in loaded, and the implementation over it without the loader.
class FakeRuntimeTest : public ::testing::Test {
 protected:
  PythonLibHolder holder{fakePath};
  fake::Runtime& runtime = control(holder);
  PythonFuncs funcs{holder};
  PythonThreeFuncs three{holder};
  std::unique_ptr<python::IPythonAPI> api{createIPythonAPI(funcs, three)};
};

inline int loadFake(const std::u16string& library = fakePath,
                    const std::u16string& version = u"2.7", const std::u16string& home = u"/home",
                    const std::u16string& path = u"") {
  return loader::attemptToLoadPython(version, library, u"/prog", home, path, true);
}

/// The stand-in started through the loader.
class StartedFakeTest : public FakeRuntimeTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(loadFake(), 0);
    api::APIAccessor();  // gives up the lock that the start left taken
    runtime.take();
    runtime.objects.clear();
    runtime.named.clear();
  }
};
