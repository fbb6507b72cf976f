#pragma once

#include "api/expression.h"

/// What allows a column to be read, made or remembered without asking every element: that the
/// objects at hand are the real ones. A module that a program puts in the place of `numpy`,
/// `datetime` or `zoneinfo`, to record or to change what is called, must notice no difference, so
/// each question is put to the object itself and only a type that C code defined answers it with
/// yes. Everything else is walked, one element after the other.
namespace pelion_core::detail {

/// Whether the type is the one that C code defined under this name: Python code can make no static
/// type, nor change an immutable one.
/// https://docs.python.org/3/c-api/typeobj.html#c.Py_TPFLAGS_IMMUTABLETYPE
bool isFixedType(Borrowed type, const char* module, const char* name);

/// Whether the object is an array of NumPy's own type. Subclasses (masked arrays, matrices,
/// records) may compute their elements; they are types of Python code.
bool isExactArray(Borrowed object);

/// Whether the attributes of the object are those of a plain module, which records nothing.
bool isPlainModule(Borrowed object);

/// Whether a member of a plain `numpy` is NumPy's own `array` function.
bool isNumpyArrayFunction(Borrowed function);

/// Whether a time zone keeps its text: None, and the two exact types whose instances are immutable.
/// A subclass can compute its offset or its key anew at every question.
bool isImmutableZone(Borrowed tzinfo);

}  // namespace pelion_core::detail
