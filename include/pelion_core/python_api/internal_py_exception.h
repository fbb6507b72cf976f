#pragma once

#include <string>

#include "pelion_core/platform/export.h"
#include "pelion_core/platform/foundation_exception.h"

PELION_CORE_CLASSES_BEGIN

namespace pelion_core {

/// The one exception that the library throws for every failure of its own. It carries a fixed
/// English message; the Python error that caused it, if any, stays pending in the interpreter.
class PELION_CORE_EXPORT InternalPyException
    : public foundation::Exception<foundation::IInternalException, std::exception> {
 public:
  /// Copies `message`, a zero-terminated UTF-8 text that is not null.
  InternalPyException(const char* message);
  /// Copies the message, and shares what Boost attached to the other exception.
  InternalPyException(const InternalPyException& other);
  /// As the copy.
  InternalPyException& operator=(const InternalPyException& other);
  ~InternalPyException() noexcept override;

  /// The message, or "Unknown InternalPyException" when it is empty.
  const char* what() const noexcept override;

  /// The message as UTF-16; empty when it is empty.
  std::u16string ToUstringImpl() const override;

 private:
  const boost::exception_detail::clone_base* clone() const override;
  void rethrow() const override;

  std::string message_;
};

}  // namespace pelion_core

PELION_CORE_CLASSES_END
