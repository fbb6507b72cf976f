// Forwards to the real runtime, which must be in the process's global scope before the stand-in is
// opened, so that it and its extension modules never find the stand-in's names: only the library
// under test does. Included once, by stand_in.cpp.

#include <dlfcn.h>

stand_in::Account state;

void* real(const char* name) { return dlsym(RTLD_DEFAULT, name); }

template <class Tag>
const auto realFunction = reinterpret_cast<typename Tag::Function*>(real(Tag::name));

// What a function does to the references and the lock of its caller, seen after the call.

template <class Tag, class... Args>
void settle(Tag, Args...) {}

template <class... Parts>
int present(Parts... parts) {
  return ((*parts != nullptr) + ...);
}

void settle(Py_IncRef_Tag, PyObject*) { ++state.owned; }
void settle(Py_DecRef_Tag, PyObject*) { --state.owned; }
void settle(PyTuple_SetItem_Tag, PyObject*, std::int64_t, PyObject*) { --state.owned; }
void settle(PyErr_Fetch_Tag, PyObject** type, PyObject** value, PyObject** traceback) {
  state.owned += present(type, value, traceback);
}
void settle(PyEval_RestoreThread_Tag, void*) { ++state.locked; }
void settle(PyEval_SaveThread_Tag) { --state.locked; }

// What a failing call does all the same.
template <class Tag, class... Args>
void fail(Tag, Args...) {}
void fail(PyTuple_SetItem_Tag, PyObject*, std::int64_t, PyObject* item) {
  realFunction<Py_DecRef_Tag>(item);
  --state.owned;
}

bool failsNow() {
  if (state.failing <= 0 || --state.failing > 0) return false;
  if (state.withError) {
    PyObject* const type = *static_cast<PyObject**>(real("PyExc_RuntimeError"));
    reinterpret_cast<void (*)(PyObject*, const char*)>(real("PyErr_SetString"))(type, "injected");
  }
  return true;
}

// With the member that is looked up, where that is a text. Other texts need not end in a zero.
template <class Tag, class... Args>
std::string shown(Tag tag, Args...) {
  return tag.name;
}
std::string shown(PyObject_GetAttrString_Tag tag, PyObject*, const char* name) {
  return std::string(tag.name) + " " + name;
}

template <class Tag, class... Args>
typename Tag::Result run(Tag tag, Args... args) {
  using Result = typename Tag::Result;
  if constexpr (Tag::failure != Failure::Never) {
    // Storing in a null tuple crashes the real interpreter, which a host that is out of memory can
    // meet; here the store fails, so that what follows is seen.
    bool failing = failsNow();
    if constexpr (std::is_same_v<Tag, PyTuple_SetItem_Tag>)
      failing |= std::get<0>(std::tie(args...)) == nullptr;
    if (failing) {
      if (state.failed.empty()) {
        state.failed = shown(tag, args...);
        state.reader = Tag::failure == Failure::Number || Tag::failure == Failure::Borrowed;
      }
      fail(tag, args...);
      if constexpr (std::is_pointer_v<Result>)
        return nullptr;
      else
        return static_cast<Result>(-1);
    }
  }
  if constexpr (std::is_void_v<Result>) {
    realFunction<Tag>(args...);
    settle(tag, args...);
  } else {
    const Result result = realFunction<Tag>(args...);
    settle(tag, args...);
    if constexpr (Tag::failure == Failure::NewReference) state.owned += result != nullptr;
    return result;
  }
}

// The parts that normalising adds are references too.
void run(PyErr_NormalizeException_Tag, PyObject** type, PyObject** value, PyObject** traceback) {
  const int before = present(type, value, traceback);
  realFunction<PyErr_NormalizeException_Tag>(type, value, traceback);
  state.owned += present(type, value, traceback) - before;
}

// An indirect function is the one symbol whose address a library can choose when it is asked. What
// chooses must have a plain name, so it is not static.
#define DEFINE_TYPE(name)                                                                      \
  auto find_##name()->void (*)() { return reinterpret_cast<void (*)()>(real(#name "_Type")); } \
  STAND_IN_EXPORT void name##_Type() __attribute__((ifunc("find_" #name)));
