#pragma once

#include <gtest/gtest.h>
#include <pelion_core/host.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

/// The front door on the interpreter that CTest names in the environment.
namespace front {

namespace py = pelion_core::host;

/// From the environment: version|library|program|home.
inline py::Settings underTest() {
  const char* const setting = std::getenv("PELION_TEST_PYTHON");
  std::istringstream parts(setting != nullptr ? setting : "");
  py::Settings python;
  for (std::string* part : {&python.version, &python.library, &python.program, &python.home}) {
    std::getline(parts, *part, '|');
    *part = std::filesystem::u8path(*part).make_preferred().u8string();
  }
  return python;
}

/// What an action throws, as text.
template <class Action>
std::string thrownBy(Action action) {
  try {
    action();
    return "nothing thrown";
  } catch (const std::exception& failure) {
    return failure.what();
  }
}

class Host : public ::testing::Test {
 protected:
  bool holds(const std::string& expression) { return python.eval(expression).as<bool>(); }
  bool has(const std::string& package) {
    python.run("import importlib.util");
    return !python("importlib.util.find_spec")(package).isNone();
  }
  /// Whether a Python expression over `x` holds for a value.
  template <class T>
  bool holdsFor(const T& x, const std::string& expression) {
    return python("eval")(expression, std::map<std::string, py::Object>{{"x", py::Object::of(x)}})
        .template as<bool>();
  }

  py::Session python{underTest()};
};

}  // namespace front
