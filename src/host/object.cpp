#include "pelion_core/host/object.h"

#include <stdexcept>

#include "pelion_core/host/convert.h"

namespace pelion_core::host {

using detail::api;
using detail::borrowed;
using detail::callHelper;
using detail::Helper;
using detail::Owned;
using detail::perform;

Object::Object(const PyHandle& handle) {
  if (handle) reference_ = perform([&] { return detail::enlist(detail::share(handle)); });
}

const PyHandle& Object::handle() const {
  get();  // throws after the session
  return perform([&]() -> const PyHandle& {
    PyHandle& handle = reference_->handle;
    if (!handle) {
      handle = PyHandle(toPyArray(detail::share(reference_->object).release()),
                        pelion_core::api::PyArrayReleaser());
    }
    return handle;
  });
}

void Object::fail() const {
  throw std::logic_error(reference_ == nullptr ? "The object is empty."
                                               : "The object belongs to a session that is closed.");
}

Object Object::attr(const std::string& name) const {
  return perform(
      [&] { return Object(Owned(api->PyObject_GetAttrString(object(), name.c_str()))); });
}

bool Object::has(const std::string& name) const {
  return perform([&] { return api->PyObject_HasAttrString(object(), name.c_str()); });
}

Object Object::apply(const std::vector<Object>& arguments,
                     const std::map<std::string, Object>& keywords) const {
  return perform([&] {
    detail::Call call{detail::makeTuple(detail::eachToPython(arguments))};
    for (const auto& [name, value] : keywords) {
      call.addKeyword(detail::toPython(name), borrowed(value));
    }
    return Object(Owned(api->PyObject_Call(object(), call.tuple, call.keywords)));
  });
}

std::size_t Object::size() const {
  return perform(
      [&] { return detail::fromPython<std::size_t>(callHelper(Helper::length, {object()})); });
}

bool Object::isNone() const {
  return perform([&] { return detail::isNone(object()); });
}

std::string Object::str() const {
  return perform([&] { return detail::readUtf8(callHelper(Helper::display, {object()})); });
}

std::string Object::repr() const {
  return perform([&] { return detail::readUtf8(callHelper(Helper::represent, {object()})); });
}

Object::Iterator::Iterator(const Object& object)
    : arguments_(perform([&] { return Object(callHelper(Helper::iterate, {borrowed(object)})); })) {
  ++*this;
}

Object::Iterator& Object::Iterator::operator++() {
  perform([&] {
    Owned item(api->PyObject_Call(detail::helper(Helper::next), borrowed(arguments_), nullptr));
    item_ = item == detail::helper(Helper::end) ? Object() : Object(std::move(item));
  });
  return *this;
}

}  // namespace pelion_core::host
