#pragma once

#include "api/expression.h"

namespace pelion_core::api::type {

/// `type == pandas.RangeIndex`; false on failure.
inline bool pyTypeIsPandasRangeIndex(pyArray* type) {
  return equalsMember(type, u"pandas", "RangeIndex");
}

}  // namespace pelion_core::api::type
