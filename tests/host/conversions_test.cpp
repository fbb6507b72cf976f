// Values to Python and back: random ones at and around their bounds, compared with what Python says
// about them.

#include <array>
#include <chrono>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "host_python.h"

namespace front {
namespace {

using namespace std::chrono;
using Conversions = Host;

std::mt19937_64 random(20240229);

/// A value near a bound, near zero or anywhere.
template <class T>
T anywhere() {
  const T bounds[] = {std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), T(0)};
  const std::uint64_t bits = random();
  if (bits % 4 == 3) return static_cast<T>(random());
  return static_cast<T>(static_cast<std::uint64_t>(bounds[bits % 4]) + random() % 5 - 2);
}

/// Python's value of a type in each other type: the same, or `OverflowError` when it is outside.
template <class To, class From>
void crosses(py::Session& python, From value) {
  const py::Object object = py::Object::of(value);
  const py::Object fits =
      python("operator.and_")(python("operator.le")(std::numeric_limits<To>::min(), object),
                              python("operator.ge")(std::numeric_limits<To>::max(), object));
  if (fits.as<bool>()) {
    EXPECT_EQ(py::Object::of(object.as<To>()), object);
    EXPECT_EQ(py::Object::of(std::vector<From>{value}).template as<std::vector<To>>(),
              std::vector<To>{static_cast<To>(value)});
  } else {
    for (const bool single : {true, false}) {
      try {
        if (single) {
          object.as<To>();
        } else {
          py::Object::of(std::vector<From>{value}).template as<std::vector<To>>();
        }
        ADD_FAILURE() << object.str() << " read as an integer of " << sizeof(To) << " bytes";
      } catch (const py::Error& error) {
        EXPECT_EQ(error.type(), "OverflowError") << error.what();
      }
    }
  }
}

template <class From>
void crossesToAll(py::Session& python) {
  const From value = anywhere<From>();
  crosses<std::int8_t>(python, value);
  crosses<std::uint8_t>(python, value);
  crosses<std::int16_t>(python, value);
  crosses<std::uint16_t>(python, value);
  crosses<std::int32_t>(python, value);
  crosses<std::uint32_t>(python, value);
  crosses<std::int64_t>(python, value);
  crosses<std::uint64_t>(python, value);
}

TEST_F(Conversions, IntegersOfEveryWidth) {
  for (int i = 0; i < 25; ++i) {
    crossesToAll<std::int8_t>(python);
    crossesToAll<std::uint8_t>(python);
    crossesToAll<std::int16_t>(python);
    crossesToAll<std::uint16_t>(python);
    crossesToAll<std::int32_t>(python);
    crossesToAll<std::uint32_t>(python);
    crossesToAll<std::int64_t>(python);
    crossesToAll<std::uint64_t>(python);
  }
}

TEST_F(Conversions, FloatingNumbers) {
  for (int i = 0; i < 300; ++i) {
    const std::uint64_t bits = random();
    double value = 0;
    std::memcpy(&value, &bits, sizeof value);
    EXPECT_TRUE(holdsFor(value, "x == float('" + py::Object::of(value).repr() + "') or x != x"));
    const bool fits = !std::isfinite(value) || std::isfinite(static_cast<float>(value));
    const std::string error = thrownBy([&] { py::Object::of(value).as<float>(); });
    const std::string all =
        thrownBy([&] { py::Object::of(std::vector<double>{value}).as<std::vector<float>>(); });
    EXPECT_EQ(error.find("OverflowError") == 0, !fits) << value << error;
    EXPECT_EQ(all.find("OverflowError") == 0, !fits) << value << all;
    const auto complex = py::Object::of(std::complex<double>(value, 1)).as<std::complex<double>>();
    EXPECT_TRUE(complex.real() == value || std::isnan(value));
  }
}

TEST_F(Conversions, Texts) {
  for (int i = 0; i < 300; ++i) {
    std::u16string utf16;
    for (std::size_t size = random() % 6; utf16.size() < size;) {
      const char16_t pool[] = {u'\0', u'a', u'\xE4', u'\x7FF', u'\x800', u'\xFEFF', u'\xFFFE'};
      utf16 += pool[random() % std::size(pool)];
      if (random() % 8 == 0) utf16 += u"\xD83D\xDE00";
    }
    const py::Object object = py::Object::of(utf16);
    EXPECT_EQ(object.as<std::u16string>(), utf16);
    EXPECT_EQ(py::Object::of(object.as<std::string>()), object);
    EXPECT_TRUE(
        holdsFor(utf16, "len(x.encode('utf-16-le')) == " + std::to_string(2 * utf16.size())));
  }
  EXPECT_EQ(thrownBy([] { py::Object::of("\xC3"); }).find("UnicodeDecodeError"), 0u);
  const py::Object surrogate = python("chr")(0xD800);
  EXPECT_EQ(surrogate.str(), "\\ud800");
  EXPECT_EQ(thrownBy([&] { surrogate.as<std::string>(); }).find("UnicodeEncodeError"), 0u);
  EXPECT_EQ(thrownBy([&] { surrogate.as<std::u16string>(); }).find("UnicodeEncodeError"), 0u);
}

TEST_F(Conversions, TimesAndDurations) {
  python.run(
      "import datetime\nepoch = datetime.datetime(1970, 1, 1, tzinfo=datetime.timezone.utc)");
  for (int i = 0; i < 300; ++i) {
    const microseconds count(anywhere<std::int64_t>() >> random() % 20);
    const std::string expression =
        "x == epoch + datetime.timedelta(microseconds=" + std::to_string(count.count()) + ")";
    const time_point<system_clock, microseconds> instant(count);
    // Python's calendar has the years 1 to 9999.
    const std::string error = thrownBy([&] {
      const py::Object object = py::Object::of(instant);
      python("__main__").set("x", object);
      EXPECT_TRUE(holds(expression));
      EXPECT_EQ((object.as<time_point<system_clock, microseconds>>()), instant);
    });
    const bool inCalendar = count >= -hours(24) * 719162 && count < hours(24) * 2932897;
    EXPECT_EQ(error == "nothing thrown", inCalendar) << count.count() << error;
    EXPECT_EQ(py::Object::of(count).as<microseconds>(), count);
    const bool fits = count.count() / 1000000 < 9223372036 && count.count() / 1000000 > -9223372036;
    const std::string narrow = thrownBy([&] { py::Object::of(count).as<nanoseconds>(); });
    EXPECT_EQ(narrow == "nothing thrown", fits) << count.count() << narrow;
  }
  EXPECT_EQ(py::Object::of(nanoseconds(-1)).as<microseconds>(), microseconds(-1));
  EXPECT_EQ(python.eval("datetime.timedelta(hours=-1, seconds=1)").as<hours>(), hours(-1));
  EXPECT_EQ(thrownBy([&] {
              python.eval("datetime.timedelta.max").as<microseconds>();
            }).find("OverflowError"),
            0u);
  // A time zone counts, and none is UTC.
  using Seconds = time_point<system_clock, seconds>;
  EXPECT_EQ(python.eval("datetime.datetime(1970, 1, 1, 1)").as<Seconds>(), Seconds(hours(1)));
  EXPECT_EQ(python
                .eval("datetime.datetime(1970, 1, 1, 1, tzinfo=datetime.timezone("
                      "datetime.timedelta(hours=2)))")
                .as<Seconds>(),
            Seconds(hours(-1)));
}

TEST_F(Conversions, Containers) {
  const std::map<std::string, std::vector<std::optional<int>>> lists{{"a", {1, {}, -3}}, {"", {}}};
  EXPECT_TRUE(holdsFor(lists, "x == {'a': [1, None, -3], '': []}"));
  EXPECT_EQ((py::Object::of(lists).as<std::map<std::string, std::vector<std::optional<int>>>>()),
            lists);
  const std::tuple<bool, std::array<double, 2>, std::pair<int, std::string>> mixed{
      true, {1, 2}, {3, "d"}};
  EXPECT_TRUE(holdsFor(mixed, "x[0] is True and list(x[1]) == [1, 2] and x[2] == (3, 'd')"));
  EXPECT_EQ((py::Object::of(mixed).as<std::decay_t<decltype(mixed)>>()), mixed);
  const std::set<std::string> names{"x", "y"};
  EXPECT_TRUE(holdsFor(names, "x == {'x', 'y'}"));
  EXPECT_EQ(py::Object::of(names).as<std::set<std::string>>(), names);
  EXPECT_EQ(py::Object::of(std::vector<bool>{true, false}).as<std::vector<bool>>(),
            (std::vector<bool>{true, false}));
  EXPECT_TRUE(python.eval("None").as<std::optional<int>>() == std::nullopt);
}

TEST_F(Conversions, RefuseWhatDoesNotFit) {
  struct Case {
    const char* expression;
    const char* error;
    std::function<void(const py::Object&)> read;
  };
  const auto as = [](auto like) {
    return [](const py::Object& object) { object.as<decltype(like)>(); };
  };
  const Case cases[] = {
      {"2.5", "TypeError", as(int())},
      {"'1'", "TypeError", as(int())},
      {"'1'", "TypeError", as(double())},
      {"'1'", "TypeError", as(std::complex<double>())},
      {"10 ** 400", "OverflowError", as(double())},
      {"-1", "OverflowError", as(unsigned())},
      {"2 ** 64", "OverflowError", as(std::uint64_t())},
      {"1", "TypeError", as(bool())},
      {"b'x'", "TypeError", as(std::string())},
      {"1", "TypeError", as(std::u16string())},
      {"'abc'", "TypeError", as(std::vector<std::string>())},
      {"'abc'", "TypeError", as(std::vector<int>())},
      {"[1, 2.5]", "TypeError", as(std::vector<int>())},
      {"[1, 'x']", "TypeError", as(std::vector<double>())},
      {"[300]", "OverflowError", as(std::vector<std::uint8_t>())},
      {"[1, 2, 3]", "ValueError", as(std::array<int, 2>())},
      {"(1,)", "ValueError", as(std::pair<int, int>())},
      {"[1]", "TypeError", as(std::map<int, int>())},
      {"1", "TypeError", as(std::set<int>())},
      {"1", "TypeError", as(microseconds())},
      {"'2024-02-29'", "TypeError", as(system_clock::time_point())},
      {"None", "TypeError", as(double())},
  };
  for (const Case& each : cases) {
    const std::string error = thrownBy([&] { each.read(python.eval(each.expression)); });
    EXPECT_EQ(error.substr(0, error.find(':')), each.error) << each.expression << ": " << error;
  }
  EXPECT_FALSE(pelion_core::api::exception::pyErrorOccurred());
}

TEST_F(Conversions, Blocks) {
  python.run("import array, sys");
  if (has("numpy")) python.run("import numpy");
  const std::vector<double> numbers{0.5, -1, 1e300};
  EXPECT_TRUE(holdsFor(numbers, "type(x).__name__ == 'array' and list(x) == [0.5, -1, 1e300]"));
  EXPECT_TRUE(py::Object::of(std::vector<double>()).as<std::vector<double>>().empty());
  EXPECT_EQ(python.eval("range(3)").as<std::vector<double>>(), (std::vector<double>{0, 1, 2}));
  EXPECT_EQ(python.eval("b'\\xff'").as<std::vector<std::uint8_t>>(),
            std::vector<std::uint8_t>{255});
  EXPECT_EQ(python.eval("array.array('h', [1, -2])").as<std::vector<std::int64_t>>(),
            (std::vector<std::int64_t>{1, -2}));
  EXPECT_EQ(python.eval("memoryview(array.array('d', [1, 2]))").as<std::vector<float>>(),
            (std::vector<float>{1, 2}));
  if (!has("numpy")) {
    EXPECT_EQ(thrownBy([] {
                py::Object::of(py::Block<double>{{1}, {1}});
              }),
              "ModuleNotFoundError: No module named 'numpy'");
    return;
  }
  const py::Block<int> block{{1, 2, 3, 4, 5, 6}, {2, 3}};
  EXPECT_TRUE(holdsFor(block, "x.tolist() == [[1, 3, 5], [2, 4, 6]] and x.flags.f_contiguous"));
  for (const char* same :
       {"x", "numpy.ascontiguousarray(x)", "x.astype('>i8')", "x.astype('i1')"}) {
    const auto back =
        python("eval")(same, std::map<std::string, py::Object>{{"x", py::Object::of(block)},
                                                               {"numpy", python.import("numpy")}})
            .as<py::Block<int>>();
    EXPECT_EQ(back.values, block.values) << same;
    EXPECT_EQ(back.shape, block.shape) << same;
  }
  EXPECT_EQ(
      thrownBy([&] { python.eval("numpy.array([1.5])").as<std::vector<int>>(); }).find("TypeError"),
      0u);
  EXPECT_EQ(thrownBy([&] {
              py::Object::of(py::Block<int>{{1, 2, 3}, {2, 2}});
            }).find("ValueError"),
            0u);
  EXPECT_TRUE(python.eval("numpy.bool_(True)").as<bool>());
  EXPECT_EQ(python.eval("numpy.timedelta64(3, 'h')").as<minutes>(), minutes(180));
  EXPECT_EQ(thrownBy([&] {
              python.eval("numpy.datetime64('NaT')").as<system_clock::time_point>();
            }).find("ValueError"),
            0u);
}

}  // namespace
}  // namespace front
