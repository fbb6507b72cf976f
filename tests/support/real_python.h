#pragma once

#include <gtest/gtest.h>
#include <pelion_core/pelion_core.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

#include "support/thrown_by.h"

#if defined(_WIN32)
#define putenv _putenv
#endif

/// What tests on a real interpreter share: the interpreter that CTest names in the environment, and
/// a few words for reaching into it from the outside.
namespace real {

using namespace pelion_core;
using namespace pelion_core::api;

inline std::string environment(const char* name, const char* standard = "") {
  const char* const value = std::getenv(name);
  return value != nullptr ? value : standard;
}

/// The interpreter under test, as CTest names it: version|library|program|home.
struct Interpreter {
  std::u16string version, library, program, home;
};

inline const Interpreter& underTest();

/// Whether the interpreter ends the process where a release build goes on: see docs/versions.md.
inline bool isDebugBuild() { return underTest().library.find(u"d.so") != std::u16string::npos; }

inline const Interpreter& underTest() {
  static const Interpreter interpreter = [] {
    // The test is the only thing that configures the interpreter.
    for (const char* setting : {"PYTHONHOME=", "PYTHONPATH=", "PYTHONSTARTUP=", "LC_ALL=C.UTF-8",
                                "PYTHONDONTWRITEBYTECODE=1"})
      putenv(const_cast<char*>(setting));
    std::istringstream parts(environment("PELION_TEST_PYTHON"));
    const auto next = [&parts] {
      std::string part;
      std::getline(parts, part, '|');
      return std::filesystem::path(part).make_preferred().u16string();
    };
    return Interpreter{next(), next(), next(), next()};
  }();
  return interpreter;
}

inline int load(const std::u16string& version = underTest().version) {
  const Interpreter& python = underTest();
  return loader::attemptToLoadPython(version, python.library, python.program, python.home, u"",
                                     true);
}

const std::string nullReturned = "NULL pointer returned from Python.";

inline PyHandle text(const std::string& utf8) { return primitive::pyCreateString(utf8); }
inline PyHandle integer(std::int64_t value) { return primitive::pyCreateLong(value); }
inline std::int64_t number(const PyHandle& object) {
  std::int64_t value = 0;
  primitive::pyLongGetData(object.get(), &value);
  return value;
}

/// The type of the pending error, taken out of the interpreter; "None" when there is none.
inline std::string pending() {
  const PyHandle type = sequence::pyGetItem(exception::pyErrorFetch().get(), 0);
  if (object::pyIsNone(type.get())) return "None";
  return object::pyGetChars(object::pyGetMember(type.get(), "__name__").get());
}

/// What `action` throws and the type of the error that it leaves pending.
template <class Action>
std::string failure(Action action) {
  const std::string message = thrownBy(action);
  return message + " " + pending();
}

/// A loaded interpreter with one namespace for all code that runs in it.
class Session {
 public:
  void run(const std::string& code) { execute(u"py.exec", code); }
  PyHandle eval(const std::string& expression) { return execute(u"py.eval", expression); }

  /// A function, given as an expression, called.
  PyHandle call(const std::string& function, const PyArguments& args) {
    return object::pyInvoke(eval(function).get(), args, PyKeywords{});
  }
  /// Whether a Python expression, or a function's result, is true.
  bool holds(const std::string& expression) {
    return primitive::pyBoolGetData(eval(expression).get());
  }
  bool holds(const std::string& function, const PyArguments& args) {
    return primitive::pyBoolGetData(call(function, args).get());
  }
  std::string repr(const PyHandle& object) {
    return object::pyGetChars(call("repr", {object}).get());
  }
  std::string repr(const std::string& expression) { return repr(eval(expression)); }

 protected:
  void open() { globals_ = mapping::pyCreateDict(); }
  void close() { globals_.reset(); }
  void define(const std::string& name, const PyHandle& value) {
    mapping::pyMappingSetKey(globals_.get(), text(name).get(), value.get());
  }

 private:
  PyHandle execute(const std::u16string& function, const std::string& code) {
    return object::pyInvoke(fetch::fetch(function).get(), PyArguments{text(code), globals_},
                            PyKeywords{});
  }

  PyHandle globals_;
};

/// A session for each test, after which no error may be pending.
class RealPython : public ::testing::Test, public Session {
 protected:
  void SetUp() override {
    ASSERT_EQ(load(), 0);
    open();
  }

  void TearDown() override {
    EXPECT_FALSE(exception::pyErrorOccurred());
    close();
    interpreter::pyClose();
    EXPECT_FALSE(interpreter::pyIsOpen());
  }

  /// That an expression over `x` is true.
  void expect(const PyHandle& x, const std::string& expression) {
    define("x", x);
    EXPECT_TRUE(holds(expression)) << expression << "\n" << repr(x);
  }
};

/// Interpreters without NumPy and pandas skip the test.
class WithTables : public RealPython {
 protected:
  void SetUp() override {
    RealPython::SetUp();
    const auto import = [this] { run("import sys, numpy, pandas\nfrom datetime import *"); };
    if (failure(import) != "nothing thrown None") GTEST_SKIP();
  }
};

}  // namespace real
