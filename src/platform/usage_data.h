#pragma once

#include "pelion_core/platform/usage_data.h"

namespace pelion_core::platform {

/// Hands the report to the host's service, if there is one.
UsageResponse logUsage(const UsageEventId& id, const UsageRecord& record,
                       const UsageOptions& options);

}  // namespace pelion_core::platform
