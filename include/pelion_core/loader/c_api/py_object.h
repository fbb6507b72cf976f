#pragma once

/// @file
/// The interpreter's object type as the library sees it.

// The macros of <Python.h> would rewrite the members of the tables and of the interface
// (`PyList_Check`, `Py_IncRef`, ...) and its own `PyObject` would stand beside ours.
#if defined(Py_PYTHON_H)
#error "pelion_core.h and Python.h cannot be included in one source file"
#endif

namespace pelion_core {

/// One interpreter object. Never defined: only its address is handled.
struct PyObject;

}  // namespace pelion_core
