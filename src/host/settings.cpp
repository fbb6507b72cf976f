#include "pelion_core/host/settings.h"

#include "installation.h"
#include "pelion_core/host/inspect.h"

namespace pelion_core::host {
namespace {

LoadError::Reason reasonOf(Verdict verdict) {
  switch (verdict) {
    case Verdict::libraryMissing:
    case Verdict::notLibrary:
    case Verdict::wrongMachine:
    case Verdict::tooOld:
    case Verdict::notCPython:
    case Verdict::stableAbi:
    case Verdict::namesMissing:
      return LoadError::Reason::notLoaded;
    default:
      return LoadError::Reason::notFound;
  }
}

// The settings of a candidate that can be used.
Settings usable(const Candidate& candidate) {
  const Report report = inspect(candidate, Programs::run);
  const Check& verdict = report.verdict();
  if (verdict.level != Level::failed) return report.candidate.settings;
  throw LoadError(reasonOf(verdict.verdict), verdict.reason + ": " + verdict.remedy);
}

// Those of the Python that the given ones belong to.
Settings settingsAround(const Settings& given) {
  if (!given.program.empty()) return find(given.program);
  const fs::path library = pathOf(given.library);
  return library.has_parent_path() ? candidateOfLibrary(library).settings : firstUsable();
}

void fillIn(std::string& setting, const std::string& value) {
  if (setting.empty()) setting = value;
}

}  // namespace

Settings find(const std::string& program) {
  if (program.empty()) return firstUsable();
  const std::vector<Candidate> found = discover(program);
  if (!found.empty()) return usable(found.front());
  throw LoadError(LoadError::Reason::notFound,
                  "no Python " + program + " was found: install it, with its shared library");
}

Settings complete(Settings given) {
  fillIn(given.version, buildName(utf8(pathOf(given.library).filename())).version);
  if (given.version.empty() || given.program.empty() || given.home.empty() ||
      given.library.empty()) {
    const Settings found = settingsAround(given);
    fillIn(given.version, found.version);
    // A program is known by its whole path, which a name on the system's path is not.
    if (!pathOf(given.program).has_parent_path()) given.program = found.program;
    fillIn(given.home, found.home);
    fillIn(given.library, found.library);
  }
  check(given);
  return given;
}

void check(const Settings& settings) {
  Candidate candidate;
  candidate.settings = settings;
  candidate.settings.program.clear();  // a name alone is enough for it
  usable(candidate);
}

}  // namespace pelion_core::host
