#include "pelion_core/loader/loader.h"

#include <memory>

#include "loader/instance.h"
#include "loader/py_version.h"
#include "platform/dll_directory.h"
#include "platform/shared_library.h"
#include "platform/text.h"
#include "python_api/py_api_impl.h"

namespace pelion_core::detail {

PyAPIImpl* currentAPI = nullptr;

namespace {

// Owns what `currentAPI` names. The pointer is an object of its own, so that it still reads as null
// when a host's static asks after the owner was destroyed.
class InstanceOwner {
 public:
  ~InstanceOwner() { reset(); }

  void reset(std::unique_ptr<PyAPIImpl> instance = nullptr) {
    currentAPI = instance.get();
    instance_ = std::move(instance);
  }

 private:
  std::unique_ptr<PyAPIImpl> instance_;
};

InstanceOwner instanceOwner;

}  // namespace
}  // namespace pelion_core::detail

namespace loader {

using namespace pelion_core;
using detail::currentAPI;
using detail::instanceOwner;

namespace {

std::string lastFailure;

// What the library lacks of the C API, all of it.
std::string missingNames(const PythonLibHolder& library) {
  std::string missing;
  const auto require = [&](const char* name) {
    if (library.findSymbol(name) != nullptr) return;
    missing += missing.empty() ? "" : ", ";
    missing += name;
  };
#define PELION_PYTHON_TYPE(name) require(#name "_Type");
#include "pelion_core/loader/c_api/python_types.def"
#define PELION_C_API(result, name, parameters, arguments, failure) require(#name);
#define PELION_C_API_ADAPTED PELION_C_API
#include "pelion_core/loader/c_api/python_funcs.def"
#define PELION_C_API(result, name, parameters, arguments, failure) require(#name);
#define PELION_C_API_ADAPTED PELION_C_API
#include "pelion_core/loader/c_api/python_three_funcs.def"
  return missing;
}

}  // namespace

int attemptToLoadPython(const std::u16string& version, const std::u16string& library,
                        const std::u16string& executable, const std::u16string& home,
                        const std::u16string& path, bool flag) {
  constexpr int started = 0;
  constexpr int notLoaded = -1;
  constexpr int alreadyInitialised = -2;

  const auto end = [](int result, std::string why = {}) {
    lastFailure = std::move(why);
    return result;
  };

  const PythonLibHolder holder(library);
  if (!holder.loaded()) return end(notLoaded, platform::whyNotOpened());
  const std::string file = platform::toUtf8(library);
  if (!holder.startable()) {
    return end(notLoaded, file + ": another Python was started in this process already");
  }
  platform::addDllDirectoryOf(library);

  const PythonFuncs funcs(holder);
  const PythonThreeFuncs threeFuncs(holder);
  if (!funcs.acquired() || !threeFuncs.acquired()) {
    return end(notLoaded, file + " lacks names of Python 3's C API: " + missingNames(holder));
  }

  instanceOwner.reset(std::make_unique<detail::PyAPIImpl>(funcs, threeFuncs));
  if (currentAPI->Py_IsInitialized()) {
    instanceOwner.reset();
    return end(alreadyInitialised, file + ": this Python is running in this process already");
  }
  currentAPI->initialize(executable, home, path);
  holder.keepLoaded();

  PyVersionPerProcess& record = getOrCreatePyVersion();
  record.version = version;
  record.flag = flag;
  return end(started);
}

std::string whyNotLoaded() { return lastFailure; }

python::IPythonAPI* getAPI() { return currentAPI; }

bool isPythonLoaded() { return getAPI() != nullptr; }

}  // namespace loader
