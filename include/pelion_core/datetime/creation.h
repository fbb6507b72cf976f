#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pelion_core/api/handle.h"

/// @file
/// Dates and durations from host values. The host's unit of duration is the millisecond, in a
/// double. A number that does not fit its integer becomes the smallest one, which Python rejects or
/// reads as not-a-time. Vectors are not changed.

namespace pelion_core::api::primitive {

/// `datetime.datetime` from year, month, day, hour, minute (each truncated), seconds with their
/// fraction, and, unless `naive`, the offset from UTC in milliseconds, which becomes a fixed
/// `datetime.timezone`.
///
/// The vector has at least six elements, seven unless `naive`; this is not checked. Half a
/// microsecond is added to the seconds before they are split, and what is left below a microsecond
/// is dropped; so 59.9999996 gives second 60, which raises `ValueError` as any other component out
/// of range does.
PELION_CORE_EXPORT PyHandle pyCreateDatetime(std::vector<double>& components, bool naive);

/// `numpy.datetime64(text)`: ISO 8601 or "NaT", as UTF-8. The text decides the unit.
PELION_CORE_EXPORT PyHandle pyCreateDatetime64Scalar(std::string& text);

/// `numpy.array(*args, dtype="datetime64", order="F")`; an empty handle when `numpy.array` is None.
PELION_CORE_EXPORT PyHandle pyCreateDatetime64Array(std::vector<PyHandle>& args);

/// A `datetime64` array of strings as `pyCreateDatetime64Scalar` takes them, filled in column-major
/// order.
///
/// @param texts  at least `count` elements, of which the first `count` are read
/// @param count  number of elements of the array
/// @param ndims  number of dimensions
/// @param dims   `ndims` extents, whose product is `count`; sizes that do not match raise
///               `ValueError`
PELION_CORE_EXPORT PyHandle pyCreateDatetime64(std::vector<std::string>& texts, std::uint64_t count,
                                               std::uint64_t ndims, std::uint64_t const* dims);

/// `datetime.timedelta`. Half a microsecond is added whatever the sign and the rest is dropped: a
/// positive value is rounded to the nearest microsecond, a negative one loses up to one toward zero
/// (-1.5 gives -1499 microseconds). Out of Python's range raises `OverflowError`.
PELION_CORE_EXPORT PyHandle pyCreateTimedelta(double milliseconds);

/// `numpy.timedelta64` in microseconds, rounded half away from zero. NaN, infinities and values
/// beyond 64 bits give not-a-time.
PELION_CORE_EXPORT PyHandle pyCreateTimedelta64Scalar(double milliseconds);

/// `numpy.array(*args, dtype="timedelta64[us]", order="F")`; an empty handle when `numpy.array` is
/// None.
PELION_CORE_EXPORT PyHandle pyCreateTimedelta64Array(std::vector<PyHandle>& args);

/// A `timedelta64[us]` array, filled in column-major order. Each element is rounded as
/// `pyCreateTimedelta64Scalar` does.
///
/// @param values  `count` durations in milliseconds
/// @param count   number of elements of the array
/// @param ndims   number of dimensions
/// @param dims    `ndims` extents, whose product is `count`; sizes that do not match raise
///                `ValueError`
PELION_CORE_EXPORT PyHandle pyCreateTimedelta64(double* values, std::uint64_t count,
                                                std::uint64_t ndims, std::uint64_t const* dims);

}  // namespace pelion_core::api::primitive
