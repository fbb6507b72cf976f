// Blocks of numbers, NumPy arrays and pandas tables, checked by Python itself.

#include <boost/numeric/conversion/cast.hpp>
#include <cstring>
#include <limits>

#include "support/at_hand.h"
#include "support/real_python.h"

namespace {

using namespace real;

using Arrays = RealPython;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST_F(Arrays, BlocksGoInAndComeOutAsTheyAre) {
  double block[] = {1.5, -0.0, nan};
  const PyHandle array = pyCreateNumericArray(sizeof block, 'd', block);
  EXPECT_TRUE(pyIsNumericArray(array.get()));
  std::uint64_t byteCount = 0;
  HostLong itemSize = 0;
  char code = 0;
  void* data = nullptr;
  pyNumericArrayGetData(array.get(), &byteCount, &itemSize, &code, &data);
  EXPECT_EQ(std::make_tuple(byteCount, itemSize, code), std::make_tuple(sizeof block, 8, 'd'));
  EXPECT_EQ(std::memcmp(data, block, sizeof block), 0);
  static_cast<double*>(data)[0] = 7;  // the array's own storage
  EXPECT_EQ(pyFloatGetData(pyGetItem(array.get(), 0).get()), 7);
  EXPECT_EQ(block[0], 1.5);

  if (!isDebugBuild()) {
    EXPECT_EQ(repr(pyCreateNumericArray(0, 'b', nullptr)), "array('b')");
  }
  EXPECT_EQ(failure([&] { pyCreateNumericArray(3, 'd', block); }), nullReturned + " ValueError");
  EXPECT_THROW(pyCreateNumericArray(std::uint64_t{1} << 63, 'b', block),
               boost::numeric::positive_overflow);

  // 4 GiB and 8 bytes: only the low 32 bits of the size are told.
  run("class Big:\n  itemsize, typecode = 8, 'd'\n  def buffer_info(self): return 16, 2**29 + 1\n");
  pyNumericArrayGetData(eval("Big()").get(), &byteCount, &itemSize, &code, &data);
  EXPECT_EQ(byteCount, 8U);
  EXPECT_EQ(data, reinterpret_cast<void*>(16));
}

class Tables : public WithTables {
 protected:
  PyHandle shaped(std::vector<double> block, std::vector<std::uint64_t> dims) {
    return pyReshapeNumpyArray(
        pyCreateNumericArray(block.size() * sizeof(double), 'd', block.data()), dims.size(),
        dims.data());
  }
};

TEST_F(Tables, ShapesAreColumnMajor) {
  expect(shaped({1, 2, 3, 4, 5, 6, 7, 8}, {2, 2, 2}), "x[1, 0, 1] == 6 and x[0, 1, 0] == 3");
  expect(shaped({5}, {}), "x.shape == () and x == 5");
  expect(shaped({1, 2, 3, 4}, {2, 0xFFFFFFFFU}), "x.shape == (2, 2)");
  EXPECT_EQ(failure([&] { shaped({1, 2, 3}, {2, 2}); }), nullReturned + " ValueError");

  const bool comparesNan = holds("numpy.lib.NumpyVersion(numpy.__version__) >= '1.19.0'");
  for (const bool same : {true, false}) {
    PyArguments args = {shaped({1, nan}, {2}), shaped({1, same ? nan : 2}, {2})};
    PyKeywords kwargs;
    EXPECT_EQ(pyIsEqualNumpyArray(args, kwargs), same && comparesNan);
  }
}

TEST_F(Tables, AreThePandasExpressionsThatTheyStandFor) {
  const PyHandle words = pyCreatePandasSeriesOfDTypeString(eval("['a', None, 'c']"));
  EXPECT_TRUE(pyIsPandasSeriesAStringDtype(words));
  EXPECT_FALSE(pyIsPandasSeriesAStringDtype(eval("pandas.Series([1])")));
  expect(pyCheckNullValues(words.get()), "list(x) == [False, True, False]");

  const PyHandle frame =
      pyCreateDataFrame(pyCreateDict({{text("n"), shaped({1, 2, 3}, {3})}, {text("w"), words}}));
  expect(frame, "type(x) is pandas.DataFrame and list(x) == ['n', 'w'] and list(x.n) == [1, 2, 3]");
  EXPECT_TRUE(pyTypeIsPandasDataFrame(eval("type(x)").get()));
  expect(pyGetDataFrameColumnsAsList(eval("pandas.DataFrame([[1, 2]])").get()), "x == ['0', '1']");

  const PyHandle series = pyGetColumnDataAsPandasSeries(frame.get(), text("n"));
  EXPECT_TRUE(pyTypeIsPandasSeries(pyGetType(series.get()).get()));
  EXPECT_EQ(pyCreatePandasSeriesForDataFrameColumn(series), series);
  expect(pyCreatePandasSeriesForDataFrameColumn(eval("[1, 2]")),
         "isinstance(x, pandas.Series) and list(x) == [1, 2]");
  expect(pyGetColumnDataAsPandasSeries(frame.get(), text("z")), "x is None");
  expect(pyConvertPandasSeriesToPandasDataFrame(series.get()), "x.shape == (3, 1)");
  expect(pySetDataFrameIndex(frame.get(), text("w")), "x.index.name == 'w'");
  expect(pySetDataFrameColumnLabel(frame.get(), eval("['p', 'q']")), "list(x) == ['p', 'q']");
  expect(pyPopColumnFromDataFrame(frame.get(), text("n")), "list(x) == [1, 2, 3]");
  expect(frame, "list(x) == ['w']");

  expect(pyCreatePandasCategoricalArray(eval("['b', 'a', 'b']")), "list(x.codes) == [1, 0, 1]");
  const PyHandle array = pyCreateNumpyAsArray(eval("[[1, 2], [3, 4]]"));
  expect(pyConvertNumPyDataToList(array.get()), "x == [[1, 2], [3, 4]]");
  expect(pyFlattenNumpyData(array.get()), "x.tolist() == [1, 2, 3, 4]");

  // Only a default index is kept.
  // clang-format off
  for (const auto& [index, kept] : {std::pair("pandas.RangeIndex(5, 9, 2)", true),
       {"pandas.RangeIndex(2, name='i')", false}, {"['x', 'y']", false}}) {
    // clang-format on
    const PyHandle plain =
        call("lambda i: pandas.DataFrame({'a': [1, 2]}, index=i)", {eval(index)});
    const PyHandle reset = pyResetIndexOfDataFrame(plain.get());
    EXPECT_EQ(reset == plain, kept) << index;
    expect(reset, kept ? "x.shape == (2, 1)" : "x.shape == (2, 2)");
  }
}

}  // namespace
