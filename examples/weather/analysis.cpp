#include "analysis.h"

#include <cstdio>

namespace example {

using namespace pelion_core::api;

namespace {

PyHandle tupleOf(const std::vector<std::string>& texts) {
  PyArguments items;
  items.reserve(texts.size());
  for (const std::string& each : texts) items.push_back(text(each));
  return sequence::pyTupleCreate(items);
}

/// The numbers of a frame as one block, in column-major order.
class Numbers {
 public:
  explicit Numbers(const PyHandle& frame) {
    const PyHandle values = callMethod(frame, "to_numpy", {text("float64")});
    const PyHandle bytes = callMethod(values, "tobytes", {text("F")});
    array_ = callByName(u"py.array.array", {text("d"), bytes});

    std::uint64_t byteCount = 0;
    pelion_core::HostLong itemSize = 0;
    char typeCode = '\0';
    void* data = nullptr;
    primitive::pyNumericArrayGetData(array_.get(), &byteCount, &itemSize, &typeCode, &data);
    data_ = static_cast<const double*>(data);
    rows_ = sequence::pySequenceLength(frame.get());
  }

  double at(std::uint64_t row, std::uint64_t column) const { return data_[column * rows_ + row]; }

 private:
  PyHandle array_;  // owns what data_ points to
  const double* data_;
  std::uint64_t rows_;
};

std::vector<std::string> datesOf(const PyHandle& series) {
  const primitive::Datetime64ArrayComponents dates(callMethod(series, "to_numpy").get());
  const auto years = dates.years();
  const auto months = dates.months();
  const auto days = dates.days();
  std::vector<std::string> texts;
  for (std::uint64_t i = 0; i < dates.numel(); ++i) {
    char date[32];
    std::snprintf(date, sizeof date, "%04d-%02d-%02d", static_cast<int>(years[i]),
                  static_cast<int>(months[i]), static_cast<int>(days[i]));
    texts.emplace_back(date);
  }
  return texts;
}

// Durations in days; none for not-a-time. Which of the fields is set depends on the unit that
// pandas chose, so they are added up.
std::vector<std::optional<double>> daysOf(const PyHandle& series) {
  constexpr double millisecondsPerDay = 24.0 * 60 * 60 * 1000;
  const primitive::Timedelta64ArrayComponents waits(callMethod(series, "to_numpy").get());
  const auto isNaT = waits.natIndices();
  const auto hours = waits.hours();
  const auto minutes = waits.minutes();
  const auto seconds = waits.seconds();
  const auto wholeMilliseconds = waits.milliseconds_int();
  const auto milliseconds = waits.milliseconds();
  std::vector<std::optional<double>> days(waits.numel());
  for (std::size_t i = 0; i < days.size(); ++i) {
    if (isNaT[i]) continue;
    const std::int64_t wholeSeconds = (hours[i] * 60 + minutes[i]) * 60 + seconds[i];
    days[i] = (static_cast<double>(wholeSeconds * 1000 + wholeMilliseconds[i]) + milliseconds[i]) /
              millisecondsPerDay;
  }
  return days;
}

}  // namespace

PyHandle createFrame(Weather weather) {
  const std::uint64_t rows = weather.dates.size();
  const PyHandle dates = primitive::pyCreateDatetime64(weather.dates, rows, 1, &rows);

  std::vector<double> block;
  block.reserve(rows * numericColumns.size());
  for (const auto& column : weather.numbers) {
    block.insert(block.end(), column.begin(), column.end());
  }
  const PyHandle flat =
      primitive::pyCreateNumericArray(block.size() * sizeof(double), 'd', block.data());
  const std::uint64_t shape[] = {rows, numericColumns.size()};
  const PyHandle columns = member(primitive::pyReshapeNumpyArray(flat, 2, shape), "T");

  PyKeywords data;
  data.emplace_back(text("date"), dates);
  for (std::size_t i = 0; i < numericColumns.size(); ++i) {
    data.emplace_back(text(numericColumns[i]), item(columns, i));
  }
  data.emplace_back(text("weather"),
                    dataframe::pyCreatePandasSeriesOfDTypeString(tupleOf(weather.kinds)));
  const PyHandle frame = dataframe::pyCreateDataFrame(mapping::pyCreateDict(data));
  return callMethod(frame, "sort_values", {text("date")});
}

PyHandle monthOfYear(const PyHandle& frame) {
  return member(member(item(frame, text("date")), "dt"), "month");
}

PyHandle aggregations(const std::vector<std::pair<const char*, const char*>>& columns) {
  PyKeywords pairs;
  for (const auto& [column, function] : columns) pairs.emplace_back(text(column), text(function));
  return mapping::pyCreateDict(pairs);
}

std::vector<MonthSummary> summariseMonths(const PyHandle& frame) {
  const PyHandle byMonth = callMethod(frame, "groupby", {monthOfYear(frame)});
  const PyHandle means = callMethod(byMonth, "agg",
                                    {aggregations({{"precipitation", "mean"},
                                                   {"temp_max", "mean"},
                                                   {"temp_min", "mean"},
                                                   {"wind", "mean"}})});
  const Numbers numbers(means);
  const PyHandle wettestRows = callMethod(item(byMonth, text("precipitation")), "idxmax");
  const std::vector<std::string> wettestDays =
      datesOf(item(member(frame, "loc"), sequence::pyTupleCreate({wettestRows, text("date")})));

  const PyHandle names = pelion_core::fetch::fetch(u"py.calendar.month_name");
  const PyHandle months = dataframe::pyConvertNumPyDataToList(member(means, "index").get());
  std::vector<MonthSummary> summaries;
  forEach(months, [&](const PyHandle& month) {
    const std::size_t row = summaries.size();
    MonthSummary summary{textOf(item(names, month)), {}, wettestDays[row]};
    for (std::size_t i = 0; i < numericColumns.size(); ++i) {
      summary.means.push_back(numbers.at(row, i));
    }
    summaries.push_back(std::move(summary));
  });
  return summaries;
}

std::vector<KindSummary> summariseKinds(const PyHandle& frame) {
  const PyHandle kind = item(frame, text("weather"));
  const PyHandle byKind = callMethod(frame, "groupby", {kind});
  const Numbers numbers(callMethod(
      byKind, "agg",
      {aggregations({{"date", "count"}, {"temp_max", "mean"}, {"precipitation", "max"}})}));
  const PyHandle date = item(byKind, text("date"));
  const PyHandle firstDay = callMethod(date, "min");
  const std::vector<std::string> firstDays = datesOf(firstDay);
  const PyHandle waits = callMethod(callMethod(date, "diff"), "groupby", {kind});
  const std::vector<std::optional<double>> longestWaits = daysOf(callMethod(waits, "max"));

  // The kinds are the index of every result: made a column, they can be read like one.
  const PyHandle firstDayByKind = dataframe::pyResetIndexOfDataFrame(
      dataframe::pyConvertPandasSeriesToPandasDataFrame(firstDay.get()).get());
  const PyHandle names =
      dataframe::pyGetColumnDataAsPandasSeries(firstDayByKind.get(), text("weather"));
  std::vector<KindSummary> summaries;
  forEach(callMethod(names, "tolist"), [&](const PyHandle& name) {
    const std::size_t row = summaries.size();
    summaries.push_back({textOf(name), numbers.at(row, 0), numbers.at(row, 1), numbers.at(row, 2),
                         firstDays[row], longestWaits[row]});
  });
  return summaries;
}

}  // namespace example
