#pragma once

#include <cstdint>
#include <vector>

#include "datetime/civil.h"
#include "datetime/columns.h"
#include "pelion_core/datetime/datetime_components.h"

/// Dates and durations decomposed from the 64-bit counts of an array in one pass on the host, in
/// place of NumPy's arithmetic or of an object for every element.
namespace pelion_core::detail {

/// Decomposes a flat `datetime64` array. False when NumPy has to: for a unit below the nanosecond,
/// and where one of its own steps could overflow.
bool readDates(Borrowed flat, const NotATime& nat, api::primitive::DatetimeColumns& columns);

/// Decomposes a flat `datetime64[us]` array as the `datetime.datetime` objects that its elements
/// become. One that becomes none, being not-a-time or out of Python's years, is marked in `nat`.
/// False when the storage cannot be read.
bool readPythonDates(Borrowed flat, std::vector<bool>& nat,
                     api::primitive::DatetimeColumns& columns);

/// What a host gets of a `datetime.timedelta`.
struct TimedeltaParts {
  std::int64_t hours;
  std::int64_t seconds;
  double milliseconds;
};

/// The hours are a product of 32 bits, which hosts expect to wrap.
inline TimedeltaParts timedeltaParts(std::int64_t days, std::int64_t seconds,
                                     std::int64_t microseconds) {
  const auto hours = static_cast<std::uint32_t>(days) * 24U;
  return {static_cast<std::int32_t>(hours), seconds, static_cast<double>(microseconds) / 1000.0};
}

/// Calls `store(index, parts)` with the elements of a flat `timedelta64[us]` array, decomposed as
/// the `datetime.timedelta` objects that they become. Not-a-time, which becomes none, is marked in
/// `nat` instead. False when the storage cannot be read.
template <class Store>
bool eachPythonDuration(Borrowed flat, std::vector<bool>& nat, Store store) {
  const auto block = blockOf(flat, nat.size());
  if (!block || block->type != "<m8[us]") return false;
  for (std::size_t i = 0; i < nat.size(); ++i) {
    const auto microseconds = block->at<std::int64_t>(i);
    nat[i] = microseconds == notATime;
    if (nat[i]) continue;
    const std::int64_t seconds = floorDiv(microseconds, 1'000'000);
    const std::int64_t days = floorDiv(seconds, secondsOfDay);
    store(i,
          timedeltaParts(days, seconds - days * secondsOfDay, microseconds - seconds * 1'000'000));
  }
  return true;
}

}  // namespace pelion_core::detail
