#include "pelion_core/host/error.h"

#include <algorithm>
#include <vector>

#include "pelion_core/api/exception.h"
#include "pelion_core/host/object.h"
#include "state.h"

namespace pelion_core::host {

struct Error::Data {
  std::string what;
  std::string type;
  std::string message;
  std::string traceback;
  std::vector<std::string> classes;
  Object exception;

  // A broken exception must still be told.
  Data(const PyHandle& value, const PyHandle& trace) : exception(value) {
    try {
      const PyHandle description = detail::callHelper(detail::Helper::describe, {value, trace});
      std::tie(type, message, traceback, classes) = detail::fromPython<
          std::tuple<std::string, std::string, std::string, std::vector<std::string>>>(description);
    } catch (const InternalPyException&) {
      api::exception::pyErrorClear();
      type = "Exception";
      message = "Python raised an error that it cannot describe";
      traceback = type + ": " + message + '\n';
    }
    what = message.empty() ? type : type + ": " + message;
  }
};

namespace {

PyHandle makeException(const std::string& type, const std::string& message) {
  using detail::toPython;
  const PyHandle cls = detail::callHelper(detail::Helper::find, {toPython(type)});
  return api::object::pyInvoke(cls.get(), PyArguments{toPython(message)}, PyKeywords{});
}

}  // namespace

Error::Error(std::shared_ptr<const Data> data) : data_(std::move(data)) {}

Error::Error(const std::string& type, const std::string& message)
    : Error(detail::perform([&] { return Object(makeException(type, message)); })) {}

Error::Error(const Object& raised)
    : data_(detail::perform([&] {
        return std::make_shared<const Data>(raised.handle(), detail::toPython(nullptr));
      })) {}

const char* Error::what() const noexcept { return data_->what.c_str(); }
const std::string& Error::type() const { return data_->type; }
const std::string& Error::message() const { return data_->message; }
const std::string& Error::traceback() const { return data_->traceback; }

const Object& Error::object() const {
  data_->exception.handle();  // throws after the session
  return data_->exception;
}

bool Error::matches(const std::string& name) const {
  const auto& classes = data_->classes;
  if (std::find(classes.begin(), classes.end(), name) != classes.end()) return true;
  if (!data_->exception) return false;
  try {
    return detail::perform([&] {
      const PyHandle cls = detail::callHelper(detail::Helper::find, {detail::toPython(name)});
      return api::object::pyIsInstance(data_->exception.get(), cls.get());
    });
  } catch (const Error&) {
    return false;  // there is no such class
  }
}

void detail::throwPending() {
  if (!api::exception::pyErrorOccurred()) return;
  const PyHandle pending = api::exception::pyErrorFetch();
  const PyHandle value = api::sequence::pyGetItem(pending.get(), 1);
  const PyHandle trace = api::sequence::pyGetItem(pending.get(), 2);
  throw Error(std::make_shared<const Error::Data>(value, trace));
}

}  // namespace pelion_core::host
