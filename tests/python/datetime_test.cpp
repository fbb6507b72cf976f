// Dates and durations made from a host's numbers and strings, and what is particular in decomposing
// them. That random ones decompose rightly is what the fuzzer of the components shows.

#include <limits>

#include "support/at_hand.h"
#include "support/real_python.h"

namespace {

using namespace real;

using Row = std::vector<double>;

class Dates : public WithTables {
 protected:
  /// What str() shows of the new object, or the error that it raised.
  template <class Create>
  std::string made(Create create) {
    PyHandle object;
    const std::string failed = failure([&] { object = create(); });
    return object ? pyGetChars(call("str", {object}).get()) : failed.substr(failed.rfind(' ') + 1);
  }
};

TEST_F(Dates, AreMadeInColumnMajorOrder) {
  const std::uint64_t dims[] = {3, 2}, none[] = {0};
  Row spans = {0.0015, -2.5, 86400000, 1e15, -1e15, 0};
  std::vector<std::string> texts = {
      "1969-12-31T23:59:59.999999", "2024-02-29", "NaT", "0001-01-01", "9999-12-31T23",
      "1970-01-01T00:00:00.001"};
  expect(pyCreateTimedelta64(spans.data(), 6, 2, dims),
         "x.dtype == 'm8[us]' and x.astype('i8').tolist() == [[2, 10**18], [-2500, -10**18],"
         " [86400000000, 0]]");
  expect(pyCreateDatetime64(texts, 6, 2, dims),
         "x.dtype == 'M8[us]' and str(x.T.ravel().tolist()) == str([datetime(1969, 12, 31, 23, 59,"
         " 59, 999999), datetime(2024, 2, 29), None, datetime(1, 1, 1), datetime(9999, 12, 31, 23),"
         " datetime(1970, 1, 1, 0, 0, 0, 1000)])");
  expect(pyCreateTimedelta64(nullptr, 0, 1, none), "x.shape == (0,) and x.dtype == 'm8[us]'");
  EXPECT_EQ(failure([&] { pyCreateDatetime64(texts, 3, 2, dims); }), nullReturned + " ValueError");
  expect(pyCreateDatetime64Scalar(texts[1]), "x.dtype == 'M8[D]' and str(x) == '2024-02-29'");

  PyArguments args = {eval("[['2020', '2021'], ['2022', 'NaT']]")};
  expect(pyCreateDatetime64Array(args), "x.flags.f_contiguous and str(x[1, 0]) == '2022'");
  run("array, numpy.array = numpy.array, None");
  EXPECT_EQ(pyCreateDatetime64Array(args), nullptr);
  run("numpy.array = array");
}

TEST_F(Dates, RoundToTheMicrosecond) {
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  // clang-format off
  const std::tuple<double, const char*, const char*> durations[] = {
      {1.5, "0:00:00.001500", "1500 microseconds"},
      {-1.5, "-1 day, 23:59:59.998501", "-1500 microseconds"},
      {0.0025, "0:00:00.000003", "3 microseconds"},
      {-1.0005, "-1 day, 23:59:59.999000", "-1001 microseconds"},
      {86400000.5, "1 day, 0:00:00.000500", "86400000500 microseconds"},
      {1e300, "OverflowError", "NaT"}, {nan, "OverflowError", "NaT"}};
  const std::pair<Row, const char*> dates[] = {
      {{2024.9, 1.9, 1, 0, 0, 1.0000004}, "2024-01-01 00:00:01"},
      {{2024, 2, 29, 23, 59, 59.9999994}, "2024-02-29 23:59:59.999999"},
      {{2024, 2, 29, 23, 59, 59.9999996}, "ValueError"},
      {{2024, 1, 1, 0, 0, nan}, "ValueError"}, {{1e10, 1, 1, 0, 0, 0}, "ValueError"}};
  // clang-format on
  for (const auto& [ms, timedelta, timedelta64] : durations) {
    EXPECT_EQ(made([m = ms] { return pyCreateTimedelta(m); }), timedelta);
    EXPECT_EQ(made([m = ms] { return pyCreateTimedelta64Scalar(m); }), timedelta64);
  }
  for (auto [row, datetime] : dates)
    EXPECT_EQ(made([&c = row] { return pyCreateDatetime(c, true); }), datetime);
}

TEST_F(Dates, OfOtherKindsAreNotValid) {
  for (const char* const input :
       {"5", "[1]", "numpy.array([1])", "numpy.array([], 'M8[s]')", "numpy.array([], 'm8[s]')",
        "numpy.array([None, datetime(2020, 1, 1)], object)",
        "numpy.array(date(2020, 1, 1), object)"}) {
    const PyHandle object = eval(input);
    EXPECT_FALSE(Datetime64Component(object.get()).isValid()) << input;
    EXPECT_FALSE(Timedelta64Component(object.get()).isValid()) << input;
    EXPECT_FALSE(Datetime64ArrayComponents(object.get()).isValid()) << input;
    EXPECT_EQ(Timedelta64ArrayComponents(object.get()).numel(), 0U) << input;
  }
  EXPECT_FALSE(Timedelta64ArrayComponents(eval("numpy.array([5], 'm8')").get()).isValid());
  EXPECT_FALSE(Timedelta64Component(eval("numpy.timedelta64(5)").get()).isValid());
  EXPECT_TRUE(DatetimeListComponent(eval("[datetime(2020, 1, 1), 5]").get()).years().empty());
  EXPECT_TRUE(TimedeltaListComponent(eval("[timedelta(1), 5]").get()).hours().empty());
  EXPECT_EQ(failure([&] { Datetime64Component(eval("numpy.datetime64(1, 'ps')").get()); }),
            nullReturned + " OverflowError");
}

TEST_F(Dates, DecomposeByUnitAndFirstElement) {
  const Timedelta64ArrayComponents ms(eval("numpy.array([5], 'm8[ms]')").get());
  EXPECT_EQ(ms.dtypeFlag(), "ms");
  EXPECT_TRUE(ms.isMsInt() &&
              Timedelta64Component(eval("numpy.timedelta64(5, 'ms')").get()).isMsInt());
  EXPECT_FALSE(Timedelta64ArrayComponents(eval("numpy.array([5], 'm8[us]')").get()).isMsInt());
  EXPECT_TRUE(pyTypeIsTimedelta64(eval("numpy.timedelta64").get()));
  EXPECT_FALSE(pyTypeIsTimedelta64(eval("timedelta").get()));
  EXPECT_EQ(TimedeltaListComponent(eval("[timedelta(10**8)]").get()).hours()[0], -1894967296);

  // A subclass may show its values in its own way, so they are asked for one by one.
  run("class Own(numpy.ndarray): pass");
  const Datetime64ArrayComponents dates(
      eval("numpy.array(['2024-02-29'], 'M8[s]').view(Own)").get());
  EXPECT_EQ(dates.years()[0] * 100 + dates.days()[0], 202429);
  const Timedelta64ArrayComponents spans(eval("numpy.array([90061], 'm8[s]').view(Own)").get());
  EXPECT_EQ(spans.seconds()[0], 90061);

  // One value: an array of one element too, and an object that converts itself.
  run(R"(
span = timedelta(1, 3661)
class Converts:
  dtype, size = numpy.dtype(object), 1
  def item(self, index): return span
  def astype(self, dtype): return span
)");
  for (const char* one :
       {"Converts()", "numpy.array(span, object)", "numpy.array([span], object)"}) {
    const Timedelta64Component component(eval(one).get());
    EXPECT_EQ(component.hour() * 10000 + component.second(), 243661) << one;
  }
}

TEST_F(Dates, NameTheirZone) {
  run(R"(
def at(zone): return datetime(2020, 7, 1, tzinfo=zone)
def offset(**parts): return at(timezone(timedelta(**parts)))
class Odd(tzinfo):
  def utcoffset(self, d): return timedelta(0)
try: from zoneinfo import ZoneInfo; berlin = ZoneInfo('Europe/Berlin')
except Exception: ZoneInfo, berlin = object, None
class Moving(ZoneInfo):  # names itself anew at every question
  keys = ['B', 'A', 'A']
  key = property(lambda z: z.keys.pop())
zones = [offset(hours=h) for h in (0, 1, 0)]
)");
  const bool hasZones = holds("berlin is not None");
  // clang-format off
  const std::pair<const char*, const char*> rows[] = {
      {"at(None)", ""}, {"at(timezone.utc)", "UTC"}, {"offset(hours=14)", "+14:00"},
      {"offset(hours=-5, minutes=-30)", "-05:30"}, {"offset(minutes=-30)", "-00:30"},
      {"offset(minutes=90, seconds=45 if sys.version_info > (3, 7) else 0)", "+01:30"},
      {"at(berlin)", hasZones ? "Europe/Berlin" : ""}};
  // clang-format on
  for (const auto& [date, zone] : rows)
    EXPECT_EQ(pyDatetimeGetTimezone(eval(date).get()), zone) << date;
  EXPECT_EQ(pyDatetimeIsZoneInfoBased(eval("at(berlin)").get()), hasZones);
  EXPECT_EQ(thrownBy([&] { DatetimeListComponent(eval("[at(Odd())]").get()); }),
            "Timezone type not supported.");
  if (hasZones) {
    const DatetimeListComponent moved(eval("[at(Moving('Europe/Berlin'))] * 3").get());
    EXPECT_EQ(moved.timezone(), u"B");
    EXPECT_FALSE(moved.areTimeZoneElementsOfListSame());
  }
  EXPECT_EQ(DatetimeListComponent(eval("zones[:2]").get()).timezone(), u"+01:00");
  EXPECT_FALSE(DatetimeListComponent(eval("zones").get()).areTimeZoneElementsOfListSame());
  EXPECT_TRUE(DatetimeListComponent(eval("zones[::2]").get()).areTimeZoneElementsOfListSame());

  std::uint64_t bad = 77;
  EXPECT_TRUE(pyEachObjTypeOfListIsDatetime(eval("[]").get(), bad));
  EXPECT_EQ(bad, 77U);
  EXPECT_FALSE(pyEachObjTypeOfListIsDatetime(eval("zones + [5]").get(), bad));
  EXPECT_EQ(bad, 4U);
  EXPECT_FALSE(pyEachObjTypeOfListIsTimeDelta(eval("[timedelta(1), zones]").get(), bad));
  EXPECT_EQ(bad, 2U);
}

TEST_F(Dates, StandInsForModulesSeeEveryCall) {
  run(R"(
import types
calls = []
class StandIn(types.ModuleType):
  def __getattr__(self, name):
    real = getattr(numpy, name)
    def recorded(*args, **kwargs):
      calls.append(name + (str(args) if name.endswith('64') else ''))
      return real(*args, **kwargs)
    return recorded if callable(real) else real
sys.modules['numpy'] = StandIn('numpy')
)");
  const std::uint64_t dims[] = {2};
  double spans[] = {1.5, std::numeric_limits<double>::quiet_NaN()};
  pyCreateTimedelta64(spans, 2, 1, dims);
  std::vector<std::string> texts = {"2024-02-29", "NaT"};
  pyCreateDatetime64(texts, 2, 1, dims);
  const Datetime64ArrayComponents dates(eval("numpy.array(['2024-02-29', 'NaT'], 'M8[D]')").get());
  run("sys.modules['numpy'] = numpy");
  EXPECT_EQ(dates.natIndices(), (std::vector<bool>{false, true}));
  EXPECT_EQ(repr("' '.join(calls)"),
            "\"timedelta64(1500, 'us') timedelta64('NaT', 'us') array reshape"
            " datetime64('2024-02-29',) datetime64('NaT',) array reshape isnat\"");
}

}  // namespace
