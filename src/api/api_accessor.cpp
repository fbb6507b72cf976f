#include "pelion_core/api/api_accessor.h"

#include "api/frame.h"
#include "pelion_core/python_api/internal_py_exception.h"

namespace pelion_core::api {

void failWithoutAPI() { throw InternalPyException("Python API functions are not available."); }

APIAccessor::APIAccessor() : api_(currentAPI) {
  if (api_ == nullptr) failWithoutAPI();
  api_->acquireLock();
}

APIAccessor::~APIAccessor() { api_->releaseLock(); }

}  // namespace pelion_core::api
