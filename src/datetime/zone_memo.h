#pragma once

#include <string>
#include <utility>
#include <vector>

#include "pelion_core/api/handle.h"

namespace pelion_core::api::primitive {

/// The time zone text of one `datetime.datetime` after the other, as `pyDatetimeGetTimezone` has
/// it. The text of a zone that cannot change is asked for once.
class ZoneMemo {
 public:
  std::string operator()(pyArray* datetime);

 private:
  bool isImmutable(const PyHandle& tzinfo);

  std::vector<std::pair<PyHandle, std::string>> zones_;  ///< the immutable ones met so far
  std::vector<std::pair<PyHandle, bool>> types_;         ///< whether their instances are immutable
};

}  // namespace pelion_core::api::primitive
