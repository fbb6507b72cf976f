#include "support.h"

namespace {

namespace fs = std::filesystem;
using api::type::pyIsExcludedTypeForBuffer;

/// The stand-in under a path of its own, which counts as another build.
std::u16string copyOfFake(const std::u16string& name) {
  const fs::path folder = fs::path(fakePath).parent_path() / u"caf\u00e9 \u65e5\u672c";
  const std::u16string copy = folder.u16string() + u"/" + name;
  fs::create_directories(fs::path(copy).parent_path());
  fs::remove(copy);  // of an earlier run
  fs::copy_file(fs::path(fakePath), copy);
  return copy;
}

Calls expectedStart(const std::string& home, const std::string& path) {
  // Of UTF-16 the first byte is shown.
  const std::string decodes = "PyUnicode_DecodeUTF16(";
  const std::string sets = "PyObject_SetAttrString(sys, ";
  const std::string homeText =
      decodes + home.substr(0, 1) + ", " + std::to_string(2 * home.size()) + ", null, null)";
  // clang-format off
  Calls calls = {"Py_IsInitialized()", "Py_IsInitialized()", "Py_SetProgramName(/prog)",
      "PySys_AddXOption(frozen_modules=off)", "Py_SetPythonHome(" + home + ")",
      "Py_SetPath(" + path + ")", "Py_Initialize()", decodes + "s, 6, null, null)",
      "PyImport_Import('sys')", "Py_DecRef('sys')", homeText, sets + "prefix, '" + home + "')",
      sets + "exec_prefix, '" + home + "')", decodes + ", 0, null, null)",
      sets + "base_prefix, '')", sets + "base_exec_prefix, '')", decodes + "/, 10, null, null)",
      sets + "executable, '/prog')", decodes + "/, 10, null, null)",
      sets + "_base_executable, '/prog')", "PyEval_InitThreads()", "PySys_SetArgv(0, [null])"};
  // clang-format on
  if (path.empty()) calls.erase(calls.begin() + 5);
  return calls;
}

using StartUpTest = FakeRuntimeTest;

TEST_F(StartUpTest, GoesOnWhenSysCannotBeCorrected) {
  runtime.answers = {{"PyObject_SetAttrString(sys, base_prefix", -1}};
  api->initialize(u"/prog", u"/home", u"");
  EXPECT_EQ(runtime.take({"PyObject_SetAttr"}).size(), 3U);
  api->initialize(u"/prog", u"/home", u"");
  EXPECT_EQ(runtime.take(), Calls{"Py_IsInitialized()"});
  runtime = {};
  runtime.answers = {{"PyUnicode_DecodeUTF16(/", 0}};
  api->initialize(u"/prog", u"/home", u"");
  EXPECT_EQ(runtime.take({"PyE", "PyS", "PyO"}),
            (Calls{"PySys_AddXOption(frozen_modules=off)", "PyErr_Clear()", "PyEval_InitThreads()",
                   "PySys_SetArgv(0, [null])"}));
}

TEST_F(StartUpTest, DerivesTheBaseFromAWindowsPath) {
  // clang-format off
  const std::pair<std::u16string, std::u16string> rows[] = {
      {u"env\\bin\\python3.dll", u"/env"}, {u"env\\lib\\python3.dll", u"/env"},
      {u"a\\bin\\b\\lib\\c\\python3.dll", u"/a\\bin\\b"}, {u"a\\Bin\\python3.dll", u"/a\\Bin"},
      {u"a\\lib\\b\\bin\\c\\python3.dll", u"/a\\lib\\b"}, {u"a\\bin\\upper3.DLL", u""},
      {u"a\\bin\\libpython3.so", u""}};
  // clang-format on
  for (const auto& [name, base] : rows) {
    const std::u16string copy = copyOfFake(name);
    const PythonLibHolder library(copy);
    ASSERT_TRUE(library.loaded());
    const std::unique_ptr<python::IPythonAPI> fresh(
        createIPythonAPI(PythonFuncs(library), PythonThreeFuncs(library)));
    fresh->initialize(u"", u"/home", u"");
    std::u16string expected = base;
    if (!base.empty()) expected.insert(0, copy, 0, copy.size() - name.size() - 1);
    EXPECT_EQ(control(library).take({"PyObject_SetAttrString(sys, base_p"}),
              Calls{"PyObject_SetAttrString(sys, base_prefix, '" + fake::narrow(expected) + "')"});
  }
}

using Loader = FakeRuntimeTest;

TEST_F(Loader, StartsStaysAndStartsAgain) {
  EXPECT_THROW(pyIsExcludedTypeForBuffer("str"), std::logic_error) << "nothing was recorded";
  runtime.initialised = true;
  EXPECT_EQ(loadFake(), -2) << "initialised by other code";
  EXPECT_EQ(loader::getAPI(), nullptr);

  runtime = {};
  ASSERT_EQ(loadFake(fakePath, u"3.11"), 0);
  EXPECT_EQ(runtime.take(), expectedStart("/home", ""));
  EXPECT_EQ(runtime.alive(), (Counts{{"sys", 1}, {"'/home'", 1}, {"''", 1}, {"'/prog'", 2}}))
      << "live as long as the interpreter";

  python::IPythonAPI* const first = loader::getAPI();
  EXPECT_EQ(loader::whyNotLoaded(), "");
  EXPECT_EQ(loadFake(u"/no/such.so"), -1);
  EXPECT_NE(loader::whyNotLoaded().find("/no/such.so: "), std::string::npos);
  EXPECT_EQ(loader::getAPI(), first) << "an earlier load stays";
  EXPECT_EQ(loadFake(), -2);
  EXPECT_FALSE(loader::isPythonLoaded()) << "an earlier load goes";
  EXPECT_NE(loader::whyNotLoaded().find("running"), std::string::npos);
  EXPECT_EQ(runtime.take(), Calls{"Py_IsInitialized()"}) << "and finalises nothing";
  EXPECT_FALSE(pyIsExcludedTypeForBuffer("str")) << "neither changed the version";

  runtime.initialised = false;
  ASSERT_EQ(loadFake(fakePath, u"2.7", u"", u"/a:/b"), 0);
  EXPECT_EQ(runtime.take(), expectedStart("", "/a:/b"));
  EXPECT_TRUE(pyIsExcludedTypeForBuffer("unicode"));
  EXPECT_FALSE(pyIsExcludedTypeForBuffer("bytes"));
  api::interpreter::pyClose();
  EXPECT_TRUE(loader::isPythonLoaded());
  EXPECT_EQ(loadFake(), 0) << "closed, and started again";
}

TEST(OtherBuild, StartsOnlyWhereLibrariesHaveScopesOfTheirOwn) {
#if defined(_WIN32)
  constexpr int result = 0;
#else
  constexpr int result = -1;
#endif
  const std::u16string other = copyOfFake(u"other.dll");
  const PythonLibHolder earlier(other);  // so that it is there to be taken for the one started
  ASSERT_EQ(loadFake(), 0);
  api::interpreter::pyClose();
  EXPECT_EQ(loadFake(other), result);
  const PythonLibHolder opened = copyOfFake(u"opened.dll");
  EXPECT_TRUE(opened.loaded()) << "opening is not starting";
  EXPECT_TRUE(isMapped(fakePath)) << "a started runtime is never unmapped";
  api::interpreter::pyClose();
  std::u16string sameFile = fakePath;
  sameFile.insert(sameFile.find_last_of(u"/\\"), u"/.");
  EXPECT_EQ(loadFake(sameFile), 0) << "another spelling of the same file";
}

}  // namespace
