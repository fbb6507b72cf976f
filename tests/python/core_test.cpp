// The object API on a real interpreter: values both ways, calls, containers, errors, threads.

#include <limits>
#include <mutex>
#include <thread>

#include "support/at_hand.h"
#include "support/real_python.h"

namespace {

using namespace real;

using Core = RealPython;

TEST_F(Core, NumbersKeepTheirValue) {
  // clang-format off
  const std::pair<PyHandle, const char*> made[] = {
      {pyCreateBool(true), "True"}, {pyCreateInt(-1), "-1"}, {pyCreateNone(), "None"},
      {integer(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},
      {pyCreateULong(~std::uint64_t{0}), "18446744073709551615"}, {pyCreateFloat(0.1), "0.1"},
      {pyCreateComplex(1, -2.5), "(1-2.5j)"}, {pyInvokeInt(text(" 12 ").get()), "12"},
      {pyGetHash(integer(77).get()), "77"}, {pyTypeGetBases(eval("bool").get()), "(<class 'int'>,)"}};
  // clang-format on
  for (const auto& [object, expected] : made) EXPECT_EQ(repr(object), expected);

  double re = 0, im = 0;
  pyComplexGetData(eval("3+4j").get(), &re, &im);
  EXPECT_EQ(std::make_pair(re, im), std::make_pair(3.0, 4.0));
  EXPECT_EQ(pyFloatGetData(eval("2.5").get()), 2.5);
  EXPECT_EQ(pyIntGetData(eval("2147483648").get()), std::numeric_limits<HostLong>::min());
  std::uint64_t value = 0;
  pyLongGetDataU(eval("2**64 - 2").get(), &value);
  EXPECT_EQ(value, ~std::uint64_t{1});
  EXPECT_EQ(pending(), "None");

  // What does not fit leaves an error pending, and nothing is thrown.
  EXPECT_EQ(number(eval("2**64")), -1);
  EXPECT_EQ(pending(), "OverflowError");
  pyLongGetDataU(eval("-1").get(), &value);
  EXPECT_EQ(value, ~std::uint64_t{0});
  EXPECT_EQ(pending(), "OverflowError");
  EXPECT_EQ(pyFloatGetData(text("x").get()), -1.0);
  EXPECT_EQ(pending(), "TypeError");
  EXPECT_EQ(pyStringGetData(integer(3).get()), nullptr);
  EXPECT_EQ(pending(), "TypeError");
}

TEST_F(Core, EachKindIsToldFromTheOthers) {
  run("import array, datetime\nclass D(datetime.datetime): pass\nclass S(str): pass\n"
      "class M(dict): pass");
  // Many a "no" comes from a failure inside, which must leave nothing pending.
#define IS(test) [](pyArray* o) -> bool { return test; }
  const struct {
    bool (*test)(pyArray*);
    const char *yes, *no;
  } rows[] = {// clang-format off
      {pyIsLong, "True", "1.0"}, {pyIsFloat, "1.0", "1"}, {pyIsComplex, "1j", "1.0"},
      {pyIsBool, "True", "1"}, {pyIsString, "S()", "b'x'"}, {pyBoolGetData, "'x'", "[]"},
      {pyIsCallable, "len", "3"}, {pyIsNone, "None", "0"}, {pyIsSequence, "()", "{}"},
      {pyTupleCheck, "()", "[]"}, {pyIsMapping, "{}", "1"}, {pyIsType, "int", "1"},
      {pyIsModule, "datetime", "1"}, {pyIsDict, "M()", "[]"},
      {pyTypeIsNumericArray, "array.array", "int"}, {pyTypeIsDatetime, "datetime.datetime", "D"},
      {pyObjTypeIsDatetime, "D(1, 1, 1)", "datetime.date(1, 1, 1)"},
      {pyObjTypeIsTimedelta, "datetime.timedelta(1)", "1"},
      {pyTypeIsTimedelta, "datetime.timedelta", "datetime.datetime"},
      {IS(pyEqual(o, integer(1).get())), "1.0", "'1'"}, {IS(pyIsBuiltin(o, "int")), "True", "1.0"},
      {IS(pyTypeIsBuiltin(o, "int")), "int", "bool"},
      {IS(pyTypeImplementsCollection(o, "Sequence")), "list", "1"},
      {IS(pyHasMember(o, "real")), "1", "''"}, {IS(pyHasMember(o, text("real").get())), "1", "''"},
      {IS(pyTypeIsSubclass(o, pyGetType(integer(1).get()).get())), "bool", "str"},
      {IS(pyInspect(PyHandle(o, [](pyArray*) {}), "isfunction")), "lambda: 0", "len"}};
  // clang-format on
  for (const auto& row : rows) {
    EXPECT_TRUE(row.test(eval(row.yes).get())) << row.yes;
    EXPECT_FALSE(row.test(eval(row.no).get())) << row.no;
  }
  EXPECT_FALSE(pyInspect(eval("len"), "nosuchname") || pyInspect(eval("int"), "getmro"));
  EXPECT_FALSE(APIAccessor()->callInspectPredicate(toPyObject(eval("len").get()), "nosuchname"));
  EXPECT_EQ(pending(), "AttributeError");
  EXPECT_FALSE(pyIsInt(integer(1).get()) || pyIsExcludedTypeForBuffer("str"));
}

TEST_F(Core, CallsTakeArgumentsAndLeaveTheirErrorPending) {
  const PyHandle object = eval("type('T', (), {})()");
  pySetMember(object.get(), text("y").get(), integer(5).get());
  EXPECT_EQ(number(pyGetMember(object.get(), text("y").get())), 5);
  const PyHandle function = eval("lambda *a, **k: (a, sorted(k.items()))");
  const PyArguments args = {integer(1), text("b")};
  EXPECT_EQ(repr(pyInvoke(function.get(), args, {{text("k"), integer(2)}})),
            "((1, 'b'), [('k', 2)])");
  EXPECT_EQ(repr(pyInvoke(function.get(), pyTupleCreate(args), PyHandle())), "((1, 'b'), [])");

  EXPECT_EQ(thrownBy([&] { eval("1 / 0"); }), nullReturned);
  expect(pyErrorFetch(),
         "x[0] is ZeroDivisionError and isinstance(x[1], x[0])"
         " and type(x[2]).__name__ == 'traceback'");
  EXPECT_EQ(repr(pyErrorFetch()), "(None, None, None)");

  run("class Odd:\n  def __eq__(self, other): return other\n  def __bool__(self): raise ValueError"
      "\nclass Shy:\n  @property\n  def __class__(self): raise ValueError\n");
  EXPECT_EQ(failure([&] { pyBoolGetData(eval("Odd()").get()); }),
            "Introspection API failed. ValueError");
  EXPECT_EQ(pyGetClass(eval("Shy()").get()), eval("Shy"));
  const PyHandle posing =
      eval("type('Posing', (), {'__class__': type('T', (), {'__module__': 'm.s'})})()");
  EXPECT_EQ(pyGetZTClassName(posing.get()), "py.m.s.T");
  EXPECT_EQ(pyGetZTModuleName(integer(3).get()), "py");
  PyKeywords none;
  PyArguments operands = {eval("Odd()"), text("whatever")};
  EXPECT_EQ(repr(pyIsEqualOperator(operands, none)), "'whatever'");
  operands[1] = pyCreateNone();
  EXPECT_EQ(repr(pyIsEqualOperator(operands, none)), "False");
}

TEST_F(Core, ContainersHoldWhatIsPutIn) {
  const PyHandle list = eval("[10, 20, 30]");
  EXPECT_EQ(number(pyGetItem(list.get(), 2)), 30);
  EXPECT_EQ(failure([&] { pyGetItem(list.get(), 3); }), nullReturned + " IndexError");
  EXPECT_EQ(failure([&] { pySequenceLength(integer(1).get()); }),
            "PySequence_Length failed. TypeError");
  EXPECT_EQ(number(pyPopItemFromList(list.get(), -1)), 30);
  const PyHandle tuple = pyTupleCreateSize(1);
  pyTupleSetValue(tuple.get(), 0, list.get());
  EXPECT_EQ(repr(tuple), "([10, 20],)");
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
  EXPECT_EQ(pyGetChars(eval("b'xy'").get()), std::string("xy"));
}

using Threads = RealPython;

// Every thread releases what another one made, some of them as they end.
TEST_F(Threads, PassHandlesToEachOther) {
  if (isDebugBuild()) GTEST_SKIP();
  const PyHandle thing = eval("object()");
  const auto references = [&] { return number(call("__import__('sys').getrefcount", {thing})); };
  const std::int64_t before = references();
  std::mutex turn;
  std::vector<PyHandle> shared;
  std::vector<std::thread> threads;
  for (int i = 0; i < 40; ++i) {
    threads.emplace_back([&] {
      for (int round = 0; round < 50; ++round) {
        const std::lock_guard lock(turn);
        shared.assign(5, call("lambda x: x", {thing}));
        shared.push_back(pyTupleCreate({thing, thing}));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  shared.clear();
  EXPECT_EQ(references(), before);
}

}  // namespace
