#include "python_values.h"

#include <boost/locale/encoding_utf.hpp>

namespace example {

using namespace pelion_core;
using namespace pelion_core::api;

std::string toUtf8(const std::u16string& utf16) {
  return boost::locale::conv::utf_to_utf<char>(utf16);
}

std::u16string toUtf16(const std::string& utf8) {
  return boost::locale::conv::utf_to_utf<char16_t>(utf8);
}

PyHandle text(const std::u16string& utf16) { return primitive::pyCreateString(utf16); }

PyHandle text(const std::string& utf8) { return primitive::pyCreateString(utf8); }

std::string textOf(const PyHandle& object) {
  const PyHandle string = object::pyStr(object.get());
  try {
    return toUtf8(object::get_ustring(string.get()));
  } catch (const InternalPyException&) {
    exception::pyErrorClear();
  }
  const PyHandle bytes = callMethod(string, "encode", {text(u"utf-8"), text(u"backslashreplace")});
  return toUtf8(object::get_ustring(callMethod(bytes, "decode").get()));
}

std::int64_t integerOf(const PyHandle& object) {
  std::int64_t value = 0;
  primitive::pyLongGetData(object.get(), &value);
  return value;
}

PyHandle member(const PyHandle& object, const char* name) {
  return object::pyGetMember(object.get(), name);
}

PyHandle item(const PyHandle& object, const PyHandle& key) {
  return mapping::pyMappingGetItem(object.get(), key.get());
}

PyHandle item(const PyHandle& sequence, std::uint64_t index) {
  return sequence::pyGetItem(sequence.get(), index);
}

PyHandle callMethod(const PyHandle& object, const char* name, const PyArguments& args,
                    const PyKeywords& kwargs) {
  return object::pyInvoke(member(object, name).get(), args, kwargs);
}

PyHandle callByName(const char16_t* name, const PyArguments& args, const PyKeywords& kwargs) {
  return object::pyInvoke(fetch::fetch(name).get(), args, kwargs);
}

std::string takeErrorText(const InternalPyException& exception) {
  if (!exception::pyErrorOccurred()) return std::string(exception.what()) + '\n';

  const PyHandle error = exception::pyErrorFetch();
  const PyHandle lines = callByName(u"py.traceback.format_exception",
                                    {item(error, 0), item(error, 1), item(error, 2)});
  return textOf(callMethod(text(u""), "join", {lines}));
}

}  // namespace example
