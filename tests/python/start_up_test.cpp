// Loading and starting a real interpreter.

#include "support/at_hand.h"
#include "support/real_python.h"

namespace {

using namespace real;

using StartUp = RealPython;

TEST_F(StartUp, CorrectsSys) {
  const std::filesystem::path library = underTest().library;
  const bool isWindows = library.extension() == ".dll";
  const std::u16string base = isWindows ? library.parent_path().u16string() : u"";
  PyArguments set;
  for (const auto& path : {underTest().program, underTest().home, base})
    set.push_back(pyCreateString(path));
  run("import sys, math, array, datetime");  // extension modules find the runtime's symbols
  // The option is looked for in the items: before 3.7 the key is hashed before the seed is set.
  expect(
      pyTupleCreate(set),
      "[x[0], x[0], x[1], x[1], x[2], x[2], [''], True] =="
      " [sys.executable, sys._base_executable, sys.prefix, sys.exec_prefix, sys.base_prefix,"
      " sys.base_exec_prefix, sys.argv, ('frozen_modules', 'off') in list(sys._xoptions.items())]");
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
