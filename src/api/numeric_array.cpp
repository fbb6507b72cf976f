#include "pelion_core/api/numeric_array.h"

#include "api/expression.h"
#include "api/wrap.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/sequence.h"

namespace pelion_core::api {
namespace primitive {

PyHandle pyCreateNumericArray(std::uint64_t byteCount, char typeCode, void* data) {
  const Frame api;
  const PyHandle block = wrap(api->PyMemoryView_FromMemory(byteCount, static_cast<char*>(data)));
  const PyHandle arrayType = importMember(u"array", "array");
  const PyHandle code = wrap(api->PyUnicode_FromStringAndSize(&typeCode, 1));
  PyHandle array = call(arrayType, {code});
  if (data != nullptr) callMethod(array.get(), "frombytes", {block});
  return array;
}

void pyNumericArrayGetData(pyArray* array, std::uint64_t* byteCount, HostLong* itemSize,
                           char* typeCode, void** data) {
  *itemSize = pyIntGetData(object::pyGetMember(array, "itemsize").get());

  const PyHandle info = callMethod(array, "buffer_info");
  std::uint64_t address = 0;
  pyLongGetDataU(sequence::pyGetItem(info.get(), 0).get(), &address);
  const HostLong count = pyIntGetData(sequence::pyGetItem(info.get(), 1).get());
  // A 32-bit product on purpose: hosts rely on its width.
  const std::uint32_t product =
      static_cast<std::uint32_t>(count) * static_cast<std::uint32_t>(*itemSize);
  *byteCount = product;
  // An address that Python tells as an integer. NOLINTNEXTLINE(performance-no-int-to-ptr)
  *data = reinterpret_cast<void*>(static_cast<std::uintptr_t>(address));

  *typeCode = copyChars(object::pyGetMember(array, "typecode"))[0];
}

bool pyIsNumericArray(pyArray* object) { return isInstanceOfMember(object, u"array", "array"); }

PyHandle pyReshapeNumpyArray(PyHandle data, std::uint64_t ndim, const std::uint64_t* dims) {
  const PyHandle reshape = importMember(u"numpy", "reshape");
  PyArguments shape;
  shape.reserve(ndim);
  for (std::uint64_t i = 0; i < ndim; ++i) {
    shape.push_back(pyCreateInt(static_cast<HostLong>(static_cast<std::uint32_t>(dims[i]))));
  }
  return call(reshape, {data, sequence::pyTupleCreate(shape), pyCreateString(u"F")});
}

}  // namespace primitive

bool object::pyIsEqualNumpyArray(std::vector<PyHandle>& args,
                                 std::vector<std::pair<PyHandle, PyHandle>>& kwargs) {
  return falseOnFailure([&] {
    const PyHandle arrayEqual = importMember(u"numpy", "array_equal");
    kwargs.emplace_back(primitive::pyCreateString(u"equal_nan"), primitive::pyCreateBool(true));
    const PyHandle result = call(arrayEqual, args, kwargs);
    return !pyIsNone(result.get()) && primitive::pyBoolGetData(result.get());
  });
}

}  // namespace pelion_core::api
