#include "pelion_core/host/discover.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <map>
#include <set>
#include <sstream>
#include <utility>

#include "image.h"
#include "installation.h"
#include "pelion_core/host/inspect.h"
#include "places.h"

namespace pelion_core::host {
namespace {

class Finder {
 public:
  void add(Candidate candidate, const std::string& found) {
    const Settings& settings = candidate.settings;
    const std::string file = settings.library.empty() ? settings.program : settings.library;
    if (file.empty()) return;
    const auto [place, isNew] = known_.emplace(
        std::pair(realPath(pathOf(file)), candidate.environment), candidates_.size());
    if (isNew) {
      if (!settings.home.empty()) addHome(settings.home);
      candidates_.push_back(std::move(candidate));
    }
    std::vector<std::string>& ways = candidates_[place->second].found;
    if (std::find(ways.begin(), ways.end(), found) == ways.end()) ways.push_back(found);
  }

  // Environments, installations, and what lies on PATH: a folder of programs.
  void addPlace(const Place& place) {
    if (!isFolder(place.folder)) return;
    if (isFile(place.folder / "pyvenv.cfg")) {
      add(candidateOfFolder(place.folder), place.found);
      return;
    }
    addPrograms(place.folder / "bin", place.found);
    addPrograms(place.folder, place.found);
    addHome(utf8(place.folder));
  }

  void addPrograms(const fs::path& folder, const std::string& found) {
    for (const fs::path& program : programsIn(folder)) {
      if (programs_.insert(program).second) add(candidateOfProgram(program), found);
    }
  }

  // Libraries of the homes that were seen which belong to no program.
  void addOtherLibraries() {
    const std::vector<std::string> homes = homes_;  // grows by what is added
    for (const std::string& home : homes) {
      for (const fs::path& folder : libraryFolders(pathOf(home))) {
        for (const fs::path& library : librariesIn(folder)) {
          const bool seen = std::any_of(known_.begin(), known_.end(), [&](const auto& each) {
            return each.first.first == realPath(library);
          });
          if (!seen) add(candidateOfLibrary(library), "library folders");
        }
      }
    }
  }

  std::vector<Candidate> take() { return std::move(candidates_); }

 private:
  void addHome(const std::string& home) {
    if (std::find(homes_.begin(), homes_.end(), home) == homes_.end()) homes_.push_back(home);
  }

  std::vector<Candidate> candidates_;
  std::map<std::pair<fs::path, std::string>, std::size_t> known_;
  std::set<fs::path> programs_;
  std::vector<std::string> homes_;
};

fs::path pyenvRoot() {
  const std::string root = variable("PYENV_ROOT");
  return root.empty() ? userFolder() / ".pyenv" : pathOf(root);
}

// The versions that a pyenv shim stands for in this folder.
std::vector<std::string> pyenvVersions() {
  std::string text = variable("PYENV_VERSION");
  std::error_code ignored;
  fs::path folder = fs::current_path(ignored);
  while (text.empty() && !folder.empty()) {
    text = readText(folder / ".python-version").value_or("");
    if (folder == folder.root_path()) break;
    folder = folder.parent_path();
  }
  if (text.empty()) text = readText(pyenvRoot() / "version").value_or("");
  std::replace(text.begin(), text.end(), ':', '\n');
  std::vector<std::string> versions;
  std::istringstream words(text);
  for (std::string word; words >> word;) versions.push_back(word);
  return versions;
}

void addPath(Finder& finder) {
  const fs::path shims = realPath(pyenvRoot() / "shims");
  std::set<fs::path> seen;
  for (const fs::path& folder : pathList(variable("PATH"))) {
    if (!seen.insert(folder).second) continue;
    if (realPath(folder) != shims) {
      finder.addPrograms(folder, "PATH");
      continue;
    }
    for (const std::string& version : pyenvVersions()) {
      finder.addPlace({pyenvRoot() / "versions" / pathOf(version), "PATH (pyenv shim)"});
    }
  }
}

// The program of a name on PATH, or the path as it stands.
fs::path whole(const std::string& what) {
  fs::path path = pathOf(what);
  std::error_code error;
  if (!path.has_parent_path() && !fs::exists(path, error)) {
    for (const fs::path& folder : pathList(variable("PATH"))) {
      for (const char* extension : {"", ".exe"}) {
        fs::path program = folder / path;
        program += extension;
        if (isFile(program)) return program;
      }
    }
    return path;
  }
  const fs::path absolute = fs::absolute(path, error);
  return error ? path : absolute.lexically_normal();
}

bool isLibrary(const fs::path& path) {
  return namesLibrary(utf8(path.filename())) || isFrameworkLibrary(path) ||
         path.extension() == ".a" || path.extension() == ".so" || path.extension() == ".dll";
}

std::vector<Candidate> ofVersion(const std::string& version) {
  std::vector<Candidate> all = discover();
  std::vector<Candidate> found;
  for (Candidate& candidate : all) {
    const std::string minor = versionNumber(version, 2);
    if (candidate.settings.version != minor) continue;
    if (minor != version && inspect(candidate, Programs::leave).version != version) continue;
    found.push_back(std::move(candidate));
  }
  return found;
}

}  // namespace

std::vector<Candidate> discover() {
  Finder finder;
  for (const char* name : {"VIRTUAL_ENV", "CONDA_PREFIX"}) {
    const std::string folder = variable(name);
    if (!folder.empty()) finder.addPlace({pathOf(folder), name});
  }
  addPath(finder);
  for (const Place& place : registeredPlaces()) finder.addPlace(place);
  for (const Place& place : usualPlaces()) finder.addPlace(place);
  finder.addOtherLibraries();
  return finder.take();
}

std::vector<Candidate> discover(const std::string& what) {
  if (!what.empty() && versionNumber(what, 3) == what) return ofVersion(what);
  const fs::path path = whole(what);
  Candidate candidate;
  if (isFolder(path)) {
    candidate = candidateOfFolder(path);
  } else {
    candidate = isLibrary(path) ? candidateOfLibrary(path) : candidateOfProgram(path);
  }
  candidate.found = {"the given name"};
  return {candidate};
}

Settings firstUsable() {
  std::string message = "no Python of this machine can be used:";
  const std::vector<Candidate> candidates = discover();
  for (const Candidate& candidate : candidates) {
    const Report report = inspect(candidate, Programs::run);
    const Check& verdict = report.verdict();
    if (verdict.level != Level::failed) return report.candidate.settings;
    message += "\n- " + verdict.reason + ": " + verdict.remedy;
  }
  if (candidates.empty()) message += " there is none; install one, with its shared library";
  throw LoadError(LoadError::Reason::notFound, message);
}

}  // namespace pelion_core::host
