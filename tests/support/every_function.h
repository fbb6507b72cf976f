#pragma once

#include <string>
#include <vector>

#include "support/at_hand.h"

/// Every exported function of the object API but `pyClose`, as a call over one object.
namespace every {

/// Borrowed, or in a handle.
struct Function {
  const char* text;
  void (*call)(pyArray* o, const PyHandle& h);
};

// Arguments that the calls take by reference.
inline std::int64_t i64;
inline std::uint64_t u64;
inline HostLong itemSize;
inline char typeCode;
inline void* block;
inline std::u16string wide;
inline double re = 1, im = 2;
inline double milliseconds[] = {1.5, -3e9};
inline const std::uint64_t dims[] = {2};

inline PyArguments one(const PyHandle& h) { return {h}; }
inline PyArguments two(const PyHandle& h) { return {h, h}; }
inline PyKeywords pairs(const PyHandle& h) { return {{h, h}, {h, h}}; }
template <class Type>
Type& lvalue(Type&& value) {
  return value;
}

/// The operation reports by its result.
inline void readBytes(pyArray* o) {
  if (APIAccessor()->bytesToUString(toPyObject(o), wide) == 0) return;
  throw InternalPyException("Failure to get data from String.");
}

#define F(expression)                                                                         \
  {                                                                                           \
#expression, [](pyArray * o, const PyHandle& h) { (void)o, (void)h, (void)(expression); } \
  }

// Packed by hand.
// clang-format off
inline const Function functions[] = {
    F(pyIsOpen()), F((pyAddReference(o), pyDeleteObject(o))), F(pyErrorClear()),
    F(pyErrorOccurred()), F(pyErrorFetch()), F(pyCreateBool(true)), F(pyCreateInt(1)),
    F(pyCreateLong(1)), F(pyCreateULong(1)), F(pyCreateFloat(1)), F(pyCreateComplex(1, 1)),
    F(pyCreateNone()), F(pyCreateString(std::string("a"))), F(pyCreateString(std::u16string(u"a"))),
    F(pyIsBool(o)), F(pyIsInt(o)), F(pyIsLong(o)), F(pyIsFloat(o)), F(pyIsComplex(o)),
    F(pyIsString(o)), F(pyBoolGetData(o)), F(pyIntGetData(o)), F(pyLongGetData(o, &i64)),
    F(pyLongGetDataU(o, &u64)), F(pyFloatGetData(o)), F(pyComplexGetData(o, &re, &im)),
    F(pyStringGetData(o)), F(pyIsDict(o)), F(pyIsMapping(o)), F(pyCreateDict()),
    F(pyCreateDict(pairs(h))), F(pyMappingGetItem(o, o)), F(pyMappingSetKey(o, o, o)),
    F(pyMappingGetItems(o)), F(pyIsSequence(o)), F(pyTupleCheck(o)), F(pySequenceLength(o)),
    F(pyGetItem(o, 1)), F(pyTupleSetValue(pyTupleCreateSize(1).get(), 0, o)),
    F(pyTupleCreate(two(h))), F(pyPopItemFromList(o, -1)), F(pyGetMember(o, o)),
    F(pyGetMember(o, "m")), F(pyHasMember(o, o)), F(pyHasMember(o, "m")), F(pySetMember(o, o, o)),
    F(pyInvoke(o, pyTupleCreate(two(h)).get(), nullptr)),
    F(pyInvoke(o, pyTupleCreate(two(h)), pyCreateDict())), F(pyInvoke(o, two(h), pairs(h))),
    F(pyIsCallable(o)), F(pyIsInstance(o, o)), F(pyIsNone(o)), F(pyIsType(o)), F(pyGetType(o)),
    F(pyDir(o)), F(pyEqual(o, o)), F(pyStr(o)), F(pyGetChars(o)), F(get_stdstring(o)),
    F(get_ustring(o)), F(pyGetClass(o)), F(pyIsBuiltin(o, "int")), F(pyGetHash(o)),
    F(pyInspect(h, "isclass")), F(pyIsEqualOperator(lvalue(two(h)), lvalue(pairs(h)))),
    F(pyGetZTClassName(o)),
    F(pyGetZTModuleName(o)), F(pyTypeIsSubclass(o, o)), F(pyTypeGetBases(o)),
    F(pyTypeIsBuiltin(o, "int")), F(pyTypeIsNumericArray(o)), F(pyTypeIsPandasDataFrame(o)),
    F(pyTypeIsPandasSeries(o)), F(pyTypeZTModuleName(o)), F(pyTypeZTName(o)), F(pyIsModule(o)),
    F(pyCreateModule(u"m")), F(pyGetBuiltinsName()), F(pyCreateBuiltinsModule()), F(pyGetNumpy()),
    F(pyCreateNumericArray(8, 'd', &re)),
    F(pyNumericArrayGetData(o, &u64, &itemSize, &typeCode, &block)), F(pyIsNumericArray(o)),
    F(pyReshapeNumpyArray(h, 1, dims)),
    F(pyIsEqualNumpyArray(lvalue(two(h)), lvalue(PyKeywords()))),
    F(pyCheckNullValues(o)), F(pyConvertNumPyDataToList(o)),
    F(pyConvertPandasSeriesToPandasDataFrame(o)), F(pyCreateDataFrame(h)),
    F(pyCreateNumpyAsArray(h)), F(pyCreatePandasCategoricalArray(h)),
    F(pyCreatePandasSeriesForDataFrameColumn(h)), F(pyCreatePandasSeriesOfDTypeString(h)),
    F(pyFlattenNumpyData(o)), F(pyGetColumnDataAsPandasSeries(o, pyCreateString(u"a"))),
    F(pyGetDataFrameColumnsAsList(o)), F(pyIsPandasSeriesAStringDtype(h)),
    F(pyPopColumnFromDataFrame(o, pyCreateString(u"a"))), F(pyResetIndexOfDataFrame(o)),
    F(pySetDataFrameColumnLabel(o, pyTupleCreate(one(pyCreateString(u"b"))))),
    F(pySetDataFrameIndex(o, pyCreateString(u"a"))),
    F(pyObjTypeIsDatetime(o)), F(pyObjTypeIsTimedelta(o)), F(pyTypeIsDatetime(o)),
    F(pyTypeIsTimedelta(o)), F(pyTypeIsTimedelta64(o)), F(pyDatetimeIsZoneInfoBased(o)),
    F(pyEachObjTypeOfListIsDatetime(o, u64)), F(pyEachObjTypeOfListIsTimeDelta(o, u64)),
    F(pyDatetimeGetTimezone(o)),
    F(pyCreateDatetime(lvalue(std::vector<double>{2024, 2, 29, 23, 59, 1.5, 36e5}), false)),
    F(pyCreateDatetime64Scalar(lvalue(std::string("2024-02-29")))),
    F(pyCreateDatetime64Array(lvalue(one(h)))),
    F(pyCreateDatetime64(lvalue(std::vector<std::string>{"2024-02-29", "NaT"}), 2, 1, dims)),
    F(pyCreateTimedelta(1.5)), F(pyCreateTimedelta64Scalar(1.5)),
    F(pyCreateTimedelta64Array(lvalue(one(h)))),
    F(pyCreateTimedelta64(milliseconds, 2, 1, dims)),
    F(Datetime64Component{o}), F(Datetime64ArrayComponents{o}), F(DatetimeListComponent{o}),
    F(Timedelta64Component{o}), F(Timedelta64ArrayComponents{o}), F(TimedeltaListComponent{o}),
    F(fetch::fetch(u"py.m.a")),
    // Operations of the interface that no exported function uses.
    F(APIAccessor()->PyList_Check(toPyObject(o))), F(APIAccessor()->PyCapsule_Import(u"m.a")),
    F(readBytes(o)),
    // These look at the recorded version first.
    F(pyInvokeInt(o)), F(pyTypeImplementsCollection(o, "Sequence")),
    F(pyIsExcludedTypeForBuffer("str")),
};
// clang-format on

#undef F

}  // namespace every
