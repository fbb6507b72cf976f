#include "pelion_core/host/object.h"

#include <stdexcept>

#include "state.h"

namespace pelion_core::host {

using detail::callHelper;
using detail::Helper;
using detail::perform;

Object::Object(PyHandle handle) {
  if (!handle) return;
  reference_ = perform([&] { return detail::enlist(std::move(handle)); });
}

const PyHandle& Object::handle() const {
  if (reference_ == nullptr) throw std::logic_error("The object is empty.");
  if (!reference_->handle) {
    throw std::logic_error("The object belongs to a session that is closed.");
  }
  return reference_->handle;
}

Object Object::attr(const std::string& name) const {
  return perform([&] { return Object(api::object::pyGetMember(get(), name.c_str())); });
}

bool Object::has(const std::string& name) const {
  return perform([&] { return api::object::pyHasMember(get(), name.c_str()); });
}

Object Object::apply(const std::vector<Object>& arguments,
                     const std::map<std::string, Object>& keywords) const {
  return perform([&] {
    detail::Call call{api::sequence::pyTupleCreate(detail::eachToPython(arguments)), 0, {}};
    for (const auto& [name, value] : keywords) {
      call.keywords.emplace_back(detail::toPython(name), value.handle());
    }
    return Object(call.invoke(get()));
  });
}

std::size_t Object::size() const {
  return perform(
      [&] { return detail::fromPython<std::size_t>(callHelper(Helper::length, {handle()})); });
}

bool Object::isNone() const {
  return perform([&] { return api::object::pyIsNone(get()); });
}

std::string Object::str() const {
  return perform([&] { return detail::readUtf8(callHelper(Helper::display, {handle()})); });
}

std::string Object::repr() const {
  return perform([&] { return detail::readUtf8(callHelper(Helper::represent, {handle()})); });
}

Object::Iterator::Iterator(const Object& object)
    : arguments_(perform([&] { return Object(callHelper(Helper::iterate, {object.handle()})); })) {
  ++*this;
}

Object::Iterator& Object::Iterator::operator++() {
  perform([&] {
    item_ = Object(
        api::object::pyInvoke(detail::helper(Helper::next).get(), arguments_.get(), nullptr));
    if (item_.get() == detail::helper(Helper::end).get()) item_ = Object();
  });
  return *this;
}

PyHandle detail::Call::invoke(::python::pyArray* callable) const {
  if (keywords.empty()) return api::object::pyInvoke(callable, tuple.get(), nullptr);
  return api::object::pyInvoke(callable, tuple.get(), api::mapping::pyCreateDict(keywords).get());
}

}  // namespace pelion_core::host
