#include "pelion_core/api/interpreter.h"

#include "api/reference.h"

namespace pelion_core::api::interpreter {

using namespace detail;

void pyClose() { perform<&PyAPIImpl::Py_Finalize>(); }

bool pyIsOpen() { return perform<&PyAPIImpl::Py_IsInitialized>(); }

}  // namespace pelion_core::api::interpreter
