#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "program.h"
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

/// What pandas' `agg` takes: functions by the columns that they work on.
using Aggregations = std::map<std::string, std::string>;

/// A pandas `DataFrame` of the host's columns, sorted by date.
py::Object createFrame(const Weather& weather);

std::vector<MonthSummary> summariseMonths(const py::Session& python, const py::Object& frame);
std::vector<KindSummary> summariseKinds(const py::Object& frame);

/// `frame["date"].dt.month`: the month of the year of each row.
py::Object monthOfYear(const py::Object& frame);

}  // namespace example
