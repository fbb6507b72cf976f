#include "datetime/count_blocks.h"

#include <algorithm>
#include <string_view>

namespace pelion_core::detail {

namespace {

using api::primitive::DatetimeColumns;

enum Column : std::size_t { Year, Month, Day, Hour, Minute };

/// Stores the date that a count of a unit, or of a multiple of it, means.
using StoreCount = void (*)(DatetimeColumns& columns, std::size_t row, std::int64_t count);

void storeDate(DatetimeColumns& columns, std::size_t row, const CivilDate& date) {
  columns.calendar[Year][row] = AsHostLong::from(date.year);
  columns.calendar[Month][row] = date.month;
  columns.calendar[Day][row] = date.day;
}

template <std::int64_t monthsOfUnit>
void storeMonths(DatetimeColumns& columns, std::size_t row, std::int64_t count) {
  const std::int64_t months = count * monthsOfUnit;
  const std::int64_t years = floorDiv(months, 12);
  storeDate(columns, row, {1970 + years, months - 12 * years + 1, 1});
}

template <std::int64_t secondsOfUnit>
void storeSeconds(DatetimeColumns& columns, std::size_t row, std::int64_t count) {
  const std::int64_t seconds = count * secondsOfUnit;
  const std::int64_t days = floorDiv(seconds, secondsOfDay);
  const auto clock = static_cast<std::uint32_t>(seconds - days * secondsOfDay);
  storeDate(columns, row, civilFromDays(days));
  columns.calendar[Hour][row] = clock / 3600;
  columns.calendar[Minute][row] = clock / 60 % 60;
  columns.seconds[row] = clock % 60;
}

template <std::int64_t unitsOfSecond>
void storeFractions(DatetimeColumns& columns, std::size_t row, std::int64_t count) {
  const std::int64_t seconds = floorDiv(count, unitsOfSecond);
  storeSeconds<1>(columns, row, seconds);
  const std::int64_t nanoseconds =
      (count - seconds * unitsOfSecond) * (1'000'000'000 / unitsOfSecond);
  columns.milliseconds[row] = static_cast<double>(nanoseconds) / 1e6;
}

struct UnitRule {
  std::string_view unit;
  StoreCount store;
  std::int64_t longestSeconds;  ///< of the longest such unit, rounded up
};

constexpr UnitRule unitRules[] = {
    {"Y", storeMonths<12>, 366 * secondsOfDay},
    {"M", storeMonths<1>, 31 * secondsOfDay},
    {"W", storeSeconds<7 * secondsOfDay>, 7 * secondsOfDay},
    {"D", storeSeconds<secondsOfDay>, secondsOfDay},
    {"h", storeSeconds<3600>, 3600},
    {"m", storeSeconds<60>, 60},
    {"s", storeSeconds<1>, 1},
    {"ms", storeFractions<1'000>, 1},
    {"us", storeFractions<1'000'000>, 1},
    {"ns", storeFractions<1'000'000'000>, 1},
};

/// The unit of NumPy's type string and its multiple: "s" and 25 of "<M8[25s]".
struct Unit {
  const UnitRule* rule = nullptr;
  std::int64_t multiple = 1;
};

Unit unitOf(std::string_view type) {
  constexpr std::string_view begin = "<M8[";
  if (type.substr(0, begin.size()) != begin) return {};
  type = type.substr(begin.size(), type.find(']') - begin.size());
  const std::size_t digits = std::min(type.find_first_not_of("0123456789"), type.size());
  Unit unit;
  if (digits > 0) unit.multiple = std::stoll(std::string(type.substr(0, digits)));
  for (const UnitRule& rule : unitRules) {
    if (rule.unit == type.substr(digits)) unit.rule = &rule;
  }
  return unit;
}

/// The largest count, on either side of 1970, for which none of NumPy's steps leaves 64 bits. NumPy
/// converts the value to every unit from the year to the second and subtracts each from the value,
/// in the finer unit of the two; what is left of a second becomes nanoseconds. So what must fit is
/// the value in seconds, or in its own unit where that is finer, and the beginnings of the year,
/// the month and so on that it lies in. A quarter of the range leaves more room than those take.
std::int64_t largestCount(const Unit& unit) {
  constexpr std::int64_t quarter = std::int64_t{1} << 61;
  return quarter / unit.rule->longestSeconds / unit.multiple;
}

}  // namespace

bool readDates(Borrowed flat, const NotATime& nat, DatetimeColumns& columns) {
  const std::size_t size = nat.marks.size();
  const auto block = blockOf(flat, size);
  if (!block) return false;
  const Unit unit = unitOf(block->type);
  if (unit.rule == nullptr) return false;

  const std::int64_t largest = largestCount(unit);
  for (std::size_t i = 0; i < size; ++i) {
    const auto count = block->at<std::int64_t>(i);
    if (!nat.marks[i] && (count < -largest || count > largest)) return false;
  }
  for (std::size_t i = 0; i < size; ++i) {
    if (!nat.marks[i]) unit.rule->store(columns, i, block->at<std::int64_t>(i) * unit.multiple);
  }
  return true;
}

bool readPythonDates(Borrowed flat, std::vector<bool>& nat, DatetimeColumns& columns) {
  constexpr std::int64_t first = -62'135'596'800'000'000;  // 0001-01-01T00:00:00
  constexpr std::int64_t last = 253'402'300'799'999'999;   // 9999-12-31T23:59:59.999999
  const auto block = blockOf(flat, nat.size());
  if (!block || block->type != "<M8[us]") return false;
  for (std::size_t i = 0; i < nat.size(); ++i) {
    const auto count = block->at<std::int64_t>(i);
    nat[i] = count < first || count > last;
    if (!nat[i]) storeFractions<1'000'000>(columns, i, count);
  }
  return true;
}

}  // namespace pelion_core::detail
