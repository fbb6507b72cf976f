#include "pelion_core/host/block.h"

#include "pelion_core/api/numeric_array.h"

namespace pelion_core::host::detail {
namespace {

// An empty block has an address too: Python asks for one.
char* addressOf(const void* data, std::size_t size) {
  static char nothing = '\0';
  return size == 0 ? &nothing : const_cast<char*>(static_cast<const char*>(data));
}

}  // namespace

Storage readBlock(PyObject* object, char code) {
  return storageOf(callHelper(Helper::block, {object, toPython(std::string_view(&code, 1))}));
}

Storage storageOf(PyObject* block) {
  std::vector<Owned> parts = readItems(block);
  std::vector<std::size_t> shape;
  eachFromPython<std::size_t>(parts[3], [&](std::size_t extent) { shape.push_back(extent); });
  // An address that Python tells as an integer. NOLINTNEXTLINE(performance-no-int-to-ptr)
  const void* const data = reinterpret_cast<const void*>(fromPython<std::uintptr_t>(parts[1]));
  return {std::move(parts[0]), data, fromPython<std::size_t>(parts[2]), std::move(shape)};
}

Owned makeArray(const void* data, std::size_t byteCount, char code) {
  return share(pelion_core::api::primitive::pyCreateNumericArray(byteCount, code,
                                                                 addressOf(data, byteCount)));
}

Owned makeView(const void* data, std::size_t byteCount) {
  return Owned(api->PyMemoryView_FromMemory(byteCount, addressOf(data, byteCount)));
}

Owned makeNdarray(const void* data, std::size_t count, std::size_t itemSize, const char* type,
                  const std::vector<std::size_t>& shape) {
  const Owned view = makeView(data, count * itemSize);
  return callHelper(Helper::ndarray, {view, toPython(type), makeTuple(eachToPython(shape))});
}

}  // namespace pelion_core::host::detail
