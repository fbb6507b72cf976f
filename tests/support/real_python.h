#pragma once

#include <gtest/gtest.h>
#include <pelion_core/pelion_core.h>

#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <string>

/// What scenarios on a real interpreter share: the interpreter that CTest names in the environment,
/// and a few words for reaching into it from the outside.
namespace real {

using namespace pelion_core;
using namespace pelion_core::api;

/// The interpreter under test, from the environment: version|library|program|home.
struct Interpreter {
  std::string version, library, program, home;

  Interpreter() {
    const char* const setting = std::getenv("PELION_TEST_PYTHON");
    std::istringstream parts(setting != nullptr ? setting : "");
    for (std::string* part : {&version, &library, &program, &home}) {
      std::getline(parts, *part, '|');
    }
    for (std::string* path : {&library, &program, &home}) {
      *path = std::filesystem::path(*path).make_preferred().string();
    }
    // The scenario is the only thing that configures the interpreter.
    for (const char* name : {"PYTHONHOME", "PYTHONPATH", "PYTHONSTARTUP"}) setVariable(name, "");
    setVariable("LC_ALL", "C.UTF-8");
    setVariable("PYTHONDONTWRITEBYTECODE", "1");
  }

  /// What `sys.base_prefix` becomes.
  std::string base() const {
    const bool windows = std::filesystem::path(library).extension() == ".dll";
    return windows ? std::filesystem::path(library).parent_path().string() : "";
  }

 private:
  static void setVariable(const char* name, const char* value) {
#if defined(_WIN32)
    _putenv_s(name, value);  // an empty value removes it
#else
    *value != '\0' ? setenv(name, value, 1) : unsetenv(name);
#endif
  }
};

inline const Interpreter& underTest() {
  static const Interpreter interpreter;
  return interpreter;
}

inline std::u16string utf16(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

inline int load(const std::u16string& version = utf16(underTest().version)) {
  const Interpreter& python = underTest();
  return loader::attemptToLoadPython(version, utf16(python.library), utf16(python.program),
                                     utf16(python.home), u"", true);
}

/// The message of what `action` throws.
template <class Action>
std::string thrownBy(Action action) {
  try {
    action();
    return "nothing thrown";
  } catch (const std::exception& failure) {
    return failure.what();
  }
}

const std::string nullReturned = "NULL pointer returned from Python.";

inline PyHandle text(const std::string& utf8) { return primitive::pyCreateString(utf8); }
inline PyHandle integer(std::int64_t value) { return primitive::pyCreateLong(value); }

/// A loaded interpreter with one namespace for `run` and `eval`; afterwards no error may be
/// pending.
class RealPython : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(load(), 0);
    globals_ = mapping::pyCreateDict();
  }

  void TearDown() override {
    EXPECT_FALSE(exception::pyErrorOccurred());
    globals_.reset();
    interpreter::pyClose();
    EXPECT_FALSE(interpreter::pyIsOpen());
  }

  void run(const std::string& code) { execute("py.exec", code); }
  PyHandle eval(const std::string& expression) { return execute("py.eval", expression); }

  /// Whether a Python expression is true.
  bool holds(const std::string& expression) {
    return primitive::pyBoolGetData(eval("bool(" + expression + ")").get());
  }

  std::string repr(const PyHandle& object) {
    return object::pyGetChars(
        object::pyInvoke(fetch::fetch(u"py.repr").get(), PyArguments{object}, PyKeywords{}).get());
  }
  std::string repr(const std::string& expression) { return repr(eval(expression)); }

  void define(const std::string& name, const PyHandle& value) {
    mapping::pyMappingSetKey(globals_.get(), text(name).get(), value.get());
  }

  std::int64_t number(const PyHandle& object) {
    std::int64_t value = 0;
    primitive::pyLongGetData(object.get(), &value);
    return value;
  }

  /// `sys.getrefcount` without the references that asking adds.
  std::int64_t references(const PyHandle& object) {
    const PyHandle count = fetch::fetch(u"py.sys.getrefcount");
    return number(object::pyInvoke(count.get(), PyArguments{object}, PyKeywords{})) - 2;
  }

  /// The type of the pending error, taken out of the interpreter; "None" when there is none.
  std::string pending() {
    const PyHandle error = exception::pyErrorFetch();
    const PyHandle type = sequence::pyGetItem(error.get(), 0);
    if (object::pyIsNone(type.get())) return "None";
    return object::pyGetChars(object::pyGetMember(type.get(), "__name__").get());
  }

  /// What `action` throws and the type of the error that it leaves pending.
  template <class Action>
  std::string failure(Action action) {
    const std::string message = thrownBy(action);
    return message + " " + pending();
  }

 private:
  PyHandle execute(const char* function, const std::string& code) {
    const std::u16string name(function, function + std::string(function).size());
    return object::pyInvoke(fetch::fetch(name).get(), PyArguments{text(code), globals_},
                            PyKeywords{});
  }

  PyHandle globals_;
};

}  // namespace real
