#include "pelion_core/host/session.h"

#include <boost/locale/encoding_utf.hpp>

#include "pelion_core/api/api_accessor.h"
#include "pelion_core/api/interpreter.h"
#include "pelion_core/loader/loader.h"
#include "state.h"

namespace pelion_core::host {

using detail::callHelper;
using detail::Helper;
using detail::perform;
using detail::State;
using detail::toPython;

namespace {

using Reason = LoadError::Reason;

std::u16string utf16(const std::string& utf8) {
  namespace conv = boost::locale::conv;
  try {
    return conv::utf_to_utf<char16_t>(utf8, conv::stop);
  } catch (const conv::conversion_error&) {
    throw LoadError(Reason::notFound,
                    "a setting of Python is not UTF-8: \"" + conv::utf_to_utf<char>(utf8) + '"');
  }
}

void load(const Settings& python) {
  const int result = loader::attemptToLoadPython(utf16(python.version), utf16(python.library),
                                                 utf16(python.program), utf16(python.home),
                                                 utf16(python.path), true);
  if (result == 0) return;
  throw LoadError(
      result == -1 ? Reason::notLoaded : Reason::alreadyRunning,
      python.library + " does not load as a Python 3 runtime: " + loader::whyNotLoaded());
}

void close(State& here) {
  detail::releaseReferences();  // what their ends run may still use the session
  std::exchange(here.functions, {}).clear();
  detail::releaseReferences();  // what the functions had
  perform([&] { here.helpers = {}; });
  here.connected = false;
  detail::api = nullptr;
  pelion_core::api::interpreter::pyClose();
}

}  // namespace

Session::Session(const Settings& settings) : settings_(settings) {
  check(settings);
  State& here = detail::state();
  const std::lock_guard guard(detail::lock);
  if (detail::api != nullptr ||
      (loader::isPythonLoaded() && pelion_core::api::interpreter::pyIsOpen())) {
    throw LoadError(Reason::alreadyRunning,
                    "this process has a session with a Python already: end it before another one "
                    "is started");
  }
  load(settings);
  // The first use of the interpreter's lock leaves it to Python's threads.
  detail::api = pelion_core::api::APIAccessor().operator->();
  try {
    perform([] { detail::defineHelpers(); });
  } catch (...) {
    close(here);
    throw;
  }
}

Session::~Session() {
  State& here = detail::state();
  const std::lock_guard guard(detail::lock);
  try {
    onOutput(nullptr);
  } catch (const Error&) {
    // The host's function threw; there is nobody left to tell.
  }
  close(here);
}

Object Session::operator()(const std::string& name) const {
  return perform([&] { return Object(callHelper(Helper::find, {toPython(name)})); });
}

Object Session::import(const std::string& name) const {
  return perform([&] { return Object(detail::Owned(detail::api->importModule(utf16(name)))); });
}

Object Session::eval(const std::string& expression) const {
  return perform([&] { return Object(callHelper(Helper::evaluate, {toPython(expression)})); });
}

void Session::run(const std::string& code) const {
  perform([&] { callHelper(Helper::run, {toPython(code)}); });
}

void Session::onOutput(std::function<void(std::string_view, bool)> receive) const {
  const Object target = receive ? function(std::move(receive)) : Object::of(nullptr);
  perform([&] { callHelper(Helper::redirect, {detail::borrowed(target)}); });
}

}  // namespace pelion_core::host
