#include "pelion_core/host/function.h"

#include <boost/locale/encoding_utf.hpp>
#include <exception>

#include "state.h"

namespace pelion_core::host::detail {
namespace {

/// What a call comes back with; helpers.cpp has the same order.
enum Status : int { returned, raised, failed, elsewhere, closed };

// Hands a result or an error over, in a list.
void put(PyObject* box, PyObject* value) { callHelper(Helper::append, {box, value}); }

Status fail(PyObject* box, const char* message) noexcept {
  try {
    // Whatever the text is, Python gets UTF-8: ill-formed parts are left out.
    const std::u16string text = boost::locale::conv::utf_to_utf<char16_t>(message);
    put(box, makeUtf16(text));
  } catch (...) {
    // Then the error has no text.
  }
  return failed;
}

}  // namespace
}  // namespace pelion_core::host::detail

namespace {

using namespace pelion_core;
using namespace pelion_core::host;
using namespace pelion_core::host::detail;

// Python calls these two, through ctypes; nothing may be thrown through its frames. Another thread
// than the one inside an operation must touch nothing: it has Python's lock but not the layer's,
// and waiting for that would be waiting for itself.
extern "C" int pelion_core_host_call(std::size_t id, PyObject* arguments, PyObject* box) noexcept {
  State& here = state();
  if (!here.lock.isHere()) return elsewhere;
  const auto function = here.functions.find(id);
  if (function == nullptr) return closed;
  try {
    perform([&] { put(box, (*function)(readItems(arguments))); });
    return returned;
  } catch (const Error& error) {
    try {
      put(box, borrowed(error.object()));
      return raised;
    } catch (...) {
      return fail(box, error.what());
    }
  } catch (const std::exception& error) {
    return fail(box, error.what());
  } catch (...) {
    return fail(box, "the host's function threw what is no std::exception");
  }
}

extern "C" void pelion_core_host_drop(std::size_t id) noexcept { state().functions.drop(id); }

}  // namespace

namespace pelion_core::host::detail {

std::size_t Functions::add(Callback function) {
  auto shared = std::make_shared<const Callback>(std::move(function));
  const std::lock_guard guard(mutex_);
  functions_.emplace(++last_, std::move(shared));
  return last_;
}

std::shared_ptr<const Callback> Functions::find(std::size_t id) {
  const std::lock_guard guard(mutex_);
  const auto place = functions_.find(id);
  return place == functions_.end() ? nullptr : place->second;
}

void Functions::drop(std::size_t id) noexcept {
  const std::lock_guard guard(mutex_);
  const auto place = functions_.find(id);
  if (place == functions_.end()) return;
  dropped_.push_back(std::move(place->second));
  functions_.erase(place);
}

// Outside of the mutex: what a function owns may be Python objects, whose end may drop others.
void Functions::sweep() {
  std::vector<std::shared_ptr<const Callback>> dropped;
  const std::lock_guard guard(mutex_);
  dropped.swap(dropped_);
}

void Functions::clear() {
  sweep();
  std::map<std::size_t, std::shared_ptr<const Callback>> functions;
  const std::lock_guard guard(mutex_);
  functions.swap(functions_);
}

void requireArguments(std::size_t given, std::size_t wanted) {
  if (given == wanted) return;
  throw Error("TypeError", "the host's function takes " + std::to_string(wanted) +
                               " arguments, not " + std::to_string(given));
}

Object makeFunction(Callback callback) {
  return perform([&] {
    State& here = state();
    if (!here.connected) {
      callHelper(Helper::connect,
                 {toPython(reinterpret_cast<std::uintptr_t>(&pelion_core_host_call)),
                  toPython(reinterpret_cast<std::uintptr_t>(&pelion_core_host_drop))});
      here.connected = true;
    }
    here.functions.sweep();
    const std::size_t id = here.functions.add(std::move(callback));
    try {
      return Object(callHelper(Helper::makeFunction, {toPython(id)}));
    } catch (...) {
      here.functions.drop(id);
      throw;
    }
  });
}

}  // namespace pelion_core::host::detail
