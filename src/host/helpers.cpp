#include "pelion_core/host/convert.h"
#include "state.h"

namespace pelion_core::host::detail {
namespace {

constexpr const char* names[] = {
#define PELION_CORE_NAME(name, python) python,
    PELION_CORE_HELPERS(PELION_CORE_NAME)
#undef PELION_CORE_NAME
};

constexpr const char* source =
#include "helpers_py.h"
    ;

}  // namespace

void defineHelpers() {
  const Owned space(api->PyDict_New());
  api->PyObject_SetItem(space, toPython("__name__"), toPython("<pelion_core>"));
  const Owned builtins(api->importBuiltins());
  const auto call = [&](const char* name, std::initializer_list<PyObject*> arguments) {
    const Owned callable(api->PyObject_GetAttrString(builtins, name));
    return Owned(api->PyObject_Call(callable, makeTuple(arguments), nullptr));
  };
  call("exec",
       {call("compile", {toPython(source), toPython("<pelion_core>"), toPython("exec")}), space});
  auto helper = state().helpers.begin();
  for (const char* const name : names) {
    *helper++ = Owned(api->PyObject_GetItem(space, toPython(name)));
  }
}

}  // namespace pelion_core::host::detail
