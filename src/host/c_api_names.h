#pragma once

#include <string>
#include <vector>

namespace pelion_core::host {

/// Every name that the library binds.
const std::vector<const char*>& boundNames();

/// "PyUnicode_AsUTF8 (from 3.3)": a name with the version that brought it, where Python 2 lacks it.
std::string withVersion(const std::string& name);

}  // namespace pelion_core::host
