#pragma once

/// @file
/// A stand-in for a Python runtime library. It exports every name of the library's lists, records
/// each call, and can be told what to answer. Get its state through `fake_control`.

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "pelion_core/loader/py_object.h"

namespace pelion_core {

/// An object of the stand-in. It is never freed, so a count that fell to zero can still be read.
struct PyObject {
  std::string label;  ///< how a recorded call shows it
  std::string type;   ///< label of its type object
  std::int64_t references = 1;
  std::string data;              ///< text as UTF-8, or bytes
  std::vector<PyObject*> items;  ///< of a tuple, owned
};

}  // namespace pelion_core

namespace fake {

using pelion_core::PyObject;

struct Runtime {
  /// Every call in order, as "name(argument, argument)".
  std::vector<std::string> calls;

  /// Results by function name, instead of what the model would answer; pointers as numbers.
  std::map<std::string, std::int64_t> answers;
  /// "module" and "module:member" that do not exist.
  std::set<std::string> missing;
  /// Which call of a function from now on fails (1: the next): with null or with -1.
  std::map<std::string, int> failing;
  /// The same over all functions that can fail; 0 or less: none.
  int failingAny = 0;
  std::string failed;  ///< the last call that failed so

  bool initialised = false;
  std::int64_t threadStates = 0;  ///< handed out so far: 1, 2, ...
  PyObject* error[3] = {};        ///< the pending error

  /// A wide text as it was passed, with `unitsPastText` units from its terminator on.
  struct Wide {
    const wchar_t* pointer;
    std::wstring units;
  };
  std::size_t unitsPastText = 0;
  std::map<std::string, Wide> wide;  ///< by function name

  std::deque<PyObject> objects;
  std::map<std::string, PyObject*> named;  ///< modules and members by label

  PyObject* make(const std::string& label, const std::string& type, const std::string& data = {}) {
    return &objects.emplace_back(PyObject{label, type, 1, data, {}});
  }

  /// Forgets the calls and gives those whose text begins with one of `prefixes`.
  std::vector<std::string> take(const std::vector<std::string>& prefixes = {""}) {
    std::vector<std::string> chosen;
    for (const std::string& call : calls)
      for (const std::string& prefix : prefixes)
        if (call.compare(0, prefix.size(), prefix) == 0) chosen.push_back(call);
    calls.clear();
    return chosen;
  }

  /// The sum of all reference counts.
  std::int64_t references() const {
    std::int64_t sum = 0;
    for (const PyObject& object : objects) sum += object.references;
    return sum;
  }
};

using Control = Runtime* (*)();  ///< the type of the exported `fake_control`

}  // namespace fake
