#include "pelion_core/api/module.h"

#include "api/expression.h"
#include "loader/py_version.h"

namespace pelion_core::api::module {

using namespace detail;

bool pyIsModule(pyArray* object) { return perform<&PyAPIImpl::PyModule_Check>(object); }

PyHandle pyCreateModule(const std::u16string& name) { return make<&PyAPIImpl::importModule>(name); }

std::u16string pyGetBuiltinsName() { return perform<&PyAPIImpl::getBuiltinsName>(); }

PyHandle pyCreateBuiltinsModule() { return make<&PyAPIImpl::importBuiltins>(); }

PyHandle pyGetNumpy() { return pyCreateModule(u"numpy"); }

PyHandle pyInvokeInt(pyArray* object) {
  const char* const name = isVersionTwo() ? "long" : "int";
  return attr(importBuiltins(), name)({share(object)});
}

}  // namespace pelion_core::api::module
