#include "pelion_core/api/dataframe.h"

#include "api/expression.h"
#include "api/type_internal.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"

namespace pelion_core::api::dataframe {

using object::pyGetMember;
using primitive::pyCreateInt;
using primitive::pyCreateString;

PyHandle pyCheckNullValues(pyArray* object) {
  return callOn(importMember(u"pandas", "isnull"), object);
}

PyHandle pyConvertNumPyDataToList(pyArray* array) { return callMethod(array, "tolist"); }

PyHandle pyConvertPandasSeriesToPandasDataFrame(pyArray* series) {
  return callMethod(series, "to_frame");
}

PyHandle pyCreateDataFrame(PyHandle data) {
  return callMethod(importMember(u"pandas", "DataFrame").get(), "from_dict", {data});
}

PyHandle pyCreateNumpyAsArray(PyHandle data) {
  return call(importMember(u"numpy", "asarray"), {data});
}

PyHandle pyCreatePandasCategoricalArray(PyHandle data) {
  return call(importMember(u"pandas", "Categorical"), {data});
}

PyHandle pyCreatePandasSeriesForDataFrameColumn(PyHandle data) {
  const PyHandle series = importMember(u"pandas", "Series");
  return object::pyIsInstance(data.get(), series.get()) ? data : call(series, {data});
}

PyHandle pyCreatePandasSeriesOfDTypeString(PyHandle data) {
  const PyHandle series = call(importMember(u"pandas", "Series"), {data});
  return callMethod(series.get(), "astype", {pyCreateString("string")});
}

PyHandle pyFlattenNumpyData(pyArray* array) { return callMethod(array, "flatten"); }

PyHandle pyGetColumnDataAsPandasSeries(pyArray* dataFrame, PyHandle label) {
  return callMethod(dataFrame, "get", {label});
}

PyHandle pyGetDataFrameColumnsAsList(pyArray* dataFrame) {
  const PyHandle values = pyGetMember(pyGetMember(dataFrame, "columns").get(), "values");
  return callMethod(callMethod(values.get(), "astype", {pyCreateString("str")}).get(), "tolist");
}

bool pyIsPandasSeriesAStringDtype(PyHandle series) {
  const PyHandle types = pyGetMember(importMember(u"pandas", "api").get(), "types");
  return primitive::pyBoolGetData(callMethod(types.get(), "is_string_dtype", {series}).get());
}

PyHandle pyPopColumnFromDataFrame(pyArray* dataFrame, PyHandle label) {
  return callMethod(dataFrame, "pop", {label});
}

PyHandle pyResetIndexOfDataFrame(pyArray* dataFrame) {
  const PyHandle index = pyGetMember(dataFrame, "index");
  const PyHandle name = pyGetMember(index.get(), "name");
  const PyHandle type = object::pyGetType(index.get());
  const bool isDefault = object::pyIsNone(name.get()) && type::pyTypeIsPandasRangeIndex(type.get());
  return isDefault ? share(dataFrame) : callMethod(dataFrame, "reset_index");
}

PyHandle pySetDataFrameColumnLabel(pyArray* dataFrame, PyHandle labels) {
  return callMethod(dataFrame, "set_axis", {labels}, {{pyCreateString(u"axis"), pyCreateInt(1)}});
}

PyHandle pySetDataFrameIndex(pyArray* dataFrame, PyHandle label) {
  return callMethod(dataFrame, "set_index", {label});
}

}  // namespace pelion_core::api::dataframe
