#pragma once

/// @file
/// A stand-in for a Python runtime library. It exports every name of the library's lists, records
/// each call, and can be told what to answer. Get its state through `fake_control`.

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "pelion_core/loader/c_api/py_object.h"

namespace pelion_core {

/// An object of the stand-in. It is never freed, so a count that fell to zero can still be read.
struct PyObject {
  std::string label;  ///< how a recorded call shows it
  std::int64_t references = 1;
  std::string text;              ///< what a str holds
  std::vector<PyObject*> items;  ///< of a tuple, owned
};

}  // namespace pelion_core

namespace fake {

using pelion_core::PyObject;

/// Text as a recorded call shows it.
template <class Text>
std::string narrow(const Text& text) {
  std::string out;
  for (const auto unit : text) out += unit < 0x80 ? static_cast<char>(unit) : '?';
  return out;
}

struct Runtime {
  /// Every call in order, as "name(argument, argument)".
  std::vector<std::string> calls;
  /// Results by the beginning of the recorded call, instead of what the model would answer;
  /// pointers as numbers.
  std::map<std::string, std::int64_t> answers;

  bool initialised = false;
  std::int64_t threadStates = 0;  ///< handed out so far: 1, 2, ...
  PyObject* error[3] = {};        ///< the pending error

  /// The wide texts passed last, by function name.
  std::map<std::string, const wchar_t*> wide;

  std::deque<PyObject> objects;
  std::map<std::string, PyObject*> named;  ///< modules and members by label

  PyObject* make(const std::string& label, const std::string& text = {}) {
    return &objects.emplace_back(PyObject{label, 1, text, {}});
  }

  /// Forgets the calls and gives those whose text begins with one of `prefixes`.
  std::vector<std::string> take(const std::vector<std::string>& prefixes = {""}) {
    std::vector<std::string> chosen;
    for (const std::string& call : calls)
      for (const std::string& prefix : prefixes)
        if (call.rfind(prefix, 0) == 0) chosen.push_back(call);
    calls.clear();
    return chosen;
  }

  /// The references of the objects that still have some, by label.
  std::map<std::string, std::int64_t> alive() const {
    std::map<std::string, std::int64_t> counts;
    for (const PyObject& object : objects)
      if (object.references != 0) counts[object.label] += object.references;
    return counts;
  }
};

using Control = Runtime* (*)();  ///< the type of the exported `fake_control`

}  // namespace fake
