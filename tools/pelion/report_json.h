#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "pelion_core/host/inspect.h"

namespace pelion {

nlohmann::ordered_json toJson(const pelion_core::host::Report& report);

/// Indented; what is no UTF-8 is replaced.
std::string text(const nlohmann::ordered_json& json);

}  // namespace pelion
