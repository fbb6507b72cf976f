#pragma once

#include <atomic>
#include <initializer_list>
#include <mutex>
#include <utility>

#include "pelion_core/api/handle.h"
#include "pelion_core/python_api/internal_py_exception.h"
#include "pelion_core/python_api/ipython_api.h"

/// What the classes of this layer share; nothing here is meant for hosts.
namespace pelion_core::host::detail {

/// The C API while a session is open, else null.
extern ::python::IPythonAPI* api;

/// Tells threads apart: an address of each one's own.
inline thread_local char thisThread = 0;

/// The layer's lock: one host thread at a time, which may take it again. One atomic operation that
/// others can see when nobody waits, since every operation and every end of an object takes it.
class Lock {
 public:
  /// Waits for the thread that has the lock, unless it is this one.
  void lock() {
    if (!isHere() && !take()) wait();
    ++depth_;
  }
  /// Undoes one `lock`.
  void unlock() {
    if (--depth_ != 0) return;
    owner_.store(nullptr, std::memory_order_release);
    if (waiting_.load(std::memory_order_relaxed) != 0) wake();
  }
  /// Whether this thread has the lock.
  bool isHere() const { return owner_.load(std::memory_order_relaxed) == &thisThread; }

 private:
  bool take() {
    const char* free = nullptr;
    return owner_.compare_exchange_strong(free, &thisThread, std::memory_order_acquire,
                                          std::memory_order_relaxed);
  }
  void wait();
  void wake();

  std::atomic<const char*> owner_{nullptr};
  std::atomic<unsigned> waiting_{0};
  unsigned depth_ = 0;
};

/// The one lock of the process.
extern Lock lock;

/// An operation on Python: holds the layer's lock and the interpreter's. Throws
/// `std::logic_error` when no session is open.
class Operation {
 public:
  Operation() : guard_(lock) {
    if (api == nullptr) noSession();
    api->acquireLock();
  }
  ~Operation() { api->releaseLock(); }

 private:
  [[noreturn]] static void noSession();

  std::lock_guard<Lock> guard_;
};

/// Owns one reference to an object, in an operation. Costs no control block, as a handle does.
class Owned {
 public:
  Owned() = default;
  explicit Owned(PyObject* newReference) : object_(newReference) {}
  Owned(Owned&& other) noexcept : object_(other.release()) {}
  Owned& operator=(Owned&& other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Owned() {
    if (object_ != nullptr) api->Py_DecRef(object_);
  }

  operator PyObject*() const { return object_; }
  PyObject* release() { return std::exchange(object_, nullptr); }

 private:
  PyObject* object_ = nullptr;
};

/// One more reference.
inline Owned share(PyObject* object) {
  api->Py_IncRef(object);
  return Owned(object);
}
inline Owned share(const PyHandle& handle) { return share(toPyObject(handle.get())); }

/// What an `Object` shares with its copies. The session lists them all, and empties them when it
/// closes; so none of them touches a Python that is gone.
struct Reference {
  PyObject* object;             ///< null after the session
  PyHandle handle;              ///< over the same, once it was asked for
  std::atomic<unsigned> users;  ///< objects that share this
  Reference* previous;          ///< in the session's list
  Reference* next;              ///< in the session's list
};

/// Takes an object into the session's list, for one user. In an operation.
Reference* enlist(Owned object);

/// Gives a reference up after its last user is gone. From any thread.
void retire(Reference* reference) noexcept;

/// Throws the pending Python error as `Error`; without one, the exception that is being handled.
[[noreturn]] void rethrow();

/// Throws the pending Python error, if there is one.
void throwPending();

/// `action()` as an operation, where a Python error becomes an `Error`.
template <class Action>
decltype(auto) perform(Action&& action) {
  const Operation operation;
  try {
    return action();
  } catch (const InternalPyException&) {
    rethrow();
  }
}

/// A tuple of objects, each with a reference of its own.
template <class Items>
Owned makeTuple(const Items& items) {
  Owned tuple(api->PyTuple_New(static_cast<std::int64_t>(items.size())));
  std::int64_t index = 0;
  for (PyObject* const item : items) api->setTupleItem(tuple, index++, item);
  return tuple;
}

/// The functions of the layer that are written in Python, and builtins that it calls: the names in
/// C++ and there.
// clang-format off
#define PELION_CORE_HELPERS(X)                                                                   \
  X(none, "none")               X(append, "append")            X(find, "find")                   \
  X(evaluate, "evaluate")       X(run, "run")                  X(describe, "describe")           \
  X(iterate, "iterate")         X(next, "next")                X(end, "end")                     \
  X(length, "len")              X(contains, "contains")        X(remove, "delitem")              \
  X(represent, "represent")     X(display, "display")          X(truth, "truth")                 \
  X(index, "index")             X(list, "items_of")            X(items, "pairs_of")              \
  X(set, "set")                 X(block, "block")              X(ndarray, "ndarray")             \
  X(makeDuration, "make_duration") X(durationOf, "duration_of") X(makeInstant, "make_instant")   \
  X(instantOf, "instant_of")    X(splitTexts, "split_texts")   X(joinTexts, "join_texts")        \
  X(textArray, "text_array")    X(textsOf, "texts_of")         X(frame, "frame")                 \
  X(columns, "columns")         X(makeFunction, "Function")    X(connect, "connect")             \
  X(redirect, "redirect")

#define PELION_CORE_ENUMERATOR(name, python) name,
enum class Helper { PELION_CORE_HELPERS(PELION_CORE_ENUMERATOR) count };
#undef PELION_CORE_ENUMERATOR
// clang-format on

/// The function itself, of the open session.
PyObject* helper(Helper name);

/// `helper(*arguments)`.
Owned callHelper(Helper name, std::initializer_list<PyObject*> arguments);

}  // namespace pelion_core::host::detail
