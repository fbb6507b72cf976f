#pragma once

#include <initializer_list>
#include <type_traits>
#include <utility>

#include "api/frame.h"
#include "platform/block_cache.h"

/// Interpreter objects inside the library. A function takes `Borrowed` objects, owns what it makes
/// as a `Reference`, and hands a `PyHandle` out.
namespace pelion_core::detail {

class Reference;
struct Keyword;

/// An object that somebody else keeps alive, in whichever form it comes.
class Borrowed {
 public:
  // Made silently: that the forms differ is nobody's business inside.
  Borrowed(PyObject* object) : object_(object) {}
  Borrowed(pyArray* object) : object_(toPyObject(object)) {}
  Borrowed(const PyHandle& handle) : object_(toPyObject(handle.get())) {}
  inline Borrowed(const Reference& reference);

  operator PyObject*() const { return object_; }

 private:
  PyObject* object_;
};

/// Owns one reference to an object. Costs no control block, as a handle does, and may outlive the
/// frame that it was made in.
class Reference {
 public:
  Reference() = default;
  explicit Reference(PyObject* newReference) : object_(newReference) {}
  Reference(Reference&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  Reference& operator=(Reference&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Reference() {
    if (object_ == nullptr) return;
    const Frame api;
    api->Py_DecRef(object_);
  }

  PyObject* get() const { return object_; }

  /// Drops the reference in a frame that is there; what a hot path does in place of the destructor,
  /// which opens one.
  void drop(const Frame& api) {
    if (object_ != nullptr) api->Py_DecRef(std::exchange(object_, nullptr));
  }

  /// `object(*args, **kwargs)`. The language evaluates the object before the arguments, and these
  /// in their order: an expression fails where the Python expression would.
  Reference operator()(std::initializer_list<Borrowed> args = {},
                       std::initializer_list<Keyword> kwargs = {}) const;

  /// Hands the reference to the host.
  operator PyHandle() &&;

 private:
  PyObject* object_ = nullptr;
};

inline Borrowed::Borrowed(const Reference& reference) : object_(reference.get()) {}

/// `name=value`, or an item of a dictionary.
struct Keyword {
  Borrowed name, value;
};

/// An allocator for one control block at a time, as `boost::shared_ptr` takes it.
template <class T>
struct ControlBlockAllocator {
  using value_type = T;

  ControlBlockAllocator() = default;
  template <class U>
  ControlBlockAllocator(const ControlBlockAllocator<U>&) {}

  T* allocate(std::size_t) {
    static_assert(sizeof(T) <= platform::BlockCache::blockSize);
    return static_cast<T*>(platform::blockCache.allocate());
  }
  void deallocate(T* memory, std::size_t) noexcept { platform::blockCache.release(memory); }

  friend bool operator==(ControlBlockAllocator, ControlBlockAllocator) { return true; }
  friend bool operator!=(ControlBlockAllocator, ControlBlockAllocator) { return false; }
};

/// A handle over a new reference, which it drops when there is no memory for a control block.
inline PyHandle handleOf(PyObject* newReference) {
  return PyHandle(toPyArray(newReference), api::PyArrayReleaser(), ControlBlockAllocator<char>());
}

inline Reference::operator PyHandle() && { return handleOf(std::exchange(object_, nullptr)); }

/// A tuple of objects, each with a reference of its own.
template <class Items>
Reference newTuple(const Frame& api, const Items& items) {
  Reference tuple(api->PyTuple_New(cSize(items.size())));
  std::int64_t index = 0;
  for (const auto& item : items) api->setTupleItem(tuple.get(), index++, Borrowed(item));
  return tuple;
}

/// A dictionary of pairs (key, value), in their order.
template <class Items>
Reference newDict(const Frame& api, const Items& items) {
  Reference dict(api->PyDict_New());
  for (const auto& [key, value] : items) {
    api->PyObject_SetItem(dict.get(), Borrowed(key), Borrowed(value));
  }
  return dict;
}

/// `callable(*args, **kwargs)`.
template <class Args, class Kwargs>
Reference callWith(Borrowed callable, const Args& args, const Kwargs& kwargs) {
  const Frame api;
  Reference tuple = newTuple(api, args);
  Reference dict = newDict(api, kwargs);
  Reference result(api->PyObject_Call(callable, tuple.get(), dict.get()));
  dict.drop(api);
  tuple.drop(api);
  return result;
}

inline Reference Reference::operator()(std::initializer_list<Borrowed> args,
                                       std::initializer_list<Keyword> kwargs) const {
  return callWith(*this, args, kwargs);
}

// One operation of the interface in a frame of its own:
// `make<&PyAPIImpl::PyFloat_FromDouble>(0.5)`. Which of the three says what becomes of the result.

/// A host's argument as an operation takes it.
template <class Argument>
decltype(auto) inside(const Argument& argument) {
  if constexpr (std::is_convertible_v<const Argument&, Borrowed>) {
    return static_cast<PyObject*>(Borrowed(argument));
  } else {
    return (argument);
  }
}

/// A plain result.
template <auto operation, class... Args>
PELION_CORE_ALWAYS_INLINE auto perform(const Args&... args) {
  const Frame api;
  return ((*api).*operation)(inside(args)...);
}

/// A new object for the host.
template <auto operation, class... Args>
PELION_CORE_ALWAYS_INLINE PyHandle make(const Args&... args) {
  const Frame api;
  return handleOf(((*api).*operation)(inside(args)...));
}

/// A new object for the library.
template <auto operation, class... Args>
Reference own(const Args&... args) {
  const Frame api;
  return Reference(((*api).*operation)(inside(args)...));
}

}  // namespace pelion_core::detail
