#pragma once

#include <cstdint>

/// The program's own `operator new`, which the library shares.
namespace allocations {

extern int failing;          ///< which one of the library's fails, 1 being the next; 0: none
extern std::int64_t blocks;  ///< allocated and not freed

}  // namespace allocations
