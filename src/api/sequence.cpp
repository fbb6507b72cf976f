#include "pelion_core/api/sequence.h"

#include "api/expression.h"
#include "api/reference.h"
#include "api/wrap.h"
#include "pelion_core/api/primitive.h"
#include "python_api/checks.h"

namespace pelion_core::api::sequence {

using checks::cSize;

bool pyIsSequence(pyArray* object) {
  const Frame api;
  return api->PySequence_Check(toPyObject(object));
}

bool pyTupleCheck(pyArray* object) {
  const Frame api;
  return api->PyTuple_Check(toPyObject(object));
}

std::uint64_t pySequenceLength(pyArray* object) {
  const Frame api;
  return static_cast<std::uint64_t>(api->PySequence_Length(toPyObject(object)));
}

PyHandle pyGetItem(pyArray* sequence, std::uint64_t index) {
  const Frame api;
  return wrap(api->PySequence_GetItem(toPyObject(sequence), cSize(index)));
}

PyHandle pyTupleCreateSize(std::uint64_t size) {
  const Frame api;
  return wrap(api->PyTuple_New(cSize(size)));
}

void pyTupleSetValue(pyArray* tuple, std::uint64_t index, pyArray* value) {
  const Frame api;
  api->setTupleItem(toPyObject(tuple), cSize(index), toPyObject(value));
}

PyHandle pyTupleCreate(const std::vector<PyHandle>& items) {
  const Frame api;
  return wrap(newTuple(api, items).release());
}

PyHandle pyPopItemFromList(pyArray* list, HostLong index) {
  return callMethod(list, "pop", {primitive::pyCreateInt(index)});
}

}  // namespace pelion_core::api::sequence
