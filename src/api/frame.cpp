#include "api/frame.h"

#include "pelion_core/api/api_accessor.h"

namespace pelion_core {

void detail::failWithoutAPI() { fail("Python API functions are not available."); }

namespace api {

APIAccessor::APIAccessor() : api_(detail::enter()) {}

APIAccessor::~APIAccessor() { api_->releaseLock(); }

}  // namespace api
}  // namespace pelion_core
