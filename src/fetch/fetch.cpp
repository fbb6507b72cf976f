#include "pelion_core/fetch/fetch.h"

#include <boost/algorithm/string/classification.hpp>
#include <boost/algorithm/string/join.hpp>
#include <boost/algorithm/string/split.hpp>
#include <vector>

#include "pelion_core/api/exception.h"
#include "pelion_core/api/module.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/python_api/internal_py_exception.h"

namespace pelion_core::fetch {
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

PyHandle resolve(const Candidate& candidate) {
  PyHandle object = ModuleFetcher()(candidate.module);
  for (const std::u16string& name : candidate.attributes) {
    object = AttrFetcher()(std::move(object), name);
  }
  return object;
}

template <class Step>
PyHandle clearingErrors(Step step) {
  try {
    return step();
  } catch (const InternalPyException&) {
    api::exception::pyErrorClear();
    throw;
  }
}

}  // namespace

PyHandle ModuleFetcher::operator()(const std::u16string& moduleName) const {
  return clearingErrors([&] { return api::module::pyCreateModule(moduleName); });
}

PyHandle AttrFetcher::operator()(PyHandle object, const std::u16string& attributeName) const {
  return clearingErrors([&] {
    const PyHandle name = api::primitive::pyCreateString(attributeName);
    return api::object::pyGetMember(object.get(), name.get());
  });
}

std::u16string DefaultPyModule::operator()() const { return api::module::pyGetBuiltinsName(); }

PyHandle fetch(const std::u16string& name) {
  for (const Candidate& candidate : candidatesOf(parse(name))) {
    try {
      return resolve(candidate);
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
