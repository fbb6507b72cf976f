#pragma once

#include <optional>
#include <string>
#include <vector>

#include "python_values.h"
#include "weather_csv.h"

namespace example {

/// A month of the year, over all years.
struct MonthSummary {
  std::string name;
  std::vector<double> means;  ///< in the order of `numericColumns`
  std::string wettestDay;
};

/// A kind of weather.
struct KindSummary {
  std::string name;
  double days;
  double meanHigh;
  double wettest;
  std::string firstDay;
  std::optional<double> longestWait;  ///< days between two days of this kind, if there are two
};

/// A pandas `DataFrame` of the host's columns, sorted by date.
PyHandle createFrame(Weather weather);

std::vector<MonthSummary> summariseMonths(const PyHandle& frame);
std::vector<KindSummary> summariseKinds(const PyHandle& frame);

/// `frame["date"].dt.month`: the month of the year of each row.
PyHandle monthOfYear(const PyHandle& frame);

/// What `agg` takes: (column, function) as a dictionary.
PyHandle aggregations(const std::vector<std::pair<const char*, const char*>>& columns);

}  // namespace example
