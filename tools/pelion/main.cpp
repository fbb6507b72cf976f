#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>

#include "commands.h"
#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>
// After windows.h.
#include <shellapi.h>

#include <boost/locale/encoding_utf.hpp>
#endif

namespace {

constexpr const char* notes = R"(Examples:
  pelion list                 the Pythons of this machine, and which can be used
  pelion doctor               the first that can be used, tried in a process of its own
  pelion doctor 3.12          each Python 3.12
  pelion doctor .venv         a virtual environment
  pelion call py.math.hypot 3 4
  pelion run --program .venv/bin/python job.py input.csv

Exit status of list and doctor: 0 a Python can be used, 1 none can, 2 wrong
usage. pelion COMMAND --help says more.)";

constexpr const char* callNotes = R"(
Calls the Python function NAME and prints the type of its result and the result.

NAME starts with "py.": py.len, py.math.hypot, py.os.path.join. Everything after
it is an argument, "-3" and "--x" too. An argument is a Python literal: 3, -2.5,
'text', [1, 2], {'a': None}; mind your shell's own quotes. KEY=LITERAL passes a
keyword argument. A text that is no literal is an error: quote it twice.

Without options the machine's own python3 is used. Give a virtual environment's
bin/python to --program to use what is installed there.

Exit status: 0 done, 1 Python raised an error, 2 wrong usage, 3 NAME not found,
4 the runtime library does not load, 5 an interpreter is running already,
6 no Python with a shared library and a standard library found.)";

constexpr const char* runNotes = R"(
Runs FILE as "python FILE ARG..." does. Everything after it is for the program.

Exit status: that of FILE, 1 when it raised an error, 2 wrong usage or no such
file, 4 the runtime library does not load, 5 an interpreter is running already,
6 no Python with a shared library and a standard library found.)";

// "[OPTIONS] NAME [ARG...]" of a command whose own options end where the name stands.
class Usage : public CLI::Formatter {
 public:
  explicit Usage(std::string usage) : usage_(std::move(usage)) {}
  std::string make_usage(const CLI::App*, std::string) const override {
    return "Usage: " + usage_ + '\n';
  }

 private:
  std::string usage_;
};

CLI::App* addRunning(CLI::App& app, const char* name, const char* what, const char* usage,
                     const char* commandNotes, pelion_core::host::Settings& python) {
  CLI::App* const command = app.add_subcommand(name, what);
  command->add_option("--python", python.library,
                      "Python's runtime library (libpython3.X.so, .dll)");
  command->add_option("--program", python.program,
                      "Python program; a virtual environment's bin/python");
  command->add_option("--home", python.home, "prefix of the standard library (sys.base_prefix)");
  command->add_option("--path", python.path, "module search path instead of the computed one");
  command->prefix_command();
  command->formatter(std::make_shared<Usage>(usage));
  command->footer(commandNotes);
  return command;
}

// What stands behind the options; nothing when that makes no sense, which is then told.
std::vector<std::string> wordsOf(const CLI::App& command, const char* first) {
  std::vector<std::string> words = command.remaining();
  if (!words.empty() && words.front().substr(0, 1) != "-") return words;
  std::cerr << (words.empty() ? first + std::string(" is missing")
                              : "unknown option " + words.front())
            << "\nRun with --help for more information.\n";
  return {};
}

// The arguments as UTF-8, in the order in which CLI11 takes them: the last first.
std::vector<std::string> argumentsOf(int argc, char** argv) {
  std::vector<std::string> words;
#if defined(_WIN32)
  static_cast<void>(argv);
  wchar_t** const wide = CommandLineToArgvW(GetCommandLineW(), &argc);
  for (int i = argc - 1; i > 0; --i) {
    words.push_back(boost::locale::conv::utf_to_utf<char>(wide[i]));
  }
  LocalFree(wide);
#else
  for (int i = argc - 1; i > 0; --i) words.emplace_back(argv[i]);
#endif
  return words;
}

}  // namespace

int main(int argc, char** argv) try {
#if defined(_WIN32)
  SetConsoleOutputCP(CP_UTF8);
#endif
  CLI::App app("Finds the Pythons that a program can embed, and says what is wrong with one.",
               "pelion");
  app.set_version_flag("--version", "pelion " PELION_VERSION);
  app.footer(notes);
  app.require_subcommand(1);
  app.allow_windows_style_options(false);  // a path may begin with a slash

  bool asJson = false;
  CLI::App* const list = app.add_subcommand("list", "List the Pythons of this machine");
  list->add_flag("--json", asJson, "Print JSON");

  pelion::DoctorOptions options;
  bool noStart = false;
  CLI::App* const doctor = app.add_subcommand("doctor", "Say what is wrong with a Python");
  doctor->add_option("WHAT", options.what,
                     "A runtime library, a program, a folder of an installation or an environment, "
                     "or a version such as 3.12; without it the first that can be used");
  doctor->add_flag("--json", options.asJson, "Print JSON");
  doctor->add_flag("--no-start", noStart, "Do not try to start it");

  pelion::RunOptions running;
  CLI::App* const call =
      addRunning(app, "call", "Call a Python function", "pelion call [OPTIONS] NAME [ARG...]",
                 callNotes, running.python);
  CLI::App* const run = addRunning(app, "run", "Run a Python file",
                                   "pelion run [OPTIONS] FILE [ARG...]", runNotes, running.python);

  std::string settings;
  CLI::App* const start = app.add_subcommand("start", "")->group("");
  start->add_option("SETTINGS", settings)->required();

  try {
    app.parse(argumentsOf(argc, argv));
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? pelion::done : pelion::wrongUsage;
  }
  options.start = !noStart;
  if (*list) return pelion::list(asJson);
  if (*doctor) return pelion::doctor(options);
  if (*start) return pelion::start(settings);
  running.words = wordsOf(*call ? *call : *run, *call ? "NAME" : "FILE");
  if (running.words.empty()) return pelion::wrongUsage;
  return *call ? pelion::call(running) : pelion::run(running);
} catch (const std::exception& failure) {
  std::cerr << "pelion: " << failure.what() << '\n';
  return pelion::unusable;
}
