#pragma once

#include <string>

#include "pelion_core/api/handle.h"

/// Imports. Nothing is cached here: every call asks the interpreter's own module cache.
namespace pelion_core::api::module {

/// Whether the object is a module.
PELION_CORE_EXPORT bool pyIsModule(pyArray* object);

/// Imports a module by its (dotted) name and returns that very module, as `importlib.import_module`
/// does; a missing one raises `ModuleNotFoundError`.
PELION_CORE_EXPORT PyHandle pyCreateModule(const std::u16string& name);

/// "builtins".
PELION_CORE_EXPORT std::u16string pyGetBuiltinsName();

/// The module `builtins`.
PELION_CORE_EXPORT PyHandle pyCreateBuiltinsModule();

/// The module `numpy`.
PELION_CORE_EXPORT PyHandle pyGetNumpy();

/// `int(object)`. Before the first successful load it throws a `std::logic_error`: the
/// interpreter's version is not known.
PELION_CORE_EXPORT PyHandle pyInvokeInt(pyArray* object);

}  // namespace pelion_core::api::module
