// Loading and starting a real interpreter.

#include "support/real_python.h"

namespace real {
namespace {

using StartUp = RealPython;

TEST_F(StartUp, SysIsCorrected) {
  run("import sys, math, array, datetime");  // extension modules find the runtime's symbols
  define("program", text(underTest().program));
  define("home", text(underTest().home));
  define("base", text(underTest().base()));
  EXPECT_TRUE(holds("sys.executable == sys._base_executable == program"));
  EXPECT_TRUE(holds("sys.prefix == sys.exec_prefix == home"));
  EXPECT_TRUE(holds("sys.base_prefix == sys.base_exec_prefix == base"));
  EXPECT_TRUE(holds("sys.argv == ['']"));
  // Looked for in the items: before 3.7 the key is hashed before the hash seed is set.
  EXPECT_TRUE(holds("('frozen_modules', 'off') in list(sys._xoptions.items())"));
}

TEST_F(StartUp, SecondLoadIsRefusedAndTakesTheApiAway) {
  EXPECT_TRUE(interpreter::pyIsOpen());
  EXPECT_EQ(loader::attemptToLoadPython(u"3", u"/no/such/library.so", u"", u"", u"", true), -1);
  EXPECT_TRUE(loader::isPythonLoaded());
  // The fixture's handles must go first: without an API a handle cannot be released.
  TearDown();
  ASSERT_EQ(load(), 0);
  EXPECT_EQ(load(), -2);
  EXPECT_EQ(loader::getAPI(), nullptr);
  EXPECT_EQ(thrownBy([] { interpreter::pyIsOpen(); }), "Python API functions are not available.");
  std::_Exit(HasFailure() ? 1 : 0);  // nothing is left that could close the interpreter
}

TEST_F(StartUp, OlderNamesWhenTheHostSaysSo) {
  TearDown();
  ASSERT_EQ(load(u"2.7"), 0);
  for (const char* const name : {"str", "unicode"}) {
    EXPECT_TRUE(type::pyIsExcludedTypeForBuffer(name)) << name;
  }
  EXPECT_FALSE(type::pyIsExcludedTypeForBuffer("int"));
  const PyHandle number = fetch::fetch(u"py.float");
  object::pySetMember(module::pyCreateBuiltinsModule().get(), text("long").get(), number.get());
  EXPECT_EQ(repr(module::pyInvokeInt(integer(1).get())), "1.0");
  object::pySetMember(module::pyCreateModule(u"collections").get(), text("Odd").get(),
                      number.get());
  EXPECT_TRUE(type::pyTypeImplementsCollection(number.get(), "Odd"));
}

TEST(Refused, VersionTwo) {
  EXPECT_EQ(load(), -1);
  EXPECT_FALSE(loader::isPythonLoaded());
  const std::string why = loader::whyNotLoaded();
  for (const char* name :
       {" PyUnicode_AsUTF8,", " PyUnicode_FromString,", " PyUnicode_AsUTF16String"}) {
    EXPECT_NE(why.find(name), std::string::npos) << why;
  }
}

}  // namespace
}  // namespace real
