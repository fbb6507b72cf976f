// Calls one Python function from the command line: the smallest whole host.

#include <iostream>
#include <string>
#include <vector>

#include "program.h"

namespace {

using namespace example;

constexpr const char* notes = R"(
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

class Formatter : public CLI::Formatter {
 public:
  std::string make_usage(const CLI::App*, std::string) const override {
    return "Usage: call [OPTIONS] NAME [ARG...]\n";
  }
};

// The positional arguments and the keyword arguments of a call.
struct Words {
  std::vector<py::Object> args;
  std::map<std::string, py::Object> kwargs;
};

Words parsed(const py::Session& python, const std::vector<std::string>& words) {
  const py::Object literal = python("ast.literal_eval");
  const py::Object isIdentifier = python("str.isidentifier");
  Words result;
  for (const std::string& word : words) {
    const auto equals = word.find('=');
    const std::string key = word.substr(0, equals);
    if (equals != std::string::npos && isIdentifier(key).as<bool>()) {
      result.kwargs[key] = literal(word.substr(equals + 1));
    } else {
      result.args.push_back(literal(word));
    }
  }
  return result;
}

py::Object find(const py::Session& python, const std::string& name) {
  const bool prefixed = name.substr(0, 3) == "py.";
  try {
    if (prefixed) return python(name.substr(3));
  } catch (const py::Error& error) {
    if (!error.matches("ImportError") && !error.matches("AttributeError") &&
        !error.matches("NameError") && !error.matches("ValueError")) {
      throw;
    }
    throw Failure(nameNotFound, "nothing is named \"" + name + "\"");
  }
  throw Failure(nameNotFound, "\"" + name + "\" is not a name like py.len or py.os.path.join");
}

int callNamed(const py::Session& python, const std::string& name,
              const std::vector<std::string>& words) {
  const py::Object callable = find(python, name);
  const Words given = parsed(python, words);
  const py::Object result = callable.apply(given.args, given.kwargs);
  std::cout << pelion_core::api::object::pyGetZTClassName(result.get()) << '\n'
            << result.str() << '\n';
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app;
  py::Settings settings;
  addPythonOptions(app, settings);
  app.prefix_command();  // options end where NAME stands
  app.formatter(std::make_shared<Formatter>());
  app.footer(notes);
  if (const auto status = parse(app, argc, argv)) return *status;
  std::vector<std::string> words = app.remaining();
  if (words.empty() || words.front().substr(0, 1) == "-") {
    std::cerr << (words.empty() ? "NAME is missing" : "unknown option " + words.front()) << '\n'
              << "Run with --help for more information.\n";
    return wrongUsage;
  }
  const std::string name = words.front();
  words.erase(words.begin());

  return runWithPython("call", settings,
                       [&](py::Session& python) { return callNamed(python, name, words); });
}
