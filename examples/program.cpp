#include "program.h"

#include <iostream>

namespace example {
void addPythonOptions(CLI::App& app, py::Settings& settings) {
  app.add_option("--python", settings.library, "Python's runtime library (libpython3.X.so, .dll)");
  app.add_option("--program", settings.program,
                 "Python program; a virtual environment's bin/python");
  app.add_option("--home", settings.home, "prefix of the standard library (sys.base_prefix)");
  app.add_option("--path", settings.path, "module search path instead of the computed one");
}

std::optional<int> parse(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : wrongUsage;
  }
}

int runWithPython(const char* program, const py::Settings& given,
                  const std::function<int(py::Session&)>& work) {
  const auto tell = [&](const std::exception& failure, ExitStatus status) {
    std::cerr << program << ": " << failure.what() << '\n';
    return status;
  };
  try {
    py::Session python(py::complete(given));
    return work(python);
  } catch (const py::Error& error) {
    std::cerr << error.traceback();
    return pythonRaised;
  } catch (const Failure& failure) {
    return tell(failure, failure.status());
  } catch (const py::LoadError& failure) {
    return tell(failure, noPython);
  }
}

}  // namespace example
