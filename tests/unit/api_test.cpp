#include <boost/exception/all.hpp>

#include "stand_in_test.h"
#include "support/every_function.h"

namespace {

PyHandle borrowing(PyObject* object) {
  return PyHandle(toPyArray(object), [](pyArray*) {});
}

TEST(BeforeALoad, EveryFunctionSaysThatThereIsNoAPI) {
  const std::string none = "Python API functions are not available.";
  const std::string unversioned = thrownBy([] { pyIsExcludedTypeForBuffer("str"); });
  PyObject object{"o"};
  const PyHandle handle = borrowing(&object);
  for (const every::Function& function : every::functions) {
    const std::string thrown = thrownBy([&] { function.call(handle.get(), handle); });
    EXPECT_TRUE(thrown == none || thrown == unversioned) << function.text;
  }
  EXPECT_EQ(thrownBy([] { pyClose(); }), none);
  EXPECT_EQ(thrownBy([] { APIAccessor(); }), none);
  EXPECT_EQ(thrownBy([&] { PyArrayReleaser()(handle.get()); }), none);
  EXPECT_NO_THROW(PyArrayReleaser()(nullptr));
  EXPECT_THROW(fetch::fetch(u"bad.name"), fetch::BadPythonName);
}

class Started : public StandInTest {
 protected:
  void SetUp() override {
    ASSERT_EQ(load(), 0);
    APIAccessor();  // gives up the lock that the start left taken
    runtime.take();
  }
  const PyHandle handle = borrowing(runtime.make("o"));
};

TEST_F(Started, CallsWithVectorsUnderOneLock) {
  const PyHandle result = pyInvoke(handle.get(), every::two(handle), every::pairs(handle));
  EXPECT_EQ(runtime.take({"PyEval_"}),
            (Calls{"PyEval_RestoreThread(state1)", "PyEval_SaveThread()"}));
}

TEST_F(Started, OnlyOneIsTrue) {
  for (const std::int64_t raw : {0, 1, 2}) {
    runtime.answers = {{"PyObject_IsTrue", raw}};
    EXPECT_EQ(pyBoolGetData(handle.get()), raw == 1) << raw;
  }
}

TEST_F(Started, OlderNamesAreUsedWhenTheHostSaysSo) {
  pyInvokeInt(handle.get());
  pyTypeImplementsCollection(handle.get(), "Sequence");
  EXPECT_EQ(runtime.take({"PyObject_GetAttrString"}),
            (Calls{"PyObject_GetAttrString(PyImport_Import('builtins'), long)",
                   "PyObject_GetAttrString(PyImport_Import('collections'), Sequence)"}));
  EXPECT_TRUE(pyIsExcludedTypeForBuffer("str") && pyIsExcludedTypeForBuffer("unicode"));
  EXPECT_FALSE(pyIsExcludedTypeForBuffer("bytes"));
}

TEST_F(Started, NoFunctionHandsNullOn) {
  for (const every::Function& function : every::functions) {
    thrownBy([&] { function.call(nullptr, PyHandle()); });
    for (const std::string& call : runtime.take())
      EXPECT_EQ(call.find("(null"), call.npos) << function.text << ": " << call;
  }
  EXPECT_EQ(thrownBy([&] { pyInvoke(nullptr, handle.get(), nullptr); }),
            "NULL pointer passed to Python.");
  EXPECT_EQ(thrownBy([] { pyInvoke(nullptr, nullptr, nullptr); }),
            "Arguments required to invoke Python callable.");
}

// In a clone, as boost::exception_ptr carries it from thread to thread.
template <class Thrown>
void expectTravels(const Thrown& thrown, const char* text, const std::u16string& wide) {
  const boost::exception_detail::clone_base& cloneable = thrown;
  const std::unique_ptr<const boost::exception_detail::clone_base> clone(cloneable.clone());
  try {
    clone->rethrow();
  } catch (const Thrown& arrived) {
    EXPECT_STREQ(static_cast<const std::exception&>(arrived).what(), text);
    EXPECT_EQ(static_cast<const foundation::IException&>(arrived).ToUstringImpl(), wide);
  }
}

using Note = boost::error_info<struct NoteTag, int>;

TEST(Exceptions, KeepTheirTypeAndTextOnTheWay) {
  InternalPyException assigned("before");
  assigned = InternalPyException("caf\xC3\xA9 \xF0\x9F\x90\x8D \xC3(");
  assigned << Note(7);
  InternalPyException& itself = assigned;
  assigned = itself;
  assigned = std::move(itself);
  EXPECT_EQ(*boost::get_error_info<Note>(assigned), 7);
  expectTravels(InternalPyException(assigned), "caf\xC3\xA9 \xF0\x9F\x90\x8D \xC3(",
                u"caf\u00e9 \U0001F40D \uFFFD(");
  expectTravels(InternalPyException(""), "Unknown InternalPyException", u"");
  expectTravels(fetch::BadPythonName(), "std::exception", u"std::exception");
  expectTravels(fetch::SearchFailure(), "std::exception", u"std::exception");
  struct OfAHost : fetch::SearchFailure {
    std::string message() const { return convert_str(std::u16string(u"caf\u00e9")); }
  };
  EXPECT_EQ(OfAHost().message(), "caf\xC3\xA9");
}

}  // namespace
