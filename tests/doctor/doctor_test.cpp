// Trees of files with one thing wrong in each, real interpreters made to fail in each way, and what
// is said of them.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "ask.h"
#include "child_process.h"
#include "installation.h"
#include "pelion_core/host/discover.h"
#include "pelion_core/host/inspect.h"
#include "pelion_core/host/probe.h"

using namespace pelion_core::host;

namespace {

#if defined(_WIN32)
const std::map<std::string, std::string> places{{"PROGRAM", "whole/python.exe"},
                                                {"LIBRARY", "whole/python312.dll"},
                                                {"MODULES", "whole/Lib"},
                                                {"VENV_PROGRAM", "venv/Scripts/python.exe"},
                                                {"VENV_SCRIPT", "venv/Scripts/activate"},
                                                {"BASE", "whole"}};
#define ELSEWHERE "C:\\elsewhere"
#else
#define ELSEWHERE "/elsewhere"
const std::map<std::string, std::string> places{
    {"PROGRAM", "whole/bin/python3.12"},  {"LIBRARY", "whole/lib/libpython3.12.so.1.0"},
    {"MODULES", "whole/lib/python3.12"},  {"VENV_PROGRAM", "venv/bin/python"},
    {"VENV_SCRIPT", "venv/bin/activate"}, {"BASE", "whole/bin"}};
#endif

std::string bytesOf(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const fs::path& file, const std::string& bytes) {
  fs::create_directories(file.parent_path());
  std::ofstream(file, std::ios::binary) << bytes;
  fs::permissions(file, fs::perms::owner_all);
}

const std::string runtime = bytesOf(STAND_IN);
const std::string otherLibrary = bytesOf(OTHER_LIBRARY);

// The runtime with other bytes in its header.
std::string changed(std::size_t place, const std::string& value) {
  std::string bytes = runtime;
#if defined(_WIN32)
  place += static_cast<unsigned char>(bytes[0x3c]) + 256U * static_cast<unsigned char>(bytes[0x3d]);
#endif
  return bytes.replace(place, value.size(), value);
}

#if defined(__aarch64__)
#define OTHER_MACHINE "x86-64"
#define THIS_MACHINE "aarch64"
const char* const otherMachine = "\x3e";
#else
#define OTHER_MACHINE "aarch64"
#define THIS_MACHINE "x86-64"
const char* const otherMachine = "\xb7";
#endif

std::string forOtherMachine() {
#if defined(_WIN32)
  return changed(4, "\x64\xaa");
#else
  return changed(18, otherMachine);
#endif
}

std::string withoutName(const std::string& name) {
  std::string bytes = runtime;
  const std::string whole = '\0' + name + '\0';
  for (auto at = bytes.find(whole); at != std::string::npos; at = bytes.find(whole)) {
    bytes[at + 1] = 'Q';
  }
  return bytes;
}

// A file by its place and its bytes; or a link to a path, a folder, or none.
struct Change {
  std::string place;
  std::string bytes;
};
const std::string absent = "\1absent";
const std::string folder = "\1folder";
const std::string link = "\1link ";

class Tree {
 public:
  Tree() : root_(fs::temp_directory_path() / pathOf("pelion tree ä " + unique())) {
    const std::string metadata = "Metadata-Version: 2.1\nName: x\nVersion: 2.0.1\n\nVersion: 3\n";
    change({"PROGRAM", runtime});
    change({"LIBRARY", runtime});
    for (const char* file : {"/encodings/__init__.py", "/site-packages/numpy/__init__.py",
                             "/site-packages/pandas/__init__.py"}) {
      change({"MODULES" + std::string(file), "# a module"});
    }
    change({"MODULES/site-packages/numpy-2.0.1.dist-info/METADATA", metadata});
    change({"MODULES/site-packages/pandas-2.0.1.egg-info", metadata});
    change({"VENV_PROGRAM", runtime});
    change({"VENV_SCRIPT", "VIRTUAL_ENV=\"" + utf8(root_ / "venv") + "\"\n"});
    change({"venv/pyvenv.cfg",
            "home = BASE\nversion = 3.12.1\n"
            "include-system-site-packages = true\n"});
  }
  ~Tree() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
  }

  fs::path at(std::string place) const {
    for (const auto& [name, path] : places) {
      if (place.compare(0, name.size(), name) == 0) place.replace(0, name.size(), path);
    }
    return root_ / pathOf(place);
  }

  void change(const Change& change) {
    const fs::path path = at(change.place);
    if (change.bytes == absent) {
      fs::remove_all(path);
    } else if (change.bytes == folder) {
      fs::create_directories(path);
    } else if (change.bytes.compare(0, link.size(), link) == 0) {
      fs::remove(path);
      fs::create_symlink(at(change.bytes.substr(link.size())), path);
    } else {
      std::string bytes = change.bytes;
      const auto base = bytes.find("BASE");
      if (base != std::string::npos && bytes.size() < 1000) {
        bytes.replace(base, 4, utf8(at("BASE")));
      }
      write(path, bytes);
    }
  }

 private:
  // Tests of several interpreters run at one time.
  static std::string unique() {
    std::random_device random;
    return std::to_string(random()) + std::to_string(random());
  }

  fs::path root_;
};

struct Case {
  const char* name;
  std::vector<Change> changes;
  std::string what;  // of the tree
  Verdict verdict;
  std::string words;  // in the reason or the remedy
};

std::string script(const std::string& lines) { return "#!/bin/sh\n" + lines + '\n'; }

const std::vector<Change> framework{{"Versions/3.12/bin/python3.12", runtime},
                                    {"Versions/3.12/lib/python3.12/encodings/__init__.py", "#"},
                                    {"Versions/3.12/Python", runtime}};

const std::vector<Case> cases {
  {"whole, by its folder", {}, "whole", Verdict::usable, ""},
      {"whole, by its program", {}, "PROGRAM", Verdict::usable, ""},
      {"whole, by its library", {}, "LIBRARY", Verdict::usable, ""},
      {"whole environment", {}, "venv", Verdict::usable, ""},
      {"a framework of macOS", framework, "Versions/3.12", Verdict::numpyMissing, "pip install"},
      {"its library", framework, "Versions/3.12/Python", Verdict::numpyMissing, "pip install"},
      {"nothing", {}, "nowhere", Verdict::notFound, "does not run as a Python 3"},
      {"an empty folder",
       {{"hollow", folder}},
       "hollow",
       Verdict::notFound,
       "does not run as a Python 3"},
      {"a program without bytes", {{"PROGRAM", ""}}, "PROGRAM", Verdict::storeStub, "opens a shop"},
      {"an environment of nothing",
       {{"venv/pyvenv.cfg", "version = 3.12\n"}},
       "venv",
       Verdict::environmentBroken,
       "line \"home\""},
      {"a base that is gone",
       {{"venv/pyvenv.cfg", "home = /nowhere/bin\n"}},
       "venv",
       Verdict::baseMissing,
       "bin, which is gone"},
      {"a base that was replaced",
       {{"venv/pyvenv.cfg", "home = BASE\nversion = 3.11.9\n"}},
       "venv",
       Verdict::environmentMismatch,
       "is of Python 3.11, the library of 3.12"},
      {"an environment that was moved",
       {{"VENV_SCRIPT", "VIRTUAL_ENV=" ELSEWHERE "\n"}},
       "venv",
       Verdict::environmentMoved,
       ELSEWHERE " and moved"},
      {"no such library",
       {{"LIBRARY", absent}},
       "LIBRARY",
       Verdict::libraryMissing,
       "no such file"},
      {"text", {{"LIBRARY", "some words\n"}}, "whole", Verdict::notLibrary, "it is a text file"},
      {"a script", {{"LIBRARY", script("exit")}}, "whole", Verdict::notLibrary, "it is a script"},
      {"an archive", {{"LIBRARY", "!<arch>\nlibrary.o"}}, "whole", Verdict::notLibrary, "archive"},
      {"no bytes", {{"LIBRARY", ""}}, "whole", Verdict::notLibrary, "it is empty"},
      {"half a library",
       {{"LIBRARY", runtime.substr(0, runtime.size() / 2)}},
       "whole",
       Verdict::notLibrary,
       "cut off"},
      {"another machine",
       {{"LIBRARY", forOtherMachine()}},
       "whole",
       Verdict::wrongMachine,
       "is for " OTHER_MACHINE ", this program for " THIS_MACHINE},
      {"another system",
       {{"LIBRARY", std::string("\xcf\xfa\xed\xfe\x07\0\0\1", 8) + std::string(40, 0)}},
       "whole",
       Verdict::wrongMachine,
       "is for macOS on x86-64"},
      {"another library",
       {{"LIBRARY", otherLibrary}},
       "whole",
       Verdict::namesMissing,
       "87 of the 87"},
      {"a name less",
       {{"LIBRARY", withoutName("PyUnicode_AsUTF8")}},
       "whole",
       Verdict::namesMissing,
       "lacks 1 of the 87 names of the C API: PyUnicode_AsUTF8 (from 3.3)"},
      {"no home", {{"MODULES", absent}}, "LIBRARY", Verdict::noStandardLibrary, "is not under"},
      {"no NumPy",
       {{"MODULES/site-packages/numpy", absent}},
       "whole",
       Verdict::numpyMissing,
       "pip install numpy"},
      {"no pandas",
       {{"MODULES/site-packages/pandas", absent}},
       "venv",
       Verdict::pandasMissing,
       "pip install pandas"},
#if !defined(_WIN32)
      {"no library", {{"LIBRARY", absent}}, "PROGRAM", Verdict::noSharedLibrary, "--enable-shared"},
      {"a link to itself",
       {{"LIBRARY", link + "LIBRARY"}},
       "LIBRARY",
       Verdict::unreadable,
       "symbolic"},
      {"32 bits",
       {{"LIBRARY", changed(4, "\1")}},
       "whole",
       Verdict::wrongMachine,
       THIS_MACHINE " (32-bit)"},
      {"PyPy",
       {{"LIBRARY", absent}, {"whole/lib/libpypy3.12-c.so", otherLibrary}},
       "whole",
       Verdict::notCPython,
       "is PyPy"},
      {"the library of no version",
       {{"whole/lib/libpython3.so", otherLibrary}},
       "whole/lib/libpython3.so",
       Verdict::stableAbi,
       "leads on"},
      {"Python 2",
       {{"old/lib/libpython2.7.so.1.0", otherLibrary},
        {"old/lib/python2.7/encodings/__init__.py", "#"}},
       "old",
       Verdict::tooOld,
       "is Python 2.7"},
      {"a newer one",
       {{"new/lib/libpython3.99.so", runtime}, {"new/lib/python3.99/encodings/__init__.py", "#"}},
       "new",
       Verdict::untested,
       "3.99 is newer"},
      {"a debug build",
       {{"whole/lib/libpython3.12d.so.1.0", runtime}},
       "whole/lib/libpython3.12d.so.1.0",
       Verdict::debugBuild,
       "debug build"},
      {"no lock",
       {{"ft/lib/libpython3.13t.so", runtime}, {"ft/lib/python3.13t/encodings/__init__.py", "#"}},
       "ft",
       Verdict::freeThreaded,
       "free-threaded"},
      {"a library by its record",
       {{"LIBRARY", absent},
        {"whole/x/libpython3.12.so", runtime},
        {"MODULES/build-details.json",
         R"({"base_prefix": "../..", "libpython": {"dynamic": "x/libpython3.12.so"}})"}},
       "PROGRAM",
       Verdict::usable,
       ""},
      {"a program that fails",
       {{"PROGRAM", script("echo no luck >&2; exit 3")}},
       "PROGRAM",
       Verdict::programFails,
       "exit status 3, no luck"},
      {"one that crashes",
       {{"PROGRAM", script("kill -SEGV $$")}},
       "PROGRAM",
       Verdict::programFails,
       "crashed (signal 11"},
      {"one that says other things",
       {{"PROGRAM", script("echo hello")}},
       "PROGRAM",
       Verdict::programFails,
       "something else"},
      {"one that says too much",
       {{"PROGRAM", script("yes")}},
       "PROGRAM",
       Verdict::programFails,
       "without end"},
      {"one that hangs, with children",
       {{"PROGRAM", script("sleep 100 & sleep 100")}},
       "PROGRAM",
       Verdict::programHangs,
       "10 seconds"},
#endif
};

// What a host's sitecustomize makes of a start; empty settings are those of the interpreter.
struct StartCase {
  const char* module;  // that lies on PYTHONPATH
  const char* code;
  Settings settings;
  Verdict verdict;
  const char* words;
};

const std::vector<StartCase> startCases{
    {"nothing", "", {"", OTHER_LIBRARY, "", "", ""}, Verdict::startRefused, "lacks names"},
    {"nothing", "", {"", "", "", ELSEWHERE, ""}, Verdict::startEnds, "Fatal Python error"},
    {"sitecustomize", "import os; os._exit(9)", {}, Verdict::startEnds, "exit status 9"},
    {"ctypes",
     "import faulthandler as f; getattr(f, '_read_null', f._sigsegv)()",
     {},
     Verdict::startCrashes,
     "in the step \"import ctypes\""},
    {"numpy", "print('x'); 1 / 0", {}, Verdict::importFails, "ZeroDivisionError: division by zero"},
    {"pandas", "import time; time.sleep(60)", {}, Verdict::startHangs, "longer than 3 seconds"},
};

void setVariable(const std::string& name, const std::string& value) {
#if defined(_WIN32)
  _wputenv(pathOf(name + "=" + value).c_str());
#else
  setenv(name.c_str(), value.c_str(), 1);
#endif
}

// PELION_TEST_PYTHON as settings; its version has three numbers.
Settings interpreter() {
  std::istringstream parts(std::getenv("PELION_TEST_PYTHON"));
  Settings settings;
  for (std::string* part :
       {&settings.version, &settings.library, &settings.program, &settings.home}) {
    std::getline(parts, *part, '|');
  }
  return settings;
}

}  // namespace

TEST(Trees, EachFailureHasItsVerdict) {
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    Tree tree;
    for (const Change& change : each.changes) tree.change(change);
    const std::vector<Candidate> found = discover(utf8(tree.at(each.what)));
    ASSERT_EQ(found.size(), 1U);
    if (each.verdict == Verdict::programFails || each.verdict == Verdict::programHangs) {
      EXPECT_EQ(inspect(found[0]).verdict().verdict, Verdict::programUnknown);
    }
    const Check verdict = inspect(found[0], Programs::run).verdict();
    EXPECT_STREQ(codeOf(verdict.verdict), codeOf(each.verdict)) << verdict.reason;
    EXPECT_NE((verdict.reason + '|' + verdict.remedy).find(each.words), std::string::npos)
        << verdict.reason << '|' << verdict.remedy;
  }
}

TEST(Trees, NoVerdictIsUntestedOrUnexplained) {
#if defined(_WIN32)
  GTEST_SKIP() << "some trees are made of links and scripts";
#endif
  const std::string page = bytesOf(TROUBLESHOOTING);
  std::set<std::string> seen{"program-unknown", "start-untried"};
  for (const Case& each : cases) seen.insert(codeOf(each.verdict));
  for (const StartCase& each : startCases) seen.insert(codeOf(each.verdict));
#define PELION_VERDICT(name, code, level, reason, remedy)                                          \
  EXPECT_EQ(seen.count(code), 1U) << code << " occurs nowhere";                                    \
  EXPECT_TRUE(Level::level == Level::passed || page.find("\n### " code "\n") != std::string::npos) \
      << code << " has no heading";
#include "pelion_core/host/verdicts.def"
}

TEST(Real, FilesTellWhatTheProgramSays) {
  const Settings given = interpreter();
  const bool isOld = given.version[0] == '2';
  const Candidate found = discover(given.program).at(0);
  const Answer said = ask(given.program);
  EXPECT_EQ(said.verdict, isOld ? Verdict::programFails : Verdict::usable) << said.detail;
  EXPECT_EQ(realPath(pathOf(found.settings.library)), realPath(pathOf(given.library)));
  if (!isOld) {
    EXPECT_EQ(found.settings.version, said.settings.version);
    EXPECT_EQ(realPath(pathOf(found.settings.home)), realPath(pathOf(said.settings.home)));
    EXPECT_EQ(realPath(pathOf(found.settings.library)), realPath(pathOf(said.settings.library)));
    Settings alone;
    alone.library = given.library;
    EXPECT_EQ(realPath(pathOf(complete(alone).home)), realPath(pathOf(said.settings.home)));
    alone.path = ELSEWHERE;
    EXPECT_THROW(complete(alone), LoadError);
    // Of several in one folder, "python3" comes first.
    const fs::path first = pathOf(given.program).replace_filename("python3");
    setVariable("PATH", utf8(first.parent_path()));
    if (!isFile(first) || realPath(first) == realPath(pathOf(given.program))) {
      EXPECT_EQ(firstUsable().library, found.settings.library);
    }
  }
  const Report report = inspect(found);
  EXPECT_EQ(report.version.compare(0, given.version.size(), given.version), 0) << report.version;
  EXPECT_EQ(report.verdict().level == Level::failed, isOld);
  for (const Check& check : probe(found.settings, {PELION})) {
    EXPECT_EQ(check.level == Level::failed, given.version[0] == '2') << check.reason;
    const std::string& version = check.subject == "import numpy" ? report.numpy : report.pandas;
    if (check.subject == "import numpy" || check.subject == "import pandas") {
      EXPECT_EQ(check.reason, version.empty() ? "not installed" : version);
    }
  }
}

TEST(Real, EachStartHasItsVerdict) {
  const Settings whole = discover(interpreter().program).at(0).settings;
  if (whole.version[0] == '2') GTEST_SKIP();
  // A sanitizer in the child would turn its crash into an exit.
  setVariable("ASAN_OPTIONS", "detect_leaks=0:handle_segv=0");
  for (const StartCase& each : startCases) {
    SCOPED_TRACE(each.module);
    Tree tree;
    tree.change({"modules/" + std::string(each.module) + ".py", each.code});
    setVariable("PYTHONPATH", utf8(tree.at("modules")));
    Settings settings = whole;
    if (!each.settings.library.empty()) settings.library = each.settings.library;
    if (!each.settings.home.empty()) settings.home = each.settings.home;
    ProbeOptions options{PELION};
    if (each.verdict == Verdict::startHangs) options.limit = std::chrono::seconds(3);
    const std::vector<Check> steps = probe(settings, options);
    const auto found = std::find_if(steps.begin(), steps.end(), [](const Check& check) {
      return check.level != Level::passed;
    });
    ASSERT_NE(found, steps.end());
    EXPECT_STREQ(codeOf(found->verdict), codeOf(each.verdict)) << found->reason;
    EXPECT_NE(found->reason.find(each.words), std::string::npos) << found->reason;
  }
  setVariable("PYTHONPATH", "");
  EXPECT_EQ(probe(whole, {"/nowhere/pelion"}).at(0).verdict, Verdict::startUntried);
}
