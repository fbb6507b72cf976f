#pragma once

#include <cstdint>
#include <string>

#include "pelion_core/api/handle.h"
#include "pelion_core/platform/host_long.h"

/// Scalars and text in both directions, and blocks of numbers.
namespace pelion_core::api::primitive {

/// @name Creation
/// Each returns a new object.
/// @{

/// `True` or `False`.
PELION_CORE_EXPORT PyHandle pyCreateBool(bool value);
/// An `int` from 32 bits, with its sign.
PELION_CORE_EXPORT PyHandle pyCreateInt(HostLong value);
/// An `int` from 64 bits, with its sign.
PELION_CORE_EXPORT PyHandle pyCreateLong(std::int64_t value);
/// An `int` from 64 bits, without a sign.
PELION_CORE_EXPORT PyHandle pyCreateULong(std::uint64_t value);
/// A `float`.
PELION_CORE_EXPORT PyHandle pyCreateFloat(double value);
/// A `complex`.
PELION_CORE_EXPORT PyHandle pyCreateComplex(double real, double imaginary);
/// The member `None` of `builtins`.
PELION_CORE_EXPORT PyHandle pyCreateNone();
/// A `str` from UTF-8, embedded zeros kept. Ill-formed text raises `UnicodeDecodeError`.
PELION_CORE_EXPORT PyHandle pyCreateString(const std::string& utf8);
/// A `str` from UTF-16 in host order. A leading byte-order mark is taken as such and dropped; a
/// lone surrogate raises `UnicodeDecodeError`.
PELION_CORE_EXPORT PyHandle pyCreateString(const std::u16string& utf16);
/// @}

/// @name Tests
/// Each is `isinstance` of the builtin type; "Introspection API failed." when Python raised.
/// @{

/// `isinstance(object, bool)`.
PELION_CORE_EXPORT bool pyIsBool(pyArray* object);
/// Always false: version 3 has no separate plain integer. Use `pyIsLong`.
PELION_CORE_EXPORT bool pyIsInt(pyArray* object);
/// Every Python integer, `bool` included.
PELION_CORE_EXPORT bool pyIsLong(pyArray* object);
/// `isinstance(object, float)`.
PELION_CORE_EXPORT bool pyIsFloat(pyArray* object);
/// `isinstance(object, complex)`.
PELION_CORE_EXPORT bool pyIsComplex(pyArray* object);
/// `isinstance(object, str)`.
PELION_CORE_EXPORT bool pyIsString(pyArray* object);
/// @}

/// @name Extraction
/// The numeric readers do not throw for a value that has the wrong type or does not fit: they give
/// -1 (all bits set, -1.0) and leave the Python error pending; `exception::pyErrorOccurred` tells
/// that from a real -1.
/// @{

/// The truth value of any object; "Introspection API failed." when `__bool__` raised.
PELION_CORE_EXPORT bool pyBoolGetData(pyArray* object);
/// The low 32 bits of the integer, without a range check.
PELION_CORE_EXPORT HostLong pyIntGetData(pyArray* object);
/// An integer of 64 bits with its sign.
PELION_CORE_EXPORT void pyLongGetData(pyArray* object, std::int64_t* out);
/// An integer of 64 bits without a sign.
PELION_CORE_EXPORT void pyLongGetDataU(pyArray* object, std::uint64_t* out);
/// The value of a `float`, or of anything with `__float__`.
PELION_CORE_EXPORT double pyFloatGetData(pyArray* object);
/// Both parts of a `complex`, or of anything that reads as one.
PELION_CORE_EXPORT void pyComplexGetData(pyArray* object, double* real, double* imaginary);
/// The UTF-8 of a `str` or the bytes of a `bytes`, zero-terminated, owned by the object and valid
/// while it lives. Null, with the Python error pending, for anything else and for a `str` with lone
/// surrogates.
PELION_CORE_EXPORT const char* pyStringGetData(pyArray* object);
/// @}

}  // namespace pelion_core::api::primitive
