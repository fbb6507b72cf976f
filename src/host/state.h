#pragma once

#include <array>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "pelion_core/host/function.h"
#include "pelion_core/host/runtime.h"

namespace pelion_core::host::detail {

/// What a process has of this layer. Made at the first use and never destroyed: a host's static
/// objects may outlive every other.
struct State {
  std::mutex waiting;  // of those who wait for the lock
  std::condition_variable freed;
  bool connected = false;  // whether Python knows how to call functions
  Reference list;          // the ends of the ring of references
  Reference* spare = nullptr;
  std::array<Owned, static_cast<std::size_t>(Helper::count)> helpers;
  // The C++ functions that Python has callables of. Python drops one from any of its threads; it is
  // destroyed on a host's, since it may own objects and so need the layer's lock.
  std::map<std::size_t, std::shared_ptr<const Callback>> functions;
  std::size_t lastFunction = 0;
  std::mutex dropping;
  std::vector<std::size_t> dropped;  // by `dropping`

  State();
};

State& state();

/// Makes the helpers, in the interpreter that was just started.
void defineHelpers();

/// Releases what the objects of the session hold; they stay, empty.
void releaseReferences();

}  // namespace pelion_core::host::detail
