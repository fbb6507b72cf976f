// Tables to pandas and back.

#include <chrono>
#include <cmath>

#include "host_python.h"

namespace front {
namespace {

using namespace std::chrono;
using Instant = time_point<system_clock, microseconds>;

class Tables : public Host {
 protected:
  void SetUp() override {
    if (!has("pandas")) GTEST_SKIP() << "no pandas";
    python.run("import datetime, numpy, pandas");
  }
  py::Table table(const std::string& expression) { return python.eval(expression).as<py::Table>(); }
};

TEST_F(Tables, EveryKindGoesThereAndBack) {
  const std::vector<std::optional<double>> numbers{0.5, {}, -1e300};
  const std::vector<std::optional<std::int64_t>> integers{{}, 1, INT64_C(1) << 62};
  const std::vector<std::optional<bool>> flags{true, {}, false};
  const std::vector<std::optional<std::string>> texts{"\xC3\xA4", "", {}};
  const std::vector<std::optional<Instant>> times{Instant(microseconds(1)), {}, Instant(hours(-1))};
  const std::vector<std::optional<microseconds>> waits{{}, microseconds(-1), hours(100)};
  py::Table all;
  all.add("n", numbers).add("i", integers).add("b", flags).add("s", texts).add("t", times);
  all.add("w", waits).add("whole", std::vector<int>{1, 2, 3});
  all.add("utf16", std::vector<std::u16string>{u"a\0b", u"\xD83D\xDE00", u""});
  const py::Object frame = all.toPandas();
  EXPECT_EQ(frame.attr("isna")().attr("sum")().attr("tolist")().str(), "[1, 1, 1, 1, 1, 1, 0, 0]");
  EXPECT_EQ(frame.attr("iloc")[0]["s"], "\xC3\xA4");
  EXPECT_EQ(frame["whole"].attr("dtype").str(), "int64");

  const auto back = frame.as<py::Table>();
  EXPECT_EQ(back.names(), all.names());
  EXPECT_EQ(back.column<std::optional<double>>("n"), numbers);
  EXPECT_TRUE(std::isnan(back.column<double>("n")[1]));
  EXPECT_EQ(back.column<std::optional<std::int64_t>>("i"), integers);
  EXPECT_EQ(back.column<std::optional<bool>>("b"), flags);
  EXPECT_EQ(back.column<std::optional<std::string>>("s"), texts);
  EXPECT_EQ(back.column<std::optional<Instant>>("t"), times);
  EXPECT_EQ(back.column<std::optional<microseconds>>("w"), waits);
  EXPECT_EQ(back.column<double>("whole"), (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(back.texts("utf16"), all.texts("utf16"));
  EXPECT_EQ(py::Table().toPandas().as<py::Table>().rows(), 0u);
  py::Table empty;
  empty.add("x", std::vector<double>()).add("s", std::vector<std::string>());
  EXPECT_EQ(empty.toPandas().as<py::Table>().names(), empty.names());
}

TEST_F(Tables, ReadWhatPandasHolds) {
  using Texts = std::vector<std::optional<std::string>>;
  using Numbers = std::vector<std::optional<std::int64_t>>;
  // An index that is more than a count becomes the first column.
  EXPECT_EQ(table("pandas.DataFrame({'a': [1, 2]}, index=['x', 'y'])").names(),
            (std::vector<std::string>{"index", "a"}));
  EXPECT_EQ(table("pandas.Series([1, 2], name='a')").names(), std::vector<std::string>{"a"});
  const struct {
    const char* values;
    Texts texts;
  } texts[] = {{"pandas.Categorical(['a', None, 'b'])", {"a", {}, "b"}},
               {"['a', numpy.nan, None]", {"a", {}, {}}},
               {"pandas.array(['a', None], 'string')", {"a", {}}}};
  for (const auto& each : texts) {
    const auto read = table("pandas.DataFrame({'x': " + std::string(each.values) + "})");
    EXPECT_EQ(read.column<std::optional<std::string>>("x"), each.texts) << each.values;
  }
  const struct {
    const char* values;
    Numbers numbers;
  } numbers[] = {{"numpy.array([1, 255], 'u1')", {1, 255}},
                 {"pandas.array([1, None], 'Int8')", {1, {}}},
                 {"pandas.Series([1, None], dtype=object)", {1, {}}},
                 {"pandas.Categorical([3, 4])", {3, 4}}};
  for (const auto& each : numbers) {
    const auto read = table("pandas.DataFrame({'x': " + std::string(each.values) + "})");
    EXPECT_EQ(read.column<std::optional<std::int64_t>>("x"), each.numbers) << each.values;
  }
  const auto zoned = table(
      "pandas.DataFrame({'x': pandas.to_datetime(['1970-01-01 01:00']).tz_localize('UTC')"
      ".tz_convert('Etc/GMT-1'), 'y': [datetime.datetime(1970, 1, 1)]})");
  EXPECT_EQ(zoned.column<Instant>("x")[0], Instant(hours(1)));
  EXPECT_EQ(zoned.column<Instant>("y")[0], Instant());
}

TEST_F(Tables, RefuseWhatDoesNotFit) {
  py::Table table;
  table.add("x", std::vector<std::optional<int>>{1, {}});
  const auto says = [](const std::string& words, auto action) {
    const std::string error = thrownBy(action);
    EXPECT_NE(error.find(words), std::string::npos) << error;
  };
  says("a column \"x\" already", [&] { table.add("x", std::vector<int>{1, 2}); });
  says("\"y\" has 1 rows, the table 2", [&] { table.add("y", std::vector<int>{1}); });
  says("no column \"z\", but \"x\"", [&] { table.column<double>("z"); });
  says("holds integers, not strings", [&] { table.column<std::string>("x"); });
  says("missing values", [&] { table.column<int>("x"); });
  says("an integer of column \"w\"", [&] { table.add("w", std::vector<std::uint64_t>{1, ~0ull}); });
  says("not UTF-8", [&] { table.add("w", std::vector<std::string>{"", "\xFF"}); });
  says("TypeError: 1 is not a pandas DataFrame", [&] { this->table("1"); });
  says("TypeError: column 'x'", [&] { this->table("pandas.DataFrame({'x': [1j]})"); });
  says("TypeError: column 'x'", [&] { this->table("pandas.DataFrame({'x': ['a', 1]})"); });
  says("OverflowError", [&] { this->table("pandas.DataFrame({'x': [2**64 - 1]})"); });
}

TEST_F(Tables, StringArrays) {
  using Text = Zanthic::String::detail::StringArrayVariant;
  py::StringArray texts({Text(u"a"), Text(u""), Text(u"\xE4"), Text(std::u16string(1, u'\0'))},
                        {2, 2});
  EXPECT_EQ(texts.at({0, 1}), Text(u"\xE4"));
  EXPECT_THROW(texts.at({2, 0}), std::out_of_range);
  EXPECT_THROW(py::StringArray({Text()}, {2}), std::invalid_argument);
  EXPECT_TRUE(holdsFor(texts, "x.tolist() == [['a', chr(228)], ['', chr(0)]]"));
  EXPECT_EQ(py::Object::of(texts).as<py::StringArray>(), texts);
  texts[1] = Text();
  EXPECT_TRUE(holdsFor(texts, "x.tolist() == [['a', chr(228)], [None, chr(0)]]"));
  EXPECT_EQ(py::Object::of(texts).as<py::StringArray>(), texts);
  EXPECT_EQ(texts.texts(u"-")[1], u"-");
  EXPECT_EQ(python.eval("['x', None, float('nan')]").as<py::StringArray>().elements(),
            (std::vector<Text>{Text(u"x"), Text(), Text()}));
}

}  // namespace
}  // namespace front
