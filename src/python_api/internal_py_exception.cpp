#include "pelion_core/python_api/internal_py_exception.h"

namespace pelion_core {

InternalPyException::InternalPyException(const char* message) : message_(message) {}
InternalPyException::InternalPyException(const InternalPyException& other)
    : Exception(other), message_(other.message_) {}
InternalPyException& InternalPyException::operator=(const InternalPyException& other) = default;
InternalPyException::~InternalPyException() noexcept = default;

const char* InternalPyException::what() const noexcept {
  return message_.empty() ? "Unknown InternalPyException" : message_.c_str();
}

std::u16string InternalPyException::ToUstringImpl() const { return convert_str(message_); }

const boost::exception_detail::clone_base* InternalPyException::clone() const {
  return new InternalPyException(*this);
}

void InternalPyException::rethrow() const { throw InternalPyException(*this); }

}  // namespace pelion_core
