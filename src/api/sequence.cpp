#include "pelion_core/api/sequence.h"

#include "api/expression.h"

namespace pelion_core::api::sequence {

using namespace detail;

bool pyIsSequence(pyArray* object) { return perform<&PyAPIImpl::PySequence_Check>(object); }

bool pyTupleCheck(pyArray* object) { return perform<&PyAPIImpl::PyTuple_Check>(object); }

std::uint64_t pySequenceLength(pyArray* object) {
  return static_cast<std::uint64_t>(perform<&PyAPIImpl::PySequence_Length>(object));
}

// The frame comes first: without an API, that is what a size out of range is told, too.

PyHandle pyGetItem(pyArray* sequence, std::uint64_t index) {
  const Frame api;
  return make<&PyAPIImpl::PySequence_GetItem>(sequence, cSize(index));
}

PyHandle pyTupleCreateSize(std::uint64_t size) {
  const Frame api;
  return make<&PyAPIImpl::PyTuple_New>(cSize(size));
}

void pyTupleSetValue(pyArray* tuple, std::uint64_t index, pyArray* value) {
  const Frame api;
  api->setTupleItem(toPyObject(tuple), cSize(index), toPyObject(value));
}

PyHandle pyTupleCreate(const std::vector<PyHandle>& items) {
  const Frame api;
  return newTuple(api, items);
}

PyHandle pyPopItemFromList(pyArray* list, HostLong index) {
  const Reference position = integer(index);
  return attr(list, "pop")({position});
}

}  // namespace pelion_core::api::sequence
