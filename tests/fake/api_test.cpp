#include "every_function.h"
#include "support.h"

namespace {

using namespace every;

PyHandle borrowing(PyObject* object) {
  return PyHandle(toPyArray(object), [](pyArray*) {});
}

TEST(BeforeALoad, EveryFunctionSaysThatThereIsNoAPI) {
  PyObject object{"o", "", 1, {}, {}};
  const PyHandle handle = borrowing(&object);
  for (const Function& function : unversioned)
    EXPECT_EQ(failure([&] { function.call(handle.get(), handle); }), noAPI) << function.text;
  for (const Function& function : versioned)
    EXPECT_THROW(function.call(handle.get(), handle), std::logic_error) << function.text;
  EXPECT_EQ(failure([] { pyClose(); }), noAPI);
  EXPECT_EQ(failure([] { APIAccessor(); }), noAPI);
  EXPECT_THROW(fetch::fetch(u"bad.name"), fetch::BadPythonName);

  PyHandle(static_cast<pyArray*>(nullptr), PyArrayReleaser()).reset();
  EXPECT_EQ(failure([&] { PyArrayReleaser()(handle.get()); }), noAPI);
}

class ApiTest : public StartedFakeTest {
 protected:
  PyObject* text = nullptr;

  void SetUp() override {
    StartedFakeTest::SetUp();
    text = runtime.make("o", "PyUnicode_Type", "o");
  }

  // Calls with the n-th C call that can fail failing, and forgets all references; answers what
  // was left alive.
  Counts leftAlive(const Function& function, PyObject* object, int n) {
    runtime.take();
    runtime.failed.clear();
    runtime.failingAny = n;
    failure([&] { function.call(toPyArray(object), borrowing(object)); });
    runtime.failingAny = 0;
    expectLockGivenBack();
    pyErrorClear();
    const auto left = alive();
    for (PyObject& each : runtime.objects) each.references = &each == text ? 1 : 0;
    return left;
  }

  void expectLockGivenBack() const {
    bool held = false;
    for (const std::string& call : runtime.calls) {
      const bool taken = call.rfind("PyEval_RestoreThread", 0) == 0;
      EXPECT_EQ(held, !taken) << call;
      held = taken || (held && call.rfind("PyEval_SaveThread", 0) != 0);
    }
    EXPECT_FALSE(held);
  }
};

TEST_F(ApiTest, EveryWayOutGivesTheLockAndTheReferencesBack) {
  const Counts clean = {{"o", 1}};
  const Counts withoutNone = {{"builtins", 1}, {"o", 1}};
  const auto exercise = [&](const Function& function) {
    SCOPED_TRACE(function.text);
    int n = 0;
    do {
      const auto left = leftAlive(function, text, n);
      // The one look-up that keeps what it has when it fails.
      const bool noneFailed = runtime.failed == "PyObject_GetAttrString(builtins, None)";
      EXPECT_EQ(left, noneFailed ? withoutNone : clean) << n << " " << runtime.failed;
    } while (n++ == 0 || !runtime.failed.empty());

    leftAlive(function, nullptr, 0);
    for (const std::string& call : runtime.calls)
      EXPECT_EQ(call.find("(null"), std::string::npos) << call;
  };
  for (const Function& function : unversioned) exercise(function);
  for (const Function& function : versioned) exercise(function);
}

TEST_F(ApiTest, FetchTriesReadingsInOrder) {
  const Calls inBuiltins = {"PyImport_Import('builtins')", "PyObject_GetAttr(builtins, 'a')"};
  const struct {
    std::u16string name;
    std::set<std::string> missing;
    Calls calls;  // after those in builtins
    std::string found;
  } rows[] = {
      {u"py.a.b", {}, {"PyObject_GetAttr(builtins:a, 'b')"}, "builtins:a:b"},
      {u"py.a", {"builtins:a"}, {}, ""},
      {u"py.a.b.c",
       {"builtins:a", "a:b"},
       {"PyImport_Import('a')", "PyObject_GetAttr(a, 'b')", "PyImport_Import('a.b')",
        "PyObject_GetAttr(a.b, 'c')"},
       "a.b:c"},
      {u"py.a.b.c",
       {"builtins:a", "a", "a.b:c"},
       {"PyImport_Import('a')", "PyImport_Import('a.b')", "PyObject_GetAttr(a.b, 'c')"},
       ""},
      {u"py.a..b",
       {"builtins:a", "a:", "a."},
       {"PyImport_Import('a')", "PyObject_GetAttr(a, '')", "PyImport_Import('a.')"},
       ""},
  };
  for (const auto& row : rows) {
    runtime.missing = row.missing;
    runtime.take();
    std::string found;
    try {
      found = toPyObject(fetch::fetch(row.name).get())->label;
    } catch (const fetch::SearchFailure&) {
    }
    EXPECT_EQ(found, row.found);
    Calls expected = inBuiltins;
    expected.insert(expected.end(), row.calls.begin(), row.calls.end());
    EXPECT_EQ(runtime.take({"PyImport_Import", "PyObject_GetAttr"}), expected);
    EXPECT_EQ(runtime.error[0], nullptr);
    EXPECT_EQ(alive().size(), 1U) << "the text of this test";
  }

  runtime.missing = {"builtins:"};
  EXPECT_THROW(fetch::fetch(u"py."), fetch::SearchFailure);
  const std::u16string zeroInside(u"py.a\0b", 6);
  EXPECT_EQ(toPyObject(fetch::fetch(zeroInside).get())->label, "builtins:a{0}b");
  runtime.take();
  for (const char16_t* name : {u"", u"py", u"len", u"PY.len", u".py.len", u" py.len", u"pypy.len"})
    EXPECT_THROW(fetch::fetch(name), fetch::BadPythonName);
  EXPECT_EQ(runtime.take(), Calls{}) << "nothing was imported";
}

}  // namespace
