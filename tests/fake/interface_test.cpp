#include <boost/numeric/conversion/cast.hpp>
#include <functional>
#include <limits>

#include "support.h"

namespace {

using python::IPythonAPI;
using Objects = std::vector<PyObject*>;

// One operation that wraps one C API function, with its expected call for the objects a, b, c.
struct Operation {
  std::string name, call, failure;
  std::size_t objectCount;
  std::function<std::string(IPythonAPI&, const Objects&)> run;  ///< answers the result as text

  std::string function() const { return call.substr(0, call.find('(')); }
};

char memory[8];
const std::u16string unicode = u"\u00e9\U0001F40D";

template <class Arg>
decltype(auto) argument(const Objects& objects, std::size_t& next) {
  using Value = std::decay_t<Arg>;
  if constexpr (std::is_same_v<Value, PyObject*>) {
    return objects[next++];
  } else if constexpr (std::is_same_v<Value, const char*>) {
    return "name";
  } else if constexpr (std::is_same_v<Value, char*>) {
    return static_cast<char*>(memory);
  } else if constexpr (std::is_same_v<Value, std::u16string>) {
    return (unicode);
  } else {
    return static_cast<Value>(4);
  }
}

template <class Result>
std::string asText(Result result) {
  if constexpr (std::is_pointer_v<Result>) {
    return result->label;
  } else {
    return std::to_string(result);
  }
}

template <class Result, class... Args>
Operation operation(const char* name, Result (IPythonAPI::*call)(Args...), const char* expected) {
  const auto run = [call](IPythonAPI& api, const Objects& objects) {
    [[maybe_unused]] std::size_t next = 0;
    std::tuple<Args...> args{argument<Args>(objects, next)...};  // from left to right
    return std::apply([&](auto&... unpacked) { return asText((api.*call)(unpacked...)); }, args);
  };
  return {name, expected,
          std::is_same_v<Result, bool>                         ? introspectionFailed
          : std::is_same_v<Result, PyObject*>                  ? nullReturned
          : std::is_same_v<Result, int> && sizeof...(Args) > 1 ? setFailed
          : expected[2] == 'S'                                 ? "PySequence_Length failed."
                                                               : "",
          (std::size_t{std::is_same_v<Args, PyObject*>} + ... + 0), run};
}

#define O(name, call) operation(#name, &IPythonAPI::name, call)
#define SAME(name, arguments) O(name, #name arguments)
#define TYPE_TEST(name, type) O(name, "PyObject_IsInstance(a, " #type "_Type)")

// Packed by hand.
// clang-format off
const std::vector<Operation> operations = {
    SAME(PyObject_HasAttr, "(a, b)"), SAME(PyObject_HasAttrString, "(a, name)"),
    SAME(PyObject_RichCompareBool, "(a, b, 2)"), SAME(PyObject_IsInstance, "(a, b)"),
    SAME(PyObject_IsSubclass, "(a, b)"), SAME(PyObject_IsTrue, "(a)"),
    SAME(PyCallable_Check, "(a)"), SAME(PySequence_Check, "(a)"), SAME(PyMapping_Check, "(a)"),
    TYPE_TEST(PyModule_Check, PyModule), TYPE_TEST(PyType_Check, PyType),
    TYPE_TEST(PyList_Check, PyList), TYPE_TEST(PyTuple_Check, PyTuple),
    TYPE_TEST(PyDict_Check, PyDict), TYPE_TEST(PyBool_Check, PyBool),
    TYPE_TEST(PyLong_Check, PyLong), TYPE_TEST(PyFloat_Check, PyFloat),
    TYPE_TEST(PyComplex_Check, PyComplex), TYPE_TEST(PyUnicode_Check, PyUnicode),
    TYPE_TEST(isString, PyUnicode), SAME(PyObject_GetAttr, "(a, b)"),
    SAME(PyObject_GetAttrString, "(a, name)"), SAME(PyObject_GetItem, "(a, b)"),
    SAME(PyObject_Str, "(a)"), SAME(PyObject_Dir, "(a)"), SAME(PyObject_Type, "(a)"),
    SAME(PySequence_GetItem, "(a, 4)"), SAME(PySequence_List, "(a)"),
    SAME(PyObject_SetAttr, "(a, b, c)"), SAME(PyObject_SetAttrString, "(a, name, b)"),
    SAME(PyObject_SetItem, "(a, b, c)"), SAME(PyTuple_New, "(4)"), SAME(PyDict_New, "()"),
    SAME(PyBool_FromLong, "(1)"), SAME(PyLong_FromUnsignedLongLong, "(4)"),
    SAME(PyLong_FromLongLong, "(4)"), SAME(PyFloat_FromDouble, "(4.000000)"),
    SAME(PyComplex_FromDoubles, "(4.000000, 4.000000)"),
    SAME(PyUnicode_FromStringAndSize, "(name, 4)"),
    SAME(PyUnicode_DecodeUTF16, "({E9}{D83D}{DC0D}, 6, null, null)"),
    SAME(PyMemoryView_FromMemory, "(&, 4, 512)"), O(intFromLong, "PyLong_FromLongLong(4)"),
    SAME(PySequence_Length, "(a)"), SAME(PyLong_AsLongLong, "(a)"),
    SAME(PyLong_AsUnsignedLongLong, "(a)"), SAME(PyFloat_AsDouble, "(a)"),
    SAME(PyComplex_RealAsDouble, "(a)"), SAME(PyComplex_ImagAsDouble, "(a)"),
    O(intAsLong, "PyLong_AsLongLong(a)"),
};
// clang-format on

class InterfaceTest : public FakeRuntimeTest {
 protected:
  PyObject* const a = runtime.make("a", "A");
  PyObject* const b = runtime.make("b", "B");
  PyObject* const c = runtime.make("c", "C");
};

TEST_F(InterfaceTest, OperationsCheckArgumentsAndResults) {
  for (const Operation& operation : operations) {
    SCOPED_TRACE(operation.name);
    for (std::size_t i = 0; i < operation.objectCount; ++i) {
      Objects objects = {a, b, c};
      objects[i] = nullptr;
      EXPECT_EQ(failure([&] { operation.run(*api, objects); }), nullPassed) << i;
      EXPECT_EQ(runtime.take(), Calls{});
    }

    operation.run(*api, {a, b, c});
    EXPECT_EQ(runtime.take(), Calls{operation.call});

    runtime.failing[operation.function()] = 1;
    std::string errorValue;
    EXPECT_EQ(failure([&] { errorValue = operation.run(*api, {a, b, c}); }), operation.failure);
    if (operation.failure.empty()) {
      EXPECT_TRUE(errorValue == "-1" || errorValue == "-1.000000" ||
                  errorValue == "18446744073709551615")
          << errorValue;
    }
    EXPECT_EQ(runtime.take().size(), 1U) << "the error stays pending";

    if (operation.failure != introspectionFailed) continue;
    for (const std::int64_t raw : {0, 1, 2, -2}) {
      runtime.answers[operation.function()] = raw;
      EXPECT_EQ(operation.run(*api, {a, b, c}), raw == 1 ? "1" : "0") << raw;
    }
    runtime.answers.clear();
    runtime.take();
  }
}

TEST_F(InterfaceTest, KeepsTheLow32BitsOfAnInt) {
  const std::pair<std::int64_t, HostLong> rows[] = {
      {0x100000005, 5}, {0x80000000, std::numeric_limits<HostLong>::min()}, {-0x100000001, -1}};
  for (const auto& [value, low] : rows) {
    runtime.answers["PyLong_AsLongLong"] = value;
    EXPECT_EQ(api->intAsLong(a), low);
  }
}

TEST_F(InterfaceTest, SizesAreCheckedBeforeTheCall) {
  constexpr std::uint64_t tooLarge = std::uint64_t{1} << 63;
  EXPECT_THROW(api->PyMemoryView_FromMemory(tooLarge, memory), boost::numeric::positive_overflow);
  EXPECT_THROW(api->PyUnicode_FromStringAndSize("", tooLarge), boost::numeric::positive_overflow);
  EXPECT_EQ(runtime.take(), Calls{});
}

TEST_F(InterfaceTest, PlainOperationsPassOn) {
  for (const auto operation : {&IPythonAPI::Py_IncRef, &IPythonAPI::Py_DecRef}) {
    EXPECT_EQ(failure([&] { ((*api).*operation)(nullptr); }), nullPassed);
    ((*api).*operation)(a);
  }
  runtime.answers["Py_IsInitialized"] = -3;
  EXPECT_TRUE(api->Py_IsInitialized());
  EXPECT_FALSE(api->PyErr_Occurred());
  EXPECT_FALSE(api->isInt(a) || api->isInt(nullptr));
  EXPECT_EQ(api->PyCapsule_Import(u"d\u00e9.C_API"), nullptr);
  EXPECT_EQ(runtime.take(), (Calls{"Py_IncRef(a)", "Py_DecRef(a)", "Py_IsInitialized()",
                                   "PyErr_Occurred()", "PyCapsule_Import(d\xC3\xA9.C_API, 1)"}));
}

TEST_F(InterfaceTest, CallsWithATupleAndMaybeADictionary) {
  constexpr char needed[] = "Arguments required to invoke Python callable.";
  EXPECT_EQ(failure([&] { api->PyObject_Call(nullptr, nullptr, nullptr); }), needed);
  EXPECT_EQ(failure([&] { api->PyObject_Call(a, nullptr, c); }), needed);
  EXPECT_EQ(failure([&] { api->PyObject_Call(nullptr, b, c); }), nullPassed);
  api->PyObject_Call(a, b, nullptr);
  runtime.failing["PyObject_Call"] = 1;
  EXPECT_EQ(failure([&] { api->PyObject_Call(a, b, c); }), nullReturned);
  EXPECT_EQ(runtime.take(), (Calls{"PyObject_Call(a, b, null)", "PyObject_Call(a, b, c)"}));
}

TEST_F(InterfaceTest, AddsTheTupleItemsReferenceBeforeItLooksAtTheTuple) {
  EXPECT_EQ(failure([&] { api->setTupleItem(nullptr, 0, nullptr); }), nullPassed);
  EXPECT_EQ(runtime.take(), Calls{});
  EXPECT_EQ(failure([&] { api->setTupleItem(nullptr, 0, a); }), nullPassed);
  EXPECT_EQ(a->references, 2);
  EXPECT_EQ(api->setTupleItem(b, 3, a), 0);
  EXPECT_EQ(a->references, 3);
  runtime.failing["PyTuple_SetItem"] = 1;
  EXPECT_EQ(failure([&] { api->setTupleItem(b, 9, a); }), setFailed);
  EXPECT_EQ(runtime.take(), (Calls{"Py_IncRef(a)", "Py_IncRef(a)", "PyTuple_SetItem(b, 3, a)",
                                   "Py_IncRef(a)", "PyTuple_SetItem(b, 9, a)"}));
  EXPECT_EQ(a->references, 3);
}

TEST_F(InterfaceTest, FindsNoneAfreshAndReleasesWhatItUsed) {
  const Calls lookUp = {"PyImport_Import('builtins')", "PyObject_GetAttrString(builtins, None)"};
  const Calls prefixes = {"PyImport", "PyObject_GetAttr"};
  PyObject* const none = api->getNone();
  EXPECT_EQ(runtime.take(prefixes), lookUp);
  EXPECT_TRUE(api->isNone(none));
  EXPECT_EQ(runtime.take(prefixes), lookUp);
  EXPECT_FALSE(api->isNone(a));
  EXPECT_EQ(alive(), (Counts{{"a", 1}, {"b", 1}, {"c", 1}, {"builtins:None", 1}}));
  runtime.take();
  EXPECT_EQ(failure([&] { api->isNone(nullptr); }), nullPassed);
  EXPECT_EQ(runtime.take(prefixes), lookUp) << "before the argument is checked";

  runtime.missing = {"builtins:None", "absent"};
  EXPECT_EQ(failure([&] { api->getNone(); }), nullReturned);
  EXPECT_EQ(failure([&] { api->importModule(u"absent"); }), nullReturned);
  EXPECT_EQ(alive().count("'absent'"), 0U) << "the name is released all the same";
}

TEST_F(InterfaceTest, FetchesTheErrorAsATuple) {
  PyObject* const none = api->getNone();
  for (const Objects& parts : {Objects{a, b, c}, Objects{a, b, none}, Objects{none, none, none}}) {
    for (std::size_t i = 0; i < parts.size(); ++i)
      if (parts[i] != none) ++(runtime.error[i] = parts[i])->references;
    const std::int64_t before = runtime.references();
    PyObject* const tuple = api->fetchError();
    EXPECT_EQ(tuple->items, parts);
    EXPECT_EQ(runtime.references(), before + 1 + std::count(parts.begin(), parts.end(), none));
    EXPECT_FALSE(api->PyErr_Occurred());
    api->Py_DecRef(tuple);
    EXPECT_EQ(runtime.references(), 4) << "a, b, c and None as before";
  }
}

TEST_F(InterfaceTest, FetchesTheErrorWithALateCheckOfItsTuple) {
  runtime.error[0] = a;
  runtime.failing["PyTuple_New"] = 1;
  EXPECT_EQ(failure([&] { api->fetchError(); }), nullReturned);
  EXPECT_EQ(runtime.take({"PyErr_", "PyTuple_", "Py_IncRef"}),
            (Calls{"PyErr_Fetch(&, &, &)", "PyErr_NormalizeException(&, &, &)", "PyTuple_New(3)",
                   "PyTuple_SetItem(null, 0, a)", "Py_IncRef(builtins:None)",
                   "PyTuple_SetItem(null, 1, builtins:None)", "Py_IncRef(builtins:None)",
                   "PyTuple_SetItem(null, 2, builtins:None)"}));
  EXPECT_EQ(runtime.named["builtins:None"]->references, 0);
}

TEST_F(InterfaceTest, ReadsTextByCopy) {
  PyObject* const text = runtime.make("text", "PyUnicode_Type");
  std::string narrow = "before";
  std::u16string wide = u"before";
  EXPECT_EQ(failure([&] { api->getChars(nullptr); }), nullPassed);
  EXPECT_EQ(failure([&] { api->bytesToString(nullptr, narrow); }), nullPassed);
  EXPECT_EQ(failure([&] { api->bytesToUString(nullptr, wide); }), nullPassed);
  EXPECT_EQ(failure([&] { api->unicodeToUString(nullptr, wide); }), nullPassed);
  runtime.answers["PyBytes_AsStringAndSize"] = -1;
  EXPECT_EQ(api->bytesToString(text, narrow), -1);
  EXPECT_EQ(api->bytesToUString(text, wide), -1);
  EXPECT_EQ(api->unicodeToUString(text, wide), -1);
  runtime.answers = {{"PyUnicode_AsUTF16String", 0}};
  EXPECT_EQ(api->unicodeToUString(text, wide), -1);
  EXPECT_EQ(narrow, "before");
  EXPECT_EQ(wide, u"before");

  runtime.answers.clear();
  const std::u16string marked = u"\uFEFFa\U0001F40D";
  const std::pair<std::size_t, std::u16string> rows[] = {
      {8, u"a\U0001F40D"}, {5, u"a"}, {4, u"a"}, {2, u""}, {0, u""}};
  for (const auto& [size, expected] : rows) {
    text->data.assign(reinterpret_cast<const char*>(marked.data()), size);
    EXPECT_EQ(api->unicodeToUString(text, wide), 0);
    EXPECT_EQ(wide, expected);
  }
  EXPECT_EQ(alive().count("bytes"), 0U) << "released on every way out";
}

TEST_F(InterfaceTest, LeavesTheReferencesOfAnInspectPredicateBehind) {
  EXPECT_FALSE(api->callInspectPredicate(a, "isclass")) << "the result is no bool";
  EXPECT_EQ(runtime.references(), 3 + 5) << "module, function, tuple and its item, result";
  PyObject* const yes = runtime.make("yes", "PyBool_Type");
  runtime.answers["PyObject_Call"] = reinterpret_cast<std::intptr_t>(yes);
  EXPECT_FALSE(api->callInspectPredicate(a, "isclass"));
  runtime.answers["PyObject_IsTrue"] = 1;
  EXPECT_TRUE(api->callInspectPredicate(a, "isclass"));

  for (int step = 1; step <= 8; ++step) {
    runtime.failingAny = step;
    EXPECT_FALSE(api->callInspectPredicate(a, "isclass")) << step;
    EXPECT_TRUE(api->PyErr_Occurred());
  }
}

}  // namespace
