#pragma once

#include <cstdint>

namespace pelion_core {

/// How far the interpreter's life has gone, as far as its lock is concerned.
enum class LockState : std::int32_t {
  Constructed,  ///< not started by this object: lock operations do nothing
  Initialised,  ///< just started: the starting thread holds the lock and has not acquired it yet
  Running,      ///< the lock is managed by depth
  Finalised,    ///< acquiring still counts, releasing does nothing
};

}  // namespace pelion_core
