#include "datetime/numpy_value.h"

#include <cstring>

namespace pelion_core::detail {

namespace {

std::string dtypeName(Borrowed value) { return chars(attr(attr(value, "dtype"), "name")); }

bool startsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

}  // namespace

Classified classify(Borrowed value, const DatetimeKind& kind) {
  const auto ask = [&]() -> Classified {
    const std::string name = dtypeName(value);
    const std::uint64_t size = toSize(attr(value, "size"));
    if (size == 0) return {};
    if (startsWith(name, kind.dtype)) return {Contents::Numbers, size};
    if (!startsWith(name, "object")) return {};
    const Reference first = attr(value, "item")({integer(0)});
    if (hostTypeName(typeOf(first)) != kind.objectType) return {};
    return {Contents::Objects, size};
  };
  return orElse(ask, [] { return Classified(); });
}

Reference isNaT(Borrowed value) { return attr(importModule(u"numpy"), "isnat")({share(value)}); }

NotATime natElements(Borrowed array, std::size_t count) {
  NotATime nat{std::vector<bool>(count), false};
  const Reference flat = flatten(isNaT(array));
  const auto block = blockOf(flat, count);
  if (block && block->type == "|b1" && std::memchr(block->data, 1, count) == nullptr) return nat;
  readColumn<AsTruth>(flat, NotATime(), nat.marks);
  nat.any = true;
  return nat;
}

std::string unitText(Borrowed value) {
  const std::string name = dtypeName(value);
  const std::size_t open = name.find('[');
  if (open == std::string::npos) return {};
  const std::size_t begin = open + 1;
  return name.substr(begin, name.find(']', begin) - begin);
}

Reference astype(Borrowed value, const std::u16string& dtype) {
  return attr(value, "astype")({str(dtype)});
}

Reference flatten(Borrowed array) {
  return attr(array, "flatten")({}, {{str(u"order"), str(u"F")}});
}

std::pair<std::uint64_t, std::vector<std::uint64_t>> shapeOf(Borrowed array) {
  const std::uint64_t rank = toSize(attr(array, "ndim"));
  const Reference shape = attr(array, "shape");
  const auto length = static_cast<std::size_t>(perform<&PyAPIImpl::PySequence_Length>(shape));
  std::vector<std::uint64_t> dims(length);
  for (std::size_t i = 0; i < length; ++i) {
    dims[i] = toSize(item(shape, static_cast<std::int64_t>(i)));
  }
  return {rank, std::move(dims)};
}

bool DatetimeModuleTest::operator()(Borrowed object) {
  Reference type = typeOf(object);
  if (type.get() != type_.get()) {
    isFromDatetime_ = hostModuleName(type) == "py.datetime";
    type_ = std::move(type);
  }
  return isFromDatetime_;
}

}  // namespace pelion_core::detail
