#include "python_api/checks.h"

#include "pelion_core/python_api/internal_py_exception.h"

namespace pelion_core::detail {

void fail(const char* message) { throw InternalPyException(message); }

}  // namespace pelion_core::detail
