#pragma once

#include "pelion_core/api/handle.h"

/// Tables as pandas objects. Each function is one Python expression, evaluated by the pandas and
/// NumPy that the interpreter finds; a missing package raises `ModuleNotFoundError`.
namespace pelion_core::api::dataframe {

/// `pandas.isnull(object)`: a `bool` or an element-wise object.
PELION_CORE_EXPORT PyHandle pyCheckNullValues(pyArray* object);

/// `array.tolist()`.
PELION_CORE_EXPORT PyHandle pyConvertNumPyDataToList(pyArray* array);

/// `series.to_frame()`.
PELION_CORE_EXPORT PyHandle pyConvertPandasSeriesToPandasDataFrame(pyArray* series);

/// `pandas.DataFrame.from_dict(data)`: a dictionary of labels to columns of one length.
PELION_CORE_EXPORT PyHandle pyCreateDataFrame(PyHandle data);

/// `numpy.asarray(data)`: `data` itself when it is an array.
PELION_CORE_EXPORT PyHandle pyCreateNumpyAsArray(PyHandle data);

/// `pandas.Categorical(data)`.
PELION_CORE_EXPORT PyHandle pyCreatePandasCategoricalArray(PyHandle data);

/// `data` itself when it is a `pandas.Series`, else `pandas.Series(data)`.
PELION_CORE_EXPORT PyHandle pyCreatePandasSeriesForDataFrameColumn(PyHandle data);

/// `pandas.Series(data).astype("string")`.
PELION_CORE_EXPORT PyHandle pyCreatePandasSeriesOfDTypeString(PyHandle data);

/// `array.flatten()`: a flat copy in row-major order.
PELION_CORE_EXPORT PyHandle pyFlattenNumpyData(pyArray* array);

/// `dataFrame.get(label)`: a column, or None when there is no such label.
PELION_CORE_EXPORT PyHandle pyGetColumnDataAsPandasSeries(pyArray* dataFrame, PyHandle label);

/// `dataFrame.columns.values.astype("str").tolist()`: the labels as strings, whatever they are.
PELION_CORE_EXPORT PyHandle pyGetDataFrameColumnsAsList(pyArray* dataFrame);

/// `bool(pandas.api.types.is_string_dtype(series))`; a failure throws.
PELION_CORE_EXPORT bool pyIsPandasSeriesAStringDtype(PyHandle series);

/// `dataFrame.pop(label)`: the column, taken out of the frame; a missing label raises `KeyError`.
PELION_CORE_EXPORT PyHandle pyPopColumnFromDataFrame(pyArray* dataFrame, PyHandle label);

/// `dataFrame` itself when its index is an unnamed `pandas.RangeIndex` (no subclass), else
/// `dataFrame.reset_index()`, which turns the index into a column.
PELION_CORE_EXPORT PyHandle pyResetIndexOfDataFrame(pyArray* dataFrame);

/// `dataFrame.set_axis(labels, axis=1)`: a frame with these column labels; a wrong number of them
/// raises `ValueError`.
PELION_CORE_EXPORT PyHandle pySetDataFrameColumnLabel(pyArray* dataFrame, PyHandle labels);

/// `dataFrame.set_index(label)`: a frame with that column as its index.
PELION_CORE_EXPORT PyHandle pySetDataFrameIndex(pyArray* dataFrame, PyHandle label);

}  // namespace pelion_core::api::dataframe
