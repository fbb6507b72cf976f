// Text in both directions against Python's own codecs.

#include "host.h"

using namespace fuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static Host python(R"(
def decoded(data, codec, errors='strict'):
  try: return data.decode(codec, errors)
  except UnicodeDecodeError: return None
def same(made, data, codec): return type(made) is str and made == decoded(data, codec)
def encoded(text):
  try: text.encode('utf-8')
  except UnicodeEncodeError: return None
  return text.encode('utf-16-le')
)");
  const auto text = [](const char* ascii) { return real::text(ascii); };

  const auto agrees = [&](const PyHandle& made, const PyHandle& input, const char* codec) {
    const PyHandle expected = python.call("decoded", {input, text(codec)});
    check((made == nullptr) == object::pyIsNone(expected.get()), codec);
    check(made == nullptr || python.holds("same", {made, input, text(codec)}), "the same text");
  };
  const PyHandle input = python.bytes(data, size);
  const std::string utf8(reinterpret_cast<const char*>(data), size);
  const PyHandle fromUtf8 = orEmpty([&] { return primitive::pyCreateString(utf8); });
  agrees(fromUtf8, input, "utf-8");
  if (fromUtf8) check(utf8.c_str() == std::string(object::pyGetChars(fromUtf8.get())), "UTF-8");

  const std::u16string units = utf16(data, size);
  const PyHandle whole = python.units(units);
  const PyHandle fromUtf16 = orEmpty([&] { return primitive::pyCreateString(units); });
  agrees(fromUtf16, whole, "utf-16");

  // A text of any code points, lone surrogates too.
  const PyHandle any = python.call("decoded", {whole, text("utf-16-le"), text("surrogatepass")});
  const PyHandle expected = python.call("encoded", {any});
  const char* const chars = object::pyGetChars(any.get());
  check((chars == nullptr) == exception::pyErrorOccurred(), "an error is pending");
  exception::pyErrorClear();
  const PyHandle back = orEmpty([&] { return python.units(object::get_ustring(any.get())); });
  check((chars == nullptr) == object::pyIsNone(expected.get()), "shown as UTF-8");
  check((back == nullptr) == object::pyIsNone(expected.get()), "shown as UTF-16");
  check(!back || object::pyEqual(back.get(), expected.get()), "UTF-16");
  return 0;
}
