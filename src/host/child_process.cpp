#include "child_process.h"

#include <algorithm>

namespace pelion_core::host {

bool isKeptVariable(std::string_view name) {
  constexpr std::string_view kept[] = {
      "PATH",        "HOME",       "USER",         "LANG",   "LC_ALL",  "LD_LIBRARY_PATH",
      "TMPDIR",      "PYENV_ROOT", "SYSTEMROOT",   "TEMP",   "TMP",     "SYSTEMDRIVE",
      "USERPROFILE", "APPDATA",    "LOCALAPPDATA", "WINDIR", "COMSPEC", "PATHEXT",
  };
  return std::any_of(std::begin(kept), std::end(kept), [&](std::string_view each) {
    return std::equal(each.begin(), each.end(), name.begin(), name.end(), [](char a, char b) {
#if defined(_WIN32)
      return a == (b >= 'a' && b <= 'z' ? static_cast<char>(b - 'a' + 'A') : b);
#else
      return a == b;
#endif
    });
  });
}

}  // namespace pelion_core::host
