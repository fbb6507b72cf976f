#include "datetime/numpy_value.h"

#include "api/expression.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/sequence.h"
#include "pelion_core/api/type.h"

namespace pelion_core::api::primitive {

namespace {

std::string dtypeName(pyArray* obj) {
  const PyHandle dtype = object::pyGetMember(obj, "dtype");
  return copyChars(object::pyGetMember(dtype.get(), "name"));
}

bool startsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

std::uint64_t toUnsigned(const PyHandle& integer) {
  std::int64_t value = 0;
  pyLongGetData(integer.get(), &value);
  // Reading reports a failure as -1, which would become the size of a vector.
  if (value < 0) throw InternalPyException("NULL pointer returned from Python.");
  return static_cast<std::uint64_t>(value);
}

}  // namespace

std::pair<bool, bool> classifyDatetimeInput(pyArray* obj, const std::string& wanted) {
  try {
    const std::string name = dtypeName(obj);
    if (sizeOf(obj) == 0) return {false, false};
    if (startsWith(name, wanted)) return {true, true};
    if (!startsWith(name, "object")) return {false, false};

    const PyHandle first = callMethod(obj, "item", {pyCreateInt(0)});
    const std::string typeName = type::pyTypeZTName(object::pyGetType(first.get()).get());
    const char* const expected =
        wanted == "datetime64" ? "py.datetime.datetime" : "py.datetime.timedelta";
    return {typeName == expected, false};
  } catch (const InternalPyException&) {
    exception::pyErrorClear();
    return {false, false};
  }
}

PyHandle isNaT(pyArray* obj) { return callOn(importMember(u"numpy", "isnat"), obj); }

std::string unitText(pyArray* obj) {
  const std::string name = dtypeName(obj);
  const std::size_t open = name.find('[');
  if (open == std::string::npos) return {};
  const std::size_t begin = open + 1;
  return name.substr(begin, name.find(']', begin) - begin);
}

PyHandle astype(pyArray* obj, const std::u16string& dtype) {
  return callMethod(obj, "astype", {pyCreateString(dtype)});
}

PyHandle flatten(pyArray* obj) {
  return callMethod(obj, "flatten", {}, {{pyCreateString(u"order"), pyCreateString(u"F")}});
}

std::uint64_t sizeOf(pyArray* obj) { return toUnsigned(object::pyGetMember(obj, "size")); }

std::pair<std::uint64_t, std::vector<std::uint64_t>> shapeOf(pyArray* obj) {
  const std::uint64_t rank = toUnsigned(object::pyGetMember(obj, "ndim"));
  const PyHandle shape = object::pyGetMember(obj, "shape");
  std::vector<std::uint64_t> dims(sequence::pySequenceLength(shape.get()));
  for (std::size_t i = 0; i < dims.size(); ++i) {
    dims[i] = toUnsigned(sequence::pyGetItem(shape.get(), i));
  }
  return {rank, std::move(dims)};
}

bool DatetimeModuleTest::operator()(pyArray* obj) {
  PyHandle type = object::pyGetType(obj);
  if (type != type_) {
    isFromDatetime_ = type::pyTypeZTModuleName(type.get()) == "py.datetime";
    type_ = std::move(type);
  }
  return isFromDatetime_;
}

IntAttribute::IntAttribute(const Frame& api, const char* name)
    : api_(api), name_(pyCreateString(std::string(name))) {}

std::vector<bool> natElements(const Frame& api, pyArray* obj, std::size_t count) {
  std::vector<bool> elements(count);
  eachItem(api, flatten(isNaT(obj).get()).get(), count,
           [&](std::size_t i, PyObject* element) { elements[i] = api->PyObject_IsTrue(element); });
  return elements;
}

}  // namespace pelion_core::api::primitive
