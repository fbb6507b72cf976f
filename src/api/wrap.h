#pragma once

#include "api/control_blocks.h"
#include "api/frame.h"
#include "pelion_core/api/handle.h"

namespace pelion_core::api {

/// Takes a new reference over. Called inside the frame that made it.
inline PyHandle wrap(PyObject* newReference) {
  return PyHandle(toPyArray(newReference), PyArrayReleaser(), ControlBlockAllocator<char>());
}

}  // namespace pelion_core::api
