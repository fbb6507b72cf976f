#include "pelion_core/host/runtime.h"

#include <stdexcept>

#include "pelion_core/api/exception.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/sequence.h"
#include "state.h"

namespace pelion_core::host::detail {
namespace {

void unlink(Reference* reference) {
  reference->previous->next = reference->next;
  reference->next->previous = reference->previous;
}

}  // namespace

// Who waits says so before a last look at the owner, and who leaves looks for waiters after it: one
// of them sees the other.
void Lock::wait(std::thread::id here) {
  std::unique_lock guard(mutex_);
  ++waiting_;
  freed_.wait(guard, [&] { return take(here); });
  --waiting_;
}

void Lock::wake() {
  const std::lock_guard guard(mutex_);
  freed_.notify_one();
}

State::State() : list{{}, {1}, &list, &list} {}

State& state() {
  static State& instance = *new State;
  return instance;
}

Lock& lock() { return state().lock; }

Operation::Operation() : guard_(lock()) {}

Operation::OpenSession::OpenSession() {
  if (!state().open) throw std::logic_error("There is no open session with a Python.");
}

Reference* enlist(PyHandle handle) {
  State& here = state();
  Reference* reference = here.spare;
  if (reference != nullptr) {
    here.spare = reference->next;
  } else {
    reference = new Reference;
  }
  reference->handle = std::move(handle);
  reference->users.store(1, std::memory_order_relaxed);
  reference->previous = &here.list;
  reference->next = here.list.next;
  here.list.next->previous = reference;
  here.list.next = reference;
  return reference;
}

void retire(Reference* reference) noexcept {
  State& here = state();
  const std::lock_guard guard(here.lock);
  const PyHandle released = std::move(reference->handle);
  if (released) unlink(reference);
  reference->handle.reset();
  reference->next = here.spare;
  here.spare = reference;
}

void releaseReferences() {
  Reference& list = state().list;
  while (list.next != &list) {
    Reference* const reference = list.next;
    unlink(reference);
    const PyHandle released = std::move(reference->handle);
    reference->handle.reset();
  }
}

void rethrow() {
  throwPending();
  throw;
}

const PyHandle& helper(Helper name) { return state().helpers[static_cast<std::size_t>(name)]; }

PyHandle callHelper(Helper name, const PyArguments& arguments) {
  const PyHandle tuple = api::sequence::pyTupleCreate(arguments);
  return api::object::pyInvoke(helper(name).get(), tuple.get(), nullptr);
}

}  // namespace pelion_core::host::detail
