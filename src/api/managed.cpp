#include "pelion_core/api/managed.h"

#include "api/reference.h"

namespace pelion_core::api::managed {

using namespace detail;

void pyAddReference(pyArray* object) { perform<&PyAPIImpl::Py_IncRef>(object); }

void pyDeleteObject(pyArray* object) { perform<&PyAPIImpl::Py_DecRef>(object); }

}  // namespace pelion_core::api::managed
