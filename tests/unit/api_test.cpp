#include <boost/exception/all.hpp>

#include "support.h"
#include "support/every_function.h"

namespace {

using namespace every;

PyHandle borrowing(PyObject* object) {
  return PyHandle(toPyArray(object), [](pyArray*) {});
}

TEST(BeforeALoad, EveryFunctionSaysThatThereIsNoAPI) {
  PyObject object{"o", 1, {}, {}};
  const std::string none = "Python API functions are not available.";
  const PyHandle handle = borrowing(&object);
  int unversioned = 0;
  for (const Function& function : functions) {
    try {
      EXPECT_EQ(failure([&] { function.call(handle.get(), handle); }), none) << function.text;
    } catch (const std::logic_error&) {
      ++unversioned;  // no version was recorded
    }
  }
  EXPECT_EQ(unversioned, 3);
  EXPECT_EQ(failure([] { pyClose(); }), none);
  EXPECT_EQ(failure([] { APIAccessor(); }), none);
  EXPECT_THROW(fetch::fetch(u"bad.name"), fetch::BadPythonName);
  PyArrayReleaser()(nullptr);
  EXPECT_EQ(failure([&] { PyArrayReleaser()(handle.get()); }), none);
}

using ApiTest = StartedFakeTest;

TEST_F(ApiTest, CallsWithVectorsUnderOneLock) {
  const PyHandle handle = borrowing(runtime.make("o"));
  const PyHandle result = pyInvoke(handle.get(), two(handle), {{handle, handle}});
  EXPECT_EQ(
      runtime.take(),
      (Calls{"PyEval_RestoreThread(state1)", "PyTuple_New(2)", "Py_IncRef(o)",
             "PyTuple_SetItem(PyTuple_New, 0, o)", "Py_IncRef(o)",
             "PyTuple_SetItem(PyTuple_New, 1, o)", "PyDict_New()",
             "PyObject_SetItem(PyDict_New, o, o)", "PyObject_Call(o, PyTuple_New, PyDict_New)",
             "Py_DecRef(PyDict_New)", "Py_DecRef(PyTuple_New)", "PyEval_SaveThread()"}));
  EXPECT_EQ(runtime.alive(), (Counts{{"o", 1}, {"PyObject_Call", 1}}));
}

TEST_F(ApiTest, OnlyOneIsTrue) {
  const PyHandle handle = borrowing(runtime.make("o"));
  for (const std::int64_t raw : {0, 1, 2}) {
    runtime.answers = {{"PyObject_IsTrue", raw}};
    EXPECT_EQ(pyBoolGetData(handle.get()), raw == 1) << raw;
  }
}

TEST_F(ApiTest, NoFunctionHandsNullOn) {
  for (const Function& function : functions) {
    failure([&] { function.call(nullptr, PyHandle()); });
    for (const std::string& call : runtime.take())
      EXPECT_EQ(call.find("(null"), call.npos) << function.text << ": " << call;
  }
  const PyHandle args = borrowing(runtime.make("args"));
  EXPECT_EQ(failure([&] { pyInvoke(nullptr, args.get(), nullptr); }), nullPassed);
  EXPECT_EQ(failure([] { pyInvoke(nullptr, nullptr, nullptr); }),
            "Arguments required to invoke Python callable.");
}

template <class Thrown>
void expectTravels(const Thrown& thrown, const std::u16string& text) {
  const boost::exception_detail::clone_base& cloneable = thrown;
  const std::unique_ptr<const boost::exception_detail::clone_base> clone(cloneable.clone());
  boost::exception_ptr carried;
  try {
    clone->rethrow();
  } catch (const foundation::IInternalException&) {
    carried = boost::current_exception();
  }
  try {
    boost::rethrow_exception(carried);
  } catch (const Thrown& arrived) {
    EXPECT_STREQ(static_cast<const std::exception&>(arrived).what(), thrown.what());
    EXPECT_EQ(static_cast<const foundation::IException&>(arrived).ToUstringImpl(), text);
  }
}

using Note = boost::error_info<struct NoteTag, int>;

TEST(Exceptions, KeepTheirTypeAndTextOnTheWay) {
  InternalPyException assigned("before");
  assigned = InternalPyException("caf\xC3\xA9 \xF0\x9F\x90\x8D \xC3(");
  expectTravels(assigned, u"caf\u00e9 \U0001F40D \uFFFD(");
  const InternalPyException& itself = assigned << Note(7);
  assigned = itself;
  assigned = std::move(assigned);
  EXPECT_EQ(*boost::get_error_info<Note>(assigned), 7);
  EXPECT_STREQ(InternalPyException(assigned).what(), "caf\xC3\xA9 \xF0\x9F\x90\x8D \xC3(");
  EXPECT_STREQ(InternalPyException("").what(), "Unknown InternalPyException");
  expectTravels(InternalPyException(""), u"");
  expectTravels(fetch::BadPythonName(), u"std::exception");
  expectTravels(fetch::SearchFailure(), u"std::exception");
  struct OfAHost : fetch::SearchFailure {
    std::string message() const { return convert_str(std::u16string(u"caf\u00e9")); }
  };
  EXPECT_EQ(OfAHost().message(), "caf\xC3\xA9");
}

}  // namespace
