#include "pelion_core/host/convert.h"

#include <boost/locale/encoding_utf.hpp>
#include <cstring>

#include "pelion_core/api/exception.h"
#include "pelion_core/api/module.h"

namespace pelion_core::host::detail {
namespace {

namespace primitive = api::primitive;

// The readers give this for a failure too.
constexpr int perhapsFailed = -1;

PyHandle integerOf(const PyHandle& object) {
  return primitive::pyIsLong(object.get()) ? object : callHelper(Helper::index, {object});
}

std::size_t characters(const char* utf8, std::size_t size) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < size; ++i) count += (utf8[i] & 0xC0) != 0x80;
  return count;
}

}  // namespace

void doesNotFit(const PyHandle& value, const std::string& type) {
  throw Error("OverflowError",
              readUtf8(callHelper(Helper::represent, {value})) + " does not fit " + type);
}

void wrongLength(std::size_t found, std::size_t wanted) {
  throw Error("ValueError",
              std::to_string(found) + " items where " + std::to_string(wanted) + " are wanted");
}

std::int64_t readSigned(const PyHandle& object) {
  const PyHandle integer = integerOf(object);
  std::int64_t value = 0;
  primitive::pyLongGetData(integer.get(), &value);
  if (value == perhapsFailed) throwPending();
  return value;
}

std::uint64_t readUnsigned(const PyHandle& object) {
  const PyHandle integer = integerOf(object);
  std::uint64_t value = 0;
  primitive::pyLongGetDataU(integer.get(), &value);
  if (value == static_cast<std::uint64_t>(perhapsFailed)) throwPending();
  return value;
}

double readDouble(const PyHandle& object) {
  const double value = primitive::pyFloatGetData(object.get());
  if (value == perhapsFailed) throwPending();
  return value;
}

std::complex<double> readComplex(const PyHandle& object) {
  double real = 0;
  double imaginary = 0;
  primitive::pyComplexGetData(object.get(), &real, &imaginary);
  if (real == perhapsFailed || imaginary == perhapsFailed) throwPending();
  return {real, imaginary};
}

bool readBool(const PyHandle& object) {
  const bool isBool = primitive::pyIsBool(object.get());
  return primitive::pyBoolGetData((isBool ? object : callHelper(Helper::truth, {object})).get());
}

std::string readUtf8(const PyHandle& object) {
  if (!primitive::pyIsString(object.get())) {
    throw Error("TypeError", readUtf8(callHelper(Helper::represent, {object})) + " is not a str");
  }
  const char* const utf8 = primitive::pyStringGetData(object.get());
  if (utf8 == nullptr) throwPending();
  // Characters that are zeros end what is shown here, and then it is too short.
  const std::size_t size = std::strlen(utf8);
  if (characters(utf8, size) == api::sequence::pySequenceLength(object.get())) {
    return std::string(utf8, size);
  }
  return boost::locale::conv::utf_to_utf<char>(api::object::get_ustring(object.get()));
}

std::u16string readUtf16(const PyHandle& object) {
  if (!primitive::pyIsString(object.get())) readUtf8(object);  // throws
  return api::object::get_ustring(object.get());
}

// A mark in front keeps Python from taking one of the text as such.
PyHandle makeUtf16(std::u16string_view text) {
  const bool marked = !text.empty() && (text[0] == u'\xFEFF' || text[0] == u'\xFFFE');
  return primitive::pyCreateString((marked ? u"\xFEFF" : u"") + std::u16string(text));
}

std::vector<PyHandle> readItems(const PyHandle& iterable) {
  const PyHandle list = callHelper(Helper::list, {iterable});
  std::vector<PyHandle> items(api::sequence::pySequenceLength(list.get()));
  for (std::size_t i = 0; i < items.size(); ++i) {
    items[i] = api::sequence::pyGetItem(list.get(), i);
  }
  return items;
}

std::vector<PyHandle> readPairs(const PyHandle& mapping) {
  return readItems(callHelper(Helper::items, {mapping}));
}

PyHandle makeList(const PyArguments& items) {
  return callHelper(Helper::list, {api::sequence::pyTupleCreate(items)});
}

PyHandle makeSet(const PyArguments& items) {
  return callHelper(Helper::set, {api::sequence::pyTupleCreate(items)});
}

bool isNone(const PyHandle& object) { return api::object::pyIsNone(object.get()); }

PyHandle makeDuration(std::int64_t microseconds) {
  return callHelper(Helper::makeDuration, {primitive::pyCreateLong(microseconds)});
}

std::int64_t durationOf(const PyHandle& object) {
  return readSigned(callHelper(Helper::durationOf, {object}));
}

PyHandle makeInstant(std::int64_t microseconds) {
  return callHelper(Helper::makeInstant, {primitive::pyCreateLong(microseconds)});
}

std::int64_t instantOf(const PyHandle& object) {
  return readSigned(callHelper(Helper::instantOf, {object}));
}

}  // namespace pelion_core::host::detail
