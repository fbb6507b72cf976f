#pragma once

#include <cstdint>
#include <string>

#include "pelion_core/api/handle.h"

/// @file
/// What kind of date-time value an object is, and the time zone of a `datetime.datetime`.

namespace pelion_core::api::type {

/// @name Tests of one object or type
/// `pyObjTypeIs...` accepts instances of subclasses, `pyTypeIs...` compares types for equality.
/// False on failure, so also when the module is missing.
/// @{

/// `isinstance(object, datetime.datetime)`.
PELION_CORE_EXPORT bool pyObjTypeIsDatetime(pyArray* object);
/// `isinstance(object, datetime.timedelta)`.
PELION_CORE_EXPORT bool pyObjTypeIsTimedelta(pyArray* object);
/// `type == datetime.datetime`.
PELION_CORE_EXPORT bool pyTypeIsDatetime(pyArray* type);
/// `type == datetime.timedelta`.
PELION_CORE_EXPORT bool pyTypeIsTimedelta(pyArray* type);
/// `type == numpy.timedelta64`.
PELION_CORE_EXPORT bool pyTypeIsTimedelta64(pyArray* type);
/// `isinstance(datetime.tzinfo, zoneinfo.ZoneInfo)`.
PELION_CORE_EXPORT bool pyDatetimeIsZoneInfoBased(pyArray* datetime);
/// @}

/// @name Tests of every element of a sequence
/// An empty sequence passes. The first element that does not leaves its position, counted from 1,
/// in `firstBad`, which is not written otherwise. An object without a length throws
/// "PySequence_Length failed.".
/// @{

/// Whether every element is a `datetime.datetime`.
PELION_CORE_EXPORT bool pyEachObjTypeOfListIsDatetime(pyArray* sequence, std::uint64_t& firstBad);
/// Whether every element is a `datetime.timedelta`.
PELION_CORE_EXPORT bool pyEachObjTypeOfListIsTimeDelta(pyArray* sequence, std::uint64_t& firstBad);
/// @}

}  // namespace pelion_core::api::type

namespace pelion_core::api::object {

/// The time zone of a `datetime.datetime` as UTF-8: "" for a naive one, the key of a
/// `zoneinfo.ZoneInfo` ("Europe/Berlin"), and for a `datetime.timezone` "UTC" or the offset as
/// "+05:30", its seconds dropped. Any other `tzinfo`: "Timezone type not supported.".
PELION_CORE_EXPORT std::string pyDatetimeGetTimezone(pyArray* datetime);

}  // namespace pelion_core::api::object
