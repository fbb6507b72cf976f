#include <iostream>

#include "running.h"

namespace pelion {

namespace {

// The positional arguments and the keyword arguments of a call.
struct Arguments {
  std::vector<py::Object> args;
  std::map<std::string, py::Object> kwargs;
};

// From the second word on.
Arguments argumentsOf(const py::Session& python, const std::vector<std::string>& words) {
  const py::Object literal = python("ast.literal_eval");
  const py::Object isIdentifier = python("str.isidentifier");
  Arguments result;
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string& word = words[i];
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
  if (name.substr(0, 3) != "py.") {
    throw Failure(nameNotFound, "\"" + name + "\" is not a name like py.len or py.os.path.join");
  }
  try {
    return python(name.substr(3));
  } catch (const py::Error& error) {
    for (const char* absent : {"ImportError", "AttributeError", "NameError", "ValueError"}) {
      if (error.matches(absent)) {
        throw Failure(nameNotFound, "nothing is named \"" + name + "\"");
      }
    }
    throw;
  }
}

}  // namespace

int call(const RunOptions& options) {
  return withPython(options.python, [&](const py::Session& python) {
    const py::Object callable = find(python, options.words.front());
    const Arguments given = argumentsOf(python, options.words);
    const py::Object result = callable.apply(given.args, given.kwargs);
    std::cout << pelion_core::api::object::pyGetZTClassName(result.get()) << '\n'
              << result.str() << '\n';
    return static_cast<int>(done);
  });
}

}  // namespace pelion
