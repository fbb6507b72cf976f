#pragma once

#include <boost/exception/exception.hpp>
#include <exception>
#include <string>
#include <utility>

#include "pelion_core/platform/export.h"

PELION_CORE_CLASSES_BEGIN

/// The exception layers on which every exception of the library stands. A host can catch any of
/// them, or `boost::exception`, or `std::exception`.
namespace foundation {

/// The general exception interface: a cloneable Boost exception that renders its text as UTF-8
/// (`what`) and as UTF-16 (`ToUstringImpl`).
class PELION_CORE_EXPORT IException : public boost::exception_detail::clone_base,
                                      public boost::exception {
 public:
  IException() = default;
  IException(const IException&) = default;
  IException(IException&&) = default;
  /// Shares what Boost attached to the other exception. An exception may be assigned to itself,
  /// which Boost's own operator does not survive: it releases before it takes.
  IException& operator=(const IException& other) {
    if (this != &other) boost::exception::operator=(other);
    return *this;
  }
  /// As the copy.
  IException& operator=(IException&& other) { return *this = std::as_const(other); }
  ~IException() noexcept override;

  /// The message as UTF-8; the pointer lives as long as the object.
  virtual const char* what() const noexcept = 0;

 protected:
  /// UTF-8 to UTF-16. Never fails on ill-formed text: it becomes U+FFFD.
  virtual std::u16string convert_str(const std::string& utf8) const;
  /// UTF-16 to UTF-8. Never fails on ill-formed text: it becomes U+FFFD.
  virtual std::string convert_str(const std::u16string& utf16) const;

 public:
  /// The message as UTF-16.
  virtual std::u16string ToUstringImpl() const = 0;
};

/// Marks internal errors (of the program or its environment) as opposed to errors of a user.
class PELION_CORE_EXPORT IInternalException : public IException {
 public:
  IInternalException() = default;
  IInternalException(const IInternalException&) = default;
  IInternalException(IInternalException&&) = default;
  IInternalException& operator=(const IInternalException&) = default;
  IInternalException& operator=(IInternalException&&) = default;
  ~IInternalException() noexcept override;
};

/// Joins an exception interface of this namespace with a standard exception. The text is that of
/// the standard exception until a derived class overrides `what`. Abstract: `clone` and `rethrow`
/// belong to the class that is thrown.
template <class Interface, class Std>
class PELION_CORE_EXPORT_TEMPLATE Exception : public Interface, public Std {
 public:
  Exception() = default;
  Exception(const Exception& other) = default;
  Exception(Exception&& other) = default;
  Exception& operator=(const Exception& other) = default;
  Exception& operator=(Exception&& other) = default;
  ~Exception() noexcept override = default;

  /// The text of the standard exception, as UTF-8.
  const char* what() const noexcept override { return Std::what(); }

 private:
  std::u16string ToUstringImpl() const override { return this->convert_str(std::string(what())); }
};

}  // namespace foundation

PELION_CORE_CLASSES_END

namespace pelion_core {
namespace foundation = ::foundation;
}
