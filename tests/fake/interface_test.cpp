#include <boost/numeric/conversion/cast.hpp>
#include <functional>
#include <limits>

#include "support.h"

namespace {

class InterfaceTest : public FakeRuntimeTest {
 protected:
  PyObject *const a = runtime.make("a"), *const b = runtime.make("b");
};

TEST_F(InterfaceTest, ChecksBeforeItCalls) {
  std::string narrow;
  std::u16string wide;
  // clang-format off
#define F(call) [&] { api->call; }
  const std::function<void()> refused[] = {
      F(PyObject_HasAttr(nullptr, b)), F(PyObject_HasAttr(a, nullptr)), F(PyDict_Check(nullptr)),
      F(PyObject_GetAttr(nullptr, b)), F(PyObject_GetAttr(a, nullptr)), F(PyFloat_AsDouble(nullptr)),
      F(PyObject_SetAttr(nullptr, b, a)), F(PyObject_SetAttr(a, nullptr, a)), F(Py_IncRef(nullptr)),
      F(PyObject_SetAttr(a, b, nullptr)), F(PySequence_Length(nullptr)), F(getChars(nullptr)),
      F(bytesToString(nullptr, narrow)), F(bytesToUString(nullptr, wide)), F(Py_DecRef(nullptr)),
      F(unicodeToUString(nullptr, wide)), F(setTupleItem(b, 0, nullptr)),
      F(PyObject_Call(nullptr, b, a))};
  // clang-format on
  for (const auto& call : refused) EXPECT_EQ(failure(call), nullPassed);
  EXPECT_EQ(failure([&] { api->PyObject_Call(nullptr, nullptr, a); }),
            "Arguments required to invoke Python callable.");
  constexpr std::uint64_t tooLarge = std::uint64_t{1} << 63;
  EXPECT_THROW(api->PyMemoryView_FromMemory(tooLarge, nullptr), boost::numeric::positive_overflow);
  EXPECT_THROW(api->PyUnicode_FromStringAndSize("", tooLarge), boost::numeric::positive_overflow);
  EXPECT_EQ(runtime.take(), Calls{});
}

TEST_F(InterfaceTest, ReadsResultsNarrowly) {
  for (const std::int64_t raw : {0, 1, 2, -2}) {
    runtime.answers = {{"PyObject_IsTrue", raw}};
    EXPECT_EQ(api->PyObject_IsTrue(a), raw == 1) << raw;
  }
  const std::pair<std::int64_t, HostLong> rows[] = {
      {0x100000005, 5}, {0x80000000, std::numeric_limits<HostLong>::min()}, {-0x100000001, -1}};
  for (const auto& [value, low] : rows) {
    runtime.answers = {{"PyLong_AsLongLong", value}};
    EXPECT_EQ(api->intAsLong(a), low);
  }
}

TEST_F(InterfaceTest, AddsTheTupleItemsReferenceBeforeItLooksAtTheTuple) {
  EXPECT_EQ(failure([&] { api->setTupleItem(nullptr, 0, a); }), nullPassed);
  EXPECT_EQ(api->setTupleItem(b, 3, a), 0);
  EXPECT_EQ(a->references, 3);
  EXPECT_EQ(runtime.take(), (Calls{"Py_IncRef(a)", "Py_IncRef(a)", "PyTuple_SetItem(b, 3, a)"}));
}

TEST_F(InterfaceTest, FindsNoneAfreshAndReleasesWhatItUsed) {
  PyObject* const none = api->getNone();
  EXPECT_TRUE(api->isNone(none));
  EXPECT_FALSE(api->isNone(a));
  EXPECT_EQ(runtime.take({"PyImport"}).size(), 3U);
  Counts counts = {{"a", 1}, {"b", 1}, {"builtins:None", 1}};
  EXPECT_EQ(runtime.alive(), counts);
  EXPECT_EQ(failure([&] { api->isNone(nullptr); }), nullPassed);
  ++counts["builtins:None"];
  EXPECT_EQ(runtime.alive(), counts) << "found before the argument is checked, and left behind";
}

TEST_F(InterfaceTest, FetchesTheErrorWithALateCheckOfItsTuple) {
  PyObject* const none = api->getNone();
  const std::vector<PyObject*> rows[] = {{a, b, none}, {none, none, none}};
  for (const auto& parts : rows) {
    for (std::size_t i = 0; i < parts.size(); ++i)
      if (parts[i] != none) ++(runtime.error[i] = parts[i])->references;
    PyObject* const tuple = api->fetchError();
    EXPECT_EQ(tuple->items, parts);
    api->Py_DecRef(tuple);
    EXPECT_EQ(runtime.alive(), (Counts{{"a", 1}, {"b", 1}, {"builtins:None", 1}}));
  }

  runtime.error[0] = a;
  runtime.answers = {{"PyTuple_New", 0}};
  runtime.take();
  EXPECT_EQ(failure([&] { api->fetchError(); }), "NULL pointer returned from Python.");
  EXPECT_EQ(runtime.take({"PyTuple_"}), (Calls{"PyTuple_New(3)", "PyTuple_SetItem(null, 0, a)",
                                               "PyTuple_SetItem(null, 1, builtins:None)",
                                               "PyTuple_SetItem(null, 2, builtins:None)"}));
}

TEST_F(InterfaceTest, LeavesTheReferencesOfAnInspectPredicateBehind) {
  EXPECT_FALSE(api->callInspectPredicate(a, "isclass")) << "the result is no bool";
  Counts left = {{"a", 2}, {"b", 1}, {"inspect", 1}, {"inspect:isclass", 1}};
  left["PyTuple_New"] = left["PyObject_Call"] = 1;
  EXPECT_EQ(runtime.alive(), left);
  runtime.answers = {{"PyObject_Is", 1}};  // an instance of bool, and true
  EXPECT_TRUE(api->callInspectPredicate(a, "isclass"));
  runtime.answers["PyObject_Call"] = 0;
  EXPECT_FALSE(api->callInspectPredicate(a, "isclass"));
}

}  // namespace
