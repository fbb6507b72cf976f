#include "datetime/zone_memo.h"

#include <algorithm>

#include "api/expression.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/datetime/type_tests.h"

namespace pelion_core::api::primitive {

namespace {

// More zones than a list has, save one that was made to hold a new object in every element.
constexpr std::size_t limit = 64;

template <class Value>
auto find(std::vector<std::pair<PyHandle, Value>>& known, const PyHandle& object) {
  return std::find_if(known.begin(), known.end(),
                      [&](const auto& entry) { return entry.first == object; });
}

// Whether Python code cannot have defined the type, nor change it: it is static, or immutable.
// https://docs.python.org/3/c-api/typeobj.html#c.Py_TPFLAGS_IMMUTABLETYPE
bool isFixed(const PyHandle& type) {
  constexpr std::int64_t immutableType = 1 << 8;
  constexpr std::int64_t heapType = 1 << 9;
  std::int64_t flags = 0;
  pyLongGetData(object::pyGetMember(type.get(), "__flags__").get(), &flags);
  return (flags & heapType) == 0 || (flags & immutableType) != 0;
}

}  // namespace

std::string ZoneMemo::operator()(pyArray* datetime) {
  const PyHandle tzinfo = object::pyGetMember(datetime, "tzinfo");
  const auto known = find(zones_, tzinfo);
  if (known != zones_.end()) return known->second;
  std::string zone = object::pyDatetimeGetTimezone(datetime);
  if (zones_.size() < limit && isImmutable(tzinfo)) zones_.emplace_back(tzinfo, zone);
  return zone;
}

bool ZoneMemo::isImmutable(const PyHandle& tzinfo) {
  const PyHandle type = object::pyGetType(tzinfo.get());
  const auto known = find(types_, type);
  if (known != types_.end()) return known->second;
  // Exactly these types; a subclass can compute its offset or its key anew at every question.
  const bool isImmutable = object::pyIsNone(tzinfo.get()) ||
                           (isFixed(type) && (equalsMember(type.get(), u"datetime", "timezone") ||
                                              equalsMember(type.get(), u"zoneinfo", "ZoneInfo")));
  types_.emplace_back(type, isImmutable);
  return isImmutable;
}

}  // namespace pelion_core::api::primitive
