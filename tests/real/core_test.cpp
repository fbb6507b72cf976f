// The object API on a real interpreter: values both ways, calls, containers, names, errors.

#include <boost/numeric/conversion/cast.hpp>
#include <limits>

#include "real_python.h"

namespace real {
namespace {

using Core = RealPython;

TEST_F(Core, ScalarsKeepTheirValue) {
  EXPECT_EQ(repr(primitive::pyCreateBool(true)), "True");
  EXPECT_EQ(repr(primitive::pyCreateInt(-1)), "-1");
  EXPECT_EQ(repr(integer(std::numeric_limits<std::int64_t>::min())), "-9223372036854775808");
  EXPECT_EQ(repr(primitive::pyCreateULong(~std::uint64_t{0})), "18446744073709551615");
  EXPECT_EQ(repr(primitive::pyCreateFloat(0.1)), "0.1");
  EXPECT_EQ(repr(primitive::pyCreateComplex(1, -2.5)), "(1-2.5j)");
  EXPECT_TRUE(object::pyIsNone(primitive::pyCreateNone().get()));

  double real = 0;
  double imaginary = 0;
  primitive::pyComplexGetData(eval("3+4j").get(), &real, &imaginary);
  EXPECT_EQ(real, 3);
  EXPECT_EQ(imaginary, 4);
  EXPECT_EQ(primitive::pyFloatGetData(eval("2.5").get()), 2.5);
}

TEST_F(Core, IntegersAreCutToThirtyTwoBitsOrLeaveAnError) {
  EXPECT_EQ(primitive::pyIntGetData(eval("4294967296").get()), 0);
  EXPECT_EQ(primitive::pyIntGetData(eval("2147483648").get()), -2147483647 - 1);
  EXPECT_FALSE(exception::pyErrorOccurred());
  EXPECT_EQ(number(eval("2**64")), -1);
  EXPECT_EQ(pending(), "OverflowError");

  std::uint64_t value = 0;
  primitive::pyLongGetDataU(eval("2**64 - 2").get(), &value);
  EXPECT_EQ(value, ~std::uint64_t{1});
  primitive::pyLongGetDataU(eval("-1").get(), &value);
  EXPECT_EQ(value, ~std::uint64_t{0});
  EXPECT_EQ(pending(), "OverflowError");
  EXPECT_EQ(primitive::pyFloatGetData(eval("'x'").get()), -1.0);
  EXPECT_EQ(pending(), "TypeError");
}

TEST_F(Core, KindsOfObjects) {
  using Question = bool (*)(pyArray*);
  const struct {
    Question test;
    const char* yes;
    const char* no;
  } rows[] = {
      {primitive::pyIsBool, "True", "1"},
      {primitive::pyIsLong, "True", "1.0"},
      {primitive::pyIsFloat, "1.0", "1"},
      {primitive::pyIsComplex, "1j", "1.0"},
      {primitive::pyIsString, "type('S', (str,), {})()", "b'x'"},
      {primitive::pyBoolGetData, "'x'", "[]"},
      {object::pyIsCallable, "len", "3"},
      {object::pyIsNone, "None", "0"},
      {object::pyIsType, "int", "3"},
      {module::pyIsModule, "__import__('sys')", "'sys'"},
      {sequence::pyIsSequence, "()", "{}"},
      {sequence::pyTupleCheck, "()", "[]"},
      {mapping::pyIsDict, "type('D', (dict,), {})()", "[]"},
      {mapping::pyIsMapping, "{}", "3"},
  };
  for (const auto& row : rows) {
    EXPECT_TRUE(row.test(eval(row.yes).get())) << row.yes;
    EXPECT_FALSE(row.test(eval(row.no).get())) << row.no;
    EXPECT_EQ(thrownBy([&] { row.test(nullptr); }), nullPassed) << row.yes;
  }
  EXPECT_FALSE(primitive::pyIsInt(eval("1").get()));

  run("class Bad:\n  def __bool__(self): raise ValueError\n");
  EXPECT_EQ(thrownBy([&] { primitive::pyBoolGetData(eval("Bad()").get()); }),
            "Introspection API failed.");
  EXPECT_EQ(pending(), "ValueError");
}

TEST_F(Core, TextInBothEncodings) {
  const std::u16string wide = u"a\u00e9\u20ac\U0001f40d";
  const PyHandle made = primitive::pyCreateString(wide);
  define("made", made);
  EXPECT_TRUE(holds("made == 'a\\xe9\\u20ac\\U0001f40d'"));
  EXPECT_EQ(object::get_ustring(made.get()), wide);
  EXPECT_STREQ(object::pyGetChars(made.get()), u8"a\u00e9\u20ac\U0001f40d");
  EXPECT_EQ(object::get_ustring(text("").get()), u"");
  EXPECT_EQ(repr(text(std::string("a\0b", 3))), "'a\\x00b'");
  EXPECT_EQ(object::get_ustring(text(std::string("a\0b", 3)).get()), std::u16string(u"a\0b", 3));
  EXPECT_EQ(repr(primitive::pyCreateString(u"\uFEFFab")), "'ab'");
  EXPECT_STREQ(object::pyGetChars(object::pyStr(integer(12).get()).get()), "12");

  EXPECT_EQ(thrownBy([] { text("\xff"); }), nullReturned);
  EXPECT_EQ(pending(), "UnicodeDecodeError");
  EXPECT_EQ(thrownBy([] { primitive::pyCreateString(std::u16string{0xD800}); }), nullReturned);
  EXPECT_EQ(pending(), "UnicodeDecodeError");
}

TEST_F(Core, TextReadersRefuseWhatTheyCannotShow) {
  const PyHandle bytes = eval("b'xy'");
  const PyHandle three = integer(3);
  const PyHandle lone = eval("'\\ud800'");
  EXPECT_STREQ(object::pyGetChars(bytes.get()), "xy");
  EXPECT_EQ(primitive::pyStringGetData(three.get()), nullptr);
  EXPECT_EQ(pending(), "TypeError");
  EXPECT_EQ(object::pyGetChars(lone.get()), nullptr);
  EXPECT_EQ(pending(), "UnicodeEncodeError");

  const auto message = [](auto reader, const PyHandle& object) {
    return thrownBy([&] { reader(object.get()); });
  };
  EXPECT_EQ(message(object::pyGetChars, three),
            "Python object is neither string nor unicode. Cannot return chars.");
  EXPECT_EQ(message(object::get_stdstring, text("x")), "Failure to get std::string from Unicode.");
  EXPECT_EQ(message(object::get_stdstring, bytes),
            "Python object is not string. Cannot return std::string.");
  EXPECT_EQ(message(object::get_ustring, bytes),
            "Python object is neither string nor unicode. Cannot return unicode.");
  EXPECT_EQ(message(object::get_ustring, lone), "Failure to get data from Unicode.");
  EXPECT_EQ(pending(), "UnicodeEncodeError");

  run("class Odd(type):\n  __module__ = '\\ud800'\nclass C(metaclass=Odd): pass\n"
      "C.__module__ = '\\ud800'");
  EXPECT_EQ(thrownBy([&] { type::pyTypeZTName(eval("C").get()); }), nullReturned);
  EXPECT_EQ(pending(), "UnicodeEncodeError");
}

TEST_F(Core, MembersAndCalls) {
  const PyHandle object = eval("type('T', (), {'x': 1})()");
  const PyHandle name = text("y");
  object::pySetMember(object.get(), name.get(), integer(5).get());
  EXPECT_EQ(number(object::pyGetMember(object.get(), name.get())), 5);
  EXPECT_TRUE(object::pyHasMember(object.get(), "x"));
  EXPECT_FALSE(object::pyHasMember(object.get(), text("z").get()));
  EXPECT_EQ(thrownBy([&] { object::pyGetMember(object.get(), "z"); }), nullReturned);
  EXPECT_EQ(pending(), "AttributeError");
  EXPECT_EQ(thrownBy([&] { object::pySetMember(integer(1).get(), name.get(), name.get()); }),
            "Python API (probably set) failed.");
  EXPECT_EQ(pending(), "AttributeError");

  const PyHandle function = eval("lambda *a, **k: (a, sorted(k.items()))");
  const PyArguments args = {integer(1), text("b")};
  const PyKeywords kwargs = {{text("k"), integer(2)}, {text("j"), integer(3)}};
  EXPECT_EQ(repr(object::pyInvoke(function.get(), args, kwargs)),
            "((1, 'b'), [('j', 3), ('k', 2)])");
  EXPECT_EQ(repr(object::pyInvoke(function.get(), sequence::pyTupleCreate(args), PyHandle())),
            "((1, 'b'), [])");
  EXPECT_EQ(thrownBy([&] { object::pyInvoke(function.get(), {}, {}); }),
            "Arguments required to invoke Python callable.");
  EXPECT_EQ(thrownBy([&] { object::pyInvoke(function.get(), PyArguments{PyHandle()}, kwargs); }),
            nullPassed);

  const PyHandle failing = eval("lambda: 1 / 0");
  EXPECT_EQ(thrownBy([&] { object::pyInvoke(failing.get(), PyArguments{}, PyKeywords{}); }),
            nullReturned);
  EXPECT_TRUE(exception::pyErrorOccurred());
  const PyHandle error = exception::pyErrorFetch();
  EXPECT_FALSE(exception::pyErrorOccurred());
  define("error", error);
  EXPECT_TRUE(
      holds("error[0] is ZeroDivisionError and isinstance(error[1], error[0])"
            " and type(error[2]).__name__ == 'traceback'"));
  EXPECT_EQ(repr(exception::pyErrorFetch()), "(None, None, None)");
}

TEST_F(Core, IdentityEqualityAndHash) {
  EXPECT_TRUE(object::pyEqual(integer(1).get(), eval("1.0").get()));
  EXPECT_FALSE(object::pyEqual(integer(1).get(), text("1").get()));
  EXPECT_TRUE(object::pyIsInstance(eval("True").get(), eval("int").get()));
  EXPECT_EQ(thrownBy([&] { object::pyIsInstance(integer(1).get(), integer(1).get()); }),
            "Introspection API failed.");
  EXPECT_EQ(pending(), "TypeError");
  EXPECT_EQ(number(object::pyGetHash(integer(77).get())), 77);
  EXPECT_EQ(thrownBy([&] { object::pyGetHash(eval("[]").get()); }), nullReturned);
  EXPECT_EQ(pending(), "TypeError");
  EXPECT_EQ(repr(module::pyInvokeInt(eval("' 12 '").get())), "12");

  run("class Never:\n  def __eq__(self, other): return None\n"
      "class Shy:\n  @property\n  def __class__(self): raise ValueError\n");
  const auto equal = [this](const char* left, const char* right) {
    PyArguments args = {eval(left), eval(right)};
    PyKeywords kwargs;
    return repr(object::pyIsEqualOperator(args, kwargs));
  };
  EXPECT_EQ(equal("2", "2"), "True");
  EXPECT_EQ(equal("Never()", "2"), "False");
  run("class Odd:\n  def __eq__(self, other): return 'whatever'\n");
  EXPECT_EQ(equal("Odd()", "2"), "'whatever'");
  PyArguments one = {integer(1)};
  PyKeywords none;
  EXPECT_EQ(repr(object::pyIsEqualOperator(one, none)), "False");
  EXPECT_EQ(repr(object::pyGetClass(eval("Shy()").get())), repr("Shy"));
  EXPECT_TRUE(holds("'__eq__' in dir(Never)"));
  EXPECT_GT(sequence::pySequenceLength(object::pyDir(eval("Never").get()).get()), 5U);
}

TEST_F(Core, QuestionsWithANeutralAnswer) {
  // Each "no" comes from a failure inside, which must leave nothing pending.
  const PyHandle truth = eval("True");
  const PyHandle function = eval("lambda: 0");
  EXPECT_TRUE(object::pyIsBuiltin(truth.get(), "int"));
  EXPECT_FALSE(object::pyIsBuiltin(truth.get(), "nosuchname"));
  EXPECT_FALSE(object::pyIsBuiltin(truth.get(), "len"));
  EXPECT_FALSE(type::pyTypeIsBuiltin(eval("bool").get(), "int"));
  EXPECT_TRUE(type::pyTypeIsBuiltin(eval("int").get(), "int"));
  EXPECT_TRUE(object::pyInspect(function, "isfunction"));
  EXPECT_FALSE(object::pyInspect(function, "nosuchname"));
  EXPECT_FALSE(object::pyInspect(function, "getmodule"));
  EXPECT_TRUE(type::pyTypeImplementsCollection(eval("list").get(), "Sequence"));
  EXPECT_FALSE(type::pyTypeImplementsCollection(eval("list").get(), "Nothing"));
  EXPECT_FALSE(type::pyTypeImplementsCollection(integer(1).get(), "Sequence"));
  EXPECT_TRUE(type::pyTypeIsNumericArray(eval("__import__('array').array").get()));
  EXPECT_FALSE(type::pyTypeIsPandasSeries(eval("int").get()));
  EXPECT_TRUE(type::pyTypeIsSubclass(eval("bool").get(), eval("int").get()));
  EXPECT_FALSE(type::pyIsExcludedTypeForBuffer("str"));
  EXPECT_FALSE(exception::pyErrorOccurred());
}

TEST_F(Core, HostNamesOfTypes) {
  run("class C: pass\nC.__module__ = 'm.sub'\nclass Outer:\n  class Inner: pass\n"
      "Outer.Inner.__module__ = 'm'");
  EXPECT_EQ(type::pyTypeZTName(eval("int").get()), "py.int");
  EXPECT_EQ(type::pyTypeZTName(eval("C").get()), "py.m.sub.C");
  EXPECT_EQ(type::pyTypeZTName(eval("Outer.Inner").get()), "py.m.Inner");
  EXPECT_EQ(object::pyGetZTClassName(integer(3).get()), "py.int");
  EXPECT_EQ(object::pyGetZTModuleName(eval("C()").get()), "py.m.sub");
  EXPECT_EQ(repr(type::pyTypeGetBases(eval("bool").get())), "(<class 'int'>,)");
}

TEST_F(Core, Sequences) {
  const PyHandle list = eval("[10, 20, 30]");
  EXPECT_EQ(sequence::pySequenceLength(list.get()), 3U);
  EXPECT_EQ(number(sequence::pyGetItem(list.get(), 2)), 30);
  EXPECT_EQ(thrownBy([&] { sequence::pyGetItem(list.get(), 3); }), nullReturned);
  EXPECT_EQ(pending(), "IndexError");
  EXPECT_THROW(sequence::pyGetItem(list.get(), ~std::uint64_t{0}),
               boost::numeric::positive_overflow);
  EXPECT_EQ(thrownBy([&] { sequence::pySequenceLength(integer(1).get()); }),
            "PySequence_Length failed.");
  EXPECT_EQ(pending(), "TypeError");

  EXPECT_EQ(number(sequence::pyPopItemFromList(list.get(), -1)), 30);
  EXPECT_EQ(repr(list), "[10, 20]");
  EXPECT_EQ(thrownBy([&] { sequence::pyPopItemFromList(list.get(), 9); }), nullReturned);
  EXPECT_EQ(pending(), "IndexError");

  const PyHandle tuple = sequence::pyTupleCreateSize(2);
  sequence::pyTupleSetValue(tuple.get(), 0, list.get());
  sequence::pyTupleSetValue(tuple.get(), 1, list.get());
  EXPECT_EQ(repr(tuple), "([10, 20], [10, 20])");
  EXPECT_EQ(repr(sequence::pyTupleCreate({})), "()");
}

TEST_F(Core, Mappings) {
  const PyHandle key = text("k");
  const PyHandle dict =
      mapping::pyCreateDict({{key, integer(1)}, {text("l"), integer(3)}, {key, integer(2)}});
  EXPECT_EQ(repr(dict), "{'k': 2, 'l': 3}");
  EXPECT_EQ(number(mapping::pyMappingGetItem(dict.get(), key.get())), 2);
  EXPECT_EQ(thrownBy([&] { mapping::pyMappingGetItem(dict.get(), text("z").get()); }),
            nullReturned);
  EXPECT_EQ(pending(), "KeyError");
  EXPECT_EQ(thrownBy([&] { mapping::pyMappingSetKey(dict.get(), eval("[]").get(), key.get()); }),
            "Python API (probably set) failed.");
  EXPECT_EQ(pending(), "TypeError");
  EXPECT_EQ(repr(mapping::pyMappingGetItems(dict.get())), "[('k', 2), ('l', 3)]");

  run("class M:\n  pairs = [(1, 2)]\n  def items(self): return self.pairs\n");
  EXPECT_EQ(mapping::pyMappingGetItems(eval("M()").get()), eval("M.pairs"));
}

TEST_F(Core, DottedNames) {
  const auto outcome = [](const std::u16string& name) -> std::string {
    try {
      return object::pyGetChars(object::pyGetMember(fetch::fetch(name).get(), "__name__").get());
    } catch (const fetch::BadPythonName&) {
      return "bad";
    } catch (const fetch::SearchFailure&) {
      return "not found";
    }
  };
  EXPECT_EQ(outcome(u"py.len"), "len");
  EXPECT_EQ(outcome(u"py.os.path.join"), "join");
  EXPECT_EQ(outcome(u"py.xml.etree.ElementTree.parse"), "parse");
  for (const char16_t* bad : {u"py", u"len", u"PY.len", u"", u".py.len"}) {
    EXPECT_EQ(outcome(bad), "bad");
  }
  for (const char16_t* lost :
       {u"py.os", u"py.", u"py.os..path", u"py.no_such.thing", u"py.\xD800"}) {
    EXPECT_EQ(outcome(lost), "not found");
    EXPECT_FALSE(exception::pyErrorOccurred());
  }
}

}  // namespace
}  // namespace real
