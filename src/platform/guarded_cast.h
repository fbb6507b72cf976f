#pragma once

#include <limits>

namespace pelion_core::platform {

/// A double truncated toward zero, as a signed integer; the smallest integer for NaN and for what
/// does not fit, where the language leaves the plain cast undefined.
template <class Integer>
constexpr Integer guardedCast(double value) {
  static_assert(std::numeric_limits<Integer>::is_signed);
  constexpr Integer smallest = std::numeric_limits<Integer>::min();
  // Both bounds are powers of two, so exact; what lies between the lower one and the integer below
  // truncates to it.
  constexpr auto lower = static_cast<double>(smallest);
  return value > lower - 1.0 && value < -lower ? static_cast<Integer>(value) : smallest;
}

}  // namespace pelion_core::platform
