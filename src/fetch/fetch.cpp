#include "pelion_core/fetch/fetch.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <vector>

#include "api/expression.h"

namespace pelion_core::fetch {

using namespace detail;

namespace {

using Names = std::vector<std::u16string>;

/// One reading of a name: a module to import and the attributes to follow from it.
struct Candidate {
  std::u16string module;
  Names attributes;
};

// The path without its leading "py".
Names parse(const std::u16string& name) {
  Names components;
  boost::algorithm::split(components, name, boost::algorithm::is_any_of(u"."));
  if (components.size() < 2 || components.front() != u"py") throw BadPythonName();
  components.erase(components.begin());
  return components;
}

std::vector<Candidate> candidatesOf(const Names& path) {
  std::vector<Candidate> candidates = {{DefaultPyModule()(), path}};
  for (auto split = path.begin() + 1; split != path.end(); ++split) {
    candidates.push_back(
        {boost::algorithm::join(Names(path.begin(), split), u"."), Names(split, path.end())});
  }
  return candidates;
}

// What the fetchers do, without throwing where there is nothing: most readings lead nowhere.
Reference resolve(const Candidate& candidate) {
  Reference object = own<&PyAPIImpl::importModuleIfThere>(candidate.module);
  for (const std::u16string& name : candidate.attributes) {
    if (object.get() == nullptr) break;
    object = own<&PyAPIImpl::getAttrIfThere>(object, str(name));
  }
  return object;
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
  for (const Candidate& candidate : candidatesOf(parse(name))) {
    try {
      Reference object = orElse([&] { return resolve(candidate); }, [] { return Reference(); });
      if (object.get() != nullptr) return object;
    } catch (...) {
      // Whatever made this reading fail, the next one may succeed.
    }
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
