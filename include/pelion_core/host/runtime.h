#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "pelion_core/api/api_accessor.h"
#include "pelion_core/api/handle.h"
#include "pelion_core/python_api/internal_py_exception.h"

/// What the classes of this layer share; nothing here is meant for hosts.
namespace pelion_core::host::detail {

/// The layer's lock: one host thread at a time, which may take it again. Two atomic operations when
/// nobody waits, since every operation and every end of an object takes it.
class Lock {
 public:
  /// Waits for the thread that has the lock, unless it is this one.
  void lock() {
    const std::thread::id here = std::this_thread::get_id();
    if (owner_.load(std::memory_order_relaxed) != here && !take(here)) wait(here);
    ++depth_;
  }
  /// Undoes one `lock`.
  void unlock() {
    if (--depth_ != 0) return;
    owner_.store(std::thread::id());
    if (waiting_.load() != 0) wake();
  }
  /// Whether this thread has the lock.
  bool isHere() const {
    return owner_.load(std::memory_order_relaxed) == std::this_thread::get_id();
  }

 private:
  bool take(std::thread::id here) {
    std::thread::id free;
    return owner_.compare_exchange_strong(free, here);
  }
  void wait(std::thread::id here);
  void wake();

  std::atomic<std::thread::id> owner_{};  // nobody's value
  std::atomic<unsigned> waiting_{0};
  unsigned depth_ = 0;
  std::mutex mutex_;
  std::condition_variable freed_;
};

/// The one lock of the process.
Lock& lock();

/// An operation on Python: holds the layer's lock and the interpreter's. Throws
/// `std::logic_error` when no session is open.
class Operation {
 public:
  Operation();
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

 private:
  /// Between the two locks: the interpreter's is there only while a session is open.
  struct OpenSession {
    OpenSession();
  };
  std::lock_guard<Lock> guard_;
  OpenSession session_;
  api::APIAccessor interpreter_;
};

/// What an `Object` shares with its copies. The session lists them all, and empties them when it
/// closes; so none of them touches a Python that is gone.
struct Reference {
  PyHandle handle;              ///< empty after the session
  std::atomic<unsigned> users;  ///< objects that share this
  Reference* previous;          ///< in the session's list
  Reference* next;              ///< in the session's list
};

/// Takes a handle into the session's list, for one user. In an operation.
Reference* enlist(PyHandle handle);

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

/// The functions of the layer that are written in Python, and builtins that it calls.
enum class Helper {
  find,
  evaluate,
  run,
  describe,
  iterate,
  next,
  end,
  length,
  contains,
  remove,
  represent,
  display,
  truth,
  index,
  list,
  set,
  items,
  makeDuration,
  durationOf,
  makeInstant,
  instantOf,
  block,
  ndarray,
  splitTexts,
  joinTexts,
  textArray,
  textsOf,
  frame,
  columns,
  makeFunction,
  connect,
  redirect,
  count  ///< how many there are
};

/// The function itself, of the open session.
const PyHandle& helper(Helper name);

/// `helper(*arguments)`.
PyHandle callHelper(Helper name, const PyArguments& arguments);

}  // namespace pelion_core::host::detail
