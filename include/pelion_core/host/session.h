#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "pelion_core/host/function.h"
#include "pelion_core/host/object.h"
#include "pelion_core/host/settings.h"

namespace pelion_core::host {

/// A running Python: starts in the constructor, ends in the destructor. One at a time in a process.
/// The thread that makes it destroys it; between, its objects may be used from any thread, which
/// waits for the one that is at it.
class Session {
 public:
  /// The machine's own Python.
  Session() : Session(find()) {}
  /// A Python program, or the folder of a virtual environment, as `find` takes it.
  explicit Session(const std::string& program) : Session(find(program)) {}
  /// What `find` takes.
  explicit Session(const char* program) : Session(std::string(program)) {}
  /// With settings that are checked first.
  ///
  /// @throws LoadError  the check fails, the library does not load, or an interpreter is running
  explicit Session(const Settings& settings);
  /// Delivers what was printed, releases every object, and closes Python.
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// With what it was started.
  const Settings& settings() const { return settings_; }

  /// What a dotted name means: a builtin and its attributes ("len", "str.join"), or a module and
  /// its attributes ("math.hypot", "os.path"), which is imported.
  Object operator()(const std::string& name) const;
  /// `importlib.import_module(name)`: the module of this dotted name.
  Object import(const std::string& name) const;
  /// The value of an expression, seen from `__main__`.
  Object eval(const std::string& expression) const;
  /// Runs a block of code in `__main__`.
  void run(const std::string& code) const;

  /// A Python callable of a C++ function, whose parameters and result convert as elsewhere. What it
  /// throws becomes a `RuntimeError` with its text, an `Error` the Python error that it is. It runs
  /// on the thread that is inside an operation of this layer; called on any other thread it raises
  /// `RuntimeError`. The C++ function lives as long as the callable, up to the session's end.
  template <class Function>
  Object function(Function function) const {
    return detail::makeFunction(detail::adapted(std::function(std::move(function))));
  }

  /// Sends `sys.stdout` and `sys.stderr` to the host, by whole lines without their ends. What other
  /// Python threads print is delivered with the next line of a thread that may call, or at the
  /// session's end, where also an unfinished line is delivered. An empty function ends it.
  void onOutput(std::function<void(std::string_view line, bool isError)> receive) const;

 private:
  Settings settings_;
};

}  // namespace pelion_core::host
