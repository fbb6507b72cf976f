#pragma once

#include "pelion_core/api/handle.h"

/// Reference counting by hand, for hosts that keep raw pointers.
namespace pelion_core::api::managed {

/// Adds exactly one reference.
PELION_CORE_EXPORT void pyAddReference(pyArray* object);

/// Drops exactly one reference.
PELION_CORE_EXPORT void pyDeleteObject(pyArray* object);

}  // namespace pelion_core::api::managed
