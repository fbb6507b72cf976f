#include "platform/text.h"

#include <boost/locale/utf.hpp>
#include <iterator>

namespace pelion_core::platform {
namespace {

namespace utf = boost::locale::utf;

// `illFormed(unit)` gives the code point that stands for a unit that starts no character; decoding
// goes on with the unit after it, so that nothing well-formed is swallowed.
template <class Out, class In, class IllFormed>
Out recode(const In& in, IllFormed illFormed) {
  using InTraits = utf::utf_traits<typename In::value_type>;
  using OutTraits = utf::utf_traits<typename Out::value_type>;
  Out out;
  out.reserve(in.size());
  for (auto at = in.begin(); at != in.end();) {
    const auto start = at;
    utf::code_point point = InTraits::decode(at, in.end());
    if (point == utf::illegal || point == utf::incomplete) {
      at = std::next(start);
      point = illFormed(*start);
    }
    OutTraits::encode(point, std::back_inserter(out));
  }
  return out;
}

constexpr utf::code_point replacement = 0xFFFD;

}  // namespace

std::string toUtf8(const std::u16string& utf16) {
  return recode<std::string>(utf16, [](char16_t) { return replacement; });
}

std::u16string toUtf16(const std::string& utf8) {
  return recode<std::u16string>(utf8, [](char) { return replacement; });
}

std::wstring toWide(const std::u16string& utf16) {
  if constexpr (sizeof(wchar_t) == sizeof(char16_t)) {
    return {utf16.begin(), utf16.end()};
  } else {
    return recode<std::wstring>(utf16, [](char16_t unit) { return utf::code_point{unit}; });
  }
}

}  // namespace pelion_core::platform
