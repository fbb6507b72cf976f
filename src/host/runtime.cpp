#include "pelion_core/host/runtime.h"

#include <chrono>
#include <stdexcept>

#include "state.h"

namespace pelion_core::host::detail {
namespace {

// Takes the object out of the list first: what its end runs may use the layer.
void release(Reference& reference) {
  reference.previous->next = reference.next;
  reference.next->previous = reference.previous;
  const Operation operation;
  const PyHandle handle = std::move(reference.handle);
  reference.handle.reset();  // which the move may not have done
  const Owned object(std::exchange(reference.object, nullptr));
}

}  // namespace

// Who waits says so before a last look at the owner, and who leaves looks for waiters after it. For
// each to see the other it would take a second atomic operation in every `unlock`; a waiter that
// was missed looks again by itself instead.
void Lock::wait() {
  State& here = state();
  std::unique_lock guard(here.waiting);
  ++waiting_;
  while (!here.freed.wait_for(guard, std::chrono::milliseconds(5), [&] { return take(); })) {
  }
  --waiting_;
}

void Lock::wake() {
  State& here = state();
  const std::lock_guard guard(here.waiting);
  here.freed.notify_one();
}

::python::IPythonAPI* api = nullptr;
Lock lock;

State::State() : list{nullptr, {}, {1}, &list, &list} {}

State& state() {
  static State& instance = *new State;
  return instance;
}

void Operation::noSession() { throw std::logic_error("There is no open session with a Python."); }

Reference* enlist(Owned object) {
  State& here = state();
  Reference* const reference =
      here.spare != nullptr ? std::exchange(here.spare, here.spare->next) : new Reference;
  reference->object = object.release();
  reference->users.store(1, std::memory_order_relaxed);
  reference->previous = &here.list;
  reference->next = here.list.next;
  here.list.next->previous = reference;
  here.list.next = reference;
  return reference;
}

void retire(Reference* reference) noexcept try {
  const std::lock_guard guard(lock);
  State& here = state();
  if (reference->object != nullptr) release(*reference);
  reference->next = here.spare;
  here.spare = reference;
} catch (...) {  // a destructor has nobody to tell
}

void releaseReferences() {
  Reference& list = state().list;
  while (list.next != &list) release(*list.next);
}

void rethrow() {
  throwPending();
  throw;
}

PyObject* helper(Helper name) { return state().helpers[static_cast<std::size_t>(name)]; }

Owned callHelper(Helper name, std::initializer_list<PyObject*> arguments) {
  return Owned(api->PyObject_Call(helper(name), makeTuple(arguments), nullptr));
}

}  // namespace pelion_core::host::detail
