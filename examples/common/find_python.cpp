#include "find_python.h"

#include <algorithm>
#include <array>
#include <boost/algorithm/string/erase.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <vector>

#include "host.h"

namespace example {
namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
constexpr const char* machinePython = "python";
constexpr char pathSeparator = ';';
#else
constexpr const char* machinePython = "python3";
constexpr char pathSeparator = ':';
#endif

// What a Python program answers about itself, a line each: version, program, home, library. Written
// for a shell's double quotes on every system: no such quote, no $, no %, no backslash.
constexpr const char* question =
    "import os, sys, sysconfig; "
    "value = lambda name: sysconfig.get_config_var(name) or ''; "
    "version = '{}.{}'.format(*sys.version_info); "
    "dll = 'python{}{}.dll'.format(*sys.version_info); "
    "names = [value('INSTSONAME'), value('LDLIBRARY'), dll]; "
    "shared = [n for n in names if '.so' in n or '.dylib' in n or '.dll' in n]; "
    "folders = [value('LIBDIR'), os.path.join(value('LIBDIR'), value('MULTIARCH')), "
    "os.path.join(sys.base_prefix, 'lib'), sys.base_prefix]; "
    "libraries = [os.path.join(f, n) for f in folders for n in shared]; "
    "library = next(filter(os.path.isfile, libraries), ''); "
    "lines = [version, sys.executable, sys.base_prefix, library]; "
    "sys.stdout.buffer.write(chr(10).join(lines).encode('utf-8', 'surrogateescape'))";

std::string quoted(const std::string& argument) {
#if defined(_WIN32)
  return '"' + argument + '"';
#else
  return '\'' + boost::replace_all_copy(argument, "'", "'\\''") + '\'';
#endif
}

// What a shell command prints; nothing when it cannot be run.
std::string outputOf(const std::string& command) {
#if defined(_WIN32)
  // A host without a console has no input to hand on, and Python does not start with a bad one.
  std::FILE* const pipe = _popen(('"' + command + " <NUL\"").c_str(), "rb");
#else
  std::FILE* const pipe = popen(command.c_str(), "r");
#endif
  if (pipe == nullptr) return {};

  std::string output;
  std::array<char, 4096> block{};
  while (const auto size = std::fread(block.data(), 1, block.size(), pipe)) {
    output.append(block.data(), size);
  }
#if defined(_WIN32)
  _pclose(pipe);
#else
  pclose(pipe);
#endif
  return output;
}

// -I: what the environment says about another Python must not count.
PythonSettings ask(const std::string& program) {
  std::istringstream answer(outputOf(quoted(program) + " -I -c \"" + question + "\""));
  PythonSettings settings;
  std::getline(answer, settings.version);
  std::getline(answer, settings.program);
  std::getline(answer, settings.home);
  std::getline(answer, settings.library);
  if (settings.home.empty()) {
    throw Failure(noPython, "\"" + program +
                                "\" does not run as a Python 3: install one, or name "
                                "the program of one with --program");
  }
  return settings;
}

std::string digitsFrom(const std::string& text, std::size_t start) {
  const auto end = std::min(text.find_first_not_of("0123456789", start), text.size());
  return start < end ? text.substr(start, end - start) : std::string();
}

// "3.8" of a file name like libpython3.8.so.1.0, libpython3.6m.so.1.0 or python38.dll.
std::string versionOfLibrary(const std::string& library) {
  const std::string name = fs::u8path(library).filename().u8string();
  const std::string mark = "python";
  auto place = name.find(mark);
  if (place == std::string::npos) return {};
  place += mark.size();
  const std::string major = digitsFrom(name, place);
  if (major.size() > 1) return major.substr(0, 1) + '.' + major.substr(1);
  const std::string minor = digitsFrom(name, place + major.size() + 1);
  return minor.empty() ? std::string() : major + '.' + minor;
}

// The module that an interpreter imports first, and without which it ends the process.
bool holdsStandardLibrary(const fs::path& entry) {
  return fs::is_regular_file(entry / "encodings" / "__init__.py") ||
         (entry.extension() == ".zip" && fs::is_regular_file(entry));
}

std::vector<fs::path> standardLibraryPlaces(const PythonSettings& python) {
  std::vector<fs::path> places;
  if (!python.path.empty()) {
    std::istringstream entries(python.path);
    for (std::string entry; std::getline(entries, entry, pathSeparator);) {
      places.push_back(fs::u8path(entry));
    }
    return places;
  }
  const fs::path home = fs::u8path(python.home.substr(0, python.home.find(pathSeparator)));
  const std::string folder = "python" + python.version;
  const std::string archive = boost::erase_all_copy(folder, ".") + ".zip";
  return {home / "lib" / folder, home / "lib64" / folder, home / "Lib", home / "lib" / archive,
          home / archive};
}

void requireStandardLibrary(const PythonSettings& python) {
  const std::vector<fs::path> places = standardLibraryPlaces(python);
  for (const fs::path& place : places) {
    if (holdsStandardLibrary(place)) return;
  }
  throw Failure(noPython,
                "the standard library of Python " + python.version + " is not under \"" +
                    (python.path.empty() ? python.home : python.path) +
                    "\": give the home (sys.base_prefix) of the Python that the library " +
                    python.library + " belongs to");
}

void fillIn(std::string& setting, const std::string& value) {
  if (setting.empty()) setting = value;
}

}  // namespace

void addPythonOptions(CLI::App& app, PythonSettings& settings) {
  app.add_option("--python", settings.library, "Python's runtime library (libpython3.X.so, .dll)");
  app.add_option("--program", settings.program,
                 "Python program; a virtual environment's bin/python");
  app.add_option("--home", settings.home, "prefix of the standard library (sys.base_prefix)");
  app.add_option("--path", settings.path, "module search path instead of the computed one");
}

PythonSettings findPython(PythonSettings given) {
  given.version = versionOfLibrary(given.library);
  if (given.version.empty() || given.program.empty() || given.home.empty()) {
    const PythonSettings found = ask(given.program.empty() ? machinePython : given.program);
    fillIn(given.version, found.version);
    fillIn(given.program, found.program);
    fillIn(given.home, found.home);
    fillIn(given.library, found.library);
  }
  if (given.library.empty()) {
    throw Failure(noPython, given.program +
                                " has no shared library: install it (on Debian: "
                                "apt install libpython" +
                                given.version +
                                "), or name another Python with --program, one that was built "
                                "with --enable-shared");
  }
  requireStandardLibrary(given);
  return given;
}

}  // namespace example
