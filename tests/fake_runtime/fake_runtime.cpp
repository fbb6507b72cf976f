#include "fake_runtime.h"

#include <cstdio>
#include <cwchar>
#include <tuple>
#include <type_traits>
#include <utility>

#include "pelion_core/platform/host_long.h"

#if defined(_WIN32)
#define FAKE_EXPORT __declspec(dllexport)
#else
#define FAKE_EXPORT __attribute__((visibility("default")))
#endif

using pelion_core::PyObject;

namespace {

fake::Runtime runtime;

enum class Failure { NewReference, Borrowed, Status, Number, Never };

// One type per function, so that the model below is an overload set.
#define FAKE_FUNCTION(result, cName, parameters, arguments, fails) \
  struct cName##_Tag {                                             \
    using Result = result;                                         \
    static constexpr const char* name = #cName;                    \
    static constexpr Failure failure = Failure::fails;             \
  };
#include "every_function.def"

// How arguments are recorded.

template <class Unit>
std::string escaped(const Unit* text, std::size_t length) {
  std::string out;
  for (; length > 0; --length, ++text) {
    char hex[16];
    std::snprintf(hex, sizeof hex, *text >= ' ' && *text < 0x80 ? "%c" : "{%X}",
                  static_cast<unsigned>(*text));
    out += hex;
  }
  return out;
}

std::string fromUtf16(const char* data, std::int64_t size) {
  return escaped(reinterpret_cast<const char16_t*>(data), static_cast<std::size_t>(size) / 2);
}

template <class Value>
std::string shown(Value value) {
  if constexpr (std::is_arithmetic_v<Value>) {
    return std::to_string(value);
  } else if constexpr (std::is_same_v<Value, void*>) {
    return "state" + std::to_string(reinterpret_cast<std::intptr_t>(value));
  } else if constexpr (std::is_same_v<Value, const wchar_t*>) {
    return escaped(value, std::wcslen(value));
  } else if constexpr (std::is_same_v<Value, wchar_t**>) {
    return *value == nullptr ? "[null]" : "[text]";
  } else if constexpr (std::is_same_v<Value, const char*>) {
    return value != nullptr ? value : "null";
  } else {
    if (value == nullptr) return "null";
    if constexpr (std::is_same_v<Value, PyObject*>) return value->label;
    return "&";
  }
}

template <class... Args>
void record(const std::string& name, Args... args) {
  std::string list;
  ((list += ", " + shown(args)), ...);
  runtime.calls.push_back(name + "(" + (list.empty() ? list : list.substr(2)) + ")");
}

template <class Tag, class... Args>
void recordCall(Tag, Args... args) {
  record(Tag::name, args...);
}
void recordCall(PyUnicode_DecodeUTF16_Tag tag, const char* data, std::int64_t size,
                const char* errors, int* byteOrder) {
  record(tag.name, fromUtf16(data, size).c_str(), size, errors, byteOrder);
}

// What the functions do. A result of type PyObject* is a new object unless an overload below says
// otherwise.

void drop(PyObject* object) {
  if (--object->references == 0)
    for (PyObject* item : object->items) drop(item);
}

PyObject* named(const std::string& label, const std::string& type) {
  if (runtime.missing.count(label) != 0) {
    runtime.error[0] = runtime.make("missing " + label, "PyType_Type");
    return nullptr;
  }
  PyObject*& object = runtime.named[label];
  if (object == nullptr) return object = runtime.make(label, type);
  ++object->references;
  return object;
}

template <class Tag, class... Args>
typename Tag::Result answer(Tag, Args... args) {
  using Result = typename Tag::Result;
  if constexpr (std::is_same_v<Result, PyObject*>) {
    const std::string name = Tag::name;
    return runtime.make(name, name.substr(0, name.find('_')) + "_Type");
  } else if constexpr (std::is_same_v<Result, char*>) {
    return std::get<0>(std::make_tuple(args...))->data.data();
  } else if constexpr (!std::is_void_v<Result>) {
    return {};
  }
}

template <class Tag>
void answer(Tag tag, const wchar_t* text) {
  runtime.wide[tag.name] = {text, {text, std::wcslen(text) + runtime.unitsPastText}};
}

void answer(Py_Initialize_Tag) { runtime.initialised = true; }
void answer(Py_Finalize_Tag) { runtime.initialised = false; }
int answer(Py_IsInitialized_Tag) { return runtime.initialised; }
void* answer(PyEval_SaveThread_Tag) { return reinterpret_cast<void*>(++runtime.threadStates); }

void answer(Py_IncRef_Tag, PyObject* object) { ++object->references; }
void answer(Py_DecRef_Tag, PyObject* object) { drop(object); }

PyObject* answer(PyImport_Import_Tag, PyObject* name) { return named(name->data, "PyModule_Type"); }
PyObject* answer(PyObject_GetAttrString_Tag, PyObject* object, const char* name) {
  return named(object->label + ":" + name, "member");
}
PyObject* answer(PyObject_GetAttr_Tag, PyObject* object, PyObject* name) {
  return named(object->label + ":" + name->data, "member");
}
int answer(PyObject_IsInstance_Tag, PyObject* object, PyObject* cls) {
  return object->type == cls->label;
}

PyObject* answer(PyErr_Occurred_Tag) { return runtime.error[0]; }
void answer(PyErr_Clear_Tag) {
  for (PyObject*& part : runtime.error)
    if (PyObject* const dropped = std::exchange(part, nullptr)) drop(dropped);
}
void answer(PyErr_Fetch_Tag, PyObject** type, PyObject** value, PyObject** traceback) {
  *type = std::exchange(runtime.error[0], nullptr);
  *value = std::exchange(runtime.error[1], nullptr);
  *traceback = std::exchange(runtime.error[2], nullptr);
}

PyObject* answer(PyTuple_New_Tag, std::int64_t) { return runtime.make("tuple", "PyTuple_Type"); }
int answer(PyTuple_SetItem_Tag, PyObject* tuple, std::int64_t, PyObject* item) {
  if (tuple == nullptr) return drop(item), -1;
  tuple->items.push_back(item);
  return 0;
}

PyObject* text(const std::string& utf8) {
  return runtime.make("'" + utf8 + "'", "PyUnicode_Type", utf8);
}
PyObject* answer(PyUnicode_DecodeUTF16_Tag, const char* data, std::int64_t size, const char*,
                 int*) {
  return text(fromUtf16(data, size));
}
PyObject* answer(PyUnicode_FromStringAndSize_Tag, const char* data, std::int64_t size) {
  return text({data, static_cast<std::size_t>(size)});
}
PyObject* answer(PyUnicode_AsUTF16String_Tag, PyObject* object) {
  return runtime.make("bytes", "PyBytes_Type", object->data);
}
int answer(PyBytes_AsStringAndSize_Tag, PyObject* object, char** data, std::int64_t* size) {
  *data = object->data.data();
  *size = static_cast<std::int64_t>(object->data.size());
  return 0;
}

bool fails(const char* name, Failure failure) {
  const auto chosen = runtime.failing.find(name);
  bool now = chosen != runtime.failing.end() && --chosen->second == 0;
  if (failure != Failure::Never && runtime.failingAny > 0) now |= --runtime.failingAny == 0;
  if (now && runtime.error[0] == nullptr) runtime.error[0] = runtime.make("error", "PyType_Type");
  return now;
}

// What a failing call does all the same.
template <class Tag, class... Args>
void fail(Tag, Args...) {}
void fail(PyTuple_SetItem_Tag, PyObject*, std::int64_t, PyObject* item) { drop(item); }

template <class Result>
Result converted(std::int64_t value) {
  if constexpr (std::is_pointer_v<Result>) {
    return reinterpret_cast<Result>(value);
  } else {
    return static_cast<Result>(value);
  }
}

template <class Tag>
struct Call {
  using Result = typename Tag::Result;

  template <class... Args>
  Result operator()(Args... args) const {
    constexpr Tag tag;
    recordCall(tag, args...);
    if constexpr (!std::is_void_v<Result>) {
      if (fails(tag.name, tag.failure)) {
        runtime.failed = runtime.calls.back();
        fail(tag, args...);
        return converted<Result>(std::is_pointer_v<Result> ? 0 : -1);
      }
      const auto scripted = runtime.answers.find(tag.name);
      if (scripted != runtime.answers.end()) return converted<Result>(scripted->second);
    }
    return answer(tag, args...);
  }
};

}  // namespace

extern "C" {

#define FAKE_FUNCTION(result, name, parameters, arguments, failure) \
  FAKE_EXPORT result name parameters { return Call<name##_Tag>() arguments; }
#include "every_function.def"

#define PELION_PYTHON_TYPE(name) FAKE_EXPORT PyObject name##_Type = {#name "_Type", {}, 1, {}, {}};
#include "pelion_core/loader/python_types.def"

FAKE_EXPORT fake::Runtime* fake_control() { return &runtime; }

}  // extern "C"
