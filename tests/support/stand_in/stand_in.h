#pragma once

/// @file
/// A stand-in for a Python runtime library, which exports every name of the library's lists. One
/// build answers by itself and records each call. The other forwards each call to the real runtime,
/// can make one fail, and keeps account of the references and the lock that its caller holds. Reach
/// the state of either through the exported `stand_in_state`.

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "pelion_core/loader/c_api/py_object.h"

namespace pelion_core {

/// An object of the stand-in that answers.
struct PyObject {
  std::string label;  ///< how a recorded call shows it: as the call that made it
};

}  // namespace pelion_core

namespace stand_in {

using pelion_core::PyObject;

/// Text as a recorded call shows it.
template <class Text>
std::string narrow(const Text& text) {
  std::string out;
  for (const auto unit : text) out += unit < 0x80 ? static_cast<char>(unit) : '?';
  return out;
}

/// Of the build that answers.
struct Record {
  /// Every call in order, as "name(argument, argument)"; a decoded text as "'text'".
  std::vector<std::string> calls;
  /// Results by the beginning of the recorded call; pointers as numbers.
  std::map<std::string, std::int64_t> answers;

  bool initialised = false;
  std::int64_t threadStates = 0;               ///< handed out so far: 1, 2, ...
  std::map<std::string, const wchar_t*> wide;  ///< the wide text passed last, by function
  std::deque<PyObject> objects;                ///< never freed

  PyObject* make(const std::string& label) { return &objects.emplace_back(PyObject{label}); }

  /// Forgets the calls and returns those that begin with one of `prefixes`.
  std::vector<std::string> take(const std::vector<std::string>& prefixes = {""}) {
    std::vector<std::string> chosen;
    for (const std::string& call : calls)
      for (const std::string& prefix : prefixes)
        if (call.rfind(prefix, 0) == 0) chosen.push_back(call);
    calls.clear();
    return chosen;
  }
};

/// Of the build that forwards.
struct Account {
  int failing = 0;          ///< which call that can fail does so, 1 being the next; 0: none
  bool withError = true;    ///< whether a failing call sets a Python error
  std::string failed;       ///< the call that did
  bool reader = false;      ///< whether that one reports by value, so that its caller goes on
  std::int64_t owned = 0;   ///< references given to the caller and not yet taken back
  std::int64_t locked = 0;  ///< how often the lock was taken and not given back
};

/// The state behind what looking up `stand_in_state` gave.
template <class State>
State& stateOf(void* symbol) {
  return *static_cast<State*>(reinterpret_cast<void* (*)()>(symbol)());
}

}  // namespace stand_in
