#include "pelion_core/platform/string_array.h"

namespace coretypes::array {

template class Array<Zanthic::String::detail::StringArrayVariant>;

}  // namespace coretypes::array
