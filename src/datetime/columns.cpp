#include "datetime/columns.h"

#include "datetime/exact_types.h"

namespace pelion_core::detail {

std::optional<Block> blockOf(Borrowed flat, std::size_t count) {
  if (!BOOST_ENDIAN_LITTLE_BYTE || !isExactArray(flat)) return std::nullopt;
  const auto describe = [&]() -> std::optional<Block> {
    const Reference interface = attr(flat, "__array_interface__");
    const auto get = [&](const char* key) {
      return own<&PyAPIImpl::PyObject_GetItem>(interface, str(std::string(key)));
    };
    // Strides are None where the elements follow each other.
    if (!isNone(get("strides"))) return std::nullopt;
    const Reference shape = get("shape");
    if (perform<&PyAPIImpl::PySequence_Length>(shape) != 1) return std::nullopt;
    if (toSize(item(shape, 0)) != count) return std::nullopt;
    return Block{chars(get("typestr")), pointerTo(toSize(item(get("data"), 0)))};
  };
  return orElse(describe, []() -> std::optional<Block> { return std::nullopt; });
}

}  // namespace pelion_core::detail
