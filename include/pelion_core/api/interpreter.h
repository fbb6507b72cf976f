#pragma once

#include "pelion_core/api/handle.h"

/// The end of the interpreter's life; its beginning is `loader::attemptToLoadPython`.
namespace pelion_core::api::interpreter {

/// Finalises the interpreter. Call it from the thread that loaded, with every handle released. The
/// library keeps its API: `loader::isPythonLoaded()` stays true, and another load may follow.
PELION_CORE_EXPORT void pyClose();

/// Whether the interpreter is initialised: true after a load, false after `pyClose`.
PELION_CORE_EXPORT bool pyIsOpen();

}  // namespace pelion_core::api::interpreter
