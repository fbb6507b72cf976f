#pragma once

#include <functional>
#include <stdexcept>
#include <string>

#include "commands.h"
#include "pelion_core/pelion_core.h"

/// What the commands that run Python share.
namespace pelion {

using pelion_core::PyArguments;
using pelion_core::PyHandle;
using pelion_core::PyKeywords;

std::string toUtf8(const std::u16string& utf16);
std::u16string toUtf16(const std::string& utf8);

/// A `str`, and `str(object)` back, in which lone surrogates are escapes.
PyHandle text(const std::string& utf8);
std::string textOf(const PyHandle& object);

PyHandle member(const PyHandle& object, const char* name);
PyHandle callMethod(const PyHandle& object, const char* name, const PyArguments& args = {});
PyHandle callByName(const char16_t* name, const PyArguments& args = {});

/// The lines that Python would print for the pending error, which is then no longer pending;
/// without one the exception's own words.
std::string takeError(const pelion_core::InternalPyException& exception);

/// Why a command cannot go on.
class Failure : public std::runtime_error {
 public:
  Failure(ExitStatus status, const std::string& message)
      : std::runtime_error(message), status_(status) {}
  ExitStatus status() const { return status_; }

 private:
  ExitStatus status_;
};

/// Starts the Python that `given` completes to, does the work and closes Python. The result is the
/// exit status, that of the work or of what went wrong, which standard error then tells. The work
/// holds no handle when it ends.
int withPython(const pelion_core::host::Settings& given, const std::function<int()>& work);

}  // namespace pelion
