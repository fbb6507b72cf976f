#include "c_api_names.h"

namespace pelion_core::host {

const std::vector<const char*>& boundNames() {
  static const std::vector<const char*> names{
// NOLINTNEXTLINE(bugprone-suspicious-missing-comma): two strings make each name
#define PELION_PYTHON_TYPE(name) #name "_Type",
#include "pelion_core/loader/c_api/python_types.def"
#define PELION_C_API(result, name, parameters, arguments, failure) #name,
#define PELION_C_API_ADAPTED(result, name, cParameters, parameters, failure) #name,
#include "pelion_core/loader/c_api/python_funcs.def"
#define PELION_C_API(result, name, parameters, arguments, failure) #name,
#define PELION_C_API_ADAPTED(result, name, cParameters, parameters, failure) #name,
#include "pelion_core/loader/c_api/python_three_funcs.def"
  };
  return names;
}

std::string withVersion(const std::string& name) {
  struct Since {
    const char* name;
    const char* version;
  };
  // The names of strings were others up to 3.2, one set for each width of a character.
  constexpr Since later[] = {
      {"PyBytes_", "3.0"},
      {"PySys_AddXOption", "3.2"},
      {"Py_SetPath", "3.2"},
      {"PyUnicode_DecodeUTF16", "3.3"},
      {"PyUnicode_As", "3.3"},
      {"PyUnicode_From", "3.3"},
      {"PyMemoryView_FromMemory", "3.3"},
  };
  for (const Since& each : later) {
    if (name.rfind(each.name, 0) == 0) return name + " (from " + each.version + ")";
  }
  return name;
}

}  // namespace pelion_core::host
