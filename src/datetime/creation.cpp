#include "pelion_core/datetime/creation.h"

#include <algorithm>
#include <cmath>

#include "datetime/exact_types.h"
#include "platform/guarded_cast.h"
#include "platform/text.h"

namespace pelion_core::api::primitive {

using namespace detail;
using platform::guardedCast;

namespace {

const std::u16string dateType = u"datetime64";
const std::u16string durationType = u"timedelta64[us]";

/// `numpy.array(*args, dtype=dtype, order="F")`; nothing when `numpy.array` is None.
template <class Args>
Reference createArray(const Args& args, const std::u16string& dtype) {
  const Reference array = attr(importModule(u"numpy"), "array");
  if (isNone(array)) return {};
  const Reference dtypeName = str(u"dtype");
  const Reference dtypeText = str(dtype);
  const Reference orderName = str(u"order");
  const Reference order = str(u"F");
  return callWith(array, args,
                  std::initializer_list<Keyword>{{dtypeName, dtypeText}, {orderName, order}});
}

using Arguments = std::initializer_list<Borrowed>;

/// A tuple of what a member of NumPy makes of `count` elements, each called with the tuple that
/// `argumentsOf(api, index)` returns. The lock is given up now and then, so that Python's own
/// threads run beside a long column.
template <class ArgumentsOf>
Reference scalarsOf(const char* member, std::uint64_t count, ArgumentsOf argumentsOf) {
  constexpr std::uint64_t atATime = 4096;
  Reference tuple = own<&PyAPIImpl::PyTuple_New>(cSize(count));
  Reference scalar;
  for (std::uint64_t begin = 0; begin < count; begin += atATime) {
    const Frame api;
    if (begin == 0) scalar = attr(importModule(u"numpy"), member);
    for (std::uint64_t i = begin; i < std::min(count, begin + atATime); ++i) {
      Reference args = argumentsOf(api, i);
      Reference value(api->PyObject_Call(scalar.get(), args.get(), nullptr));
      api->setTupleItem(tuple.get(), static_cast<std::int64_t>(i), value.get());
      value.drop(api);
      args.drop(api);
    }
  }
  return tuple;
}

/// A string of a host's UTF-8, where what is ill-formed becomes U+FFFD.
Reference hostText(const std::string& utf8) {
  const bool isAscii =
      std::none_of(utf8.begin(), utf8.end(), [](char c) { return (c & 0x80) != 0; });
  return isAscii ? str(utf8) : str(platform::toUtf16(utf8));
}

}  // namespace

// Dates

PyHandle pyCreateDatetime(std::vector<double>& components, bool naive) {
  enum : std::size_t { minute = 4, seconds, utcOffset };
  std::vector<Reference> args;
  args.reserve(8);
  for (std::size_t i = 0; i <= minute; ++i) {
    args.push_back(integer(guardedCast<HostLong>(components[i])));
  }

  const double rounded = components[seconds] + 5e-7;
  const auto second = guardedCast<HostLong>(rounded);
  const auto microsecond = guardedCast<HostLong>((rounded - second) * 1e6);
  args.push_back(integer(second));
  args.push_back(integer(microsecond));

  const Reference datetime = importModule(u"datetime");
  if (!naive) {
    const PyHandle offset = pyCreateTimedelta(components[utcOffset]);
    args.push_back(attr(datetime, "timezone")({offset}));
  }
  return callWith(attr(datetime, "datetime"), args, std::initializer_list<Keyword>{});
}

PyHandle pyCreateDatetime64Scalar(std::string& text) {
  return attr(importModule(u"numpy"), "datetime64")({hostText(text)});
}

PyHandle pyCreateDatetime64Array(std::vector<PyHandle>& args) {
  return createArray(args, dateType);
}

PyHandle pyCreateDatetime64(std::vector<std::string>& texts, std::uint64_t count,
                            std::uint64_t ndims, std::uint64_t const* dims) {
  const Reference scalars = scalarsOf("datetime64", count, [&](const Frame& api, std::uint64_t i) {
    return newTuple(api, Arguments{hostText(texts[i])});
  });
  return reshape(createArray(Arguments{scalars}, dateType), ndims, dims);
}

// Durations

PyHandle pyCreateTimedelta(double milliseconds) {
  const auto seconds = guardedCast<std::int64_t>(milliseconds / 1000.0);
  const auto microseconds = guardedCast<std::int64_t>(
      ((milliseconds + 0.0005) / 1000.0 - static_cast<double>(seconds)) * 1e6);
  const Reference secondCount = integer(seconds);
  const Reference microsecondCount = integer(microseconds);
  const Reference secondsName = str(u"seconds");
  const Reference microsecondsName = str(u"microseconds");
  return attr(importModule(u"datetime"), "timedelta")(
      {}, {{secondsName, secondCount}, {microsecondsName, microsecondCount}});
}

namespace {

/// Rounded half away from zero; not-a-time, which is the smallest integer, for what does not fit.
std::int64_t microsecondsOf(double milliseconds) {
  return guardedCast<std::int64_t>(std::round(milliseconds * 1000.0));
}

/// The first argument of `numpy.timedelta64`.
Reference durationCount(double milliseconds) {
  return std::isnan(milliseconds) ? str(std::string("NaT")) : integer(microsecondsOf(milliseconds));
}

/// A flat array of durations, one Python scalar for each.
Reference durationsOneByOne(const double* values, std::uint64_t count) {
  const Reference unit = str(u"us");
  const Reference scalars = scalarsOf("timedelta64", count, [&](const Frame& api, std::uint64_t i) {
    return newTuple(api, Arguments{durationCount(values[i]), unit});
  });
  return createArray(Arguments{scalars}, durationType);
}

/// Whether NumPy's own functions would be called, which make of a block what they make of scalars.
bool makesBlocks() {
  return falseOnFailure([] {
    const Reference numpy = importModule(u"numpy");
    return isPlainModule(numpy) &&
           isFixedType(attr(numpy, "timedelta64"), "numpy", "timedelta64") &&
           isNumpyArrayFunction(attr(numpy, "array"));
  });
}

/// The same array of one block of counts, which NumPy copies.
Reference durationsAsBlock(const double* values, std::uint64_t count) {
  std::vector<std::int64_t> counts(count);
  std::transform(values, values + count, counts.begin(), microsecondsOf);
  const Reference bytes = own<&PyAPIImpl::PyMemoryView_FromMemory>(
      count * sizeof(std::int64_t), reinterpret_cast<char*>(counts.data()));
  const Reference block = attr(bytes, "cast")({str(std::string("q"))});
  return createArray(Arguments{block}, durationType);
}

}  // namespace

PyHandle pyCreateTimedelta64Scalar(double milliseconds) {
  const Reference count = durationCount(milliseconds);
  const Reference unit = str(u"us");
  return attr(importModule(u"numpy"), "timedelta64")({count, unit});
}

PyHandle pyCreateTimedelta64Array(std::vector<PyHandle>& args) {
  return createArray(args, durationType);
}

PyHandle pyCreateTimedelta64(double* values, std::uint64_t count, std::uint64_t ndims,
                             std::uint64_t const* dims) {
  const Reference array = count > 0 && makesBlocks() ? durationsAsBlock(values, count)
                                                     : durationsOneByOne(values, count);
  return reshape(array, ndims, dims);
}

}  // namespace pelion_core::api::primitive
