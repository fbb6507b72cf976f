#include "pelion_core/host/convert.h"

#include <boost/locale/encoding_utf.hpp>
#include <cstring>

namespace pelion_core::host::detail {
namespace {

// The readers give this for a failure too.
constexpr int perhapsFailed = -1;

std::size_t characters(const char* utf8, std::size_t size) {
  std::size_t count = 0;
  for (std::size_t i = 0; i < size; ++i) count += (utf8[i] & 0xC0) != 0x80;
  return count;
}

void requireText(PyObject* object) {
  if (api->PyUnicode_Check(object)) return;
  throw Error("TypeError", readUtf8(callHelper(Helper::represent, {object})) + " is not a str");
}

}  // namespace

void doesNotFit(PyObject* value, const std::string& type) {
  throw Error("OverflowError",
              readUtf8(callHelper(Helper::represent, {value})) + " does not fit " + type);
}

void wrongLength(std::size_t found, std::size_t wanted) {
  throw Error("ValueError",
              std::to_string(found) + " items where " + std::to_string(wanted) + " are wanted");
}

void read(PyObject* object, bool& value) {
  if (!api->PyBool_Check(object)) return read(callHelper(Helper::truth, {object}), value);
  value = api->PyObject_IsTrue(object);
}

void read(PyObject* object, std::int64_t& value) {
  if (!api->PyLong_Check(object)) return read(callHelper(Helper::index, {object}), value);
  value = api->PyLong_AsLongLong(object);
  if (value == perhapsFailed) throwPending();
}

void read(PyObject* object, std::uint64_t& value) {
  if (!api->PyLong_Check(object)) return read(callHelper(Helper::index, {object}), value);
  value = api->PyLong_AsUnsignedLongLong(object);
  if (value == static_cast<std::uint64_t>(perhapsFailed)) throwPending();
}

void read(PyObject* object, double& value) {
  value = api->PyFloat_AsDouble(object);
  if (value == perhapsFailed) throwPending();
}

std::complex<double> readComplex(PyObject* object) {
  const std::complex<double> value(api->PyComplex_RealAsDouble(object),
                                   api->PyComplex_ImagAsDouble(object));
  if (value.real() == perhapsFailed || value.imag() == perhapsFailed) throwPending();
  return value;
}

std::string readUtf8(PyObject* object) {
  requireText(object);
  const char* const utf8 = api->getChars(object);
  if (utf8 == nullptr) {
    throwPending();
    return {};  // not reached: what is null has an error pending
  }
  // Characters that are zeros end what is shown here, and then it is too short.
  const std::size_t size = std::strlen(utf8);
  const auto length = static_cast<std::size_t>(api->PySequence_Length(object));
  if (characters(utf8, size) == length) return std::string(utf8, size);
  return boost::locale::conv::utf_to_utf<char>(readUtf16(object));
}

std::u16string readUtf16(PyObject* object) {
  requireText(object);
  std::u16string text;
  if (api->unicodeToUString(object, text) == perhapsFailed) throwPending();
  return text;
}

// A mark in front keeps Python from taking one of the text as such.
Owned makeUtf16(const std::u16string& text) {
  const bool marked = !text.empty() && (text[0] == u'\xFEFF' || text[0] == u'\xFFFE');
  if (marked) return Owned(api->PyUnicode_DecodeUTF16(u'\xFEFF' + text));
  return Owned(api->PyUnicode_DecodeUTF16(text));
}

std::vector<Owned> readItems(PyObject* iterable) {
  if (!api->PyTuple_Check(iterable) && !api->PyList_Check(iterable)) {
    return readItems(callHelper(Helper::list, {iterable}));
  }
  std::vector<Owned> items(static_cast<std::size_t>(api->PySequence_Length(iterable)));
  std::int64_t index = 0;
  for (Owned& item : items) item = Owned(api->PySequence_GetItem(iterable, index++));
  return items;
}

bool isNone(PyObject* object) { return object == helper(Helper::none); }

}  // namespace pelion_core::host::detail
