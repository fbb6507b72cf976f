#include "pelion_core/fetch/fetch.h"

#include <algorithm>
#include <string>
#include <vector>

#include "api/expression.h"

namespace pelion_core::fetch {

using namespace detail;

namespace {

using Names = std::vector<std::u16string>;

// The components of the path behind the leading "py".
Names parse(const std::u16string& name) {
  Names components;
  components.reserve(1 + static_cast<std::size_t>(std::count(name.begin(), name.end(), u'.')));
  for (std::size_t begin = 0, end = 0; end != name.npos; begin = end + 1) {
    end = name.find(u'.', begin);
    components.push_back(name.substr(begin, end - begin));
  }
  if (components.size() < 2 || components.front() != u"py") throw BadPythonName();
  components.erase(components.begin());
  return components;
}

// `object.<name>` in place of the object, in one frame; null where there is none.
void follow(Reference& object, const std::u16string& name) {
  const Frame api;
  Reference string = str(name);
  Reference attribute(api->getAttrIfThere(object.get(), string.get()));
  string.drop(api);
  object.drop(api);
  object = std::move(attribute);
}

// One reading of a name: the attributes of a path, from one of them on, followed from a module.
// Does what the fetchers do, but does not throw where there is nothing: most readings lead nowhere.
Reference resolve(const std::u16string& module, const Names& path, std::size_t firstAttribute) {
  Reference object = own<&PyAPIImpl::importModuleIfThere>(module);
  for (std::size_t i = firstAttribute; i < path.size() && object.get() != nullptr; ++i) {
    follow(object, path[i]);
  }
  return object;
}

// The same, with nothing pending when it found nothing, whatever the reason: the next reading may
// succeed.
Reference resolveOrNothing(const std::u16string& module, const Names& path,
                           std::size_t firstAttribute) {
  try {
    return orElse([&] { return resolve(module, path, firstAttribute); },
                  [] { return Reference(); });
  } catch (...) {
    return {};
  }
}

/// `step()`; no error stays pending when it throws.
template <class Step>
PyHandle clearingErrors(Step step) {
  return orElse(step, []() -> PyHandle { throw; });
}

}  // namespace

PyHandle ModuleFetcher::operator()(const std::u16string& moduleName) const {
  return clearingErrors([&] { return make<&PyAPIImpl::importModule>(moduleName); });
}

PyHandle AttrFetcher::operator()(PyHandle object, const std::u16string& attributeName) const {
  return clearingErrors(
      [&] { return make<&PyAPIImpl::PyObject_GetAttr>(object, str(attributeName)); });
}

std::u16string DefaultPyModule::operator()() const {
  return perform<&PyAPIImpl::getBuiltinsName>();
}

PyHandle fetch(const std::u16string& name) {
  const Names path = parse(name);
  std::u16string module = DefaultPyModule()();
  for (std::size_t firstAttribute = 0; firstAttribute < path.size(); ++firstAttribute) {
    if (firstAttribute == 1) module = path.front();
    if (firstAttribute > 1) module += u"." + path[firstAttribute - 1];
    Reference object = resolveOrNothing(module, path, firstAttribute);
    if (object.get() != nullptr) return object;
  }
  throw SearchFailure();
}

const boost::exception_detail::clone_base* BadPythonName::clone() const {
  return new BadPythonName(*this);
}
void BadPythonName::rethrow() const { throw BadPythonName(*this); }

const boost::exception_detail::clone_base* SearchFailure::clone() const {
  return new SearchFailure(*this);
}
void SearchFailure::rethrow() const { throw SearchFailure(*this); }

}  // namespace pelion_core::fetch
