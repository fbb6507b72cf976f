#include "datetime/exact_types.h"

namespace pelion_core::detail {

namespace {

// Only `type` is its own type. A metaclass of Python code could answer for the attributes below.
bool hasPlainMetaclass(Borrowed type) {
  const Reference metaclass = typeOf(type);
  return metaclass.get() == typeOf(metaclass).get();
}

bool isFixed(Borrowed type) {
  constexpr std::uint64_t immutableType = 1U << 8;
  constexpr std::uint64_t heapType = 1U << 9;
  const std::uint64_t flags = toSize(attr(type, "__flags__"));
  return (flags & heapType) == 0 || (flags & immutableType) != 0;
}

}  // namespace

bool isFixedType(Borrowed type, const char* module, const char* name) {
  return falseOnFailure([&] {
    return hasPlainMetaclass(type) && isFixed(type) && chars(attr(type, "__name__")) == name &&
           chars(attr(type, "__module__")) == module;
  });
}

bool isExactArray(Borrowed object) { return isFixedType(typeOf(object), "numpy", "ndarray"); }

bool isPlainModule(Borrowed object) { return isFixedType(typeOf(object), "builtins", "module"); }

bool isNumpyArrayFunction(Borrowed function) {
  return isFixedType(typeOf(function), "builtins", "builtin_function_or_method") &&
         falseOnFailure([&] {
           return chars(attr(function, "__name__")) == "array" &&
                  chars(attr(function, "__module__")).rfind("numpy", 0) == 0;
         });
}

bool isImmutableZone(Borrowed tzinfo) {
  const Reference type = typeOf(tzinfo);
  return isFixedType(type, "datetime", "timezone") || isFixedType(type, "zoneinfo", "ZoneInfo") ||
         isFixedType(type, "builtins", "NoneType");
}

}  // namespace pelion_core::detail
