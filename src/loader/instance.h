#pragma once

namespace pelion_core::detail {

class PyAPIImpl;

/// The process-wide instance as the call frame reads it: one plain load. Null when there is none.
extern PyAPIImpl* currentAPI;

}  // namespace pelion_core::detail
