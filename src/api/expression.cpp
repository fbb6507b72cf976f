#include "api/expression.h"

#include <vector>

#include "platform/text.h"

namespace pelion_core::detail {

std::uint64_t toSize(Borrowed object) {
  const std::int64_t value = toInt64(object);
  if (value < 0) fail("NULL pointer returned from Python.");
  return static_cast<std::uint64_t>(value);
}

const char* charsOf(Borrowed object) {
  const Frame api;
  const auto isBytes = [&] {
    return falseOnFailure([&] { return isInstance(object, attr(importBuiltins(), "bytes")); });
  };
  if (!api->isString(object) && !api->PyUnicode_Check(object) && !isBytes()) {
    fail("Python object is neither string nor unicode. Cannot return chars.");
  }
  return api->getChars(object);
}

std::string chars(Borrowed object) {
  const char* const text = charsOf(object);
  if (text == nullptr) fail("NULL pointer returned from Python.");
  return text;
}

// The order of tests is that of Python 2, as in `get_stdstring`.
std::u16string ustring(Borrowed text) {
  const Frame api;
  std::u16string out;
  if (api->PyUnicode_Check(text)) {
    if (api->unicodeToUString(text, out) == -1) fail("Failure to get data from Unicode.");
    return out;
  }
  if (!api->isString(text)) {
    fail("Python object is neither string nor unicode. Cannot return unicode.");
  }
  if (api->bytesToUString(text, out) == -1) fail("Failure to get data from String.");
  return out;
}

std::string hostModuleName(Borrowed type) {
  const std::string module = chars(attr(type, "__module__"));
  const bool builtin = module == platform::toUtf8(perform<&PyAPIImpl::getBuiltinsName>());
  return builtin ? "py" : "py." + module;
}

std::string hostTypeName(Borrowed type) {
  const std::string name = chars(attr(type, "__name__"));
  return hostModuleName(type) + "." + name;
}

Reference reshape(Borrowed data, std::uint64_t ndim, const std::uint64_t* dims) {
  const Reference reshape = attr(importModule(u"numpy"), "reshape");
  std::vector<Reference> shape;
  shape.reserve(ndim);
  for (std::uint64_t i = 0; i < ndim; ++i) {
    shape.push_back(integer(static_cast<std::int32_t>(static_cast<std::uint32_t>(dims[i]))));
  }
  const Reference dimensions = newTuple(Frame(), shape);
  return reshape({data, dimensions, str(u"F")});
}

bool equalsMember(Borrowed object, const std::u16string& module, const char* name) {
  return falseOnFailure([&] { return equal(object, attr(importModule(module), name)); });
}

bool isInstanceOfMember(Borrowed object, const std::u16string& module, const char* name) {
  return falseOnFailure([&] { return isInstance(object, attr(importModule(module), name)); });
}

}  // namespace pelion_core::detail
