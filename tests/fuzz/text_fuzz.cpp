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
  using real::text;
  const auto agrees = [&](const PyHandle& made, const PyHandle& input, const char* codec) {
    const PyHandle expected = python.call("decoded", {input, text(codec)});
    check((made == nullptr) == pyIsNone(expected.get()), codec);
    check(made == nullptr || python.holds("same", {made, input, text(codec)}), "the same text");
  };
  const std::string utf8(reinterpret_cast<const char*>(data), size);
  const PyHandle fromUtf8 = orEmpty([&] { return pyCreateString(utf8); });
  agrees(fromUtf8, python.bytes(data, size), "utf-8");
  if (fromUtf8) check(utf8.c_str() == std::string(pyGetChars(fromUtf8.get())), "UTF-8");

  std::u16string units(size / 2, u'\0');
  if (!units.empty()) std::memcpy(units.data(), data, 2 * units.size());
  const PyHandle whole = python.units(units);
  agrees(orEmpty([&] { return pyCreateString(units); }), whole, "utf-16");

  // A text of any code points, lone surrogates too.
  const PyHandle any = python.call("decoded", {whole, text("utf-16-le"), text("surrogatepass")});
  const PyHandle expected = python.call("encoded", {any});
  const char* const chars = pyGetChars(any.get());
  check((chars == nullptr) == pyErrorOccurred(), "an error is pending");
  pyErrorClear();
  const PyHandle back = orEmpty([&] { return python.units(get_ustring(any.get())); });
  check((chars == nullptr) == pyIsNone(expected.get()), "shown as UTF-8");
  check((back == nullptr) == pyIsNone(expected.get()), "shown as UTF-16");
  check(!back || pyEqual(back.get(), expected.get()), "UTF-16");
  return 0;
}
