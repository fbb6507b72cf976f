#pragma once

#include <string>

namespace pelion_core::platform {

/// UTF-16 to UTF-8. Ill-formed input becomes U+FFFD.
std::string toUtf8(const std::u16string& utf16);

/// UTF-8 to UTF-16. Ill-formed input becomes U+FFFD.
std::u16string toUtf16(const std::string& utf8);

/// UTF-16 to the system's wide characters. A lone surrogate keeps its value.
std::wstring toWide(const std::u16string& utf16);

}  // namespace pelion_core::platform
