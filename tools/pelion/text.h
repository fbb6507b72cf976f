#pragma once

#include <boost/locale/encoding_utf.hpp>
#include <string>

#include "pelion_core/pelion_core.h"

namespace pelion {

inline std::u16string toUtf16(const std::string& utf8) {
  return boost::locale::conv::utf_to_utf<char16_t>(utf8);
}

/// `str(object)`.
inline std::string textOf(const pelion_core::PyHandle& object) {
  namespace api = pelion_core::api;
  const pelion_core::PyHandle text = api::object::pyStr(object.get());
  return boost::locale::conv::utf_to_utf<char>(api::object::get_ustring(text.get()));
}

/// The pending error as "ImportError: ...", which is then no longer pending.
inline std::string takeError(const pelion_core::InternalPyException& exception) {
  namespace api = pelion_core::api;
  if (!api::exception::pyErrorOccurred()) return exception.what();
  const pelion_core::PyHandle error = api::exception::pyErrorFetch();
  const pelion_core::PyHandle value = api::sequence::pyGetItem(error.get(), 1);
  return std::string(api::object::pyGetZTClassName(value.get())) + ": " + textOf(value);
}

}  // namespace pelion
