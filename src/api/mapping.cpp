#include "pelion_core/api/mapping.h"

#include "api/expression.h"
#include "api/reference.h"
#include "api/wrap.h"
#include "pelion_core/api/sequence.h"

namespace pelion_core::api::mapping {

bool pyIsDict(pyArray* object) {
  const Frame api;
  return api->PyDict_Check(toPyObject(object));
}

bool pyIsMapping(pyArray* object) {
  const Frame api;
  return api->PyMapping_Check(toPyObject(object));
}

PyHandle pyCreateDict() {
  const Frame api;
  return wrap(api->PyDict_New());
}

PyHandle pyCreateDict(const std::vector<std::pair<PyHandle, PyHandle>>& items) {
  const Frame api;
  return wrap(newDict(api, items).release());
}

PyHandle pyMappingGetItem(pyArray* map, pyArray* key) {
  const Frame api;
  return wrap(api->PyObject_GetItem(toPyObject(map), toPyObject(key)));
}

void pyMappingSetKey(pyArray* map, pyArray* key, pyArray* value) {
  const Frame api;
  api->PyObject_SetItem(toPyObject(map), toPyObject(key), toPyObject(value));
}

PyHandle pyMappingGetItems(pyArray* map) {
  const Frame api;
  PyHandle items = callMethod(map, "items");
  if (!sequence::pyIsSequence(items.get())) {
    items = wrap(api->PySequence_List(toPyObject(items.get())));  // a view is not a sequence
  }
  return items;
}

}  // namespace pelion_core::api::mapping
