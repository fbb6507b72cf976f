#pragma once

#include <string>

#include "pelion_core/api/handle.h"

/// Members, calls, identity, text and naming of objects in general.
namespace pelion_core::api::object {

/// `getattr(object, name)`; a missing member raises `AttributeError`.
PELION_CORE_EXPORT PyHandle pyGetMember(pyArray* object, pyArray* name);
/// The same by a zero-terminated UTF-8 name, which is not checked for null.
PELION_CORE_EXPORT PyHandle pyGetMember(pyArray* object, const char* name);

/// `hasattr(object, name)`, false also when the look-up raised.
PELION_CORE_EXPORT bool pyHasMember(pyArray* object, pyArray* name);
/// The same by a zero-terminated UTF-8 name, which is not checked for null.
PELION_CORE_EXPORT bool pyHasMember(pyArray* object, const char* name);

/// `setattr(object, name, value)`; "Python API (probably set) failed." when Python raised.
PELION_CORE_EXPORT void pySetMember(pyArray* object, pyArray* name, pyArray* value);

/// `callable(*args, **kwargs)` with a tuple and a dictionary or null. A null tuple: "Arguments
/// required to invoke Python callable.".
///
/// `pyInvoke(f, {}, {})` picks this overload, with two null pointers: name the vectors (or use
/// `PyArguments{}`, `PyKeywords{}`) to call without arguments.
PELION_CORE_EXPORT PyHandle pyInvoke(pyArray* callable, pyArray* args, pyArray* kwargs);
/// The same with the objects of two handles.
PELION_CORE_EXPORT PyHandle pyInvoke(pyArray* callable, PyHandle args, PyHandle kwargs);
/// The same with vectors, in one frame. The vectors keep their handles.
PELION_CORE_EXPORT PyHandle pyInvoke(pyArray* callable, const std::vector<PyHandle>& args,
                                     const std::vector<std::pair<PyHandle, PyHandle>>& kwargs);

/// `callable(object)`.
PELION_CORE_EXPORT bool pyIsCallable(pyArray* object);

/// `isinstance(object, cls)`; "Introspection API failed." when Python raised.
PELION_CORE_EXPORT bool pyIsInstance(pyArray* object, pyArray* cls);

/// Identity with None.
PELION_CORE_EXPORT bool pyIsNone(pyArray* object);

/// Whether the object is a type.
PELION_CORE_EXPORT bool pyIsType(pyArray* object);

/// `type(object)`.
PELION_CORE_EXPORT PyHandle pyGetType(pyArray* object);

/// `dir(object)`, a list.
PELION_CORE_EXPORT PyHandle pyDir(pyArray* object);

/// `left is right or bool(left == right)`: identical objects are equal without `__eq__` being
/// asked. "Introspection API failed." when Python raised.
PELION_CORE_EXPORT bool pyEqual(pyArray* left, pyArray* right);

/// `str(object)`.
PELION_CORE_EXPORT PyHandle pyStr(pyArray* object);

/// The UTF-8 of a `str` or the bytes of a `bytes`, zero-terminated, owned by the object and valid
/// while it lives; null, with the Python error pending, for a `str` with lone surrogates. Anything
/// else: "Python object is neither string nor unicode. Cannot return chars.".
PELION_CORE_EXPORT const char* pyGetChars(pyArray* object);

/// For the byte strings of Python 2; every object of version 3 throws: a `str`
/// "Failure to get std::string from Unicode.", anything else "Python object is not string. Cannot
/// return std::string.". Use `pyGetChars` or `get_ustring`.
PELION_CORE_EXPORT std::string get_stdstring(pyArray* object);

/// The text of a `str` as UTF-16; lone surrogates throw "Failure to get data from Unicode.".
/// Anything else: "Python object is neither string nor unicode. Cannot return unicode.".
PELION_CORE_EXPORT std::u16string get_ustring(pyArray* object);

/// `object.__class__`, or `type(object)` when that raises.
PELION_CORE_EXPORT PyHandle pyGetClass(pyArray* object);

/// `isinstance(object, getattr(builtins, name))`; false on failure.
PELION_CORE_EXPORT bool pyIsBuiltin(pyArray* object, const char* name);

/// `hash(object)`, an `int`; an unhashable object raises `TypeError`.
PELION_CORE_EXPORT PyHandle pyGetHash(pyArray* object);

/// `inspect.<name>(object)` when that is a `bool`, else false; false on failure.
PELION_CORE_EXPORT bool pyInspect(PyHandle object, const char* name);

/// `operator.__eq__(*args, **kwargs)`, whatever object that is; `False` for None and on failure.
/// The vectors are not changed.
PELION_CORE_EXPORT PyHandle pyIsEqualOperator(std::vector<PyHandle>& args,
                                              std::vector<std::pair<PyHandle, PyHandle>>& kwargs);

/// `type::pyTypeZTName` of the object's class: "py.int", "py.m.sub.C".
PELION_CORE_EXPORT std::string pyGetZTClassName(pyArray* object);

/// `type::pyTypeZTModuleName` of the object's class: "py", "py.m.sub".
PELION_CORE_EXPORT std::string pyGetZTModuleName(pyArray* object);

}  // namespace pelion_core::api::object
