#include "host.h"

#include <pelion_core/pelion_core.h>

#include <iostream>

#include "python_values.h"

namespace example {
namespace {

/// A running interpreter.
class Session {
 public:
  explicit Session(const PythonSettings& python) {
    const int result = loader::attemptToLoadPython(toUtf16(python.version), toUtf16(python.library),
                                                   toUtf16(python.program), toUtf16(python.home),
                                                   toUtf16(python.path), true);
    if (result == -1) {
      throw Failure(notLoaded, python.library +
                                   " does not load as a Python 3 runtime: there is no such file, "
                                   "it is for another machine, or it lacks part of the C API (as "
                                   "Python 2 and PyPy do)");
    }
    if (result == -2) {
      throw Failure(alreadyRunning,
                    "an interpreter is running in this process already: close it before another "
                    "one is started");
    }
  }
  ~Session() { pelion_core::api::interpreter::pyClose(); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
};

}  // namespace

std::optional<int> parse(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : wrongUsage;
  }
}

int runWithPython(const char* program, const PythonSettings& given,
                  const std::function<int(const PythonSettings&)>& work) {
  try {
    const PythonSettings python = findPython(given);
    const Session session(python);
    try {
      return work(python);
    } catch (const pelion_core::InternalPyException& exception) {
      std::cerr << takeErrorText(exception);
      return pythonRaised;
    }
  } catch (const Failure& failure) {
    std::cerr << program << ": " << failure.what() << '\n';
    return failure.status();
  }
}

}  // namespace example
