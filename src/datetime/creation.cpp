#include "pelion_core/datetime/creation.h"

#include <cmath>

#include "api/expression.h"
#include "pelion_core/api/module.h"
#include "pelion_core/api/numeric_array.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/sequence.h"
#include "platform/guarded_cast.h"
#include "platform/text.h"

namespace pelion_core::api::primitive {

using platform::guardedCast;

namespace {

PyHandle createNumpyArray(const PyArguments& args, const std::u16string& dtype) {
  const PyHandle array = importMember(u"numpy", "array");
  if (object::pyIsNone(array.get())) return {};
  return call(array, args,
              {{pyCreateString(u"dtype"), pyCreateString(dtype)},
               {pyCreateString(u"order"), pyCreateString(u"F")}});
}

/// A shaped array of the scalars that `createScalar` makes of 0 to `count` - 1.
template <class CreateScalar, class CreateArray>
PyHandle createShaped(std::uint64_t count, std::uint64_t ndims, const std::uint64_t* dims,
                      CreateScalar createScalar, CreateArray createArray) {
  PyArguments scalars;
  scalars.reserve(count);
  for (std::uint64_t i = 0; i < count; ++i) scalars.push_back(createScalar(i));
  PyArguments args = {sequence::pyTupleCreate(scalars)};
  return pyReshapeNumpyArray(createArray(args), ndims, dims);
}

}  // namespace

// Dates

PyHandle pyCreateDatetime(std::vector<double>& components, bool naive) {
  enum : std::size_t { minute = 4, seconds, utcOffset };
  PyArguments args;
  args.reserve(8);
  for (std::size_t i = 0; i <= minute; ++i) {
    args.push_back(pyCreateInt(guardedCast<HostLong>(components[i])));
  }

  const double rounded = components[seconds] + 5e-7;
  const auto second = guardedCast<HostLong>(rounded);
  const auto microsecond = guardedCast<HostLong>((rounded - second) * 1e6);
  args.push_back(pyCreateInt(second));
  args.push_back(pyCreateInt(microsecond));

  const PyHandle datetime = module::pyCreateModule(u"datetime");
  if (!naive) {
    args.push_back(
        callMethod(datetime.get(), "timezone", {pyCreateTimedelta(components[utcOffset])}));
  }
  return callMethod(datetime.get(), "datetime", args);
}

PyHandle pyCreateDatetime64Scalar(std::string& text) {
  const PyHandle numpy = module::pyGetNumpy();
  return callMethod(numpy.get(), "datetime64", {pyCreateString(platform::toUtf16(text))});
}

PyHandle pyCreateDatetime64Array(std::vector<PyHandle>& args) {
  return createNumpyArray(args, u"datetime64");
}

PyHandle pyCreateDatetime64(std::vector<std::string>& texts, std::uint64_t count,
                            std::uint64_t ndims, std::uint64_t const* dims) {
  return createShaped(
      count, ndims, dims, [&](std::uint64_t i) { return pyCreateDatetime64Scalar(texts[i]); },
      pyCreateDatetime64Array);
}

// Durations

PyHandle pyCreateTimedelta(double milliseconds) {
  const auto seconds = guardedCast<std::int64_t>(milliseconds / 1000.0);
  const auto microseconds = guardedCast<std::int64_t>(
      ((milliseconds + 0.0005) / 1000.0 - static_cast<double>(seconds)) * 1e6);
  const PyKeywords kwargs = {{pyCreateString(u"seconds"), pyCreateLong(seconds)},
                             {pyCreateString(u"microseconds"), pyCreateLong(microseconds)}};
  return call(importMember(u"datetime", "timedelta"), {}, kwargs);
}

PyHandle pyCreateTimedelta64Scalar(double milliseconds) {
  const PyHandle count =
      std::isnan(milliseconds)
          ? pyCreateString(std::string("NaT"))
          : pyCreateLong(guardedCast<std::int64_t>(std::round(milliseconds * 1000.0)));
  const PyHandle unit = pyCreateString(u"us");
  return call(importMember(u"numpy", "timedelta64"), {count, unit});
}

PyHandle pyCreateTimedelta64Array(std::vector<PyHandle>& args) {
  return createNumpyArray(args, u"timedelta64[us]");
}

PyHandle pyCreateTimedelta64(double* values, std::uint64_t count, std::uint64_t ndims,
                             std::uint64_t const* dims) {
  return createShaped(
      count, ndims, dims, [&](std::uint64_t i) { return pyCreateTimedelta64Scalar(values[i]); },
      pyCreateTimedelta64Array);
}

}  // namespace pelion_core::api::primitive
