#include "pelion_core/api/managed.h"

#include "api/frame.h"

namespace pelion_core::api::managed {

void pyAddReference(pyArray* object) {
  const Frame api;
  api->Py_IncRef(toPyObject(object));
}

void pyDeleteObject(pyArray* object) {
  const Frame api;
  api->Py_DecRef(toPyObject(object));
}

}  // namespace pelion_core::api::managed
