// The object API on a real interpreter: values both ways, calls, containers, errors.

#include <limits>

#include "support/real_python.h"

namespace real {
namespace {

using namespace primitive;
using namespace object;
using namespace sequence;
using namespace mapping;
using namespace type;

using Core = RealPython;

TEST_F(Core, ScalarsKeepTheirValue) {
  const std::pair<PyHandle, const char*> made[] = {
      {pyCreateBool(true), "True"},
      {pyCreateInt(-1), "-1"},
      {integer(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},
      {pyCreateULong(~std::uint64_t{0}), "18446744073709551615"},
      {pyCreateFloat(0.1), "0.1"},
      {pyCreateComplex(1, -2.5), "(1-2.5j)"},
      {pyCreateNone(), "None"},
      {module::pyInvokeInt(text(" 12 ").get()), "12"},
      {pyGetHash(integer(77).get()), "77"},
      {pyTypeGetBases(eval("bool").get()), "(<class 'int'>,)"},
  };
  for (const auto& [object, expected] : made) EXPECT_EQ(repr(object), expected);

  double re = 0, im = 0;
  pyComplexGetData(eval("3+4j").get(), &re, &im);
  EXPECT_EQ(std::make_pair(re, im), std::make_pair(3.0, 4.0));
  EXPECT_EQ(pyFloatGetData(eval("2.5").get()), 2.5);
  EXPECT_EQ(pyIntGetData(eval("4294967296").get()), 0);
  EXPECT_EQ(pyIntGetData(eval("2147483648").get()), -2147483647 - 1);
  std::uint64_t value = 0;
  pyLongGetDataU(eval("2**64 - 2").get(), &value);
  EXPECT_EQ(value, ~std::uint64_t{1});
  EXPECT_EQ(pending(), "None");

  EXPECT_EQ(number(eval("2**64")), -1);
  EXPECT_EQ(pending(), "OverflowError");
  pyLongGetDataU(eval("-1").get(), &value);
  EXPECT_EQ(value, ~std::uint64_t{0});
  EXPECT_EQ(pending(), "OverflowError");
  EXPECT_EQ(pyFloatGetData(text("x").get()), -1.0);
  EXPECT_EQ(pending(), "TypeError");
}

TEST_F(Core, Questions) {
  run("import datetime\nclass D(datetime.datetime): pass");
  // Many a "no" comes from a failure inside, which must leave nothing pending.
  const struct {
    bool (*test)(pyArray*);
    const char *yes, *no;
  } rows[] = {
      {pyIsLong, "True", "1.0"},
      {pyIsFloat, "1.0", "1"},
      {pyIsComplex, "1j", "1.0"},
      {pyIsBool, "True", "1"},
      {pyIsString, "type('S', (str,), {})()", "b'x'"},
      {pyBoolGetData, "'x'", "[]"},
      {pyIsCallable, "len", "3"},
      {pyIsNone, "None", "0"},
      {pyIsSequence, "()", "{}"},
      {pyTupleCheck, "()", "[]"},
      {pyIsMapping, "{}", "1"},
      {pyIsType, "int", "1"},
      {module::pyIsModule, "datetime", "1"},
      {pyIsDict, "type('D', (dict,), {})()", "[]"},
      {pyTypeIsNumericArray, "__import__('array').array", "int"},
      {pyObjTypeIsDatetime, "D(1, 1, 1)", "datetime.date(1, 1, 1)"},
      {pyTypeIsDatetime, "datetime.datetime", "D"},
      {pyObjTypeIsTimedelta, "datetime.timedelta(1)", "1"},
      {pyTypeIsTimedelta, "datetime.timedelta", "datetime.datetime"},
      {[](pyArray* o) { return pyEqual(o, integer(1).get()); }, "1.0", "'1'"},
      {[](pyArray* o) { return pyIsBuiltin(o, "int"); }, "True", "1.0"},
      {[](pyArray* o) { return pyTypeIsBuiltin(o, "int"); }, "int", "bool"},
      {[](pyArray* o) { return pyTypeImplementsCollection(o, "Sequence"); }, "list", "1"},
      {[](pyArray* o) { return pyHasMember(o, "real"); }, "1", "''"},
      {[](pyArray* o) { return pyHasMember(o, text("real").get()); }, "1", "''"},
  };
  for (const auto& row : rows) {
    EXPECT_TRUE(row.test(eval(row.yes).get())) << row.yes;
    EXPECT_FALSE(row.test(eval(row.no).get())) << row.no;
  }
  const PyHandle function = eval("lambda: 0");
  EXPECT_TRUE(pyInspect(function, "isfunction"));
  EXPECT_FALSE(pyInspect(function, "nosuchname") || pyInspect(eval("int"), "getmro"));
  EXPECT_FALSE(pyIsBuiltin(function.get(), "nosuchname") || pyIsBuiltin(function.get(), "len"));
  EXPECT_TRUE(pyTypeIsSubclass(eval("bool").get(), eval("int").get()));
  EXPECT_FALSE(APIAccessor()->callInspectPredicate(toPyObject(function.get()), "nosuchname"));
  EXPECT_EQ(pending(), "AttributeError");
  EXPECT_FALSE(pyIsInt(integer(1).get()) || pyIsExcludedTypeForBuffer("str"));
}

TEST_F(Core, TextThatIsNone) {
  EXPECT_EQ(pyGetChars(eval("b'xy'").get()), std::string("xy"));
  const PyHandle lone = eval("'\\ud800'");
  EXPECT_EQ(failure([] { text("\xff"); }), nullReturned + " UnicodeDecodeError");
  EXPECT_EQ(failure([] { pyCreateString(std::u16string{0xD800}); }),
            nullReturned + " UnicodeDecodeError");
  EXPECT_EQ(failure([&] { get_ustring(lone.get()); }),
            "Failure to get data from Unicode. UnicodeEncodeError");
  EXPECT_EQ(pyGetChars(lone.get()), nullptr);
  EXPECT_EQ(pending(), "UnicodeEncodeError");
  EXPECT_EQ(pyStringGetData(integer(3).get()), nullptr);
  EXPECT_EQ(pending(), "TypeError");
}

TEST_F(Core, CallsAndTheirErrors) {
  const PyHandle object = eval("type('T', (), {})()");
  pySetMember(object.get(), text("y").get(), integer(5).get());
  EXPECT_EQ(number(pyGetMember(object.get(), text("y").get())), 5);

  const PyHandle function = eval("lambda *a, **k: (a, sorted(k.items()))");
  const PyArguments args = {integer(1), text("b")};
  EXPECT_EQ(
      repr(pyInvoke(function.get(), args, {{text("k"), integer(2)}, {text("j"), integer(3)}})),
      "((1, 'b'), [('j', 3), ('k', 2)])");
  EXPECT_EQ(repr(pyInvoke(function.get(), pyTupleCreate(args), PyHandle())), "((1, 'b'), [])");

  EXPECT_EQ(thrownBy([&] { eval("1 / 0"); }), nullReturned);
  define("error", exception::pyErrorFetch());
  EXPECT_TRUE(
      holds("error[0] is ZeroDivisionError and isinstance(error[1], error[0])"
            " and type(error[2]).__name__ == 'traceback'"));
  EXPECT_EQ(repr(exception::pyErrorFetch()), "(None, None, None)");

  run("class Odd:\n  def __eq__(self, other): return other\n  def __bool__(self): raise ValueError"
      "\nclass Shy:\n  @property\n  def __class__(self): raise ValueError\n");
  EXPECT_EQ(failure([&] { pyBoolGetData(eval("Odd()").get()); }),
            "Introspection API failed. ValueError");
  EXPECT_EQ(repr(pyGetClass(eval("Shy()").get())), repr("Shy"));
  EXPECT_EQ(repr(pyGetClass(eval("type('Posing', (), {'__class__': int})()").get())), repr("int"));
  PyKeywords none;
  PyArguments operands = {eval("Odd()"), text("whatever")};
  EXPECT_EQ(repr(pyIsEqualOperator(operands, none)), "'whatever'");
  operands[1] = pyCreateNone();
  EXPECT_EQ(repr(pyIsEqualOperator(operands, none)), "False");
}

TEST_F(Core, HostNamesOfTypes) {
  run("class Outer:\n  class Inner: pass\nOuter.Inner.__module__ = 'm.sub'");
  EXPECT_EQ(pyTypeZTName(eval("int").get()), "py.int");
  EXPECT_EQ(pyTypeZTName(eval("Outer.Inner").get()), "py.m.sub.Inner");
  EXPECT_EQ(pyGetZTClassName(integer(3).get()), "py.int");
  EXPECT_EQ(pyGetZTModuleName(eval("Outer.Inner()").get()), "py.m.sub");
}

TEST_F(Core, Containers) {
  const PyHandle list = eval("[10, 20, 30]");
  EXPECT_EQ(number(pyGetItem(list.get(), 2)), 30);
  EXPECT_EQ(failure([&] { pyGetItem(list.get(), 3); }), nullReturned + " IndexError");
  EXPECT_EQ(failure([&] { pySequenceLength(integer(1).get()); }),
            "PySequence_Length failed. TypeError");
  EXPECT_EQ(number(pyPopItemFromList(list.get(), -1)), 30);
  const PyHandle tuple = pyTupleCreateSize(2);
  pyTupleSetValue(tuple.get(), 0, list.get());
  pyTupleSetValue(tuple.get(), 1, integer(1).get());
  EXPECT_EQ(repr(tuple), "([10, 20], 1)");
  EXPECT_EQ(repr(pyTupleCreate({})), "()");

  const PyHandle k = text("k");
  const PyHandle dict = pyCreateDict({{k, integer(1)}, {text("l"), integer(3)}, {k, integer(2)}});
  EXPECT_EQ(number(pyMappingGetItem(dict.get(), k.get())), 2);
  EXPECT_EQ(failure([&] { pyMappingGetItem(dict.get(), list.get()); }),
            nullReturned + " TypeError");
  EXPECT_EQ(failure([&] { pyMappingSetKey(dict.get(), list.get(), k.get()); }),
            "Python API (probably set) failed. TypeError");
  EXPECT_EQ(repr(pyMappingGetItems(dict.get())), "[('k', 2), ('l', 3)]");
  run("class M:\n  pairs = [(1, 2)]\n  def items(self): return self.pairs\n");
  EXPECT_EQ(pyMappingGetItems(eval("M()").get()), eval("M.pairs"));
}

}  // namespace
}  // namespace real
