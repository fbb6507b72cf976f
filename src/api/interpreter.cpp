#include "pelion_core/api/interpreter.h"

#include "api/frame.h"

namespace pelion_core::api::interpreter {

void pyClose() {
  const Frame api;
  api->Py_Finalize();
}

bool pyIsOpen() {
  const Frame api;
  return api->Py_IsInitialized();
}

}  // namespace pelion_core::api::interpreter
