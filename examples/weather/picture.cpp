#include "picture.h"

#include "analysis.h"

namespace example {
namespace {

using namespace pelion_core::api;

PyHandle number(double value) { return primitive::pyCreateFloat(value); }

PyHandle valuesOf(const PyHandle& frame, const char* column) {
  return callMethod(item(frame, text(column)), "to_numpy");
}

void drawMonths(const PyHandle& axes, const PyHandle& frame) {
  const PyHandle months = callByName(u"py.pandas.Grouper", {},
                                     {{text("key"), text("date")}, {text("freq"), text("MS")}});
  const PyHandle monthly = callMethod(
      callMethod(frame, "groupby", {months}), "agg",
      {aggregations({{"temp_min", "mean"}, {"temp_max", "mean"}, {"precipitation", "sum"}})});
  const PyHandle time = callMethod(member(monthly, "index"), "to_numpy");

  const PyHandle rain = callMethod(axes, "twinx");
  callMethod(rain, "bar", {time, valuesOf(monthly, "precipitation")},
             {{text("width"), number(20)},
              {text("color"), text("#4c78a8")},
              {text("alpha"), number(0.45)}});
  callMethod(rain, "set_ylabel", {text("precipitation in the month [mm]")},
             {{text("color"), text("#4c78a8")}});
  callMethod(axes, "fill_between",
             {time, valuesOf(monthly, "temp_min"), valuesOf(monthly, "temp_max")},
             {{text("color"), text("#e45756")}, {text("alpha"), number(0.7)}});
  callMethod(axes, "set_ylabel", {text("mean daily low to high [°C]")},
             {{text("color"), text("#e45756")}});
  callMethod(axes, "set_title", {text("Temperature and precipitation by month")});
}

void drawKinds(const PyHandle& axes, const PyHandle& frame) {
  const PyHandle shares =
      callByName(u"py.pandas.crosstab", {monthOfYear(frame), item(frame, text("weather"))},
                 {{text("normalize"), text("index")}});
  callMethod(shares, "plot", {},
             {{text("kind"), text("bar")},
              {text("stacked"), primitive::pyCreateBool(true)},
              {text("ax"), axes},
              {text("width"), number(0.9)},
              {text("rot"), primitive::pyCreateInt(0)},
              {text("colormap"), text("viridis")}});
  callMethod(axes, "set_xlabel", {text("month of the year")});
  callMethod(axes, "set_ylabel", {text("share of days")});
  callMethod(axes, "set_title", {text("Kinds of weather")});
  callMethod(axes, "legend", {},
             {{text("loc"), text("center left")},
              {text("bbox_to_anchor"), sequence::pyTupleCreate({number(1), number(0.5)})}});
}

}  // namespace

void drawWeather(const PyHandle& frame, const std::string& file) {
  callByName(u"py.matplotlib.use", {text("Agg")});  // no window, wherever this runs
  const PyHandle figure =
      callByName(u"py.matplotlib.figure.Figure", {},
                 {{text("figsize"), sequence::pyTupleCreate({number(10), number(8)})},
                  {text("layout"), text("constrained")}});
  const PyHandle axes = callMethod(figure, "subplots", {primitive::pyCreateInt(2)});
  drawMonths(item(axes, 0), frame);
  drawKinds(item(axes, 1), frame);
  callMethod(figure, "savefig", {text(file)}, {{text("dpi"), primitive::pyCreateInt(110)}});
}

}  // namespace example
