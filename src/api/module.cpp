#include "pelion_core/api/module.h"

#include "api/expression.h"
#include "api/wrap.h"
#include "loader/py_version.h"
#include "pelion_core/api/object.h"

namespace pelion_core::api::module {

bool pyIsModule(pyArray* object) {
  const Frame api;
  return api->PyModule_Check(toPyObject(object));
}

PyHandle pyCreateModule(const std::u16string& name) {
  const Frame api;
  return wrap(api->importModule(name));
}

std::u16string pyGetBuiltinsName() {
  const Frame api;
  return api->getBuiltinsName();
}

PyHandle pyCreateBuiltinsModule() { return pyCreateModule(pyGetBuiltinsName()); }

PyHandle pyGetNumpy() { return pyCreateModule(u"numpy"); }

PyHandle pyInvokeInt(pyArray* object) {
  const char* const name = isOlderLine() ? "long" : "int";
  return callOn(object::pyGetMember(pyCreateBuiltinsModule().get(), name), object);
}

}  // namespace pelion_core::api::module
