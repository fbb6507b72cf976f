#pragma once

#include <stdexcept>
#include <typeindex>

namespace pelion_core::platform {

/// Find-or-fail found nothing.
class RegistryError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

enum class RegistryScope { Process, Engine };

/// At most one object for each type and scope, owned by the registry for the life of the process.
/// All operations may run concurrently.
namespace registry {

using TypeId = std::type_index;
using Deleter = void (*)(void*);

/// The stored object, or null.
void* find(RegistryScope scope, TypeId id);

/// Stores `candidate` unless an object is there, and returns the stored one. A candidate that is
/// not taken stays with the caller.
void* findOrInsert(RegistryScope scope, TypeId id, void* candidate, Deleter deleter);

/// The stored object; throws `RegistryError` when there is none.
void* findOrFail(RegistryScope scope, TypeId id);

/// The object of type `T`, made with its default constructor when there is none.
template <class T>
T& getOrCreate(RegistryScope scope) {
  const TypeId id = typeid(T);
  void* stored = find(scope, id);
  if (stored == nullptr) {
    T* const candidate = new T();
    const Deleter destroy = [](void* object) { delete static_cast<T*>(object); };
    try {
      stored = findOrInsert(scope, id, candidate, destroy);
    } catch (...) {
      destroy(candidate);
      throw;
    }
    if (stored != candidate) destroy(candidate);
  }
  // Not null: findOrInsert returns the candidate or what was there before.
  // cppcheck-suppress nullPointerRedundantCheck
  return *static_cast<T*>(stored);
}

/// The object of type `T`; throws `RegistryError` when there is none.
template <class T>
T& get(RegistryScope scope) {
  return *static_cast<T*>(findOrFail(scope, typeid(T)));
}

}  // namespace registry
}  // namespace pelion_core::platform
