#include "pelion_core/api/object.h"

#include "api/expression.h"
#include "api/reference.h"
#include "api/wrap.h"
#include "pelion_core/api/module.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/type.h"

namespace pelion_core::api::object {

// Members

PyHandle pyGetMember(pyArray* object, pyArray* name) {
  const Frame api;
  return wrap(api->PyObject_GetAttr(toPyObject(object), toPyObject(name)));
}

PyHandle pyGetMember(pyArray* object, const char* name) {
  const Frame api;
  return wrap(api->PyObject_GetAttrString(toPyObject(object), name));
}

bool pyHasMember(pyArray* object, pyArray* name) {
  const Frame api;
  return api->PyObject_HasAttr(toPyObject(object), toPyObject(name));
}

bool pyHasMember(pyArray* object, const char* name) {
  const Frame api;
  return api->PyObject_HasAttrString(toPyObject(object), name);
}

void pySetMember(pyArray* object, pyArray* name, pyArray* value) {
  const Frame api;
  api->PyObject_SetAttr(toPyObject(object), toPyObject(name), toPyObject(value));
}

// Calls

PyHandle pyInvoke(pyArray* callable, pyArray* args, pyArray* kwargs) {
  const Frame api;
  return wrap(api->PyObject_Call(toPyObject(callable), toPyObject(args), toPyObject(kwargs)));
}

PyHandle pyInvoke(pyArray* callable, PyHandle args, PyHandle kwargs) {
  return pyInvoke(callable, args.get(), kwargs.get());
}

PyHandle pyInvoke(pyArray* callable, const std::vector<PyHandle>& args,
                  const std::vector<std::pair<PyHandle, PyHandle>>& kwargs) {
  const Frame api;
  const Reference tuple = newTuple(api, args);
  const Reference dict = newDict(api, kwargs);
  return wrap(api->PyObject_Call(toPyObject(callable), tuple.get(), dict.get()));
}

// Identity and kind

bool pyIsCallable(pyArray* object) {
  const Frame api;
  return api->PyCallable_Check(toPyObject(object));
}

bool pyIsInstance(pyArray* object, pyArray* cls) {
  const Frame api;
  return api->PyObject_IsInstance(toPyObject(object), toPyObject(cls));
}

bool pyIsNone(pyArray* object) {
  const Frame api;
  return api->isNone(toPyObject(object));
}

bool pyIsType(pyArray* object) {
  const Frame api;
  return api->PyType_Check(toPyObject(object));
}

PyHandle pyGetType(pyArray* object) {
  const Frame api;
  return wrap(api->PyObject_Type(toPyObject(object)));
}

PyHandle pyDir(pyArray* object) {
  const Frame api;
  return wrap(api->PyObject_Dir(toPyObject(object)));
}

bool pyEqual(pyArray* left, pyArray* right) {
  const Frame api;
  return api->PyObject_RichCompareBool(toPyObject(left), toPyObject(right));
}

PyHandle pyGetClass(pyArray* object) {
  try {
    return pyGetMember(object, "__class__");
  } catch (const InternalPyException&) {
    exception::pyErrorClear();
    return pyGetType(object);
  }
}

bool pyIsBuiltin(pyArray* object, const char* name) {
  return falseOnFailure([&] {
    const PyHandle builtins = module::pyCreateBuiltinsModule();
    return pyIsInstance(object, pyGetMember(builtins.get(), name).get());
  });
}

PyHandle pyGetHash(pyArray* object) {
  const PyHandle builtins = module::pyCreateBuiltinsModule();
  return callOn(pyGetMember(builtins.get(), "hash"), object);
}

bool pyInspect(PyHandle object, const char* name) {
  return falseOnFailure([&] {
    const PyHandle result = call(importMember(u"inspect", name), {object});
    return primitive::pyIsBool(result.get()) && primitive::pyBoolGetData(result.get());
  });
}

PyHandle pyIsEqualOperator(std::vector<PyHandle>& args,
                           std::vector<std::pair<PyHandle, PyHandle>>& kwargs) {
  try {
    PyHandle result = call(importMember(u"operator", "__eq__"), args, kwargs);
    return pyIsNone(result.get()) ? primitive::pyCreateBool(false) : result;
  } catch (const InternalPyException&) {
    exception::pyErrorClear();
    return primitive::pyCreateBool(false);
  }
}

// Text

PyHandle pyStr(pyArray* object) {
  const Frame api;
  return wrap(api->PyObject_Str(toPyObject(object)));
}

const char* pyGetChars(pyArray* object) {
  const Frame api;
  PyObject* const text = toPyObject(object);
  if (!api->isString(text) && !api->PyUnicode_Check(text) && !pyIsBuiltin(object, "bytes")) {
    throw InternalPyException("Python object is neither string nor unicode. Cannot return chars.");
  }
  return api->getChars(text);
}

// The two readers keep the order of tests that the older interpreter line needs, where a string and
// a unicode text were different types. Here they are one, so some branches are never taken.

std::string get_stdstring(pyArray* object) {
  const Frame api;
  PyObject* const text = toPyObject(object);
  if (api->PyUnicode_Check(text)) {
    throw InternalPyException("Failure to get std::string from Unicode.");
  }
  if (!api->isString(text)) {
    throw InternalPyException("Python object is not string. Cannot return std::string.");
  }
  std::string out;
  if (api->bytesToString(text, out) == -1) {
    throw InternalPyException("Failure to get data from String.");
  }
  return out;
}

std::u16string get_ustring(pyArray* object) {
  const Frame api;
  PyObject* const text = toPyObject(object);
  std::u16string out;
  if (api->PyUnicode_Check(text)) {
    if (api->unicodeToUString(text, out) == -1) {
      throw InternalPyException("Failure to get data from Unicode.");
    }
    return out;
  }
  if (!api->isString(text)) {
    throw InternalPyException(
        "Python object is neither string nor unicode. Cannot return unicode.");
  }
  if (api->bytesToUString(text, out) == -1) {
    throw InternalPyException("Failure to get data from String.");
  }
  return out;
}

// The host's names

std::string pyGetZTClassName(pyArray* object) {
  return type::pyTypeZTName(pyGetClass(object).get());
}

std::string pyGetZTModuleName(pyArray* object) {
  return type::pyTypeZTModuleName(pyGetClass(object).get());
}

}  // namespace pelion_core::api::object
