#include "pelion_core/api/exception.h"

#include "api/wrap.h"

namespace pelion_core::api::exception {

void pyErrorClear() {
  const Frame api;
  api->PyErr_Clear();
}

bool pyErrorOccurred() {
  const Frame api;
  return api->PyErr_Occurred();
}

PyHandle pyErrorFetch() {
  const Frame api;
  return wrap(api->fetchError());
}

}  // namespace pelion_core::api::exception
