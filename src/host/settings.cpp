#include "pelion_core/host/settings.h"

#include <algorithm>
#include <boost/algorithm/string/erase.hpp>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "process.h"
#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace pelion_core::host {
namespace {

namespace fs = std::filesystem;
using Reason = LoadError::Reason;

#if defined(_WIN32)
constexpr const char* machinePython = "python";
constexpr char pathSeparator = ';';
#else
constexpr const char* machinePython = "python3";
constexpr char pathSeparator = ':';
#endif

// What a Python program knows about itself, a line each: version, program, home, library.
constexpr const char* question = R"(
import os, sys, sysconfig
value = lambda name: sysconfig.get_config_var(name) or ''
names = [value('INSTSONAME'), value('LDLIBRARY'), 'python{}{}.dll'.format(*sys.version_info)]
shared = [n for n in names if '.so' in n or '.dylib' in n or '.dll' in n]
folders = [value('LIBDIR'), os.path.join(value('LIBDIR'), value('MULTIARCH')),
           os.path.join(sys.base_prefix, 'lib'), sys.base_prefix]
libraries = [os.path.join(f, n) for f in folders for n in shared]
lines = ['{}.{}'.format(*sys.version_info), sys.executable, sys.base_prefix,
         next(filter(os.path.isfile, libraries), '')]
sys.stdout.buffer.write('\n'.join(lines).encode('utf-8', 'surrogateescape')))";

std::string quoted(const std::string& name) { return '"' + name + '"'; }

// -I: what the environment says about another Python must not count.
Settings ask(const std::string& program) {
  std::istringstream lines(outputOf({program, "-I", "-c", question}).value_or(""));
  Settings settings;
  std::getline(lines, settings.version);
  std::getline(lines, settings.program);
  std::getline(lines, settings.home);
  std::getline(lines, settings.library);
  if (settings.home.empty()) {
    throw LoadError(Reason::notFound, quoted(program) +
                                          " does not run as a Python 3: install one, or give the "
                                          "path of the program of one");
  }
  return settings;
}

// The program of a virtual environment or of an installation that is named by its folder.
std::string programIn(const std::string& place) {
  const fs::path folder = fs::u8path(place);
  std::error_code ignored;
  if (place.empty() || !fs::is_directory(folder, ignored)) return place;
  for (const char* name : {"bin/python", "bin/python3", "Scripts/python.exe", "python.exe"}) {
    if (fs::is_regular_file(folder / name, ignored)) return (folder / name).u8string();
  }
  throw LoadError(Reason::notFound, "there is no Python program in the folder " + quoted(place) +
                                        ": name one that has bin/python (Scripts\\python.exe on "
                                        "Windows), as a virtual environment has");
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

// What an executable or a library is made for, as bytes that can only be compared; nothing when the
// file is neither ELF nor PE.
std::string machineOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::string head(0x40, '\0');
  stream.read(head.data(), static_cast<std::streamsize>(head.size()));
  if (!stream) return {};
  if (head.compare(0, 4,
                   "\x7f"
                   "ELF") == 0) {
    return head.substr(4, 2) + head.substr(18, 2);  // width, byte order, machine
  }
  if (head.compare(0, 2, "MZ") != 0) return {};
  std::uint32_t offset = 0;
  for (int i = 3; i >= 0; --i) {
    offset = offset << 8 | static_cast<unsigned char>(head[0x3c + static_cast<std::size_t>(i)]);
  }
  std::string machine(6, '\0');
  stream.seekg(offset);
  stream.read(machine.data(), static_cast<std::streamsize>(machine.size()));
  return stream && machine.compare(0, 2, "PE") == 0 ? machine : std::string();
}

fs::path thisProgram() {
#if defined(_WIN32)
  std::wstring name(32768, L'\0');  // the longest path there is
  name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
  return name;
#else
  return "/proc/self/exe";
#endif
}

void requireLibrary(const Settings& python) {
  const fs::path library = fs::u8path(python.library);
  if (!library.has_parent_path()) return;
  const auto refuse = [&](const std::string& why) {
    throw LoadError(Reason::notLoaded,
                    python.library + " does not load as a Python 3 runtime: " + why);
  };
  std::error_code ignored;
  if (!fs::is_regular_file(library, ignored)) refuse("there is no such file");
  const std::string machine = machineOf(library);
  if (machine.empty()) refuse("it is not a shared library");
  const std::string own = machineOf(thisProgram());
  if (!own.empty() && machine != own) {
    refuse(
        "it is for another machine; name a Python that is built for the same processor as this "
        "program");
  }
}

// The module that an interpreter imports first, and without which it ends the process.
bool holdsStandardLibrary(const fs::path& entry) {
  std::error_code ignored;
  return fs::is_regular_file(entry / "encodings" / "__init__.py", ignored) ||
         (entry.extension() == ".zip" && fs::is_regular_file(entry, ignored));
}

std::vector<fs::path> standardLibraryPlaces(const Settings& python) {
  std::vector<fs::path> places;
  if (!python.path.empty()) {
    std::istringstream entries(python.path);
    for (std::string entry; std::getline(entries, entry, pathSeparator);) {
      places.push_back(fs::u8path(entry));
    }
    return places;
  }
  const fs::path home = fs::u8path(python.home.substr(0, python.home.find(pathSeparator)));
  const std::size_t minor = python.version.find('.') + 1;  // "3.11" of "3.11.7" too
  const std::string folder = "python" + python.version.substr(0, python.version.find('.', minor));
  const std::string archive = boost::erase_all_copy(folder, ".") + ".zip";
  return {home / "lib" / folder, home / "lib" / (folder + "t"), home / "lib64" / folder,
          home / "Lib",          home / "lib" / archive,        home / archive};
}

void requireStandardLibrary(const Settings& python) {
  const std::vector<fs::path> places = standardLibraryPlaces(python);
  if (std::any_of(places.begin(), places.end(), holdsStandardLibrary)) return;
  throw LoadError(Reason::notFound,
                  "the standard library of Python " + python.version + " is not under " +
                      quoted(python.path.empty() ? python.home : python.path) +
                      ": give the home (sys.base_prefix) of the Python that the library " +
                      python.library + " belongs to");
}

void fillIn(std::string& setting, const std::string& value) {
  if (setting.empty()) setting = value;
}

}  // namespace

Settings find(const std::string& program) {
  Settings given;
  given.program = programIn(program);
  return complete(given);
}

Settings complete(Settings given) {
  fillIn(given.version, versionOfLibrary(given.library));
  if (given.version.empty() || given.program.empty() || given.home.empty() ||
      given.library.empty()) {
    const Settings found = ask(given.program.empty() ? machinePython : given.program);
    fillIn(given.version, found.version);
    given.program = found.program;  // by its whole path
    fillIn(given.home, found.home);
    fillIn(given.library, found.library);
  }
  if (given.library.empty()) {
    throw LoadError(Reason::notFound,
                    given.program +
                        " has no shared library: install it (on Debian: apt install "
                        "libpython" +
                        given.version +
                        "), or give another Python, one that was built with "
                        "--enable-shared");
  }
  check(given);
  return given;
}

void check(const Settings& settings) {
  requireLibrary(settings);
  requireStandardLibrary(settings);
}

}  // namespace pelion_core::host
