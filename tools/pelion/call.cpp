#include <iostream>

#include "running.h"

namespace pelion {

using namespace pelion_core;
using namespace pelion_core::api;

namespace {

PyHandle literal(const std::string& word) {
  return callByName(u"py.ast.literal_eval", {text(word)});
}

bool isIdentifier(const PyHandle& word) {
  return primitive::pyBoolGetData(callMethod(word, "isidentifier").get());
}

void addArgument(PyArguments& args, PyKeywords& keywords, const std::string& word) {
  const auto equals = word.find('=');
  if (equals != std::string::npos) {
    const PyHandle key = text(word.substr(0, equals));
    if (isIdentifier(key)) {
      keywords.emplace_back(key, literal(word.substr(equals + 1)));
      return;
    }
  }
  args.push_back(literal(word));
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

}  // namespace

int call(const RunOptions& options) {
  return withPython(options.python, [&] {
    const PyHandle callable = find(options.words.front());
    PyArguments args;
    PyKeywords keywords;
    for (std::size_t i = 1; i < options.words.size(); ++i) {
      addArgument(args, keywords, options.words[i]);
    }
    const PyHandle result = object::pyInvoke(callable.get(), args, keywords);
    std::cout << object::pyGetZTClassName(result.get()) << '\n' << textOf(result) << '\n';
    return static_cast<int>(done);
  });
}

}  // namespace pelion
