#include "stand_in.h"

#include <tuple>
#include <type_traits>

#include "pelion_core/platform/host_long.h"

#if defined(_WIN32)
#define STAND_IN_EXPORT __declspec(dllexport)
#else
#define STAND_IN_EXPORT __attribute__((visibility("default")))
#endif

namespace {

using pelion_core::HostLong;
using pelion_core::PyObject;

enum class Failure { NewReference, Borrowed, Status, Number, Never };

// One type per function, so that what is particular about one is an overload.
#define STAND_IN_FUNCTION(result, cName, parameters, arguments, fails) \
  struct cName##_Tag {                                                 \
    using Function = result parameters;                                \
    using Result = result;                                             \
    static constexpr const char* name = #cName;                        \
    static constexpr Failure failure = Failure::fails;                 \
  };
#include "symbols.def"

// Defines `state`, `run(tag, arguments...)` and DEFINE_TYPE.
#include STAND_IN_POLICY

template <class Tag>
struct Call {
  template <class... Args>
  typename Tag::Result operator()(Args... args) const {
    return run(Tag(), args...);
  }
};

}  // namespace

extern "C" {

#define STAND_IN_FUNCTION(result, name, parameters, arguments, failure) \
  STAND_IN_EXPORT result name parameters { return Call<name##_Tag>() arguments; }
#define STAND_IN_TYPE DEFINE_TYPE
#include "symbols.def"

STAND_IN_EXPORT void* stand_in_state() { return &state; }

}  // extern "C"
