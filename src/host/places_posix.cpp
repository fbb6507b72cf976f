#include <cstdlib>

#include "places.h"

namespace pelion_core::host {

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : "";
}

fs::path userFolder() { return variable("HOME"); }

std::vector<Place> registeredPlaces() { return {}; }

std::vector<Place> usualPlaces() {
  const fs::path user = userFolder();
  const std::string pyenv = variable("PYENV_ROOT");
  const std::string uv = variable("UV_PYTHON_INSTALL_DIR");
  std::vector<Place> places;
  addAllIn(places, (pyenv.empty() ? user / ".pyenv" : fs::path(pyenv)) / "versions", "pyenv");
  addAllIn(places, uv.empty() ? user / ".local/share/uv/python" : fs::path(uv), "uv");
  std::vector<fs::path> conda;
  for (const fs::path& parent : {user, fs::path("/opt")}) {
    for (const char* name : {"miniforge3", "mambaforge", "miniconda3", "anaconda3", "conda"}) {
      conda.push_back(parent / name);
    }
  }
  addConda(places, conda);
  for (const char* prefix : {"/usr/local", "/usr", "/opt/homebrew"}) {
    places.push_back({prefix, "system folders"});
  }
  addAllIn(places, "/opt/python", "system folders");
  addAllIn(places, "/Library/Frameworks/Python.framework/Versions", "system folders");
  return places;
}

}  // namespace pelion_core::host
