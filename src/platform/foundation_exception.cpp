#include "pelion_core/platform/foundation_exception.h"

#include "platform/text.h"

namespace foundation {

IException::~IException() noexcept = default;

std::u16string IException::convert_str(const std::string& utf8) const {
  return pelion_core::platform::toUtf16(utf8);
}

std::string IException::convert_str(const std::u16string& utf16) const {
  return pelion_core::platform::toUtf8(utf16);
}

IInternalException::~IInternalException() noexcept = default;

}  // namespace foundation
