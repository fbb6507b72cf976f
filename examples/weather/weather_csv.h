#pragma once

#include <array>
#include <iosfwd>
#include <string>
#include <vector>

namespace example {

/// The columns of numbers, by their names in the file.
constexpr std::array numericColumns{"precipitation", "temp_max", "temp_min", "wind"};

/// A table of days as columns of equal length.
struct Weather {
  std::vector<std::string> dates;  ///< "2012-01-31"
  std::array<std::vector<double>, numericColumns.size()> numbers;
  std::vector<std::string> kinds;  ///< "rain", "sun", ...
};

/// Reads a CSV file whose first line names the columns: those above, "date" (year, month, day) and
/// "weather", in any order and among others. A row that does not fit is left out and `complaints`
/// gets a line about it. Throws `Failure` when the file cannot be read, lacks a column or has no
/// row that fits.
Weather readWeather(const std::string& file, std::ostream& complaints);

}  // namespace example
