#include "api/expression.h"

#include "api/wrap.h"
#include "pelion_core/api/managed.h"
#include "pelion_core/api/module.h"
#include "pelion_core/api/object.h"

namespace pelion_core::api {

PyHandle share(pyArray* borrowed) {
  managed::pyAddReference(borrowed);  // first: a handle that cannot be allocated drops a reference
  return wrap(toPyObject(borrowed));
}

PyHandle importMember(const std::u16string& module, const char* name) {
  return object::pyGetMember(module::pyCreateModule(module).get(), name);
}

PyHandle call(const PyHandle& callable, const PyArguments& args, const PyKeywords& kwargs) {
  return object::pyInvoke(callable.get(), args, kwargs);
}

PyHandle callOn(const PyHandle& callable, pyArray* borrowed) {
  return call(callable, {share(borrowed)});
}

PyHandle callMethod(pyArray* object, const char* name, const PyArguments& args,
                    const PyKeywords& kwargs) {
  return call(object::pyGetMember(object, name), args, kwargs);
}

std::string copyChars(const PyHandle& text) {
  const char* const chars = object::pyGetChars(text.get());
  if (chars == nullptr) throw InternalPyException("NULL pointer returned from Python.");
  return chars;
}

bool equalsMember(pyArray* object, const std::u16string& module, const char* name) {
  return falseOnFailure([&] { return object::pyEqual(object, importMember(module, name).get()); });
}

bool isInstanceOfMember(pyArray* object, const std::u16string& module, const char* name) {
  return falseOnFailure(
      [&] { return object::pyIsInstance(object, importMember(module, name).get()); });
}

}  // namespace pelion_core::api
