#pragma once

#include <string>

#include "pelion_core/platform/export.h"

namespace python {
class IPythonAPI;
}

/// Loading the user's Python, and telling the usage-data service about it. None of these functions
/// may run concurrently with another one or with any use of the library.
namespace loader {

/// Loads a Python runtime library and starts its interpreter.
///
/// @param version     the interpreter's version text ("3.11"); "2.7" selects older names
/// @param library     path of the runtime library, passed to the system as it is: nothing is added,
///                    though the system may search for a bare name
/// @param executable  path of the Python program, for `sys.executable` (and so for a virtual
///                    environment: name its `bin/python`)
/// @param home        the prefix under which the standard library lies, `sys.base_prefix` of that
///                    program. An empty or wrong home ends the *process* inside CPython up to 3.10
///                    (a wrong one also later): check it before
/// @param path        module search path that replaces the computed one; empty to keep that
/// @param flag        recorded beside the version; nothing in the library reads or returns it
/// @return 0: loaded and started. -1: the library does not load or lacks one of the C API names;
///         what was loaded before stays. -2: the interpreter in it is already initialised; the
///         library is then without an API. On ELF systems only one build of Python can be started
///         in a process: another one gives -1.
///
/// After 0 the calling thread holds the interpreter lock until its first call of an exported
/// function returns, so make one (any) before letting other threads run Python code. That first
/// call, and `interpreter::pyClose`, come from this thread.
///
/// Throws nothing but std::bad_alloc.
PELION_CORE_EXPORT int attemptToLoadPython(const std::u16string& version,
                                           const std::u16string& library,
                                           const std::u16string& executable,
                                           const std::u16string& home, const std::u16string& path,
                                           bool flag);

/// What went wrong in the last attempt to load, as UTF-8; empty after 0 and before the first one.
/// After -1: the system's own words with the path, or all the names of the C API that the library
/// lacks, or that another Python has the process. After -2: that this one is running already. Never
/// throws but std::bad_alloc.
///
///     if (loader::attemptToLoadPython(...) != 0) std::cerr << loader::whyNotLoaded() << '\n';
PELION_CORE_EXPORT std::string whyNotLoaded();

/// The interface to the interpreter, not owned; null before the first successful load, after a
/// result of -2, and while the library is being unloaded. Closing the interpreter does not clear
/// it.
PELION_CORE_EXPORT python::IPythonAPI* getAPI();

/// Whether `getAPI()` is not null.
PELION_CORE_EXPORT bool isPythonLoaded();

/// Reports to the usage-data service (see platform/usage_data.h) that the interpreter interface was
/// used, once in the life of the process for each pair of version and mode, whether or not a
/// service is set or takes the report. Needs no loaded interpreter. Never throws.
///
/// @param version       the interpreter's version text ("3.11"), reported as it is
/// @param outOfProcess  whether the interpreter runs in a process of its own
/// @param suppress      do nothing at all
PELION_CORE_EXPORT void sendPythonPkgInfo(const std::u16string& version, bool outOfProcess,
                                          bool suppress);

}  // namespace loader

namespace pelion_core {
namespace loader = ::loader;
}
