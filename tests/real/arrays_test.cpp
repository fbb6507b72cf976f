// Blocks of numbers, NumPy arrays and pandas tables, checked by Python itself.

#include <boost/numeric/conversion/cast.hpp>
#include <cstring>
#include <limits>

#include "real_python.h"

namespace real {
namespace {

using Arrays = RealPython;

/// Needs NumPy and pandas; interpreters without them skip the scenario.
class Tables : public RealPython {
 protected:
  void SetUp() override {
    RealPython::SetUp();
    try {
      run("import numpy, pandas");
    } catch (const InternalPyException&) {
      exception::pyErrorClear();
      GTEST_SKIP() << "no NumPy or no pandas for this interpreter";
    }
  }

  /// A block of doubles as an array of a shape.
  PyHandle shaped(std::vector<double> block, std::vector<std::uint64_t> dims) {
    return primitive::pyReshapeNumpyArray(
        primitive::pyCreateNumericArray(block.size() * sizeof(double), 'd', block.data()),
        dims.size(), dims.data());
  }

  /// Whether a Python expression over `x` holds for an object.
  bool holdsFor(const PyHandle& x, const std::string& expression) {
    define("x", x);
    return holds(expression);
  }
};

TEST_F(Arrays, BlocksGoInAndComeOutAsTheyAre) {
  std::vector<double> block = {1.5, -0.0, std::numeric_limits<double>::quiet_NaN()};
  const std::uint64_t size = block.size() * sizeof(double);
  const PyHandle array = primitive::pyCreateNumericArray(size, 'd', block.data());
  EXPECT_TRUE(primitive::pyIsNumericArray(array.get()));
  EXPECT_TRUE(type::pyTypeIsNumericArray(object::pyGetType(array.get()).get()));
  EXPECT_FALSE(primitive::pyIsNumericArray(eval("[1.5]").get()));

  std::uint64_t byteCount = 0;
  HostLong itemSize = 0;
  char code = 0;
  void* data = nullptr;
  primitive::pyNumericArrayGetData(array.get(), &byteCount, &itemSize, &code, &data);
  EXPECT_EQ(byteCount, size);
  EXPECT_EQ(itemSize, 8);
  EXPECT_EQ(code, 'd');
  EXPECT_NE(data, block.data());
  EXPECT_EQ(std::memcmp(data, block.data(), size), 0);
  static_cast<double*>(data)[0] = 7;  // the array's own storage
  EXPECT_EQ(primitive::pyFloatGetData(sequence::pyGetItem(array.get(), 0).get()), 7);

  EXPECT_EQ(repr(primitive::pyCreateNumericArray(0, 'b', block.data())), "array('b')");
  EXPECT_EQ(repr(primitive::pyCreateNumericArray(0, 'b', nullptr)), "array('b')");
  EXPECT_EQ(thrownBy([&] { primitive::pyCreateNumericArray(3, 'd', block.data()); }), nullReturned);
  EXPECT_EQ(pending(), "ValueError");
  EXPECT_EQ(thrownBy([&] { primitive::pyCreateNumericArray(8, '?', block.data()); }), nullReturned);
  EXPECT_EQ(pending(), "ValueError");
  EXPECT_THROW(primitive::pyCreateNumericArray(std::uint64_t{1} << 63, 'b', block.data()),
               boost::numeric::positive_overflow);

  // 4 GiB and 8 bytes: only the low 32 bits of the size are told.
  run("class Big:\n  itemsize, typecode = 8, 'd'\n  def buffer_info(self): return 16, 2**29 + 1\n");
  primitive::pyNumericArrayGetData(eval("Big()").get(), &byteCount, &itemSize, &code, &data);
  EXPECT_EQ(byteCount, 8U);
  EXPECT_EQ(data, reinterpret_cast<void*>(16));
}

TEST_F(Tables, ShapesAreColumnMajor) {
  EXPECT_TRUE(holdsFor(shaped({1, 2, 3, 4, 5, 6}, {2, 3}), "x.tolist() == [[1, 3, 5], [2, 4, 6]]"));
  EXPECT_TRUE(holdsFor(shaped({1, 2, 3, 4, 5, 6, 7, 8}, {2, 2, 2}), "x[1, 0, 1] == 6"));
  EXPECT_TRUE(holdsFor(shaped({5}, {}), "x.shape == () and x == 5"));
  EXPECT_TRUE(holdsFor(shaped({1, 2, 3, 4}, {2, 0xFFFFFFFFU}), "x.shape == (2, 2)"));
  EXPECT_EQ(thrownBy([&] { shaped({1, 2, 3}, {2, 2}); }), nullReturned);
  EXPECT_EQ(pending(), "ValueError");

  const double nan = std::numeric_limits<double>::quiet_NaN();
  PyKeywords kwargs;
  PyArguments args = {shaped({1, nan}, {2}), shaped({1, nan}, {2})};
  const bool comparesNan = holds("numpy.lib.NumpyVersion(numpy.__version__) >= '1.19.0'");
  EXPECT_EQ(object::pyIsEqualNumpyArray(args, kwargs), comparesNan);
  EXPECT_EQ(kwargs.size(), 1U);
  args[1] = shaped({1, 2}, {2});
  kwargs.clear();
  EXPECT_FALSE(object::pyIsEqualNumpyArray(args, kwargs));
}

TEST_F(Tables, TablesAreBuiltAndTakenApart) {
  namespace df = dataframe;
  const PyHandle column = shaped({1, 2, 3}, {3});
  const PyHandle words = df::pyCreatePandasSeriesOfDTypeString(eval("['a', None, 'c']"));
  EXPECT_TRUE(df::pyIsPandasSeriesAStringDtype(words));
  EXPECT_FALSE(df::pyIsPandasSeriesAStringDtype(eval("pandas.Series([1])")));
  EXPECT_TRUE(holdsFor(df::pyCheckNullValues(words.get()), "list(x) == [False, True, False]"));

  const PyHandle frame =
      df::pyCreateDataFrame(mapping::pyCreateDict({{text("n"), column}, {text("w"), words}}));
  EXPECT_TRUE(type::pyTypeIsPandasDataFrame(object::pyGetType(frame.get()).get()));
  EXPECT_TRUE(holdsFor(frame, "x.shape == (3, 2) and list(x['n']) == [1, 2, 3]"));
  EXPECT_EQ(repr(df::pyGetDataFrameColumnsAsList(frame.get())), "['n', 'w']");
  EXPECT_EQ(repr(df::pyGetDataFrameColumnsAsList(eval("pandas.DataFrame([[1, 2]])").get())),
            "['0', '1']");

  const PyHandle series = df::pyGetColumnDataAsPandasSeries(frame.get(), text("n"));
  EXPECT_TRUE(type::pyTypeIsPandasSeries(object::pyGetType(series.get()).get()));
  EXPECT_EQ(df::pyCreatePandasSeriesForDataFrameColumn(series), series);
  EXPECT_TRUE(holdsFor(df::pyCreatePandasSeriesForDataFrameColumn(eval("[1, 2]")),
                       "isinstance(x, pandas.Series) and list(x) == [1, 2]"));
  EXPECT_TRUE(object::pyIsNone(df::pyGetColumnDataAsPandasSeries(frame.get(), text("z")).get()));
  EXPECT_TRUE(
      holdsFor(df::pyConvertPandasSeriesToPandasDataFrame(series.get()), "x.shape == (3, 1)"));

  EXPECT_TRUE(holdsFor(df::pySetDataFrameIndex(frame.get(), text("w")), "x.index.name == 'w'"));
  EXPECT_TRUE(holdsFor(df::pySetDataFrameColumnLabel(frame.get(), eval("['p', 'q']")),
                       "list(x.columns) == ['p', 'q']"));
  EXPECT_EQ(thrownBy([&] { df::pySetDataFrameColumnLabel(frame.get(), eval("['p']")); }),
            nullReturned);
  EXPECT_EQ(pending(), "ValueError");
  EXPECT_TRUE(
      holdsFor(df::pyPopColumnFromDataFrame(frame.get(), text("n")), "list(x) == [1, 2, 3]"));
  EXPECT_EQ(repr(df::pyGetDataFrameColumnsAsList(frame.get())), "['w']");

  EXPECT_TRUE(holdsFor(df::pyCreatePandasCategoricalArray(eval("['b', 'a', 'b']")),
                       "list(x.codes) == [1, 0, 1]"));
  const PyHandle array = df::pyCreateNumpyAsArray(eval("[[1, 2], [3, 4]]"));
  EXPECT_EQ(repr(df::pyConvertNumPyDataToList(array.get())), "[[1, 2], [3, 4]]");
  EXPECT_TRUE(holdsFor(df::pyFlattenNumpyData(array.get()), "x.tolist() == [1, 2, 3, 4]"));
}

TEST_F(Tables, OnlyADefaultIndexIsKept) {
  const struct {
    const char* frame;
    bool kept;
  } rows[] = {
      {"pandas.DataFrame({'a': [1, 2]})", true},
      {"pandas.DataFrame({'a': [1, 2]}, index=pandas.RangeIndex(5, 9, 2))", true},
      {"pandas.DataFrame({'a': [1, 2]}, index=pandas.RangeIndex(2, name='i'))", false},
      {"pandas.DataFrame({'a': [1, 2]}, index=['x', 'y'])", false},
  };
  for (const auto& row : rows) {
    const PyHandle frame = eval(row.frame);
    const PyHandle reset = dataframe::pyResetIndexOfDataFrame(frame.get());
    EXPECT_EQ(reset == frame, row.kept) << row.frame;
    EXPECT_TRUE(row.kept || holdsFor(reset, "x.shape == (2, 2)")) << row.frame;
  }
}

TEST_F(Tables, NothingGrows) {
  const PyHandle series = eval("pandas.Series([1.0, 2.0])");
  const PyHandle frame = eval("pandas.DataFrame({'a': [1, 2]})");
  const std::int64_t seriesBefore = references(series);
  const std::int64_t frameBefore = references(frame);
  std::vector<double> block(1000, 1.0);
  const auto allocated = [this] { return number(eval("__import__('sys').getallocatedblocks()")); };
  const auto round = [&] {
    dataframe::pyCheckNullValues(series.get());
    dataframe::pyCreatePandasSeriesForDataFrameColumn(series);
    dataframe::pyResetIndexOfDataFrame(frame.get());
    primitive::pyCreateNumericArray(block.size() * sizeof(double), 'd', block.data());
    const std::uint64_t dim = 2;
    primitive::pyReshapeNumpyArray(series, 1, &dim);
  };
  for (int i = 0; i < 100; ++i) round();
  run("import gc; gc.collect()");
  const std::int64_t before = allocated();
  constexpr int rounds = 2000;
  for (int i = 0; i < rounds; ++i) round();
  run("gc.collect()");
  EXPECT_LT(allocated() - before, rounds / 2);  // caches of pandas fill slowly
  EXPECT_EQ(references(series), seriesBefore);
  EXPECT_EQ(references(frame), frameBefore);
}

/// Collects what the library would send.
class Sink : public UsageDataService {
 public:
  UsageResponse logUsage(const UsageEventId& id, const UsageRecord& record,
                         const UsageOptions&) override {
    std::string line = id.eventKey + " " + id.product + " " + id.applicationComponent;
    for (const auto& [key, value] : record.pairs()) {
      const bool* const flag = std::get_if<bool>(&value);
      line += " " + key + "=" +
              (flag != nullptr ? (*flag ? "true" : "false") : std::get<std::string>(value));
    }
    lines.push_back(line);
    if (fails) throw std::runtime_error("no network");
    return {};
  }

  std::vector<std::string> lines;
  bool fails = false;
};

TEST(Usage, IsReportedOnceForEachVersionAndMode) {
  loader::sendPythonPkgInfo(u"3.0", false, false);  // nobody listens, and it counts as reported
  const auto sink = std::make_shared<Sink>();
  setUsageDataService(sink);
  for (int i = 0; i < 2; ++i) {
    loader::sendPythonPkgInfo(u"3.0", false, false);
    loader::sendPythonPkgInfo(u"3.11", false, false);
    loader::sendPythonPkgInfo(u"3.11", true, false);
    loader::sendPythonPkgInfo(u"3.12", true, true);
    sink->fails = true;
    loader::sendPythonPkgInfo(u"", true, false);
    sink->fails = false;
  }
  setUsageDataService(nullptr);
  const std::string event = "QX_EXT_INTERFACES QX QX_EXT language=Python langVersion=";
  EXPECT_EQ(sink->lines, (std::vector<std::string>{
                             event + "3.11 outOfProcess=false attribute=NA",
                             event + "3.11 outOfProcess=true attribute=NA",
                             event + " outOfProcess=true attribute=NA",
                         }));
}

}  // namespace
}  // namespace real
