#include <CLI/CLI.hpp>
#include <iostream>

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
  pelion doctor --no-start /usr/lib/x86_64-linux-gnu/libpython3.11.so.1.0

Exit status: 0 a Python can be used, 1 none can, 2 wrong usage.)";

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
  for (int i = argc - 1; i > 0; --i) words.push_back(argv[i]);
#endif
  return words;
}

}  // namespace

int main(int argc, char** argv) {
#if defined(_WIN32)
  SetConsoleOutputCP(CP_UTF8);
#endif
  CLI::App app("Finds the Pythons that a program can embed, and says what is wrong with one.",
               "pelion");
  app.set_version_flag("--version", "pelion " PELION_VERSION);
  app.footer(notes);
  app.require_subcommand(1);

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
  return pelion::start(settings);
}
