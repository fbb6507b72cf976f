// Dates and durations both ways. What to expect of random values comes from Python itself: integer
// division of whole counts, proleptic Gregorian days and exact fractions instead of NumPy's casts.

#include <cmath>
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
  return {static_cast<double>(numbers)...};
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
    try {
      fetch::fetch(u"py.numpy.array");
    } catch (const fetch::SearchFailure&) {
      GTEST_SKIP() << "no NumPy";
    }
    run(R"(
import numpy as np, random
from datetime import date, datetime, timedelta, timezone, tzinfo
from fractions import Fraction

def counts(unit, bound):
  r = random.Random(unit)
  return [r.randrange(-bound, bound) >> r.randrange(bound.bit_length()) for _ in range(2000)]

NS = dict(W=7*86400*10**9, D=86400*10**9, h=3600*10**9, m=60*10**9, s=10**9, ms=10**6, us=10**3, ns=1)
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
)");
  }

  /// Compares a vector with a Python list, or several with a list of lists.
  void same(const std::string& expected, Row got) {
    define("got", pyCreateNumericArray(got.size() * sizeof(double), 'd', got.data()));
    EXPECT_TRUE(holds("list(got) == " + expected)) << expected << "\n" << repr("list(got)");
  }
  void same(const std::string& expected, const Columns& got) {
    EXPECT_EQ(repr("len(" + expected + ")"), std::to_string(got.size()));
    for (std::size_t i = 0; i < got.size(); ++i) {
      same(expected + "[" + std::to_string(i) + "]", got[i]);
    }
  }

  /// Takes 2,000 random values of a unit apart, every tenth not-a-time, as an array of three
  /// dimensions and one by one; the Python function `rule` says what to expect.
  template <class Array, class Scalar>
  void takeApart(const std::string& dtype, const std::string& bound, const std::string& rule) {
    SCOPED_TRACE(dtype);
    run("dtype, rule, bound = '" + dtype + "', " + rule + ", " + bound);
    run("unit = dtype[3:-1]\n"
        "ticks = counts(unit, bound)\n"
        "nat = [i % 10 == 3 for i in range(2000)]\n"
        "expected = columns([rule(t, unit) for t in ticks], nat)\n"
        "flat = np.array(ticks, 'i8').astype(dtype)\n"
        "flat[nat] = 'NaT'\n");
    const Array all(eval("flat.reshape((20, 10, 10), order='F')").get());
    EXPECT_TRUE(all.isValid());
    ASSERT_EQ(all.numel(), 2000U);
    EXPECT_EQ(all.shape().first, 3U);
    EXPECT_EQ(all.shape().second, (std::vector<std::uint64_t>{20, 10, 10}));
    const Columns got = fields(all);
    same("expected", got);
    same("[nat]", columns(all.natIndices()));

    const PyHandle flat = eval("flat");
    for (std::size_t i = 0; i < 2000; ++i) {
      const Scalar one(sequence::pyGetItem(flat.get(), i).get());
      ASSERT_TRUE(one.isValid());
      ASSERT_EQ(one.isNaT(), i % 10 == 3);
      ASSERT_EQ(fields(one), rowOf(got, i)) << i;
    }
  }
};

TEST_F(Dates, ComeApart) {
  const char* const units[][2] = {
      {"Y", "10**5"},  {"M", "10**6"},  {"W", "10**7"},       {"D", "10**8"},  {"h", "10**9"},
      {"m", "10**11"}, {"s", "10**13"}, {"ms", "3 * 10**15"}, {"us", "2**61"}, {"ns", "2**62"}};
  for (const auto& [unit, bound] : units) {
    const std::string dtype = std::string("M8[") + unit + "]";
    takeApart<Datetime64ArrayComponents, Datetime64Component>(dtype, bound, "calendar");
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
    EXPECT_FALSE(Timedelta64Component(eval("flat[3]").get()).isMsInt()) << "not-a-time";
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
whole = [t // (86400 * 10**6) * 24 for t in ticks]
within = [t // 10**6 % 86400 for t in ticks]
rest = [t % 10**6 / 1000 for t in ticks]
)");
  const DatetimeListComponent list(eval("dates").get());
  same("expected", fields(list));
  EXPECT_TRUE(list.timezone().empty());
  EXPECT_TRUE(list.areTimeZoneElementsOfListSame());

  const Columns taken = fields(list);
  const PyHandle made = eval("[]");
  const PyHandle append = object::pyGetMember(made.get(), "append");
  for (std::size_t i = 0; i < 2000; ++i) {
    Row host = rowOf(taken, i);
    host[5] += host[6] / 1000;
    host[6] = -19800000;
    for (const bool naive : {true, false}) {
      object::pyInvoke(append.get(), PyArguments{pyCreateDatetime(host, naive)}, PyKeywords{});
    }
  }
  define("made", made);
  EXPECT_TRUE(holds("made[::2] == dates"));
  EXPECT_TRUE(holds("[d.replace(tzinfo=None) for d in made[1::2]] == dates"));
  EXPECT_TRUE(holds("{d.utcoffset() for d in made[1::2]} == {timedelta(hours=-5.5)}"));

  run("for c in expected: c[-2:] = [0, 0]\nfor c, v in zip(expected, (1900, 2, 28)): c[-1] = v");
  const Datetime64ArrayComponents array(eval("objects").get());
  same("expected", fields(array));
  same("[[0] * 1998 + [1, 0]]", columns(array.natIndices()));

  same("[whole, within, rest]", fields(TimedeltaListComponent(eval("spans").get())));
  const Timedelta64ArrayComponents spans(eval("np.array(spans, object)").get());
  same("[whole, [0] * 2000, within, [0] * 2000, rest]", fields(spans));
  EXPECT_EQ(spans.dtypeFlag(), "");
}

TEST_F(Dates, AreMadeFromNumbersAndTexts) {
  const std::uint64_t dims[] = {20, 100};
  Row values;
  std::vector<std::string> texts;
  run("ticks = counts('us', 10**12)");
  for (int i = 0; i < 2000; ++i) {
    const std::string tick = "ticks[" + std::to_string(i) + "]";
    values.push_back(double(number(eval(tick))) / 1000);
    texts.push_back(object::pyGetChars(eval("str(np.datetime64(" + tick + ", 'us'))").get()));
  }
  define("spans", pyCreateTimedelta64(values.data(), 2000, 2, dims));
  define("dates", pyCreateDatetime64(texts, 2000, 2, dims));
  for (const std::string made : {"spans", "dates"}) {
    EXPECT_EQ(repr(made + ".shape"), "(20, 100)");
    EXPECT_TRUE(holds("[int(" + made +
                      "[i % 20, i // 20].astype('i8')) for i in range(2000)]"
                      " == ticks"));
  }
  EXPECT_TRUE(holds("(spans.dtype.str[1:], dates.dtype.str[1:]) == ('m8[us]', 'M8[us]')"));

  const std::uint64_t none[] = {0};
  define("empty", pyCreateTimedelta64(nullptr, 0, 1, none));
  EXPECT_TRUE(holds("(empty.shape, empty.dtype.str[1:]) == ((0,), 'm8[us]')"));
  EXPECT_EQ(thrownBy([&] { pyCreateDatetime64(texts, 3, 2, dims); }), nullReturned);
  EXPECT_EQ(pending(), "ValueError");
}

TEST_F(Dates, RoundingOfCreators) {
  // What str() shows of the new object, or the error that it raised.
  const auto made = [&](auto create) -> std::string {
    try {
      return object::pyGetChars(object::pyStr(create().get()).get());
    } catch (const InternalPyException&) {
      return pending();
    }
  };
  constexpr double nan = std::numeric_limits<double>::quiet_NaN();
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const struct {
    double milliseconds;
    const char* timedelta;
    const char* timedelta64;
  } durations[] = {
      {1.5, "0:00:00.001500", "1500 microseconds"},
      {-1.5, "-1 day, 23:59:59.998501", "-1500 microseconds"},
      {0.0004, "0:00:00", "0 microseconds"},
      {0.0025, "0:00:00.000003", "3 microseconds"},
      {-1.0005, "-1 day, 23:59:59.999000", "-1001 microseconds"},
      {86400000.5, "1 day, 0:00:00.000500", "86400000500 microseconds"},
      {1e300, "OverflowError", "NaT"},
      {nan, "OverflowError", "NaT"},
      {-infinity, "OverflowError", "NaT"},
  };
  for (const auto& [milliseconds, timedelta, timedelta64] : durations) {
    EXPECT_EQ(made([&, m = milliseconds] { return pyCreateTimedelta(m); }), timedelta);
    EXPECT_EQ(made([&, m = milliseconds] { return pyCreateTimedelta64Scalar(m); }), timedelta64);
  }
  const struct {
    Row components;
    const char* datetime;
  } dates[] = {
      {{2024.9, 1.9, 1, 0, 0, 1.0000004}, "2024-01-01 00:00:01"},
      {{2024, 2, 29, 23, 59, 59.9999994}, "2024-02-29 23:59:59.999999"},
      {{2024, 2, 29, 23, 59, 59.9999996}, "ValueError"},
      {{2024, 1, 1, 0, 0, nan}, "ValueError"},
      {{1e10, 1, 1, 0, 0, 0}, "ValueError"},
  };
  for (auto [components, datetime] : dates) {
    EXPECT_EQ(made([&, &c = components] { return pyCreateDatetime(c, true); }), datetime);
  }
  run("keep, np.array = np.array, None");
  PyArguments args;
  EXPECT_FALSE(pyCreateDatetime64Array(args));
  EXPECT_FALSE(pyCreateTimedelta64Array(args));
  run("np.array = keep");
}

TEST_F(Dates, LayoutsAndLowRanks) {
  run("base = np.arange(24).reshape(2, 3, 4)");
  for (const char* const layout :
       {"base", "np.asfortranarray(base)", "base[::-1, :, ::2]", "base.transpose(2, 0, 1)",
        "base[1, 1]", "base[1, 2, 3, ...]", "base[1, 2, 3]"}) {
    SCOPED_TRACE(layout);
    run("a = " + std::string(layout) + "\nx = np.atleast_3d(a)\n" +
        "w = [int(x[i, j, k]) for k in range(x.shape[2]) for j in range(x.shape[1])"
        " for i in range(x.shape[0])]\n");
    const Timedelta64ArrayComponents spans(eval("a.astype('m8[h]')").get());
    const Datetime64ArrayComponents days(eval("a.astype('M8[D]')").get());
    same("w", fields(spans)[0]);
    same("[1 + i for i in w]", fields(days)[2]);
    EXPECT_EQ(spans.shape(), days.shape());
    EXPECT_EQ(std::to_string(days.shape().first), repr("a.ndim"));
    EXPECT_EQ(days.shape().second.size(), days.shape().first);
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
    EXPECT_FALSE(exception::pyErrorOccurred()) << input;
  }
  EXPECT_FALSE(Timedelta64Component(eval("np.datetime64('2020')").get()).isValid());
  EXPECT_FALSE(Timedelta64Component(eval("np.timedelta64(5)").get()).isValid());
  EXPECT_FALSE(Timedelta64ArrayComponents(eval("np.array([5], 'm8')").get()).isValid());
  EXPECT_TRUE(Timedelta64Component(eval("np.timedelta64('NaT')").get()).isNaT());

  EXPECT_TRUE(DatetimeListComponent(eval("[datetime(2020, 1, 1), 5]").get()).years().empty());
  EXPECT_TRUE(TimedeltaListComponent(eval("[timedelta(1), 5]").get()).hours().empty());
  EXPECT_EQ(thrownBy([&] { TimedeltaListComponent(eval("5").get()); }),
            "PySequence_Length failed.");
  exception::pyErrorClear();
  EXPECT_EQ(thrownBy([&] { Datetime64Component(eval("np.datetime64(1, 'ps')").get()); }),
            nullReturned);
  EXPECT_EQ(pending(), "OverflowError");
}

TEST_F(Dates, ObjectsHoursZonesAndMoves) {
  const Timedelta64Component span(eval("np.array(timedelta(1, 3661, 1500), object)").get());
  EXPECT_EQ(fields(span), row(24, 0, 3661, 0, 1.5));
  const TimedeltaListComponent wrapped(eval("[timedelta(10**8)]").get());
  EXPECT_EQ(fields(wrapped)[0], row(-1894967296));
  const Datetime64Component day(eval("np.array(datetime(2020, 1, 2, 3, 4, 5, 6), object)").get());
  EXPECT_EQ(fields(day), row(2020, 1, 2, 3, 4, 5, 0.006));

  run("zones = [datetime(2020, 1, 1, tzinfo=timezone(timedelta(minutes=m))) for m in (0, 90, 0)]");
  DatetimeListComponent list(eval("zones[:2]").get());
  EXPECT_EQ(list.timezone(), u"+01:30");
  EXPECT_FALSE(list.areTimeZoneElementsOfListSame());
  EXPECT_FALSE(DatetimeListComponent(eval("zones").get()).areTimeZoneElementsOfListSame());
  EXPECT_TRUE(DatetimeListComponent(eval("zones[::2]").get()).areTimeZoneElementsOfListSame());
  run("class Odd(tzinfo):\n  def utcoffset(self, d): return timedelta(0)\n");
  EXPECT_EQ(
      thrownBy([&] { DatetimeListComponent(eval("[datetime(2020, 1, 1, tzinfo=Odd())]").get()); }),
      "Timezone type not supported.");

  const DatetimeListComponent moved = std::move(list);
  EXPECT_EQ(fields(moved)[0], row(2020, 2020));
  EXPECT_TRUE(list.years().empty() && list.seconds().empty() && list.timezone().empty());
  EXPECT_TRUE(Datetime64ArrayComponents().minutes().empty());
}

TEST_F(Dates, NothingGrows) {
  const PyHandle date = eval("np.datetime64('2020-01-01T00:00:00.5')");
  const PyHandle spans = eval("np.array([timedelta(1), None], object)");
  const PyHandle list = eval("[datetime(2020, 1, 1, tzinfo=timezone.utc)]");
  const PyHandle odd = eval("np.array([1], 'M8[ps]')");
  const auto once = [&] {
    const Datetime64Component one(date.get());
    const Datetime64ArrayComponents same(date.get());
    const Timedelta64ArrayComponents array(spans.get());
    const DatetimeListComponent zoned(list.get());
    EXPECT_EQ(thrownBy([&] { Datetime64ArrayComponents(odd.get()); }), nullReturned);
    exception::pyErrorClear();
    Row host = {2020, 1, 1, 0, 0, 0, 3600000};
    pyCreateDatetime(host, false);
    const std::uint64_t dims[] = {1};
    pyCreateTimedelta64(host.data(), 1, 1, dims);
  };
  const auto counted = [&] {
    std::vector<std::int64_t> state = {number(eval("__import__('sys').getallocatedblocks()"))};
    for (const PyHandle& each : {date, spans, list, odd}) state.push_back(references(each));
    return state;
  };
  for (int i = 0; i < 100; ++i) once();  // caches of the interpreter fill
  auto before = counted();
  for (int i = 0; i < 10000; ++i) once();
  const auto after = counted();
  EXPECT_LT(after[0] - before[0], 1000);  // one block a round would be 10,000
  before[0] = after[0];
  EXPECT_EQ(after, before);
}

}  // namespace
}  // namespace real
