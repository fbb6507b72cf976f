#include "picture.h"

#include "analysis.h"

namespace example {
namespace {

using py::kw;

void drawMonths(const py::Session& python, const py::Object& axes, const py::Object& frame) {
  const py::Object months = python("pandas.Grouper")(kw("key", "date"), kw("freq", "MS"));
  const py::Object monthly = frame.attr("groupby")(months).attr("agg")(
      Aggregations{{"temp_min", "mean"}, {"temp_max", "mean"}, {"precipitation", "sum"}});
  const py::Object time = monthly.attr("index").attr("to_numpy")();

  const py::Object rain = axes.attr("twinx")();
  rain.attr("bar")(time, monthly["precipitation"], kw("width", 20), kw("color", "#4c78a8"),
                   kw("alpha", 0.45));
  rain.attr("set_ylabel")("precipitation in the month [mm]", kw("color", "#4c78a8"));
  axes.attr("fill_between")(time, monthly["temp_min"], monthly["temp_max"], kw("color", "#e45756"),
                            kw("alpha", 0.7));
  axes.attr("set_ylabel")("mean daily low to high [°C]", kw("color", "#e45756"));
  axes.attr("set_title")("Temperature and precipitation by month");
}

void drawKinds(const py::Session& python, const py::Object& axes, const py::Object& frame) {
  const py::Object shares =
      python("pandas.crosstab")(monthOfYear(frame), frame["weather"], kw("normalize", "index"));
  shares.attr("plot")(kw("kind", "bar"), kw("stacked", true), kw("ax", axes), kw("width", 0.9),
                      kw("rot", 0), kw("colormap", "viridis"));
  axes.attr("set_xlabel")("month of the year");
  axes.attr("set_ylabel")("share of days");
  axes.attr("set_title")("Kinds of weather");
  axes.attr("legend")(kw("loc", "center left"), kw("bbox_to_anchor", std::pair(1, 0.5)));
}

}  // namespace

void drawWeather(const py::Session& python, const py::Object& frame, const std::string& file) {
  python("matplotlib.use")("Agg");  // no window, wherever this runs
  const py::Object figure = python("matplotlib.figure.Figure")(kw("figsize", std::pair(10, 8)),
                                                               kw("layout", "constrained"));
  const py::Object axes = figure.attr("subplots")(2);
  drawMonths(python, axes[0], frame);
  drawKinds(python, axes[1], frame);
  figure.attr("savefig")(file, kw("dpi", 110));
}

}  // namespace example
