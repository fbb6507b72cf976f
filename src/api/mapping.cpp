#include "pelion_core/api/mapping.h"

#include "api/expression.h"

namespace pelion_core::api::mapping {

using namespace detail;

bool pyIsDict(pyArray* object) { return perform<&PyAPIImpl::PyDict_Check>(object); }

bool pyIsMapping(pyArray* object) { return perform<&PyAPIImpl::PyMapping_Check>(object); }

PyHandle pyCreateDict() { return make<&PyAPIImpl::PyDict_New>(); }

PyHandle pyCreateDict(const std::vector<std::pair<PyHandle, PyHandle>>& items) {
  const Frame api;
  return newDict(api, items);
}

PyHandle pyMappingGetItem(pyArray* map, pyArray* key) {
  return make<&PyAPIImpl::PyObject_GetItem>(map, key);
}

void pyMappingSetKey(pyArray* map, pyArray* key, pyArray* value) {
  perform<&PyAPIImpl::PyObject_SetItem>(map, key, value);
}

PyHandle pyMappingGetItems(pyArray* map) {
  const Frame api;
  Reference items = attr(map, "items")();
  if (api->PySequence_Check(items.get())) return items;
  return own<&PyAPIImpl::PySequence_List>(items);  // a view is not a sequence
}

}  // namespace pelion_core::api::mapping
