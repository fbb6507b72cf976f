#include "api/reference.h"

namespace pelion_core::api {

void PyArrayReleaser::operator()(pyArray* object) const {
  if (object == nullptr) return;
  const detail::Frame api;
  api->Py_DecRef(toPyObject(object));
}

}  // namespace pelion_core::api
