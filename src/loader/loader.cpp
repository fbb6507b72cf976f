#include "pelion_core/loader/loader.h"

#include <memory>

#include "loader/instance.h"
#include "loader/py_version.h"
#include "platform/dll_directory.h"
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

int attemptToLoadPython(const std::u16string& version, const std::u16string& library,
                        const std::u16string& executable, const std::u16string& home,
                        const std::u16string& path, bool flag) {
  constexpr int started = 0;
  constexpr int notLoaded = -1;
  constexpr int alreadyInitialised = -2;

  const PythonLibHolder holder(library);
  if (!holder.startable()) return notLoaded;
  platform::addDllDirectoryOf(library);

  const PythonFuncs funcs(holder);
  if (!funcs.acquired()) return notLoaded;
  const PythonThreeFuncs threeFuncs(holder);
  if (!threeFuncs.acquired()) return notLoaded;

  instanceOwner.reset(std::make_unique<detail::PyAPIImpl>(funcs, threeFuncs));
  if (currentAPI->Py_IsInitialized()) {
    instanceOwner.reset();
    return alreadyInitialised;
  }
  currentAPI->initialize(executable, home, path);
  holder.keepLoaded();

  PyVersionPerProcess& record = getOrCreatePyVersion();
  record.version = version;
  record.flag = flag;
  return started;
}

python::IPythonAPI* getAPI() { return currentAPI; }

bool isPythonLoaded() { return getAPI() != nullptr; }

}  // namespace loader
