#include "pelion_core/api/type.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "api/expression.h"
#include "loader/py_version.h"

namespace pelion_core::api::type {

using namespace detail;

bool pyTypeIsSubclass(pyArray* type, pyArray* cls) {
  return perform<&PyAPIImpl::PyObject_IsSubclass>(type, cls);
}

PyHandle pyTypeGetBases(pyArray* type) {
  return make<&PyAPIImpl::PyObject_GetAttrString>(type, "__bases__");
}

bool pyTypeIsBuiltin(pyArray* type, const char* name) {
  return falseOnFailure([&] { return equal(type, attr(importBuiltins(), name)); });
}

bool pyTypeImplementsCollection(pyArray* type, const char* name) {
  const std::u16string module = isVersionTwo() ? u"collections" : u"collections.abc";
  return falseOnFailure([&] {
    return perform<&PyAPIImpl::PyObject_IsSubclass>(type, attr(importModule(module), name));
  });
}

bool pyTypeIsNumericArray(pyArray* type) { return equalsMember(type, u"array", "array"); }

bool pyTypeIsPandasDataFrame(pyArray* type) { return equalsMember(type, u"pandas", "DataFrame"); }

bool pyTypeIsPandasSeries(pyArray* type) { return equalsMember(type, u"pandas", "Series"); }

std::string pyTypeZTModuleName(pyArray* type) { return hostModuleName(type); }

std::string pyTypeZTName(pyArray* type) { return hostTypeName(type); }

bool pyIsExcludedTypeForBuffer(const char* typeName) {
  constexpr std::array<std::string_view, 2> excluded = {"str", "unicode"};
  return isVersionTwo() && std::find(excluded.begin(), excluded.end(), typeName) != excluded.end();
}

}  // namespace pelion_core::api::type
