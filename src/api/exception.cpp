#include "pelion_core/api/exception.h"

#include "api/reference.h"

namespace pelion_core::api::exception {

using namespace detail;

void pyErrorClear() { perform<&PyAPIImpl::PyErr_Clear>(); }

bool pyErrorOccurred() { return perform<&PyAPIImpl::PyErr_Occurred>(); }

PyHandle pyErrorFetch() { return make<&PyAPIImpl::fetchError>(); }

}  // namespace pelion_core::api::exception
