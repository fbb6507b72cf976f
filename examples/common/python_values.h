#pragma once

#include <pelion_core/pelion_core.h>

#include <string>

/// @file
/// Short forms for the Python expressions of the examples.

namespace example {

using pelion_core::PyArguments;
using pelion_core::PyHandle;
using pelion_core::PyKeywords;

std::string toUtf8(const std::u16string& utf16);
std::u16string toUtf16(const std::string& utf8);

/// A `str`.
PyHandle text(const std::u16string& utf16);
PyHandle text(const std::string& utf8);

/// `str(object)` as UTF-8; lone surrogates, which UTF-8 has no form for, are written as escapes.
std::string textOf(const PyHandle& object);

/// An `int`, or -1 with a pending error when it does not fit.
std::int64_t integerOf(const PyHandle& object);

/// `object.name`.
PyHandle member(const PyHandle& object, const char* name);

/// `object[key]`.
PyHandle item(const PyHandle& object, const PyHandle& key);

/// `sequence[index]`.
PyHandle item(const PyHandle& sequence, std::uint64_t index);

/// `object.name(*args, **kwargs)`.
PyHandle callMethod(const PyHandle& object, const char* name, const PyArguments& args = {},
                    const PyKeywords& kwargs = {});

/// `name(*args, **kwargs)` for a host-style name, such as "py.os.path.join".
PyHandle callByName(const char16_t* name, const PyArguments& args = {},
                    const PyKeywords& kwargs = {});

/// Passes on the elements of a sequence, one by one.
template <class Use>
void forEach(const PyHandle& sequence, Use use) {
  const std::uint64_t size = pelion_core::api::sequence::pySequenceLength(sequence.get());
  for (std::uint64_t i = 0; i < size; ++i) use(item(sequence, i));
}

/// Takes the pending error out of the interpreter and answers the lines that Python would print for
/// it; without a pending error, the exception's own message as a line.
std::string takeErrorText(const pelion_core::InternalPyException& exception);

}  // namespace example
