#include "pelion_core/api/dataframe.h"

#include "api/expression.h"

namespace pelion_core::api::dataframe {

using namespace detail;

namespace {

Reference pandas(const char* name) { return attr(importModule(u"pandas"), name); }

}  // namespace

PyHandle pyCheckNullValues(pyArray* object) { return pandas("isnull")({share(object)}); }

PyHandle pyConvertNumPyDataToList(pyArray* array) { return attr(array, "tolist")(); }

PyHandle pyConvertPandasSeriesToPandasDataFrame(pyArray* series) {
  return attr(series, "to_frame")();
}

PyHandle pyCreateDataFrame(PyHandle data) { return attr(pandas("DataFrame"), "from_dict")({data}); }

PyHandle pyCreateNumpyAsArray(PyHandle data) {
  return attr(importModule(u"numpy"), "asarray")({data});
}

PyHandle pyCreatePandasCategoricalArray(PyHandle data) { return pandas("Categorical")({data}); }

PyHandle pyCreatePandasSeriesForDataFrameColumn(PyHandle data) {
  const Reference series = pandas("Series");
  if (isInstance(data, series)) return data;
  return series({data});
}

PyHandle pyCreatePandasSeriesOfDTypeString(PyHandle data) {
  const Reference series = pandas("Series")({data});
  return attr(series, "astype")({str("string")});
}

PyHandle pyFlattenNumpyData(pyArray* array) { return attr(array, "flatten")(); }

PyHandle pyGetColumnDataAsPandasSeries(pyArray* dataFrame, PyHandle label) {
  return attr(dataFrame, "get")({label});
}

PyHandle pyGetDataFrameColumnsAsList(pyArray* dataFrame) {
  const Reference values = attr(attr(dataFrame, "columns"), "values");
  return attr(attr(values, "astype")({str("str")}), "tolist")();
}

bool pyIsPandasSeriesAStringDtype(PyHandle series) {
  const Reference types = attr(pandas("api"), "types");
  return toBool(attr(types, "is_string_dtype")({series}));
}

PyHandle pyPopColumnFromDataFrame(pyArray* dataFrame, PyHandle label) {
  return attr(dataFrame, "pop")({label});
}

PyHandle pyResetIndexOfDataFrame(pyArray* dataFrame) {
  const Reference index = attr(dataFrame, "index");
  const Reference name = attr(index, "name");
  const Reference type = typeOf(index);
  if (isNone(name) && equalsMember(type, u"pandas", "RangeIndex")) return share(dataFrame);
  return attr(dataFrame, "reset_index")();
}

PyHandle pySetDataFrameColumnLabel(pyArray* dataFrame, PyHandle labels) {
  return attr(dataFrame, "set_axis")({labels}, {{str(u"axis"), integer(1)}});
}

PyHandle pySetDataFrameIndex(pyArray* dataFrame, PyHandle label) {
  return attr(dataFrame, "set_index")({label});
}

}  // namespace pelion_core::api::dataframe
