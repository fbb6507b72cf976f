#pragma once

#include <cstdint>

#include "pelion_core/loader/c_api/python_funcs.h"
#include "pelion_core/python_api/lock_state.h"
#include "python_api/checks.h"

namespace pelion_core::detail {

/// The interpreter's global lock, taken and given back at the outermost level only. One thread at a
/// time: the depth is plain and belongs to the process, not to a thread.
class InterpreterLock {
 public:
  void started() noexcept { state_ = LockState::Initialised; }
  void finalised() noexcept { state_ = LockState::Finalised; }

  void acquire(const PythonFuncs& funcs) noexcept {
    if (state_ == LockState::Constructed) return;
    if (state_ == LockState::Initialised) {
      depth_ = 1;
      state_ = LockState::Running;
      return;
    }
    if (depth_ == 0) funcs.PyEval_RestoreThread(savedThreadState_);
    ++depth_;
  }

  void release(const PythonFuncs& funcs) {
    if (state_ == LockState::Running) {
      if (depth_ == 1) savedThreadState_ = funcs.PyEval_SaveThread();
      --depth_;  // wraps on a release too many; the next acquire wraps it back
    } else if (state_ == LockState::Initialised) {
      fail("Invalid lock state for call to release lock.");
    }
  }

 private:
  std::uint64_t depth_ = 0;
  LockState state_ = LockState::Constructed;
  void* savedThreadState_ = nullptr;
};

}  // namespace pelion_core::detail
