#include "pelion_core/platform/string_array.h"

namespace coretypes::array {

#if defined(_MSC_VER)
template class PELION_CORE_EXPORT Array<Zanthic::String::detail::StringArrayVariant>;
#else
template class Array<Zanthic::String::detail::StringArrayVariant>;
#endif

}  // namespace coretypes::array
