#pragma once

/// @file
/// A whole host in a few lines: a session with a Python, its objects, errors, conversions and
/// tables. Everything a host needs that the flat functions leave to it; those are at hand as well.

#include "pelion_core/host/block.h"
#include "pelion_core/host/convert.h"
#include "pelion_core/host/error.h"
#include "pelion_core/host/function.h"
#include "pelion_core/host/object.h"
#include "pelion_core/host/session.h"
#include "pelion_core/host/settings.h"
#include "pelion_core/host/table.h"
#include "pelion_core/pelion_core.h"
