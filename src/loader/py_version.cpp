#include "loader/py_version.h"

#include "platform/process_registry.h"

namespace pelion_core {

using platform::RegistryScope;

const PyVersionPerProcess& currentPyVersion() {
  return platform::registry::get<PyVersionPerProcess>(RegistryScope::Process);
}

PyVersionPerProcess& getOrCreatePyVersion() {
  return platform::registry::getOrCreate<PyVersionPerProcess>(RegistryScope::Process);
}

}  // namespace pelion_core
