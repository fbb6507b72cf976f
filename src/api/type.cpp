#include "pelion_core/api/type.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "api/expression.h"
#include "api/frame.h"
#include "loader/py_version.h"
#include "pelion_core/api/module.h"
#include "pelion_core/api/object.h"
#include "platform/text.h"

namespace pelion_core::api::type {

bool pyTypeIsSubclass(pyArray* type, pyArray* cls) {
  const Frame api;
  return api->PyObject_IsSubclass(toPyObject(type), toPyObject(cls));
}

PyHandle pyTypeGetBases(pyArray* type) { return object::pyGetMember(type, "__bases__"); }

bool pyTypeIsBuiltin(pyArray* type, const char* name) {
  return falseOnFailure([&] {
    const PyHandle builtins = module::pyCreateBuiltinsModule();
    return object::pyEqual(type, object::pyGetMember(builtins.get(), name).get());
  });
}

bool pyTypeImplementsCollection(pyArray* type, const char* name) {
  const std::u16string module = isOlderLine() ? u"collections" : u"collections.abc";
  return falseOnFailure([&] { return pyTypeIsSubclass(type, importMember(module, name).get()); });
}

bool pyTypeIsNumericArray(pyArray* type) { return equalsMember(type, u"array", "array"); }

bool pyTypeIsPandasDataFrame(pyArray* type) { return equalsMember(type, u"pandas", "DataFrame"); }

bool pyTypeIsPandasSeries(pyArray* type) { return equalsMember(type, u"pandas", "Series"); }

std::string pyTypeZTModuleName(pyArray* type) {
  const std::string module = copyChars(object::pyGetMember(type, "__module__"));
  const Frame api;
  const bool builtin = module == platform::toUtf8(api->getBuiltinsName());
  return builtin ? "py" : "py." + module;
}

std::string pyTypeZTName(pyArray* type) {
  const std::string name = copyChars(object::pyGetMember(type, "__name__"));
  return pyTypeZTModuleName(type) + "." + name;
}

bool pyIsExcludedTypeForBuffer(const char* typeName) {
  constexpr std::array<std::string_view, 2> excluded = {"str", "unicode"};
  return isOlderLine() && std::find(excluded.begin(), excluded.end(), typeName) != excluded.end();
}

}  // namespace pelion_core::api::type
