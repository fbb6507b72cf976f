#include "pelion_core/host/error.h"

#include <algorithm>
#include <vector>

#include "pelion_core/host/convert.h"

namespace pelion_core::host {

struct Error::Data {
  std::string what;
  std::string type;
  std::string message;
  std::string traceback;
  std::vector<std::string> classes;
  Object exception;

  // A broken exception must still be told.
  Data(PyObject* value, PyObject* trace) : exception(detail::share(value)) {
    try {
      const detail::Owned description =
          detail::callHelper(detail::Helper::describe, {value, trace});
      std::tie(type, message, traceback, classes) = detail::fromPython<
          std::tuple<std::string, std::string, std::string, std::vector<std::string>>>(description);
    } catch (const InternalPyException&) {
      detail::api->PyErr_Clear();
      type = "Exception";
      message = "Python raised an error that it cannot describe";
      traceback = type + ": " + message + '\n';
    }
    what = message.empty() ? type : type + ": " + message;
  }
};

namespace {

detail::Owned find(const std::string& name) {
  return detail::callHelper(detail::Helper::find, {detail::toPython(name)});
}

}  // namespace

Error::Error(std::shared_ptr<const Data> data) : data_(std::move(data)) {}

Error::Error(const std::string& type, const std::string& message)
    : Error(detail::perform([&] { return Object(find(type)); })(message)) {}

Error::Error(const Object& raised)
    : data_(detail::perform([&] {
        return std::make_shared<const Data>(detail::borrowed(raised), detail::toPython(nullptr));
      })) {}

const char* Error::what() const noexcept { return data_->what.c_str(); }
const std::string& Error::type() const { return data_->type; }
const std::string& Error::message() const { return data_->message; }
const std::string& Error::traceback() const { return data_->traceback; }

const Object& Error::object() const {
  data_->exception.get();  // throws after the session
  return data_->exception;
}

bool Error::matches(const std::string& name) const {
  const auto& classes = data_->classes;
  if (std::find(classes.begin(), classes.end(), name) != classes.end()) return true;
  if (!data_->exception) return false;
  try {
    return detail::perform([&] {
      return detail::api->PyObject_IsInstance(detail::borrowed(data_->exception), find(name));
    });
  } catch (const Error&) {
    return false;  // there is no such class
  }
}

void detail::throwPending() {
  if (!api->PyErr_Occurred()) return;
  const Owned pending(api->fetchError());
  const Owned value(api->PySequence_GetItem(pending, 1));
  const Owned trace(api->PySequence_GetItem(pending, 2));
  throw Error(std::make_shared<const Error::Data>(value, trace));
}

}  // namespace pelion_core::host
