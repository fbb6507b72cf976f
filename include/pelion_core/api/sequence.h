#pragma once

#include <cstdint>

#include "pelion_core/api/handle.h"
#include "pelion_core/platform/host_long.h"

/// Tuples, lists and sequences in general. An index above 2^63-1 throws
/// `boost::numeric::positive_overflow`.
namespace pelion_core::api::sequence {

/// Whether the object supports the sequence protocol (a `dict` does not).
PELION_CORE_EXPORT bool pyIsSequence(pyArray* object);

/// `isinstance(object, tuple)`.
PELION_CORE_EXPORT bool pyTupleCheck(pyArray* object);

/// `len(object)`; "PySequence_Length failed." for an object without one.
PELION_CORE_EXPORT std::uint64_t pySequenceLength(pyArray* object);

/// `sequence[index]`; past the end raises `IndexError`.
PELION_CORE_EXPORT PyHandle pyGetItem(pyArray* sequence, std::uint64_t index);

/// A tuple of `size` empty slots. Fill every slot with `pyTupleSetValue` before Python sees it.
PELION_CORE_EXPORT PyHandle pyTupleCreateSize(std::uint64_t size);

/// Stores `value` in a tuple that nobody else holds yet; the tuple gets a reference of its own. A
/// slot past the end: "Python API (probably set) failed.".
PELION_CORE_EXPORT void pyTupleSetValue(pyArray* tuple, std::uint64_t index, pyArray* value);

/// A tuple of the items, in one frame. The vector keeps its handles.
PELION_CORE_EXPORT PyHandle pyTupleCreate(const std::vector<PyHandle>& items);

/// `list.pop(index)`: the removed item. A negative index counts from the end; none such raises
/// `IndexError`.
PELION_CORE_EXPORT PyHandle pyPopItemFromList(pyArray* list, HostLong index);

}  // namespace pelion_core::api::sequence
