// Dates and durations both ways. What to expect of random values comes from Python itself: integer
// division of whole counts, proleptic Gregorian days and exact fractions instead of NumPy's casts.

#include <limits>

#include "real_python.h"

namespace real {
namespace {

using namespace primitive;

// No number here needs more than 53 bits, so that all are compared as doubles.
using Row = std::vector<double>;
using Columns = std::vector<Row>;

template <class... Numbers>
Row row(Numbers... numbers) {
  return {double(numbers)...};
}
template <class... Vectors>
Columns columns(const Vectors&... vectors) {
  return {Row(vectors.begin(), vectors.end())...};
}
Row rowOf(const Columns& from, std::size_t index) {
  Row numbers;
  for (const Row& column : from) numbers.push_back(column[index]);
  return numbers;
}

Row fields(const Datetime64Component& d) {
  return row(d.year(), d.month(), d.day(), d.hour(), d.minute(), d.second(), d.millisecond());
}
Row fields(const Timedelta64Component& d) {
  return row(d.hour(), d.minute(), d.second(), d.millisecond_int(), d.millisecond());
}
Columns fields(const DatetimeColumns& d) {
  return columns(d.years(), d.months(), d.days(), d.hours(), d.minutes(), d.seconds(),
                 d.milliseconds());
}
Columns fields(const Timedelta64ArrayComponents& d) {
  return columns(d.hours(), d.minutes(), d.seconds(), d.milliseconds_int(), d.milliseconds());
}
Columns fields(const TimedeltaListComponent& d) {
  return columns(d.hours(), d.seconds(), d.milliseconds());
}

class Dates : public RealPython {
 protected:
  void SetUp() override {
    RealPython::SetUp();
    if (thrownBy([] { fetch::fetch(u"py.numpy.array"); }) != "nothing thrown") GTEST_SKIP();
    run(R"(
import numpy as np, random
from datetime import date, datetime, timedelta, timezone, tzinfo
from fractions import Fraction

def counts(unit, bound):
  r = random.Random(unit)
  return [r.randrange(-bound, bound) >> r.randrange(bound.bit_length()) for _ in range(2000)]

NS = dict(W=7*86400*10**9, D=86400*10**9, h=3600*10**9, m=60*10**9, s=10**9, ms=10**6, us=1000, ns=1)
def calendar(count, unit):
  if unit in 'YM':
    y, m = divmod(count, 12) if unit == 'M' else (count, 0)
    return 1970 + y, m + 1, 1, 0, 0, 0, 0.0
  days, rest = divmod(count * NS[unit], NS['D'])
  era, days = divmod(days, 146097)
  d = date.fromordinal(date(1970, 1, 1).toordinal() + days)
  h, rest = divmod(rest, NS['h'])
  m, rest = divmod(rest, NS['m'])
  s, rest = divmod(rest, NS['s'])
  return d.year + 400 * era, d.month, d.day, h, m, s, rest / 1e6

LENGTH = dict(NS, Y=31556952*10**9, M=30*86400*10**9, **{u: Fraction(1, 1000**(i + 1))
              for i, u in enumerate(('ps', 'fs', 'as'))})
def lengths(count, unit):
  fields = dict.fromkeys(('h', 'm', 's', 'ms', 'rest'), 0)
  if unit in fields: fields[unit] = count
  else: fields['rest'] = float(count * Fraction(LENGTH[unit]) / 10**6)
  return tuple(fields.values())

def columns(rows, nat):
  return [list(c) for c in zip(*(((0,) * len(r) if n else r) for r, n in zip(rows, nat)))]

def take(dtype, bound, rule):
  global ticks, nat, expected
  ticks = counts(dtype[3:-1], bound)
  nat = [i % 10 == 3 for i in range(2000)]
  expected = columns([rule(t, dtype[3:-1]) for t in ticks], nat)
  flat = np.array(ticks, 'i8').astype(dtype)
  flat[nat] = 'NaT'
  return flat
)");
  }

  /// Compares a vector with a Python list, or several with a list of lists.
  void same(const std::string& expected, Row got) {
    define("got", pyCreateNumericArray(got.size() * sizeof(double), 'd', got.data()));
    EXPECT_TRUE(holds("list(got) == " + expected)) << expected << "\n" << repr("list(got)");
  }
  void same(const std::string& expected, const Columns& got) {
    for (std::size_t i = 0; i < got.size(); ++i) {
      same(expected + "[" + std::to_string(i) + "]", got[i]);
    }
  }

  /// Takes 2,000 random values of a unit apart, every tenth not-a-time, as an array of three
  /// dimensions and one by one; the Python function `rule` says what to expect.
  template <class Array, class Scalar>
  void takeApart(const std::string& dtype, const std::string& bound, const std::string& rule) {
    SCOPED_TRACE(dtype);
    run("flat = take('" + dtype + "', " + bound + ", " + rule + ")");
    const Array all(eval("flat.reshape((20, 10, 10), order='F')").get());
    ASSERT_TRUE(all.isValid() && all.numel() == 2000);
    EXPECT_EQ(all.shape().second, (std::vector<std::uint64_t>{20, 10, 10}));
    const Columns got = fields(all);
    same("expected", got);
    same("[nat]", columns(all.natIndices()));

    const PyHandle flat = eval("flat");
    for (std::size_t i = 0; i < 2000; ++i) {
      const Scalar one(sequence::pyGetItem(flat.get(), i).get());
      ASSERT_TRUE(one.isValid() && one.isNaT() == (i % 10 == 3));
      ASSERT_EQ(fields(one), rowOf(got, i)) << i;
    }
  }
};

TEST_F(Dates, ComeApart) {
  for (const std::string unit : {"Y", "M", "W", "D", "h", "m", "s", "ms", "us", "ns"}) {
    takeApart<Datetime64ArrayComponents, Datetime64Component>(
        "M8[" + unit + "]", "min(2**62, 10**5 * LENGTH['Y'] // LENGTH['" + unit + "'])",
        "calendar");
  }
}

TEST_F(Dates, DurationsComeApart) {
  for (const std::string unit :
       {"Y", "M", "W", "D", "h", "m", "s", "ms", "us", "ns", "ps", "fs", "as"}) {
    takeApart<Timedelta64ArrayComponents, Timedelta64Component>("m8[" + unit + "]", "2**53",
                                                                "lengths");
    const Timedelta64ArrayComponents all(eval("flat").get());
    EXPECT_EQ(all.dtypeFlag(), unit);
    EXPECT_EQ(all.isMsInt(), unit == "ms");
    EXPECT_EQ(Timedelta64Component(eval("flat[0]").get()).isMsInt(), unit == "ms");
  }
}

TEST_F(Dates, PythonObjectsComeApartAndAreMadeAgain) {
  run(R"(
us = timedelta(microseconds=1)
ticks = counts('us', 62 * 10**15)
dates = [datetime(1970, 1, 1) + t * us for t in ticks]
objects = np.array(dates[:-2] + [None, date(1900, 2, 28)], object)
expected = columns([calendar(t, 'us') for t in ticks], [False] * 2000)
spans = [t * us for t in ticks]
parts = [[t // (86400 * 10**6) * 24 for t in ticks], [0] * 2000, [t // 10**6 % 86400 for t in ticks],
         [0] * 2000, [t % 10**6 / 1000 for t in ticks]]
made = []
)");
  const DatetimeListComponent list(eval("dates").get());
  const Columns taken = fields(list);
  same("expected", taken);
  EXPECT_TRUE(list.timezone().empty() && list.areTimeZoneElementsOfListSame());

  const PyHandle append = eval("made.append");
  for (std::size_t i = 0; i < 2000; ++i) {
    Row host = rowOf(taken, i);
    host[5] += host[6] / 1000;
    host[6] = -19800000;
    object::pyInvoke(append.get(), PyArguments{pyCreateDatetime(host, i % 2 == 0)}, PyKeywords{});
  }
  EXPECT_TRUE(holds("[d.replace(tzinfo=None) for d in made] == dates"));
  EXPECT_TRUE(holds("[d.utcoffset() for d in made] == [None, timedelta(hours=-5.5)] * 1000"));

  run("for c, v in zip(expected, (1900, 2, 28, 0, 0, 0, 0)): c[-2:] = [0, v]");
  const Datetime64ArrayComponents array(eval("objects").get());
  same("expected", fields(array));
  same("[[0] * 1998 + [1, 0]]", columns(array.natIndices()));
  same("parts[::2]", fields(TimedeltaListComponent(eval("spans").get())));
  same("parts", fields(Timedelta64ArrayComponents(eval("np.array(spans, object)").get())));
}

TEST_F(Dates, AreMadeFromNumbersAndTexts) {
  const std::uint64_t dims[] = {20, 100}, none[] = {0};
  Row values;
  std::vector<std::string> texts;
  const PyHandle ticks = eval("counts('us', 10**12)");
  define("ticks", ticks);
  const PyHandle shown = eval("[str(np.datetime64(t, 'us')) for t in ticks]");
  for (std::uint64_t i = 0; i < 2000; ++i) {
    values.push_back(double(number(sequence::pyGetItem(ticks.get(), i))) / 1000);
    texts.push_back(object::pyGetChars(sequence::pyGetItem(shown.get(), i).get()));
  }
  define("spans", pyCreateTimedelta64(values.data(), 2000, 2, dims));
  define("dates", pyCreateDatetime64(texts, 2000, 2, dims));
  define("empty", pyCreateTimedelta64(nullptr, 0, 1, none));
  EXPECT_TRUE(
      holds("[a.dtype.str[1:] for a in (spans, dates, empty)]"
            " == ['m8[us]', 'M8[us]', 'm8[us]'] and empty.shape == (0,)"));
  EXPECT_TRUE(
      holds("all([int(a[i % 20, i // 20].astype('i8')) for i in range(2000)] == ticks"
            " and a.shape == (20, 100) for a in (spans, dates))"));
  EXPECT_EQ(failure([&] { pyCreateDatetime64(texts, 3, 2, dims); }), nullReturned + " ValueError");
}

TEST_F(Dates, RoundingOfCreators) {
  // What str() shows of the new object, or the error that it raised.
  const auto made = [&](auto create) {
    std::string shown;
    const std::string failed =
        failure([&] { shown = object::pyGetChars(object::pyStr(create().get()).get()); });
    return shown.empty() ? failed.substr(failed.rfind(' ') + 1) : shown;
  };
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  const std::tuple<double, const char*, const char*> durations[] = {
      {1.5, "0:00:00.001500", "1500 microseconds"},
      {-1.5, "-1 day, 23:59:59.998501", "-1500 microseconds"},
      {0.0004, "0:00:00", "0 microseconds"},
      {0.0025, "0:00:00.000003", "3 microseconds"},
      {-1.0005, "-1 day, 23:59:59.999000", "-1001 microseconds"},
      {86400000.5, "1 day, 0:00:00.000500", "86400000500 microseconds"},
      {1e300, "OverflowError", "NaT"},
      {nan, "OverflowError", "NaT"},
  };
  for (const auto& [ms, timedelta, timedelta64] : durations) {
    EXPECT_EQ(made([m = ms] { return pyCreateTimedelta(m); }), timedelta);
    EXPECT_EQ(made([m = ms] { return pyCreateTimedelta64Scalar(m); }), timedelta64);
  }
  const std::pair<Row, const char*> dates[] = {
      {{2024.9, 1.9, 1, 0, 0, 1.0000004}, "2024-01-01 00:00:01"},
      {{2024, 2, 29, 23, 59, 59.9999994}, "2024-02-29 23:59:59.999999"},
      {{2024, 2, 29, 23, 59, 59.9999996}, "ValueError"},
      {{2024, 1, 1, 0, 0, nan}, "ValueError"},
      {{1e10, 1, 1, 0, 0, 0}, "ValueError"},
  };
  for (auto [row, datetime] : dates) {
    EXPECT_EQ(made([&, &c = row] { return pyCreateDatetime(c, true); }), datetime);
  }
}

TEST_F(Dates, LayoutsAndLowRanks) {
  run("base = np.arange(24).reshape(2, 3, 4)");
  for (const std::string layout :
       {"base", "np.asfortranarray(base)", "base[::-1, :, ::2]", "base.transpose(2, 0, 1)",
        "base[1, 1]", "base[1, 2, 3, ...]", "base[1, 2, 3]"}) {
    SCOPED_TRACE(layout);
    run("a = " + layout + "\nw = [int(i) for i in a.flatten('F')]");
    const Timedelta64ArrayComponents spans(eval("a.astype('m8[h]')").get());
    const Datetime64ArrayComponents days(eval("a.astype('M8[D]')").get());
    same("w", fields(spans)[0]);
    same("[1 + i for i in w]", fields(days)[2]);
    EXPECT_EQ(spans.shape(), days.shape());
    EXPECT_EQ(std::to_string(days.shape().second.size()), repr("a.ndim"));
  }
}

TEST_F(Dates, OtherInputsAreNotValid) {
  for (const char* const input :
       {"5", "None", "[1]", "np.array([1])", "np.array([], 'M8[s]')", "np.array([], 'm8[s]')",
        "np.array([None, datetime(2020, 1, 1)], object)", "np.array(date(2020, 1, 1), object)"}) {
    const PyHandle object = eval(input);
    EXPECT_FALSE(Datetime64Component(object.get()).isValid()) << input;
    EXPECT_FALSE(Timedelta64Component(object.get()).isValid()) << input;
    EXPECT_FALSE(Datetime64ArrayComponents(object.get()).isValid()) << input;
    EXPECT_EQ(Timedelta64ArrayComponents(object.get()).numel(), 0U) << input;
  }
  EXPECT_FALSE(Timedelta64ArrayComponents(eval("np.array([5], 'm8')").get()).isValid());
  EXPECT_TRUE(DatetimeListComponent(eval("[datetime(2020, 1, 1), 5]").get()).years().empty());
  EXPECT_TRUE(TimedeltaListComponent(eval("[timedelta(1), 5]").get()).hours().empty());
  EXPECT_EQ(failure([&] { Datetime64Component(eval("np.datetime64(1, 'ps')").get()); }),
            nullReturned + " OverflowError");
}

TEST_F(Dates, ObjectsHoursAndZones) {
  EXPECT_EQ(fields(Timedelta64Component(eval("np.array(timedelta(1, 61, 1500), object)").get())),
            row(24, 0, 61, 0, 1.5));
  EXPECT_EQ(fields(Datetime64Component(eval("np.array(datetime(2020, 1, 2, 3), object)").get())),
            row(2020, 1, 2, 3, 0, 0, 0));
  EXPECT_EQ(TimedeltaListComponent(eval("[timedelta(10**8)]").get()).hours()[0], -1894967296);

  run("zones = [datetime(2020, 1, 1, tzinfo=timezone(timedelta(minutes=m))) for m in (0, 90, 0)]\n"
      "class Odd(tzinfo):\n  def utcoffset(self, d): return timedelta(0)\n");
  const DatetimeListComponent list(eval("zones[:2]").get());
  EXPECT_EQ(list.timezone(), u"+01:30");
  EXPECT_FALSE(DatetimeListComponent(eval("zones").get()).areTimeZoneElementsOfListSame());
  EXPECT_TRUE(DatetimeListComponent(eval("zones[::2]").get()).areTimeZoneElementsOfListSame());
  EXPECT_EQ(thrownBy([&] {
              DatetimeListComponent(eval("[datetime(2020, 1, 1, 0, 0, 0, 0, Odd())]").get());
            }),
            "Timezone type not supported.");
}

}  // namespace
}  // namespace real
