#pragma once

#include <exception>
#include <memory>
#include <string>

#include "pelion_core/host/runtime.h"

namespace pelion_core::host {

class Object;

/// What Python raised, taken out of the interpreter: nothing stays pending. The strings are UTF-8
/// and outlive the session; a lone surrogate stands in them as an escape.
class Error : public std::exception {
 public:
  /// An error to throw from a function that Python calls: `type(message)`.
  ///
  /// @param type     the name of a class as `Session::operator()` takes it: "ValueError"
  /// @param message  UTF-8
  Error(const std::string& type, const std::string& message);
  /// Takes an exception object over.
  explicit Error(const Object& raised);

  /// "ValueError: invalid literal …", or the type alone when there is no message.
  const char* what() const noexcept override;
  /// "ValueError"; dotted ("json.decoder.JSONDecodeError") for what is not a builtin.
  const std::string& type() const;
  /// `str(exception)`.
  const std::string& message() const;
  /// The lines that Python prints, with causes; ends in a line feed.
  const std::string& traceback() const;
  /// Whether `except name:` would catch it. After the session, by the names of its classes alone.
  bool matches(const std::string& name) const;
  /// The exception. Throws `std::logic_error` after the session.
  const Object& object() const;

 private:
  struct Data;
  friend void detail::throwPending();
  explicit Error(std::shared_ptr<const Data> data);

  std::shared_ptr<const Data> data_;
};

}  // namespace pelion_core::host
