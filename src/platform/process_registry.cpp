#include "platform/process_registry.h"

#include <array>
#include <map>
#include <memory>
#include <mutex>

namespace pelion_core::platform::registry {
namespace {

struct Registry {
  using Objects = std::map<TypeId, std::unique_ptr<void, Deleter>>;

  std::mutex mutex;
  std::array<Objects, 2> scopes;

  Objects& objects(RegistryScope scope) { return scopes[static_cast<std::size_t>(scope)]; }
};

// Never destroyed: other statics may still ask while the process ends.
Registry& theRegistry() {
  static Registry& registry = *new Registry;
  return registry;
}

}  // namespace

void* find(RegistryScope scope, TypeId id) {
  Registry& registry = theRegistry();
  const std::lock_guard lock(registry.mutex);
  const auto& objects = registry.objects(scope);
  const auto found = objects.find(id);
  return found != objects.end() ? found->second.get() : nullptr;
}

void* findOrInsert(RegistryScope scope, TypeId id, void* candidate, Deleter deleter) {
  Registry& registry = theRegistry();
  const std::lock_guard lock(registry.mutex);
  auto& objects = registry.objects(scope);
  const auto found = objects.find(id);
  if (found != objects.end()) return found->second.get();
  auto& slot = objects.emplace(id, std::unique_ptr<void, Deleter>(nullptr, deleter)).first->second;
  slot.reset(candidate);
  return candidate;
}

void* findOrFail(RegistryScope scope, TypeId id) {
  void* const stored = find(scope, id);
  if (stored == nullptr) throw RegistryError("The process registry holds no object of this type.");
  return stored;
}

}  // namespace pelion_core::platform::registry
