#include "pelion_core/host/inspect.h"

#include <algorithm>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <cstdio>
#include <fstream>
#include <utility>

#include "ask.h"
#include "c_api_names.h"
#include "image.h"
#include "installation.h"
#include "places.h"

namespace pelion_core::host {
namespace {

struct Words {
  const char* code;
  Level level;
  const char* reason;
  const char* remedy;
};

const Words& wordsOf(Verdict verdict) {
  static constexpr Words all[] = {
#define PELION_VERDICT(name, code, level, reason, remedy) {code, Level::level, reason, remedy},
#include "pelion_core/host/verdicts.def"
  };
  return all[static_cast<std::size_t>(verdict)];
}

constexpr unsigned oldestMinor = 6;
constexpr unsigned newestMinor = 15;

unsigned minorOf(const std::string& version) {
  return static_cast<unsigned>(std::strtoul(version.c_str() + version.find('.') + 1, nullptr, 10));
}

// The folder of an environment as its script for shells was made; empty when it does not say.
std::string madeIn(const fs::path& environment) {
  const std::string mark = "VIRTUAL_ENV=";
  for (const char* script : {"bin/activate", "Scripts/activate"}) {
    const std::string text = readText(environment / script).value_or("");
    for (auto place = text.find(mark); place != std::string::npos;
         place = text.find(mark, place + 1)) {
      auto start = place + mark.size();
      const bool isQuoted = start < text.size() && (text[start] == '"' || text[start] == '\'');
      if (isQuoted) ++start;
      const auto end = isQuoted ? text.find(text[start - 1], start) : text.find('\n', start);
      std::string value = text.substr(start, end == std::string::npos ? end : end - start);
      if (pathOf(value).is_absolute()) return value;
    }
  }
  return {};
}

// "3.12.1" as the first file that says it has it.
std::string exactVersion(const Candidate& candidate, unsigned long hex) {
  const Settings& settings = candidate.settings;
  if (hex != 0) {
    return std::to_string(hex >> 24U) + '.' + std::to_string(hex >> 16U & 0xffU) + '.' +
           std::to_string(hex >> 8U & 0xffU);
  }
  const fs::path home = pathOf(settings.home);
  for (const char* folder : {"", "m", "d"}) {
    const std::string text =
        readText(home / "include" / ("python" + settings.version + folder) / "patchlevel.h")
            .value_or("");
    const std::string mark = "#define PY_VERSION";
    const auto place = text.find(mark);
    const auto quote = text.find('"', place);
    if (place == std::string::npos || quote == std::string::npos) continue;
    std::string version = versionNumber(text.substr(quote + 1, 32), 3);
    if (!version.empty()) return version;
  }
  for (const fs::path& entry : entriesOf(home / "conda-meta")) {
    const std::string name = utf8(entry.filename());
    if (!boost::starts_with(name, "python-" + settings.version)) continue;
    return versionNumber(name.substr(7), 3);
  }
  const std::string folder = versionNumber(utf8(home.filename()), 3);  // pyenv's
  return boost::starts_with(folder, settings.version + '.') ? folder : settings.version;
}

class Inspector {
 public:
  Inspector(Candidate candidate, Programs programs) : programs_(programs) {
    report_.candidate = std::move(candidate);
    const std::string minor = versionNumber(settings().version, 2);  // "3.11" of "3.11.7"
    if (!minor.empty()) settings().version = minor;
  }

  Report inspect() {
    if (checkProgram()) {
      checkEnvironment();
      if (checkLibrary()) checkStandardLibrary();
    }
    return std::move(report_);
  }

 private:
  Settings& settings() { return report_.candidate.settings; }

  void passed(const char* subject, const std::string& text) {
    report_.checks.push_back({subject, Level::passed, Verdict::usable, text, "", 0});
  }

  // Says false when the Python cannot be used.
  bool found(const char* subject, Verdict verdict, const std::string& detail = {}) {
    report_.checks.push_back(
        checkOf(subject, verdict, settings(), report_.candidate.environment, detail));
    return report_.checks.back().level != Level::failed;
  }

  // A file that was named, there and readable.
  bool checkFile(const char* subject, const std::string& name, Verdict absent) {
    std::error_code error;
    const fs::path path = pathOf(name);
    if (fs::status(path, error).type() == fs::file_type::not_found) {
      return found(subject, absent, name);
    }
    const std::string problem = whyUnreadable(path);
    return problem.empty() ||
           found(subject, Verdict::unreadable, name + " cannot be read: " + problem);
  }

  bool checkProgram() {
    const Candidate& candidate = report_.candidate;
    if (settings().program.empty()) {
      if (!settings().library.empty() || !candidate.environment.empty()) return true;
      const std::string problem = whyUnreadable(pathOf(settings().home));
      return !problem.empty() && isFolder(pathOf(settings().home))
                 ? found("program", Verdict::unreadable,
                         settings().home + " cannot be read: " + problem)
                 : found("program", Verdict::notFound, settings().home);
    }
    if (candidate.environment.empty()) {
      std::error_code error;
      if (!checkFile("program", settings().program, Verdict::notFound)) return false;
      if (fs::file_size(pathOf(settings().program), error) == 0) {
        return found("program", Verdict::storeStub);
      }
      if (settings().home.empty() && !askProgram()) return false;
    }
    passed("program", settings().program);
    return true;
  }

  bool askProgram() {
    if (programs_ == Programs::leave) return found("program", Verdict::programUnknown);
    const Answer answer = ask(settings().program);
    if (answer.verdict != Verdict::usable) return found("program", answer.verdict, answer.detail);
    std::string library = std::exchange(settings().library, "");
    const Candidate told = candidateOfProgram(pathOf(answer.settings.program));
    settings() = answer.settings;
    if (!library.empty()) settings().library = std::move(library);
    report_.candidate.environment = told.environment;
    report_.candidate.kind = told.kind;
    return true;
  }

  void checkEnvironment() {
    const std::string& folder = report_.candidate.environment;
    if (folder.empty()) return;
    const Environment environment = environmentIn(pathOf(folder));
    if (environment.base.empty()) {
      found("environment", Verdict::environmentBroken, "line \"home\" in its pyvenv.cfg");
      return;
    }
    if (!isFolder(environment.base) ||
        (settings().home.empty() && !isFile(pathOf(settings().program)))) {
      found("environment", Verdict::baseMissing, utf8(environment.base));
      return;
    }
    if (!isFile(pathOf(settings().program))) {
      found("environment", Verdict::environmentBroken, "program that can be read (bin/python)");
      return;
    }
    if (!environment.version.empty() && environment.version != settings().version) {
      found("environment", Verdict::environmentMismatch, environment.version);
      return;
    }
    const std::string made = madeIn(environment.folder);
    if (!made.empty() && realPath(pathOf(made)) != realPath(environment.folder)) {
      found("environment", Verdict::environmentMoved, made);
      return;
    }
    passed("environment", folder);
  }

  // What gives this installation a shared library.
  std::string libraryRemedy() {
    const std::string& version = settings().version;
    const Candidate base = candidateOfProgram(realPath(pathOf(settings().program)));
    if (base.kind == "pyenv") {
      return "PYTHON_CONFIGURE_OPTS=--enable-shared pyenv install --force " +
             utf8(pathOf(settings().home).filename());
    }
    if (settings().home == "/usr") {
      return "apt install libpython" + version +
             " (Debian, Ubuntu), dnf install python3-libs "
             "(Fedora)";
    }
    if (base.kind == "conda") return "conda install --force-reinstall python=" + version;
    return "build it with ./configure --enable-shared, or take another Python: pelion list";
  }

  bool checkLibrary() {
    const std::string& library = settings().library;
    if (library.empty()) {
      const bool explained = report_.verdict().level == Level::failed;
      return !explained && found("library", Verdict::noSharedLibrary, libraryRemedy());
    }
    if (!pathOf(library).has_parent_path()) {
      passed("library", library + ", which the system looks for");
      return true;
    }
    if (!checkFile("library", library, Verdict::libraryMissing)) return false;
    std::ifstream file(pathOf(library), std::ios::binary);
    const Image image = readImage(file);
    report_.machines = image.machines;
    if (!image.machines.empty() && !image.fits()) {
      return found("library", Verdict::wrongMachine,
                   image.target() + ", this program for " + ownImage().target());
    }
    if (!image.problem.empty()) return found("library", Verdict::notLibrary, image.problem);
    passed("library", library + " (" + image.target() + ")");
    const bool isKnownVersion = checkVersion(image);
    return checkNames(image) && isKnownVersion;
  }

  bool checkNames(const Image& image) {
    if (!image.namesKnown) {
      passed("C API", "not checked: the library has no table of names that could be read");
      return true;
    }
    std::vector<std::string> listed;
    for (const char* name : boundNames()) {
      if (image.exports(name)) continue;
      report_.missingNames.emplace_back(name);
      listed.push_back(withVersion(name));
    }
    const std::string all = std::to_string(boundNames().size());
    if (listed.empty()) {
      passed("C API", "all " + all + " names");
      return true;
    }
    const std::string counted = std::to_string(listed.size()) + " of the " + all +
                                " names of the C API: " + boost::join(listed, ", ");
    const std::string fileName = utf8(pathOf(settings().library).filename());
    if (boost::contains(fileName, "pypy")) return found("C API", Verdict::notCPython, counted);
    if (buildName(fileName).version.empty() && listed.size() == boundNames().size()) {
      return found("C API", Verdict::stableAbi);
    }
    return found("C API", Verdict::namesMissing, counted);
  }

  bool checkVersion(const Image& image) {
    const BuildName build = buildName(utf8(realPath(pathOf(settings().library)).filename()));
    report_.debug = build.debug;
    report_.freeThreaded = build.freeThreaded;
    report_.version = exactVersion(report_.candidate, image.pythonVersion);
    const std::string& version = settings().version;
    if (version.empty()) return true;
    if (version[0] < '3' || (version[0] == '3' && minorOf(version) < oldestMinor)) {
      return found("version", Verdict::tooOld);
    }
    if (minorOf(version) > newestMinor) return found("version", Verdict::untested);
    if (build.debug) return found("version", Verdict::debugBuild);
    if (build.freeThreaded) return found("version", Verdict::freeThreaded);
    passed("version", report_.version);
    return true;
  }

  void checkStandardLibrary() {
    BuildName build = buildName(utf8(realPath(pathOf(settings().library)).filename()));
    if (build.version.empty()) build.version = settings().version;
    const bool hasPath = !settings().path.empty();
    const fs::path modules = hasPath ? standardLibraryOn(pathList(settings().path))
                                     : standardLibrary(pathOf(settings().home), build);
    if (modules.empty()) {
      found("home", Verdict::noStandardLibrary,
            (hasPath ? "on the path \"" + settings().path : "under \"" + settings().home) + '"');
      return;
    }
    passed("home", (hasPath ? "on the path" : settings().home) + " (" + utf8(modules) + ")");
    report_.numpy = packageVersion("numpy");
    report_.pandas = packageVersion("pandas");
    checkPackage("NumPy", report_.numpy, Verdict::numpyMissing);
    checkPackage("pandas", report_.pandas, Verdict::pandasMissing);
  }

  void checkPackage(const char* subject, const std::string& version, Verdict missing) {
    if (version.empty()) {
      found(subject, missing);
    } else {
      passed(subject, version);
    }
  }

  // The version in the metadata beside the package that an import would take.
  std::string packageVersion(const std::string& package) {
    for (const fs::path& folder : packageFolders(report_.candidate)) {
      if (!isFolder(folder / package)) continue;
      for (const fs::path& entry : entriesOf(folder)) {
        if (!boost::istarts_with(utf8(entry.filename()), package + "-")) continue;
        for (const fs::path& file : {entry / "METADATA", entry / "PKG-INFO", entry}) {
          std::string version = metadataField(readText(file).value_or(""), "Version");
          if (!version.empty()) return version;
        }
      }
    }
    return {};
  }

  Report report_;
  Programs programs_;
};

}  // namespace

const char* codeOf(Verdict verdict) { return wordsOf(verdict).code; }

Check checkOf(std::string subject, Verdict verdict, const Settings& settings,
              const std::string& environment, const std::string& detail) {
  const Words& words = wordsOf(verdict);
  const std::pair<const char*, std::string> values[] = {
      {"{library}", settings.library}, {"{program}", settings.program}, {"{home}", settings.home},
      {"{version}", settings.version}, {"{environment}", environment},  {"{detail}", detail},
  };
  Check check{std::move(subject), words.level, verdict, words.reason, words.remedy, 0};
  for (const auto& [mark, value] : values) {
    boost::replace_all(check.reason, mark, value);
    boost::replace_all(check.remedy, mark, value);
  }
  return check;
}

const Check& Report::verdict() const {
  static const Check usable = checkOf("", Verdict::usable, {}, "", "");
  for (const Level level : {Level::failed, Level::remark}) {
    for (const Check& check : checks) {
      if (check.level == level) return check;
    }
  }
  return usable;
}

Report inspect(const Candidate& candidate, Programs programs) {
  return Inspector(candidate, programs).inspect();
}

}  // namespace pelion_core::host
