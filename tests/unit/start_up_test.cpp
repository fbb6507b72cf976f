#include "stand_in_test.h"

namespace {

namespace fs = std::filesystem;

/// The stand-in under a path of its own, which counts as another build.
fs::path copyOfStandIn(const std::u16string& name) {
  const fs::path copy = standIn.parent_path() / u"caf\u00e9 \u65e5\u672c" / name;
  fs::create_directories(copy.parent_path());
  fs::remove(copy);  // of an earlier run
  fs::copy_file(standIn, copy);
  return copy;
}

const std::string importsSys = "PyImport_Import('sys')";
const std::string sets = "PyObject_SetAttrString(" + importsSys + ", ";

using StartUp = StandInTest;

TEST_F(StartUp, GoesOnWhenSysCannotBeCorrected) {
  runtime.answers = {{sets + "base_prefix", -1}};
  api->initialize(u"/prog", u"/home", u"");
  EXPECT_EQ(runtime.take({"PyObject_SetAttr"}).size(), 3U);
  api->initialize(u"/prog", u"/home", u"");
  EXPECT_EQ(runtime.take(), Calls{"Py_IsInitialized()"});
  runtime = {};
  runtime.answers = {{"'/prog'", 0}};
  api->initialize(u"/prog", u"/home", u"");
  EXPECT_EQ(runtime.take({"PyE", "PySys_Set"}),
            (Calls{"PyErr_Clear()", "PyEval_InitThreads()", "PySys_SetArgv(0, &)"}));
}

TEST_F(StartUp, DerivesTheBaseFromAWindowsPath) {
  // clang-format off
  const std::pair<std::u16string, std::u16string> rows[] = {
      {u"env\\bin\\python3.dll", u"env"}, {u"env\\lib\\python3.dll", u"env"},
      {u"a\\bin\\b\\lib\\c\\python3.dll", u"a\\bin\\b"}, {u"a\\Bin\\python3.dll", u"a\\Bin"},
      {u"a\\lib\\b\\bin\\c\\python3.dll", u"a\\lib\\b"}, {u"a\\bin\\upper3.DLL", u""},
      {u"a\\bin\\libpython3.so", u""}};
  // clang-format on
  for (const auto& [name, base] : rows) {
    const std::u16string copy = copyOfStandIn(name).u16string();
    const PythonLibHolder other(copy);
    ASSERT_TRUE(other.loaded());
    const std::unique_ptr<python::IPythonAPI> fresh(
        createIPythonAPI(PythonFuncs(other), PythonThreeFuncs(other)));
    fresh->initialize(u"", u"/home", u"");
    const std::u16string folder = base.empty() ? u"" : copy.substr(0, copy.size() - name.size());
    EXPECT_EQ(recordOf(other).take({sets + "base_p"}),
              Calls{sets + "base_prefix, '" + stand_in::narrow(folder + base) + "')"});
  }
}

using Loader = StandInTest;

TEST_F(Loader, StartsStaysAndStartsAgain) {
  EXPECT_THROW(pyIsExcludedTypeForBuffer("str"), std::logic_error) << "nothing was recorded";
  runtime.initialised = true;
  EXPECT_EQ(load(), -2) << "initialised by other code";
  EXPECT_EQ(loader::getAPI(), nullptr);

  runtime = {};
  ASSERT_EQ(load(standIn, u"3.11"), 0);
  EXPECT_FALSE(pyIsExcludedTypeForBuffer("str"));
  // What is set lives as long as the interpreter.
  // clang-format off
  EXPECT_EQ(runtime.take(), (Calls{
      "Py_IsInitialized()", "Py_IsInitialized()", "Py_SetProgramName(/prog)",
      "PySys_AddXOption(frozen_modules=off)", "Py_SetPythonHome(/home)", "Py_Initialize()", "'sys'",
      importsSys, "Py_DecRef('sys')", "'/home'", sets + "prefix, '/home')",
      sets + "exec_prefix, '/home')", "''", sets + "base_prefix, '')",
      sets + "base_exec_prefix, '')", "'/prog'", sets + "executable, '/prog')", "'/prog'",
      sets + "_base_executable, '/prog')", "PyEval_InitThreads()", "PySys_SetArgv(0, &)"}));
  // clang-format on

  python::IPythonAPI* const first = loader::getAPI();
  EXPECT_EQ(loader::whyNotLoaded(), "");
  EXPECT_EQ(load(u"/no/such.so"), -1);
  EXPECT_NE(loader::whyNotLoaded().find("/no/such.so: "), std::string::npos);
  EXPECT_EQ(loader::getAPI(), first) << "an earlier load stays";
  EXPECT_EQ(load(), -2);
  EXPECT_FALSE(loader::isPythonLoaded()) << "an earlier load goes";
  EXPECT_NE(loader::whyNotLoaded().find("running"), std::string::npos);
  EXPECT_EQ(runtime.take(), Calls{"Py_IsInitialized()"}) << "and finalises nothing";

  runtime.initialised = false;
  ASSERT_EQ(load(standIn, u"2.7", u"", u"/a:/b"), 0);
  EXPECT_EQ(runtime.take({"Py_SetP", "Py_Init"}),
            (Calls{"Py_SetProgramName(/prog)", "Py_SetPythonHome()", "Py_SetPath(/a:/b)",
                   "Py_Initialize()"}));
  pyClose();
  EXPECT_TRUE(loader::isPythonLoaded());
  EXPECT_EQ(load(), 0) << "closed, and started again";
}

TEST(OtherBuild, StartsOnlyWhereLibrariesHaveScopesOfTheirOwn) {
  const fs::path other = copyOfStandIn(u"other.dll");
  const PythonLibHolder earlier(other.u16string());  // there to be taken for the one started
  ASSERT_EQ(load(), 0);
  pyClose();
#if defined(_WIN32)
  EXPECT_EQ(load(other), 0);
#else
  EXPECT_EQ(load(other), -1);
#endif
  const PythonLibHolder opened(copyOfStandIn(u"opened.dll").u16string());
  EXPECT_TRUE(opened.loaded()) << "opening is not starting";
  EXPECT_TRUE(shared_object::isMapped(standIn)) << "a started runtime is never unmapped";
  pyClose();
  EXPECT_EQ(load(standIn.parent_path() / "." / standIn.filename()), 0)
      << "another spelling of the same file";
}

}  // namespace
