#include "analysis.h"

#include <chrono>

namespace example {
namespace {

using Days = std::chrono::duration<double, std::ratio<24 * 60 * 60>>;

// "2012-01-31" of each date.
std::vector<std::string> isoDates(const py::Object& dates) {
  return dates.attr("dt").attr("strftime")("%Y-%m-%d").as<std::vector<std::string>>();
}

}  // namespace

py::Object createFrame(const Weather& weather) {
  py::Table table;
  table.add("date", weather.dates);
  for (std::size_t i = 0; i < numericColumns.size(); ++i) {
    table.add(numericColumns[i], weather.numbers[i]);
  }
  table.add("weather", weather.kinds);
  const py::Object frame = table.toPandas();
  frame.setItem("date", frame["date"].attr("astype")("datetime64[ns]"));
  return frame.attr("sort_values")("date");
}

py::Object monthOfYear(const py::Object& frame) { return frame["date"].attr("dt").attr("month"); }

std::vector<MonthSummary> summariseMonths(const py::Session& python, const py::Object& frame) {
  const py::Object byMonth = frame.attr("groupby")(monthOfYear(frame));
  Aggregations mean;
  for (const char* column : numericColumns) mean[column] = "mean";
  const py::Table means = py::Table::fromPandas(byMonth.attr("agg")(mean));
  const py::Object wettest = byMonth["precipitation"].attr("idxmax")();
  const auto wettestDays = isoDates(frame["date"].attr("loc")[wettest]);

  const py::Object names = python("calendar.month_name");
  const auto months = means.column<int>("date");
  std::vector<MonthSummary> summaries;
  for (std::size_t row = 0; row < months.size(); ++row) {
    MonthSummary summary{names[months[row]].as<std::string>(), {}, wettestDays[row]};
    for (const char* column : numericColumns) {
      summary.means.push_back(means.column<double>(column)[row]);
    }
    summaries.push_back(std::move(summary));
  }
  return summaries;
}

std::vector<KindSummary> summariseKinds(const py::Object& frame) {
  const py::Object kind = frame["weather"];
  const py::Object byKind = frame.attr("groupby")(kind);
  const py::Object date = byKind["date"];
  const py::Object waits = date.attr("diff")().attr("groupby")(kind);
  // The kinds are the index of every result, and so the first column of the table.
  const py::Table table = py::Table::fromPandas(
      byKind
          .attr("agg")(
              Aggregations{{"date", "count"}, {"temp_max", "mean"}, {"precipitation", "max"}})
          .attr("assign")(py::kw("wait", waits.attr("max")())));
  const auto firstDays = isoDates(date.attr("min")());

  const auto names = table.column<std::string>("weather");
  const auto days = table.column<double>("date");
  const auto highs = table.column<double>("temp_max");
  const auto wettest = table.column<double>("precipitation");
  const auto longest = table.column<std::optional<Days>>("wait");
  std::vector<KindSummary> summaries;
  for (std::size_t row = 0; row < names.size(); ++row) {
    std::optional<double> wait;
    if (longest[row]) wait = longest[row]->count();
    summaries.push_back({names[row], days[row], highs[row], wettest[row], firstDays[row], wait});
  }
  return summaries;
}

}  // namespace example
