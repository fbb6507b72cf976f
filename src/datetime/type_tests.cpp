#include "pelion_core/datetime/type_tests.h"

#include <cstdlib>

#include "api/expression.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/sequence.h"
#include "platform/guarded_cast.h"
#include "platform/text.h"

namespace pelion_core::api {
namespace type {
namespace {

bool tzinfoIsInstanceOf(pyArray* datetime, const std::u16string& module, const char* name) {
  return falseOnFailure([&] {
    const PyHandle cls = importMember(module, name);
    return object::pyIsInstance(object::pyGetMember(datetime, "tzinfo").get(), cls.get());
  });
}

bool pyDatetimeIsTimezoneBased(pyArray* datetime) {
  return tzinfoIsInstanceOf(datetime, u"datetime", "timezone");
}

bool eachPasses(bool (*test)(pyArray*), pyArray* sequence, std::uint64_t& firstBad) {
  const std::uint64_t length = sequence::pySequenceLength(sequence);
  for (std::uint64_t i = 0; i < length; ++i) {
    if (!test(sequence::pyGetItem(sequence, i).get())) {
      firstBad = i + 1;
      return false;
    }
  }
  return true;
}

}  // namespace

bool pyObjTypeIsDatetime(pyArray* object) {
  return isInstanceOfMember(object, u"datetime", "datetime");
}

bool pyObjTypeIsTimedelta(pyArray* object) {
  return isInstanceOfMember(object, u"datetime", "timedelta");
}

bool pyTypeIsDatetime(pyArray* type) { return equalsMember(type, u"datetime", "datetime"); }

bool pyTypeIsTimedelta(pyArray* type) { return equalsMember(type, u"datetime", "timedelta"); }

bool pyTypeIsTimedelta64(pyArray* type) { return equalsMember(type, u"numpy", "timedelta64"); }

bool pyDatetimeIsZoneInfoBased(pyArray* datetime) {
  return tzinfoIsInstanceOf(datetime, u"zoneinfo", "ZoneInfo");
}

bool pyEachObjTypeOfListIsDatetime(pyArray* sequence, std::uint64_t& firstBad) {
  return eachPasses(pyObjTypeIsDatetime, sequence, firstBad);
}

bool pyEachObjTypeOfListIsTimeDelta(pyArray* sequence, std::uint64_t& firstBad) {
  return eachPasses(pyObjTypeIsTimedelta, sequence, firstBad);
}

}  // namespace type

namespace object {
namespace {

std::string twoDigits(std::int32_t value) {
  const std::string text = std::to_string(std::abs(value));
  return text.size() == 1 ? "0" + text : text;
}

std::string offsetText(double seconds) {
  if (seconds == 0.0) return "UTC";
  const auto minutes = platform::guardedCast<std::int32_t>(seconds / 60.0);
  // The sign is that of the seconds: -00:30 has no negative hours.
  return (seconds < 0.0 ? "-" : "+") + twoDigits(minutes / 60) + ":" + twoDigits(minutes % 60);
}

}  // namespace

std::string pyDatetimeGetTimezone(pyArray* datetime) {
  const PyHandle tzinfo = pyGetMember(datetime, "tzinfo");
  if (pyIsNone(tzinfo.get())) return {};
  if (type::pyDatetimeIsZoneInfoBased(datetime)) {
    return platform::toUtf8(get_ustring(pyGetMember(tzinfo.get(), "key").get()));
  }
  if (!type::pyDatetimeIsTimezoneBased(datetime)) {
    throw InternalPyException("Timezone type not supported.");
  }
  const PyHandle offset = callMethod(tzinfo.get(), "utcoffset", {primitive::pyCreateNone()});
  return offsetText(primitive::pyFloatGetData(callMethod(offset.get(), "total_seconds").get()));
}

}  // namespace object
}  // namespace pelion_core::api
