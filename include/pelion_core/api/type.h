#pragma once

#include <string>

#include "pelion_core/api/handle.h"

/// Tests and names of types. `pyTypeIs...` compares types for equality: a subclass is another type.
namespace pelion_core::api::type {

/// `issubclass(type, cls)`; "Introspection API failed." when Python raised.
PELION_CORE_EXPORT bool pyTypeIsSubclass(pyArray* type, pyArray* cls);

/// `type.__bases__`, a tuple.
PELION_CORE_EXPORT PyHandle pyTypeGetBases(pyArray* type);

/// `type == getattr(builtins, name)`; false on failure.
PELION_CORE_EXPORT bool pyTypeIsBuiltin(pyArray* type, const char* name);

/// `issubclass(type, getattr(collections.abc, name))`; false on failure. Before the first
/// successful load it throws a `std::logic_error`: the interpreter's version is not known.
PELION_CORE_EXPORT bool pyTypeImplementsCollection(pyArray* type, const char* name);

/// `type == array.array`; false on failure.
PELION_CORE_EXPORT bool pyTypeIsNumericArray(pyArray* type);

/// `type == pandas.DataFrame`; false on failure.
PELION_CORE_EXPORT bool pyTypeIsPandasDataFrame(pyArray* type);

/// `type == pandas.Series`; false on failure.
PELION_CORE_EXPORT bool pyTypeIsPandasSeries(pyArray* type);

/// The module part of the host's name for a type: "py" for a builtin, else "py." and `__module__`.
PELION_CORE_EXPORT std::string pyTypeZTModuleName(pyArray* type);

/// The host's name for a type: the module part, ".", `__name__` (not the qualified name).
PELION_CORE_EXPORT std::string pyTypeZTName(pyArray* type);

/// Whether `typeName` is "str" or "unicode" and the host declared version "2.7". Enters no
/// interpreter; before the first successful load it throws a `std::logic_error`.
PELION_CORE_EXPORT bool pyIsExcludedTypeForBuffer(const char* typeName);

}  // namespace pelion_core::api::type
