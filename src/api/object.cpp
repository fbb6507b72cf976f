#include "pelion_core/api/object.h"

#include "api/expression.h"
#include "pelion_core/api/type.h"

namespace pelion_core::api::object {

using namespace detail;

// Members

PyHandle pyGetMember(pyArray* object, pyArray* name) {
  return make<&PyAPIImpl::PyObject_GetAttr>(object, name);
}
PyHandle pyGetMember(pyArray* object, const char* name) {
  return make<&PyAPIImpl::PyObject_GetAttrString>(object, name);
}
bool pyHasMember(pyArray* object, pyArray* name) {
  return perform<&PyAPIImpl::PyObject_HasAttr>(object, name);
}
bool pyHasMember(pyArray* object, const char* name) {
  return perform<&PyAPIImpl::PyObject_HasAttrString>(object, name);
}
void pySetMember(pyArray* object, pyArray* name, pyArray* value) {
  perform<&PyAPIImpl::PyObject_SetAttr>(object, name, value);
}

// Calls

PyHandle pyInvoke(pyArray* callable, pyArray* args, pyArray* kwargs) {
  return make<&PyAPIImpl::PyObject_Call>(callable, args, kwargs);
}

PyHandle pyInvoke(pyArray* callable, PyHandle args, PyHandle kwargs) {
  return make<&PyAPIImpl::PyObject_Call>(callable, args, kwargs);
}

PyHandle pyInvoke(pyArray* callable, const std::vector<PyHandle>& args,
                  const std::vector<std::pair<PyHandle, PyHandle>>& kwargs) {
  return callWith(callable, args, kwargs);
}

// Identity and kind

bool pyIsCallable(pyArray* object) { return perform<&PyAPIImpl::PyCallable_Check>(object); }
bool pyIsInstance(pyArray* object, pyArray* cls) { return isInstance(object, cls); }
bool pyIsNone(pyArray* object) { return isNone(object); }
bool pyIsType(pyArray* object) { return perform<&PyAPIImpl::PyType_Check>(object); }
PyHandle pyGetType(pyArray* object) { return make<&PyAPIImpl::PyObject_Type>(object); }
PyHandle pyDir(pyArray* object) { return make<&PyAPIImpl::PyObject_Dir>(object); }
bool pyEqual(pyArray* left, pyArray* right) { return equal(left, right); }

PyHandle pyGetClass(pyArray* object) {
  return orElse([&] { return attr(object, "__class__"); }, [&] { return typeOf(object); });
}

bool pyIsBuiltin(pyArray* object, const char* name) {
  return falseOnFailure([&] { return isInstance(object, attr(importBuiltins(), name)); });
}

PyHandle pyGetHash(pyArray* object) { return attr(importBuiltins(), "hash")({share(object)}); }

bool pyInspect(PyHandle object, const char* name) {
  return falseOnFailure([&] {
    const Reference result = attr(importModule(u"inspect"), name)({object});
    return perform<&PyAPIImpl::PyBool_Check>(result) && toBool(result);
  });
}

PyHandle pyIsEqualOperator(std::vector<PyHandle>& args,
                           std::vector<std::pair<PyHandle, PyHandle>>& kwargs) {
  const auto no = [] { return boolean(false); };
  return orElse(
      [&] {
        Reference result = callWith(attr(importModule(u"operator"), "__eq__"), args, kwargs);
        return isNone(result) ? no() : std::move(result);
      },
      no);
}

// Text

PyHandle pyStr(pyArray* object) { return make<&PyAPIImpl::PyObject_Str>(object); }

const char* pyGetChars(pyArray* object) { return charsOf(object); }

// The order of tests is that of Python 2, where a string and a unicode string were different types.
// Here they are one, so the last lines are never reached; `ustring` is written the same way.
std::string get_stdstring(pyArray* object) {
  const Frame api;
  PyObject* const text = toPyObject(object);
  if (api->PyUnicode_Check(text)) fail("Failure to get std::string from Unicode.");
  if (!api->isString(text)) fail("Python object is not string. Cannot return std::string.");
  std::string out;
  if (api->bytesToString(text, out) == -1) fail("Failure to get data from String.");
  return out;
}

std::u16string get_ustring(pyArray* object) { return ustring(object); }

// The host's names

std::string pyGetZTClassName(pyArray* object) {
  return type::pyTypeZTName(pyGetClass(object).get());
}

std::string pyGetZTModuleName(pyArray* object) {
  return type::pyTypeZTModuleName(pyGetClass(object).get());
}

}  // namespace pelion_core::api::object
