// Answers by itself: records each call, and makes a new object where one is wanted. Included once,
// by stand_in.cpp.

stand_in::Record state;

template <class Value>
std::string shown(Value value) {
  if constexpr (std::is_arithmetic_v<Value>) return std::to_string(value);
  if constexpr (std::is_pointer_v<Value>) return value != nullptr ? "&" : "null";
}
std::string shown(void* threadState) {
  return "state" + std::to_string(reinterpret_cast<std::intptr_t>(threadState));
}
std::string shown(const char* text) { return text != nullptr ? text : "null"; }
std::string shown(const wchar_t* text) { return stand_in::narrow(std::wstring(text)); }
std::string shown(PyObject* object) { return object != nullptr ? object->label : "null"; }

template <class Tag, class... Args>
std::string shownCall(Tag tag, Args... args) {
  std::string list;
  ((list += ", " + shown(args)), ...);
  return tag.name + ("(" + list.erase(0, 2)) + ")";
}
std::string shownCall(PyUnicode_DecodeUTF16_Tag, const char* data, std::int64_t size, const char*,
                      int*) {
  const auto* const units = reinterpret_cast<const char16_t*>(data);
  return "'" + stand_in::narrow(std::u16string(units, units + size / 2)) + "'";
}

template <class Tag, class... Args>
typename Tag::Result answer(Tag, Args...) {
  using Result = typename Tag::Result;
  if constexpr (std::is_same_v<Result, PyObject*>) return state.make(state.calls.back());
  return Result();
}
template <class Tag>
void answer(Tag tag, const wchar_t* text) {
  state.wide[tag.name] = text;
}
void answer(Py_Initialize_Tag) { state.initialised = true; }
void answer(Py_Finalize_Tag) { state.initialised = false; }
int answer(Py_IsInitialized_Tag) { return state.initialised; }
void* answer(PyEval_SaveThread_Tag) { return reinterpret_cast<void*>(++state.threadStates); }

template <class Tag, class... Args>
typename Tag::Result run(Tag tag, Args... args) {
  using Result = typename Tag::Result;
  state.calls.push_back(shownCall(tag, args...));
  for ([[maybe_unused]] const auto& [prefix, value] : state.answers) {
    if (state.calls.back().rfind(prefix, 0) != 0) continue;
    if constexpr (std::is_pointer_v<Result>) return reinterpret_cast<Result>(value);
    if constexpr (std::is_arithmetic_v<Result>) return static_cast<Result>(value);
  }
  return answer(tag, args...);
}

#define DEFINE_TYPE(name) STAND_IN_EXPORT PyObject name##_Type = {#name "_Type"};
