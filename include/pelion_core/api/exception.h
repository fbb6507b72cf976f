#pragma once

#include "pelion_core/api/handle.h"

/// The interpreter's pending error. Ask right after the call that failed: an import made with an
/// error pending clears it on CPython up to 3.12 and fails on 3.13.
namespace pelion_core::api::exception {

/// Drops the pending error, if any.
PELION_CORE_EXPORT void pyErrorClear();

/// Whether an error is pending.
PELION_CORE_EXPORT bool pyErrorOccurred();

/// Takes the pending error out of the interpreter: a new tuple (type, value, traceback),
/// normalised, with None for what is absent; three Nones when nothing is pending.
PELION_CORE_EXPORT PyHandle pyErrorFetch();

}  // namespace pelion_core::api::exception
