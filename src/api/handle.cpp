#include "pelion_core/api/handle.h"

#include "api/frame.h"

namespace pelion_core::api {

void PyArrayReleaser::operator()(pyArray* object) const {
  if (object == nullptr) return;
  const Frame api;
  api->Py_DecRef(toPyObject(object));
}

}  // namespace pelion_core::api
