#include "api/reference.h"

#include "python_api/checks.h"

namespace pelion_core::api {

Reference newTuple(const Frame& api, const std::vector<PyHandle>& items) {
  Reference tuple = own(api, api->PyTuple_New(checks::cSize(items.size())));
  std::int64_t index = 0;
  for (const PyHandle& item : items) {
    api->setTupleItem(tuple.get(), index++, toPyObject(item.get()));
  }
  return tuple;
}

Reference newDict(const Frame& api, const std::vector<std::pair<PyHandle, PyHandle>>& items) {
  Reference dict = own(api, api->PyDict_New());
  for (const auto& [key, value] : items) {
    api->PyObject_SetItem(dict.get(), toPyObject(key.get()), toPyObject(value.get()));
  }
  return dict;
}

}  // namespace pelion_core::api
