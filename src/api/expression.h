#pragma once

#include <string>

#include "pelion_core/api/exception.h"
#include "pelion_core/api/handle.h"
#include "pelion_core/python_api/internal_py_exception.h"

/// The words in which functions over other exported functions are written, so that each reads
/// almost like the Python expression that it stands for.
namespace pelion_core::api {

/// A handle with a reference of its own to a borrowed object.
PyHandle share(pyArray* borrowed);

/// `<module>.<name>`, the module imported.
PyHandle importMember(const std::u16string& module, const char* name);

/// `callable(*args, **kwargs)`.
PyHandle call(const PyHandle& callable, const PyArguments& args = {},
              const PyKeywords& kwargs = {});

/// `callable(borrowed)`. The callable is found before the argument is shared, which the arguments
/// of `call` would leave open.
PyHandle callOn(const PyHandle& callable, pyArray* borrowed);

/// `object.<name>(*args, **kwargs)`.
PyHandle callMethod(pyArray* object, const char* name, const PyArguments& args = {},
                    const PyKeywords& kwargs = {});

/// A copy of the text that `object::pyGetChars` shows; "NULL pointer returned from Python." for a
/// `str` that UTF-8 cannot hold.
std::string copyChars(const PyHandle& text);

/// `test()`, or false after clearing the pending error when it throws `InternalPyException`.
template <class Test>
bool falseOnFailure(Test test) {
  try {
    return test();
  } catch (const InternalPyException&) {
    exception::pyErrorClear();
    return false;
  }
}

/// `object == <module>.<name>`; false on failure.
bool equalsMember(pyArray* object, const std::u16string& module, const char* name);

/// `isinstance(object, <module>.<name>)`; false on failure.
bool isInstanceOfMember(pyArray* object, const std::u16string& module, const char* name);

}  // namespace pelion_core::api
