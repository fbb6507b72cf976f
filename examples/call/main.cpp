// Calls one Python function from the command line: the smallest whole host.

#include <pelion_core/pelion_core.h>

#include <iostream>
#include <string>
#include <vector>

#include "find_python.h"
#include "host.h"
#include "python_values.h"

namespace {

using namespace pelion_core;
using namespace pelion_core::api;
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

struct Call {
  PyArguments args;
  PyKeywords kwargs;
};

PyHandle literal(const std::string& word) {
  return callByName(u"py.ast.literal_eval", {text(word)});
}

bool isIdentifier(const PyHandle& text) {
  return primitive::pyBoolGetData(callMethod(text, "isidentifier").get());
}

void addArgument(Call& call, const std::string& word) {
  const auto equals = word.find('=');
  if (equals != std::string::npos) {
    const PyHandle key = text(word.substr(0, equals));
    if (isIdentifier(key)) {
      call.kwargs.emplace_back(key, literal(word.substr(equals + 1)));
      return;
    }
  }
  call.args.push_back(literal(word));
}

PyHandle find(const std::string& name) {
  try {
    return fetch::fetch(toUtf16(name));
  } catch (const fetch::BadPythonName&) {
    throw Failure(nameNotFound, "\"" + name + "\" is not a name like py.len or py.os.path.join");
  } catch (const fetch::SearchFailure&) {
    throw Failure(nameNotFound, "nothing is named \"" + name + "\"");
  }
}

int callNamed(const std::string& name, const std::vector<std::string>& words) {
  const PyHandle callable = find(name);
  Call call;
  for (const std::string& word : words) addArgument(call, word);
  const PyHandle result = object::pyInvoke(callable.get(), call.args, call.kwargs);
  std::cout << object::pyGetZTClassName(result.get()) << '\n' << textOf(result) << '\n';
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app;
  PythonSettings settings;
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
                       [&](const PythonSettings&) { return callNamed(name, words); });
}
