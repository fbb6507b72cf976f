#include "pelion_core/api/numeric_array.h"

#include "api/expression.h"
#include "pelion_core/api/object.h"

namespace pelion_core::api {

using namespace detail;

namespace primitive {

PyHandle pyCreateNumericArray(std::uint64_t byteCount, char typeCode, void* data) {
  const Frame api;
  const Reference block =
      own<&PyAPIImpl::PyMemoryView_FromMemory>(byteCount, static_cast<char*>(data));
  const Reference arrayType = attr(importModule(u"array"), "array");
  Reference array = arrayType({str(std::string(1, typeCode))});
  if (data != nullptr) attr(array, "frombytes")({block});
  return array;
}

void pyNumericArrayGetData(pyArray* array, std::uint64_t* byteCount, HostLong* itemSize,
                           char* typeCode, void** data) {
  *itemSize = toHostLong(attr(array, "itemsize"));

  const Reference info = attr(array, "buffer_info")();
  const std::uint64_t address = perform<&PyAPIImpl::PyLong_AsUnsignedLongLong>(item(info, 0));
  const HostLong count = toHostLong(item(info, 1));
  // A 32-bit product on purpose: hosts rely on its width.
  const std::uint32_t product =
      static_cast<std::uint32_t>(count) * static_cast<std::uint32_t>(*itemSize);
  *byteCount = product;
  *data = pointerTo(address);

  *typeCode = chars(attr(array, "typecode"))[0];
}

bool pyIsNumericArray(pyArray* object) { return isInstanceOfMember(object, u"array", "array"); }

PyHandle pyReshapeNumpyArray(PyHandle data, std::uint64_t ndim, const std::uint64_t* dims) {
  return reshape(data, ndim, dims);
}

}  // namespace primitive

bool object::pyIsEqualNumpyArray(std::vector<PyHandle>& args,
                                 std::vector<std::pair<PyHandle, PyHandle>>& kwargs) {
  return falseOnFailure([&] {
    const Reference arrayEqual = attr(importModule(u"numpy"), "array_equal");
    kwargs.emplace_back(str(u"equal_nan"), boolean(true));
    const Reference result = callWith(arrayEqual, args, kwargs);
    return !isNone(result) && toBool(result);
  });
}

}  // namespace pelion_core::api
