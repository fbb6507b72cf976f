#pragma once

#include <pelion_core/pelion_core.h>

/// The library's namespaces, all at hand: for tests alone.
using namespace pelion_core;
using namespace pelion_core::api;
using namespace interpreter;
using namespace managed;
using namespace exception;
using namespace primitive;
using namespace mapping;
using namespace sequence;
using namespace object;
using namespace type;
using namespace module;
using namespace dataframe;
