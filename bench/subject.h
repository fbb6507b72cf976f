#pragma once

#include <Python.h>

#include "contender.h"

namespace bench {

/// `x` after the statements of the task's subject, for programs that are linked to Python; null
/// when Python raised. Called with the lock.
inline PyObject* newSubject(const Task& task) {
  PyObject* const globals = PyDict_New();
  PyObject* const size = PyLong_FromSize_t(task.size);
  PyDict_SetItemString(globals, "n", size);
  PyDict_SetItemString(globals, "__builtins__", PyEval_GetBuiltins());
  Py_XDECREF(PyRun_String(task.subject.c_str(), Py_file_input, globals, globals));
  PyObject* const x = PyDict_GetItemString(globals, "x");
  Py_XINCREF(x);
  Py_DECREF(size);
  Py_DECREF(globals);
  if (x == nullptr) PyErr_Print();
  return x;
}

/// Item `i` of a tuple, a new reference.
inline PyObject* newPart(PyObject* tuple, std::size_t i) {
  return Py_NewRef(PyTuple_GET_ITEM(tuple, static_cast<Py_ssize_t>(i)));
}

}  // namespace bench
