#include "pelion_core/host/block.h"

namespace pelion_core::host::detail {
namespace {

// An empty block has an address too: Python asks for one.
char* addressOf(const void* data, std::size_t size) {
  static char nothing = '\0';
  return size == 0 ? &nothing : const_cast<char*>(static_cast<const char*>(data));
}

}  // namespace

Storage readBlock(const PyHandle& object, char code) {
  const PyHandle storage =
      callHelper(Helper::block, {object, api::primitive::pyCreateString(std::string(1, code))});
  const auto part = [&](std::uint64_t index) {
    return api::sequence::pyGetItem(storage.get(), index);
  };
  // An address that Python tells as an integer. NOLINTNEXTLINE(performance-no-int-to-ptr)
  const void* const data = reinterpret_cast<const void*>(fromPython<std::uintptr_t>(part(1)));
  const PyHandle shape = part(3);
  std::vector<std::size_t> extents(api::sequence::pySequenceLength(shape.get()));
  for (std::size_t i = 0; i < extents.size(); ++i) {
    extents[i] = fromPython<std::size_t>(api::sequence::pyGetItem(shape.get(), i));
  }
  return {part(0), data, fromPython<std::size_t>(part(2)), std::move(extents)};
}

PyHandle makeArray(const void* data, std::size_t byteCount, char code) {
  return api::primitive::pyCreateNumericArray(byteCount, code, addressOf(data, byteCount));
}

PyHandle makeView(const void* data, std::size_t byteCount) {
  const api::APIAccessor api;
  PyObject* const view = api->PyMemoryView_FromMemory(byteCount, addressOf(data, byteCount));
  return PyHandle(toPyArray(view), api::PyArrayReleaser());
}

PyHandle makeNdarray(const void* data, std::size_t count, std::size_t itemSize, const char* type,
                     const std::vector<std::size_t>& shape) {
  PyArguments extents;
  for (const std::size_t extent : shape) extents.push_back(toPython(extent));
  const PyHandle view = makeView(data, count * itemSize);
  return callHelper(Helper::ndarray, {view, toPython(type), api::sequence::pyTupleCreate(extents)});
}

}  // namespace pelion_core::host::detail
