#pragma once

#include <string>

#include "pelion_core/api/handle.h"
#include "pelion_core/platform/export.h"
#include "pelion_core/platform/foundation_exception.h"

PELION_CORE_CLASSES_BEGIN

/// Host-style dotted names ("py.os.path.join") to Python objects.
namespace pelion_core::fetch {

/// The name does not have the form "py.<path>".
class PELION_CORE_EXPORT BadPythonName
    : public foundation::Exception<foundation::IInternalException, std::exception> {
 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

/// No reading of the name leads to an object.
class PELION_CORE_EXPORT SearchFailure
    : public foundation::Exception<foundation::IInternalException, std::exception> {
 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;
};

/// Imports a module; on `InternalPyException` clears the pending error and passes it on.
struct PELION_CORE_EXPORT ModuleFetcher {
  /// The module of this dotted name.
  PyHandle operator()(const std::u16string& moduleName) const;
};

/// Gets a member; on `InternalPyException` clears the pending error and passes it on.
struct PELION_CORE_EXPORT AttrFetcher {
  /// The member of this name.
  PyHandle operator()(PyHandle object, const std::u16string& attributeName) const;
};

/// The module that is tried first for every name: "builtins".
struct PELION_CORE_EXPORT DefaultPyModule {
  /// The name of the module.
  std::u16string operator()() const;
};

/// Resolves "py.<dotted path>": as attributes of `builtins`, then as attributes of every module
/// that a shorter beginning of the path names, the shortest first. The last component is always an
/// attribute, so the name of a module alone is not found.
///
/// Neither of the two failures below carries a message: `what()` is the standard library's bare
/// "std::exception". Print the name, and by the type that was caught whether its form was wrong or
/// nothing has that name.
///
/// @throws BadPythonName  fewer than two components, or the first is not "py"
/// @throws SearchFailure  nothing was found; no Python error is pending, imported modules stay
/// @throws InternalPyException  "Python API functions are not available." before a load
PELION_CORE_EXPORT PyHandle fetch(const std::u16string& name);

}  // namespace pelion_core::fetch

PELION_CORE_CLASSES_END
