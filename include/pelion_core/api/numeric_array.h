#pragma once

#include <cstdint>

#include "pelion_core/api/handle.h"
#include "pelion_core/platform/host_long.h"

/// @file
/// Blocks of numbers: flat ones as `array.array`, shaped ones as NumPy arrays in column-major
/// order.

namespace pelion_core::api::primitive {

/// `array.array(typeCode)` with a copy of a host block.
///
/// @param byteCount  size of the block; not a multiple of the item size raises `ValueError`, above
///                   2^63-1 throws `boost::numeric::positive_overflow`
/// @param typeCode   one of the `array` module's ('d' is `double`, 'q' 64-bit signed); an unknown
///                   one raises `ValueError`, one outside ASCII `UnicodeDecodeError`
/// @param data       not changed; null gives an empty array, whatever `byteCount` (debug builds of
///                   Python end the process in an assertion instead)
PELION_CORE_EXPORT PyHandle pyCreateNumericArray(std::uint64_t byteCount, char typeCode,
                                                 void* data);

/// Exposes the storage of an `array.array`, without a copy. None of the pointers may be null.
///
/// @param array      an `array.array`
/// @param byteCount  the low 32 bits of the size: a block of 4 GiB reports 0
/// @param itemSize   bytes per element
/// @param typeCode   as given to `pyCreateNumericArray`
/// @param data       owned by the array, readable and writable while it lives and is not resized
PELION_CORE_EXPORT void pyNumericArrayGetData(pyArray* array, std::uint64_t* byteCount,
                                              HostLong* itemSize, char* typeCode, void** data);

/// `isinstance(object, array.array)`; false on failure.
PELION_CORE_EXPORT bool pyIsNumericArray(pyArray* object);

/// `numpy.reshape(data, dims, "F")`; sizes that do not match raise `ValueError`.
///
/// @param data  an array, or what NumPy makes one of
/// @param ndim  number of dimensions; 0 gives a 0-dimensional array
/// @param dims  `ndim` elements, read only when there are any; of each only the low 32 bits are
///              taken, with their sign: -1 is the one that NumPy infers
PELION_CORE_EXPORT PyHandle pyReshapeNumpyArray(PyHandle data, std::uint64_t ndim,
                                                const std::uint64_t* dims);

}  // namespace pelion_core::api::primitive

namespace pelion_core::api::object {

/// `bool(numpy.array_equal(*args, **kwargs, equal_nan=True))`; false on failure, so also for
/// elements that NumPy cannot test for NaN. `kwargs` keeps the added pair.
PELION_CORE_EXPORT bool pyIsEqualNumpyArray(std::vector<PyHandle>& args,
                                            std::vector<std::pair<PyHandle, PyHandle>>& kwargs);

}  // namespace pelion_core::api::object
