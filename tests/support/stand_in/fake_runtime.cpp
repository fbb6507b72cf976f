#include "fake_runtime.h"

#include <string_view>
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

// One type per function, so that the model below is an overload set.
#define FAKE_FUNCTION(result, cName, parameters, arguments, failure) \
  struct cName##_Tag {                                               \
    using Result = result;                                           \
    static constexpr const char* name = #cName;                      \
  };
#include "every_function.def"

// How arguments are recorded.

template <class Value>
std::string shown(Value value) {
  if constexpr (std::is_arithmetic_v<Value>) return std::to_string(value);
  if constexpr (std::is_pointer_v<Value>) return value != nullptr ? "&" : "null";
}
std::string shown(void* state) {
  return "state" + std::to_string(reinterpret_cast<std::intptr_t>(state));
}
std::string shown(const char* text) { return text != nullptr ? text : "null"; }
std::string shown(const wchar_t* text) { return fake::narrow(std::wstring_view(text)); }
std::string shown(wchar_t** texts) { return *texts == nullptr ? "[null]" : "[text]"; }
std::string shown(PyObject* object) { return object != nullptr ? object->label : "null"; }

template <class Tag, class... Args>
void record(Tag tag, Args... args) {
  std::string list;
  ((list += ", " + shown(args)), ...);
  runtime.calls.push_back(tag.name + ("(" + list.erase(0, 2)) + ")");
}

// The one text that need not end in a zero.
void record(PyUnicode_FromStringAndSize_Tag tag, const char* text, std::int64_t size) {
  const std::string copy(text, static_cast<std::size_t>(size));
  runtime.calls.push_back(tag.name + ("(" + copy + ")"));
}

// What the functions do. A result of type PyObject* is a new object unless an overload below says
// otherwise.

void drop(PyObject* object) {
  if (--object->references == 0)
    for (PyObject* item : object->items) drop(item);
}

PyObject* named(const std::string& label) {
  PyObject*& object = runtime.named[label];
  if (object == nullptr) return object = runtime.make(label);
  ++object->references;
  return object;
}

template <class Tag, class... Args>
typename Tag::Result answer(Tag tag, Args...) {
  using Result = typename Tag::Result;
  if constexpr (std::is_same_v<Result, PyObject*>) return runtime.make(tag.name);
  return Result();
}
template <class Tag>
void answer(Tag tag, const wchar_t* text) {
  runtime.wide[tag.name] = text;
}

void answer(Py_Initialize_Tag) { runtime.initialised = true; }
void answer(Py_Finalize_Tag) { runtime.initialised = false; }
int answer(Py_IsInitialized_Tag) { return runtime.initialised; }
void* answer(PyEval_SaveThread_Tag) { return reinterpret_cast<void*>(++runtime.threadStates); }

void answer(Py_IncRef_Tag, PyObject* object) { ++object->references; }
void answer(Py_DecRef_Tag, PyObject* object) { drop(object); }

PyObject* answer(PyImport_Import_Tag, PyObject* name) { return named(name->text); }
PyObject* answer(PyObject_GetAttrString_Tag, PyObject* object, const char* name) {
  return named(object->label + ":" + name);
}
PyObject* answer(PyObject_GetAttr_Tag, PyObject* object, PyObject* name) {
  return named(object->label + ":" + name->text);
}
void answer(PyErr_Fetch_Tag, PyObject** type, PyObject** value, PyObject** traceback) {
  *type = std::exchange(runtime.error[0], nullptr);
  *value = std::exchange(runtime.error[1], nullptr);
  *traceback = std::exchange(runtime.error[2], nullptr);
}

int answer(PyTuple_SetItem_Tag, PyObject* tuple, std::int64_t, PyObject* item) {
  if (tuple == nullptr) return drop(item), -1;
  tuple->items.push_back(item);
  return 0;
}

PyObject* answer(PyUnicode_DecodeUTF16_Tag, const char* data, std::int64_t, const char*, int*) {
  const auto text = fake::narrow(std::u16string_view(reinterpret_cast<const char16_t*>(data)));
  return runtime.make("'" + text + "'", text);
}

template <class Tag>
struct Call {
  using Result = typename Tag::Result;
  template <class... Args>
  Result operator()(Args... args) const {
    record(Tag(), args...);
    for ([[maybe_unused]] const auto& [prefix, value] : runtime.answers) {
      if (runtime.calls.back().rfind(prefix, 0) != 0) continue;
      if constexpr (std::is_pointer_v<Result>) return reinterpret_cast<Result>(value);
      if constexpr (std::is_arithmetic_v<Result>) return static_cast<Result>(value);
    }
    return answer(Tag(), args...);
  }
};

}  // namespace

extern "C" {

#define FAKE_FUNCTION(result, name, parameters, arguments, failure) \
  FAKE_EXPORT result name parameters { return Call<name##_Tag>() arguments; }
#include "every_function.def"

#define PELION_PYTHON_TYPE(name) FAKE_EXPORT PyObject name##_Type = {#name "_Type", 1, {}, {}};
#include "pelion_core/loader/c_api/python_types.def"

FAKE_EXPORT fake::Runtime* fake_control() { return &runtime; }

}  // extern "C"
