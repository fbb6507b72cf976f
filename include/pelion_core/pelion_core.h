#pragma once

/// @file
/// Everything a host needs. Not to be combined with <Python.h> in one source file: its macros would
/// rewrite our member names.

/// @namespace pelion_core
/// The library. `python`, `loader` and `foundation` are namespaces of their own, known here under
/// the same names.

#include "pelion_core/api/api_accessor.h"
#include "pelion_core/api/dataframe.h"
#include "pelion_core/api/exception.h"
#include "pelion_core/api/handle.h"
#include "pelion_core/api/interpreter.h"
#include "pelion_core/api/managed.h"
#include "pelion_core/api/mapping.h"
#include "pelion_core/api/module.h"
#include "pelion_core/api/numeric_array.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/sequence.h"
#include "pelion_core/api/type.h"
#include "pelion_core/datetime/creation.h"
#include "pelion_core/datetime/datetime_components.h"
#include "pelion_core/datetime/timedelta_components.h"
#include "pelion_core/datetime/type_tests.h"
#include "pelion_core/fetch/fetch.h"
#include "pelion_core/loader/c_api/find_symbol_decorator.h"
#include "pelion_core/loader/c_api/python_funcs.h"
#include "pelion_core/loader/c_api/python_lib_holder.h"
#include "pelion_core/loader/c_api/python_three_funcs.h"
#include "pelion_core/loader/loader.h"
#include "pelion_core/platform/export.h"
#include "pelion_core/platform/foundation_exception.h"
#include "pelion_core/platform/host_long.h"
#include "pelion_core/platform/string_array.h"
#include "pelion_core/platform/usage_data.h"
#include "pelion_core/python_api/internal_py_exception.h"
#include "pelion_core/python_api/ipython_api.h"
#include "pelion_core/python_api/lock_state.h"
