#include "installation.h"

#include <algorithm>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/erase.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <cstdlib>

namespace pelion_core::host {
namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string digitsAt(const std::string& text, std::size_t start) {
  std::size_t end = start;
  while (end < text.size() && isDigit(text[end])) ++end;
  return text.substr(std::min(start, text.size()), end - start);
}

// Whether a version's standard library lies in a folder. An interpreter imports this module first,
// and without it ends the process.
bool holdsModules(const fs::path& folder) { return isFile(folder / "encodings" / "__init__.py"); }

// The versions whose standard library lies under a home, the newest first.
std::vector<BuildName> versionsUnder(const fs::path& home) {
  std::vector<BuildName> versions;
  for (const char* lib : {"lib", "lib64"}) {
    for (const fs::path& entry : entriesOf(home / lib)) {
      const BuildName build = buildName(utf8(entry.filename()));
      if (!build.version.empty() && holdsModules(entry)) versions.push_back(build);
    }
  }
  if (holdsModules(home / "Lib") || versions.empty()) {
    for (const fs::path& library : librariesIn(home)) {
      versions.push_back(buildName(utf8(library.filename())));
    }
  }
  std::stable_sort(versions.begin(), versions.end(), [](const auto& left, const auto& right) {
    return isOlder(right.version, left.version);
  });
  return versions;
}

// The first folder from `start` upwards, without the root, that holds a standard library. Fills in
// an unknown version.
fs::path homeAbove(fs::path start, BuildName& build) {
  for (fs::path folder = std::move(start); folder.has_relative_path();
       folder = folder.parent_path()) {
    BuildName here = build;
    if (here.version.empty()) {
      const std::vector<BuildName> versions = versionsUnder(folder);
      if (!versions.empty()) here = versions.front();
    }
    if (!here.version.empty() && !standardLibrary(folder, here).empty()) {
      build = here;
      return folder;
    }
  }
  return {};
}

fs::path absolute(const fs::path& path, const fs::path& folder) {
  return path.empty() || path.is_absolute() ? path : (folder / path).lexically_normal();
}

// What CPython 3.14 and newer write about themselves, and what older ones keep of their build.
std::vector<fs::path> librariesByRecord(const fs::path& home, const BuildName& build) {
  std::vector<fs::path> places;
  const fs::path modules = standardLibrary(home, build);
  if (const auto json = readText(modules / "build-details.json")) {
    const BuildDetails details = buildDetails(*json);
    const fs::path prefix = absolute(pathOf(details.prefix), modules);
    if (!details.library.empty()) places.push_back(absolute(pathOf(details.library), prefix));
  }
  for (const fs::path& entry : entriesOf(modules)) {
    const std::string name = utf8(entry.filename());
    if (!boost::starts_with(name, "_sysconfigdata_") || entry.extension() != ".py") continue;
    const std::string text = readText(entry).value_or("");
    const std::string library = buildVariable(text, "INSTSONAME");
    if (namesLibrary(library)) places.push_back(pathOf(buildVariable(text, "LIBDIR")) / library);
  }
  return places;
}

bool isSameBuild(const fs::path& library, const BuildName& build) {
  const BuildName name = buildName(utf8(library.filename()));
  return name.version == build.version && name.debug == build.debug &&
         name.freeThreaded == build.freeThreaded;
}

fs::path libraryOf(const fs::path& home, const BuildName& build) {
  const auto firstOf = [&build](const std::vector<fs::path>& libraries) {
    const auto found = std::find_if(libraries.begin(), libraries.end(), [&](const fs::path& each) {
      return isSameBuild(each, build) && isFile(each);
    });
    return found == libraries.end() ? fs::path() : *found;
  };
  for (const fs::path& folder : libraryFolders(home)) {
    fs::path library = firstOf(librariesIn(folder));
    if (!library.empty()) return library;
  }
  for (const char* name : {"Python", "Python3", "PythonT"}) {
    if (isFrameworkLibrary(home / name) && isFile(home / name)) return home / name;
  }
  return firstOf(librariesByRecord(home, build));
}

bool isBelow(const fs::path& path, const char* name) {
  return std::find(path.begin(), path.end(), fs::path(name)) != path.end();
}

std::string kindOf(const Candidate& candidate) {
  if (!candidate.environment.empty()) return "venv";
  const fs::path home = pathOf(candidate.settings.home);
  if (candidate.settings.program.empty()) return "library";
  if (isFolder(home / "conda-meta")) return "conda";
  if (isBelow(home, ".pyenv") || isBelow(home, "pyenv-win")) return "pyenv";
  const char* const root = std::getenv("PYENV_ROOT");
  if (root != nullptr && home.parent_path().parent_path() == pathOf(root)) return "pyenv";
  if (isBelow(home, "uv")) return "uv";
  return home == "/usr" ? "system" : "python";
}

fs::path firstFile(const std::vector<fs::path>& places) {
  const auto found = std::find_if(places.begin(), places.end(), isFile);
  return found == places.end() ? fs::path() : *found;
}

// The program of an installation whose library or environment is known.
fs::path programUnder(const fs::path& home, const BuildName& build) {
  const std::string versioned = "python" + build.version;
  const std::string flags = std::string(build.debug ? "d" : "") + (build.freeThreaded ? "t" : "");
  return firstFile({home / "bin" / (versioned + flags), home / "bin" / versioned,
                    home / "bin" / "python3", home / "bin" / "python", home / "python.exe",
                    home / "python_d.exe"});
}

// A script, and a program of another name, may start any Python; one without bytes starts none.
bool tellsByName(const fs::path& program) {
  const std::string name = boost::to_lower_copy(utf8(program.filename()));
  if (!boost::starts_with(name, "python") && !boost::starts_with(name, "pypy")) return false;
  const std::string start = readText(program, 2).value_or("");
  return !start.empty() && start != "#!";
}

fs::path environmentProgram(const fs::path& folder) {
  for (const char* name :
       {"bin/python", "bin/python3", "Scripts/python.exe", "Scripts/python_d.exe"}) {
    std::error_code ignored;
    if (fs::is_symlink(folder / name, ignored) || isFile(folder / name)) return folder / name;
  }
  return {};
}

Candidate candidateOfEnvironment(const Environment& environment, const fs::path& program) {
  Candidate candidate;
  candidate.environment = utf8(environment.folder);
  candidate.settings.program = utf8(program);
  candidate.settings.version = environment.version;
  const std::string versioned = "python" + environment.version;
  std::vector<fs::path> bases{environment.program};
  if (realPath(program) != program) bases.insert(bases.begin(), realPath(program));
  for (const std::string& name : {versioned, std::string("python3"), std::string("python.exe")}) {
    bases.push_back(environment.base / name);
  }
  for (fs::path& other : programsIn(environment.base)) bases.push_back(std::move(other));
  const fs::path base = firstFile(bases);
  if (!base.empty()) {
    const fs::path real = realPath(base);
    BuildName build = buildName(utf8(real.filename()));
    const fs::path home = homeAbove(real.parent_path(), build);
    if (!build.version.empty()) candidate.settings.version = build.version;
    candidate.settings.home = utf8(home);
    if (!home.empty()) candidate.settings.library = utf8(libraryOf(home, build));
  }
  candidate.kind = "venv";
  return candidate;
}

}  // namespace

bool isOlder(const std::string& version, const std::string& other) {
  const auto numbers = [](const std::string& text) {
    std::vector<unsigned long> parts;
    for (std::size_t place = 0; place < text.size(); ++place) {
      const std::string digits = digitsAt(text, place);
      if (digits.empty()) continue;
      parts.push_back(std::strtoul(digits.c_str(), nullptr, 10));
      place += digits.size();
    }
    return parts;
  };
  return numbers(version) < numbers(other);
}

Environment environmentIn(const fs::path& folder) {
  const auto text = readText(folder / "pyvenv.cfg");
  if (!text) return {};
  auto config = environmentConfig(*text);
  Environment environment;
  environment.folder = folder;
  environment.version =
      versionNumber(config["version"].empty() ? config["version_info"] : config["version"], 2);
  environment.base = pathOf(config["home"]);
  environment.program = pathOf(config["executable"]);
  return environment;
}

BuildName buildName(const std::string& fileName) {
  const std::string name = boost::to_lower_copy(fileName);
  for (const std::string mark : {"python", "pypy"}) {
    const auto place = name.find(mark);
    if (place == std::string::npos) continue;
    std::size_t after = place + mark.size();
    const std::string major = digitsAt(name, after);
    after += major.size();
    BuildName build;
    if (major.size() > 1) {
      build.version = major.substr(0, 1) + '.' + major.substr(1);
    } else if (!major.empty() && after < name.size() && name[after] == '.') {
      const std::string minor = digitsAt(name, after + 1);
      after += 1 + minor.size();
      if (!minor.empty()) build.version.append(major).append(1, '.').append(minor);
    }
    if (build.version.empty()) continue;
    while (after < name.size() && name[after] != '.' && name[after] != '-') {
      build.debug = build.debug || name[after] == 'd';
      build.freeThreaded = build.freeThreaded || name[after] == 't';
      ++after;
    }
    return build;
  }
  return {};
}

bool namesLibrary(const std::string& fileName) {
  const std::string name = boost::to_lower_copy(fileName);
  const bool library = boost::ends_with(name, ".so") || boost::contains(name, ".so.") ||
                       boost::ends_with(name, ".dylib") || boost::ends_with(name, ".dll");
  return library && (boost::contains(name, "python") || boost::contains(name, "pypy"));
}

bool isFrameworkLibrary(const fs::path& file) {
  const fs::path name = file.filename();  // Xcode's own, and that of free-threaded builds
  return (name == "Python" || name == "Python3" || name == "PythonT") &&
         file.parent_path().parent_path().filename() == "Versions";
}

fs::path standardLibrary(const fs::path& home, const BuildName& build) {
  if (home.empty() || build.version.empty()) return {};
  const std::string folder = "python" + build.version;
  std::vector<fs::path> folders;
  if (build.freeThreaded) folders.push_back(home / "lib" / (folder + 't'));
  folders.insert(folders.end(), {home / "lib" / folder, home / "lib64" / folder, home / "Lib",
                                 home / "lib" / boost::replace_all_copy(folder, "python", "pypy")});
  for (const fs::path& place : folders) {
    if (holdsModules(place)) return place;
  }
  const std::string archive = boost::erase_all_copy(folder, ".") + ".zip";
  return firstFile({home / "lib" / archive, home / archive});
}

fs::path standardLibraryOn(const std::vector<fs::path>& path) {
  for (const fs::path& entry : path) {
    if (holdsModules(entry) || (entry.extension() == ".zip" && isFile(entry))) return entry;
  }
  return {};
}

std::vector<fs::path> libraryFolders(const fs::path& home) {
  std::vector<fs::path> folders{home / "lib", home / "lib64", home, home / "bin"};
  for (const fs::path& entry : entriesOf(home / "lib")) {
    if (boost::contains(utf8(entry.filename()), "-linux-")) folders.push_back(entry);
  }
  return folders;
}

std::vector<fs::path> librariesIn(const fs::path& folder) {
  std::vector<fs::path> libraries;
  for (const fs::path& entry : entriesOf(folder)) {
    const std::string name = utf8(entry.filename());
    if (namesLibrary(name) && !buildName(name).version.empty()) libraries.push_back(entry);
  }
  // libpython3.11.so.1.0 before the links to it, of which the shortest may be for linking alone.
  std::stable_sort(libraries.begin(), libraries.end(), [](const auto& left, const auto& right) {
    const auto build = [](const fs::path& path) { return buildName(utf8(path.filename())); };
    const BuildName one = build(left);
    const BuildName two = build(right);
    if (one.version != two.version) return isOlder(two.version, one.version);
    if (one.debug != two.debug) return two.debug;
    return left.filename().native().size() > right.filename().native().size();
  });
  return libraries;
}

std::vector<fs::path> programsIn(const fs::path& folder) {
  std::vector<fs::path> programs;
  std::vector<fs::path> versioned;
  for (const fs::path& entry : entriesOf(folder)) {
    std::string name = boost::to_lower_copy(utf8(entry.filename()));
    boost::erase_tail(name, boost::ends_with(name, ".exe") ? 4 : 0);
    if (name == "python3") programs.insert(programs.begin(), entry);
    if (name == "python") programs.push_back(entry);
    if (!boost::starts_with(name, "python")) continue;
    const std::string version = versionNumber(name.substr(6), 2);
    const std::string flags = version.empty() ? "-" : name.substr(6 + version.size());
    if (flags.find_first_not_of("dt") == std::string::npos) versioned.push_back(entry);
  }
  std::stable_sort(versioned.begin(), versioned.end(), [](const auto& left, const auto& right) {
    return isOlder(utf8(right.filename()), utf8(left.filename()));
  });
  programs.insert(programs.end(), versioned.begin(), versioned.end());
  return programs;
}

std::vector<fs::path> packageFolders(const Candidate& candidate) {
  const fs::path home = pathOf(candidate.settings.home);
  const std::string versioned = "python" + candidate.settings.version;
  std::vector<fs::path> folders;
  const auto add = [&folders, &versioned](const fs::path& prefix) {
    folders.insert(folders.end(), {prefix / "lib" / versioned / "site-packages",
                                   prefix / "lib64" / versioned / "site-packages",
                                   prefix / "lib" / (versioned + "t") / "site-packages",
                                   prefix / "Lib" / "site-packages"});
  };
  bool whole = true;
  if (!candidate.environment.empty()) {
    const fs::path environment = pathOf(candidate.environment);
    add(environment);
    auto config = environmentConfig(readText(environment / "pyvenv.cfg").value_or(""));
    whole = boost::iequals(config["include-system-site-packages"], "true");
  }
  if (!whole) return folders;
#if defined(_WIN32)
  const char* const user = std::getenv("APPDATA");
  const std::string inner =
      "Python/Python" + boost::erase_all_copy(candidate.settings.version, ".");
  if (user != nullptr) folders.push_back(pathOf(user) / inner / "site-packages");
#else
  const char* const user = std::getenv("HOME");
  if (user != nullptr) add(pathOf(user) / ".local");
#endif
  add(home);
  if (home == "/usr") {  // as Debian has it
    folders.insert(folders.end(), {fs::path("/usr/local/lib") / versioned / "dist-packages",
                                   "/usr/lib/python3/dist-packages"});
  }
  return folders;
}

Candidate candidateOfLibrary(const fs::path& library) {
  Candidate candidate;
  candidate.settings.library = utf8(library);
  BuildName build = buildName(utf8(library.filename()));
  const fs::path home = homeAbove(realPath(library).parent_path(), build);
  candidate.settings.version = build.version;
  candidate.settings.home = utf8(home);
  if (!home.empty()) candidate.settings.program = utf8(programUnder(home, build));
  candidate.kind = kindOf(candidate);
  return candidate;
}

Candidate candidateOfProgram(const fs::path& program) {
  for (const fs::path& folder : {program.parent_path(), program.parent_path().parent_path()}) {
    const Environment environment = environmentIn(folder);
    if (!environment.folder.empty()) return candidateOfEnvironment(environment, program);
  }
  Candidate candidate;
  candidate.settings.program = utf8(program);
  candidate.kind = "python";
  const fs::path real = realPath(program);
  if (!tellsByName(real)) return candidate;
  BuildName build = buildName(utf8(real.filename()));
  const fs::path home = homeAbove(real.parent_path(), build);
  candidate.settings.version = build.version;
  candidate.settings.home = utf8(home);
  if (!home.empty()) candidate.settings.library = utf8(libraryOf(home, build));
  candidate.kind = kindOf(candidate);
  return candidate;
}

Candidate candidateOfFolder(const fs::path& folder) {
  const Environment environment = environmentIn(folder);
  if (!environment.folder.empty()) {
    return candidateOfEnvironment(environment, environmentProgram(folder));
  }
  for (const fs::path& place : {folder / "bin", folder}) {
    const std::vector<fs::path> programs = programsIn(place);
    const auto found = std::find_if(programs.begin(), programs.end(), isFile);
    if (found != programs.end()) return candidateOfProgram(*found);
  }
  for (const fs::path& place : libraryFolders(folder)) {
    const std::vector<fs::path> libraries = librariesIn(place);
    if (!libraries.empty()) return candidateOfLibrary(libraries.front());
  }
  Candidate candidate;
  candidate.settings.home = utf8(folder);
  candidate.kind = "python";
  return candidate;
}

}  // namespace pelion_core::host
