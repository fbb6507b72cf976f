#pragma once

#include "pelion_core/loader/c_api/python_funcs.h"
#include "pelion_core/loader/c_api/python_three_funcs.h"
#include "python_api/checks.h"

namespace pelion_core::detail {

using Funcs = PythonFuncs;
using Three = PythonThreeFuncs;

/// The two tables, and the families in which their functions are called. `function` is a table's
/// member, so that what is called is known where it is called.
class CheckedTables {
 public:
  CheckedTables(const PythonFuncs& funcs, const PythonThreeFuncs& threeFuncs)
      : funcs_(funcs), threeFuncs_(threeFuncs) {}

 protected:
  /// A test: -1 is a failure, and only 1 is true.
  template <auto function, class... Args>
  bool predicate(Args... args) const {
    allPassed(args...);
    const int result = call<function>(args...);
    if (result == -1) fail("Introspection API failed.");
    return result == 1;
  }

  /// Makes a new object out of other objects.
  template <auto function, class... Args>
  PyObject* producer(Args... args) const {
    allPassed(args...);
    return returned(call<function>(args...));
  }

  /// Makes a new object out of plain values.
  template <auto function, class... Args>
  PyObject* maker(Args... args) const {
    return returned(call<function>(args...));
  }

  template <auto function, class... Args>
  int setter(Args... args) const {
    allPassed(args...);
    const int result = call<function>(args...);
    if (result == -1) fail("Python API (probably set) failed.");
    return result;
  }

  /// Reads a number; an error value is the caller's to tell apart.
  template <auto function>
  auto extractor(PyObject* object) const {
    passed(object);
    return call<function>(object);
  }

  PythonFuncs funcs_;
  PythonThreeFuncs threeFuncs_;

 private:
  template <auto function, class... Args>
  auto call(Args... args) const {
    return (tableOf(function).*function)(args...);
  }

  template <class Member>
  const PythonFuncs& tableOf(Member PythonFuncs::*) const {
    return funcs_;
  }
  template <class Member>
  const PythonThreeFuncs& tableOf(Member PythonThreeFuncs::*) const {
    return threeFuncs_;
  }
};

}  // namespace pelion_core::detail
