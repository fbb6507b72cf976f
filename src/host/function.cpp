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

// Python calls these two, through ctypes; nothing may be thrown through its frames. Another thread
// than the one inside an operation must touch nothing: it has Python's lock but not the layer's,
// and waiting for that would be waiting for itself.
extern "C" int pelion_core_host_call(std::size_t id, PyObject* arguments, PyObject* box) noexcept {
  State& here = state();
  if (!lock.isHere()) return elsewhere;
  const auto place = here.functions.find(id);
  if (place == here.functions.end()) return closed;
  const auto function = place->second;  // which the call may drop
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

extern "C" void pelion_core_host_drop(std::size_t id) noexcept {
  State& here = state();
  const std::lock_guard guard(here.dropping);
  here.dropped.push_back(id);
}

// Destroys what Python dropped.
void sweep(State& here) {
  std::vector<std::size_t> dropped;
  {
    const std::lock_guard guard(here.dropping);
    dropped.swap(here.dropped);
  }
  // Out of the map first: what a function owns may be Python objects, whose end may call others.
  for (const std::size_t id : dropped) const auto ended = here.functions.extract(id);
}

}  // namespace

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
    sweep(here);
    const std::size_t id = ++here.lastFunction;
    here.functions.emplace(id, std::make_shared<const Callback>(std::move(callback)));
    try {
      return Object(callHelper(Helper::makeFunction, {toPython(id)}));
    } catch (...) {
      here.functions.erase(id);
      throw;
    }
  });
}

}  // namespace pelion_core::host::detail
