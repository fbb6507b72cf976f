#pragma once

#include <cstdint>
#include <limits>

/// The proleptic Gregorian calendar, as NumPy and Python count it.
namespace pelion_core::detail {

constexpr std::int64_t secondsOfDay = 86400;

/// The count that NumPy keeps for not-a-time, in every unit.
constexpr std::int64_t notATime = std::numeric_limits<std::int64_t>::min();

struct CivilDate {
  std::int64_t year;
  std::int64_t month;  ///< 1 to 12
  std::int64_t day;    ///< 1 to 31
};

/// The quotient downwards, whatever the sign; the divisor is positive.
constexpr std::int64_t floorDiv(std::int64_t value, std::int64_t divisor) {
  return value / divisor - (value % divisor < 0 ? 1 : 0);
}

/// The date of a count of days since 1970-01-01, by Howard Hinnant's civil_from_days: eras of 400
/// years that begin in March, so that a leap day is the last of its year.
/// https://howardhinnant.github.io/date_algorithms.html
constexpr CivilDate civilFromDays(std::int64_t days) {
  constexpr std::int64_t daysOfEra = 146097;
  const std::int64_t shifted = days + 719468;  // since 0000-03-01
  const std::int64_t era = floorDiv(shifted, daysOfEra);
  const auto dayOfEra = static_cast<std::uint32_t>(shifted - era * daysOfEra);
  const std::uint32_t yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const std::uint32_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::uint32_t month = (5 * dayOfYear + 2) / 153;  // 0 is March
  const std::uint32_t day = dayOfYear - (153 * month + 2) / 5 + 1;
  const bool isNextYear = month >= 10;
  return {era * 400 + yearOfEra + (isNextYear ? 1 : 0), isNextYear ? month - 9 : month + 3, day};
}

}  // namespace pelion_core::detail
