#include "support.h"

namespace {

using api::type::pyIsExcludedTypeForBuffer;

class StartUpTest : public FakeRuntimeTest {
 protected:
  Calls start(const std::u16string& home, const std::u16string& path) {
    runtime.initialised = false;
    runtime.take();
    api->initialize(u"/prog", home, path);
    return runtime.take();
  }
};

Calls expectedStart(const Calls& configuration, const std::string& home, const std::string& base) {
  const auto text = [](const std::string& content) {
    return "PyUnicode_DecodeUTF16(" + content + ", " + std::to_string(2 * content.size()) +
           ", null, null)";
  };
  const auto set = [](const std::string& name, const std::string& value) {
    return "PyObject_SetAttrString(sys, " + name + ", '" + value + "')";
  };
  Calls calls = {"Py_IsInitialized()", "Py_SetProgramName(/prog)",
                 "PySys_AddXOption(frozen_modules=off)"};
  calls.insert(calls.end(), configuration.begin(), configuration.end());
  for (const std::string& call : Calls{
           "Py_Initialize()", text("sys"), "PyImport_Import('sys')", "Py_DecRef('sys')", text(home),
           set("prefix", home), set("exec_prefix", home), text(base), set("base_prefix", base),
           set("base_exec_prefix", base), text("/prog"), set("executable", "/prog"), text("/prog"),
           set("_base_executable", "/prog"), "PyEval_InitThreads()", "PySys_SetArgv(0, [null])"})
    calls.push_back(call);
  return calls;
}

TEST_F(StartUpTest, RunsInOrder) {
  EXPECT_EQ(start(u"/home", u"/a:/b"),
            expectedStart({"Py_SetPythonHome(/home)", "Py_SetPath(/a:/b)"}, "/home", ""));
  EXPECT_EQ(alive(), (Counts{{"sys", 1}, {"'/home'", 1}, {"''", 1}, {"'/prog'", 2}}))
      << "live as long as the interpreter";
  EXPECT_EQ(start(u"", u""), expectedStart({"Py_SetPythonHome()"}, "", ""));

  runtime.initialised = true;
  api->initialize(u"/other", u"/other", u"/other");
  EXPECT_EQ(runtime.take(), Calls{"Py_IsInitialized()"});
}

TEST_F(StartUpTest, GoesOnWhenSysCannotBeCorrected) {
  const Calls whole = start(u"/home", u"");
  for (runtime.failingAny = 1; runtime.failingAny <= 12; ++runtime.failingAny) {
    const int step = runtime.failingAny;
    const Calls calls = start(u"/home", u"");
    EXPECT_EQ(runtime.failingAny, 0) << "twelve calls can fail";
    EXPECT_EQ(Calls(calls.end() - 3, calls.end()),
              (Calls{"PyErr_Clear()", "PyEval_InitThreads()", "PySys_SetArgv(0, [null])"}));
    const auto kept = static_cast<std::ptrdiff_t>(calls.size()) - 4;
    EXPECT_TRUE(std::equal(calls.begin(), calls.begin() + kept, whole.begin())) << step;
    EXPECT_EQ(runtime.error[0], nullptr);
    runtime.failingAny = step;
  }
}

TEST_F(StartUpTest, DerivesTheBaseFromAWindowsPath) {
  const std::pair<std::u16string, std::u16string> rows[] = {
      {u"env\\Library\\bin\\python3.dll", u"env\\Library"},
      {u"env\\lib\\python3.dll", u"env"},
      {u"a\\bin\\b\\lib\\c\\python3.dll", u"a\\bin\\b"},
      {u"a\\lib\\b\\bin\\c\\python3.dll", u"a\\lib\\b"},
      {u"a\\Bin\\python3.dll", u"a\\Bin"},
      {u"a\\bin\\python3.DLL", u""},
      {u"a\\bin\\libpython3.so", u""},
  };
  for (const auto& [name, base] : rows) {
    const CopiedFake copied(name);
    const PythonLibHolder library(copied.library);
    const std::unique_ptr<python::IPythonAPI> fresh(
        createIPythonAPI(PythonFuncs(library), PythonThreeFuncs(library)));
    fresh->initialize(u"", u"/home", u"");
    const std::string expected =
        base.empty() ? ""
                     : std::filesystem::path(copied.folder.u16string() + u"/" + base).u8string();
    EXPECT_EQ(control(library).take({"PyObject_SetAttrString(sys, base_"}),
              (Calls{"PyObject_SetAttrString(sys, base_prefix, '" + expected + "')",
                     "PyObject_SetAttrString(sys, base_exec_prefix, '" + expected + "')"}));
  }
}

TEST(Loader, AnswersWhatBecameOfTheLibrary) {
  const std::u16string refused[] = {u"", u"/no/such.so", utf16Path(FAKE_LACKING_TWO),
                                    utf16Path(FAKE_LACKING_VIEW)};
  for (const std::u16string& library : refused) {
    EXPECT_EQ(loadFake(library, u"2.7"), -1);
    EXPECT_FALSE(loader::isPythonLoaded());
    EXPECT_FALSE(isMapped(library));
  }
  EXPECT_THROW(pyIsExcludedTypeForBuffer("str"), std::logic_error) << "nothing was recorded";

  const PythonLibHolder holder(fakePath);
  control(holder).initialised = true;
  EXPECT_EQ(loadFake(fakePath, u"2.7"), -2) << "initialised by other code";
  EXPECT_EQ(loader::getAPI(), nullptr);
  EXPECT_THROW(pyIsExcludedTypeForBuffer("str"), std::logic_error);
}

TEST(Loader, StartsStaysAndStartsAgain) {
  ASSERT_EQ(loadFake(), 0);
  EXPECT_TRUE(isMapped(fakePath));
  fake::Runtime& runtime = control(PythonLibHolder(fakePath));
  Calls expected = expectedStart({"Py_SetPythonHome(/home)"}, "/home", "");
  expected.insert(expected.begin(), "Py_IsInitialized()");
  EXPECT_EQ(runtime.take(), expected);

  python::IPythonAPI* const first = loader::getAPI();
  EXPECT_EQ(loadFake(u"/no/such.so", u"2.7"), -1);
  EXPECT_EQ(loader::getAPI(), first) << "an earlier load stays";
  EXPECT_FALSE(pyIsExcludedTypeForBuffer("str"));

  EXPECT_EQ(loadFake(fakePath, u"2.7"), -2);
  EXPECT_FALSE(loader::isPythonLoaded()) << "an earlier load goes";
  EXPECT_EQ(runtime.take(), Calls{"Py_IsInitialized()"}) << "and finalises nothing";
  EXPECT_TRUE(isMapped(fakePath)) << "a started runtime is never unmapped";
  EXPECT_FALSE(pyIsExcludedTypeForBuffer("str"));

  runtime.initialised = false;
  ASSERT_EQ(loadFake(fakePath, u"2.7"), 0);
  EXPECT_TRUE(pyIsExcludedTypeForBuffer("str"));
  EXPECT_TRUE(pyIsExcludedTypeForBuffer("unicode"));
  EXPECT_FALSE(pyIsExcludedTypeForBuffer("bytes"));
  api::interpreter::pyClose();
  EXPECT_TRUE(loader::isPythonLoaded());
  EXPECT_EQ(loadFake(), 0) << "closed, and started again";
  EXPECT_TRUE(api::interpreter::pyIsOpen());
}

#if !defined(_WIN32)
TEST(Loader, RefusesAnotherBuildOnceOneWasStarted) {
  const std::u16string other = utf16Path(FAKE_OTHER);
  EXPECT_TRUE(PythonLibHolder(other).loaded());
  ASSERT_EQ(loadFake(), 0);
  python::IPythonAPI* const started = loader::getAPI();
  EXPECT_EQ(loadFake(other, u"2.7"), -1);
  EXPECT_EQ(loader::getAPI(), started);
  api::interpreter::pyClose();
  EXPECT_EQ(loadFake(other, u"2.7"), -1) << "also after a close";
  EXPECT_FALSE(isMapped(other));
  std::u16string sameFile = fakePath;
  sameFile.insert(sameFile.rfind(u'/'), u"/.");
  EXPECT_EQ(loadFake(sameFile), 0) << "another spelling of the same file";
}
#else
TEST(Loader, StartsAnotherBuildAfterAClose) {
  const std::u16string other = utf16Path(FAKE_OTHER);
  for (const std::u16string& library : {fakePath, other}) {
    ASSERT_EQ(loadFake(library), 0);
    EXPECT_EQ(control(PythonLibHolder(library)).take({"Py_Initialize("}).size(), 1U);
    api::interpreter::pyClose();
  }
  EXPECT_TRUE(isMapped(fakePath)) << "a started runtime is never unmapped";
}
#endif

}  // namespace
