#include "shim.h"

#include <dlfcn.h>

#include <tuple>
#include <type_traits>

#include "pelion_core/loader/c_api/py_object.h"
#include "pelion_core/platform/host_long.h"

using pelion_core::HostLong;
using pelion_core::PyObject;

#define SHIM_EXPORT __attribute__((visibility("default")))

namespace {

shim::Account account;

enum class Failure { NewReference, Borrowed, Status, Number, Never };

void* real(const char* name) { return dlsym(RTLD_DEFAULT, name); }

#define FAKE_FUNCTION(result, cName, parameters, arguments, fails) \
  struct cName##_Tag {                                             \
    using Result = result;                                         \
    static constexpr const char* name = #cName;                    \
    static constexpr Failure failure = Failure::fails;             \
    result(*call) parameters;                                      \
  };
#include "every_function.def"

// What a function does to the references and the lock of its caller, seen after the call.

template <class Tag, class... Args>
void settle(Tag, Args...) {}

template <class... Parts>
int present(Parts... parts) {
  return ((*parts != nullptr) + ...);
}

void settle(Py_IncRef_Tag, PyObject*) { ++account.owned; }
void settle(Py_DecRef_Tag, PyObject*) { --account.owned; }
void settle(PyTuple_SetItem_Tag, PyObject*, std::int64_t, PyObject*) { --account.owned; }
void settle(PyErr_Fetch_Tag, PyObject** type, PyObject** value, PyObject** traceback) {
  account.owned += present(type, value, traceback);
}
void settle(PyEval_RestoreThread_Tag, void*) { ++account.locked; }
void settle(PyEval_SaveThread_Tag) { --account.locked; }

// What a failing call does all the same.
template <class Tag, class... Args>
void fail(Tag, Args...) {}
void fail(PyTuple_SetItem_Tag, PyObject*, std::int64_t, PyObject* item) {
  reinterpret_cast<void (*)(PyObject*)>(real("Py_DecRef"))(item);
  --account.owned;
}

bool failsNow() {
  if (account.failing <= 0 || --account.failing > 0) return false;
  if (account.withError) {
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
typename Tag::Result forward(Tag tag, Args... args) {
  using Result = typename Tag::Result;
  ++account.calls;
  if constexpr (Tag::failure != Failure::Never) {
    // Storing in a null tuple crashes the real interpreter, which a host that is out of memory can
    // meet; here the store fails, so that what follows is seen.
    bool failing = failsNow();
    if constexpr (std::is_same_v<Tag, PyTuple_SetItem_Tag>) {
      failing |= std::get<0>(std::make_tuple(args...)) == nullptr;
    }
    if (failing) {
      if (account.failed.empty()) {
        account.failed = shown(tag, args...);
        account.reader = Tag::failure == Failure::Number || Tag::failure == Failure::Borrowed;
      }
      fail(tag, args...);
      if constexpr (std::is_pointer_v<Result>)
        return nullptr;
      else
        return static_cast<Result>(-1);
    }
  }
  if constexpr (std::is_void_v<Result>) {
    tag.call(args...);
    settle(tag, args...);
  } else {
    const Result result = tag.call(args...);
    settle(tag, args...);
    if constexpr (Tag::failure == Failure::NewReference) account.owned += result != nullptr;
    return result;
  }
}

// The parts that normalising adds are references too.
void forward(PyErr_NormalizeException_Tag tag, PyObject** type, PyObject** value,
             PyObject** traceback) {
  const int before = present(type, value, traceback);
  tag.call(type, value, traceback);
  account.owned += present(type, value, traceback) - before;
}

template <class Tag>
struct Forward {
  template <class... Args>
  typename Tag::Result operator()(Args... args) const {
    static const Tag tag = {reinterpret_cast<decltype(Tag::call)>(real(Tag::name))};
    return forward(tag, args...);
  }
};

}  // namespace

extern "C" {

#define FAKE_FUNCTION(result, name, parameters, arguments, failure) \
  SHIM_EXPORT result name parameters { return Forward<name##_Tag>() arguments; }
#include "every_function.def"

// An indirect function is the one symbol whose address a library can choose when it is asked.
#define PELION_PYTHON_TYPE(name)                              \
  [[maybe_unused]] static auto find_##name() {                \
    return reinterpret_cast<void (*)()>(real(#name "_Type")); \
  }                                                           \
  SHIM_EXPORT void name##_Type() __attribute__((ifunc("find_" #name)));
#include "pelion_core/loader/c_api/python_types.def"

SHIM_EXPORT shim::Account* shim_account() { return &account; }

}  // extern "C"
