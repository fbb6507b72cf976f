#pragma once

#include <climits>
#include <cstdint>
#include <type_traits>

namespace pelion_core {

/// The host's 32-bit `long`: the language's own `long` where that has 32 bits (Windows),
/// `std::int32_t` elsewhere, so that a value has the same width on every system.
using HostLong = std::conditional_t<sizeof(long) * CHAR_BIT == 32, long, std::int32_t>;

}  // namespace pelion_core
