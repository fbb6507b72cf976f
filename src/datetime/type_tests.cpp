#include "pelion_core/datetime/type_tests.h"

#include <cstdlib>

#include "datetime/columns.h"
#include "datetime/exact_types.h"
#include "datetime/type_tests.h"
#include "platform/guarded_cast.h"
#include "platform/text.h"

namespace pelion_core {
namespace detail {

namespace {

bool tzinfoIsInstanceOf(Borrowed datetime, const std::u16string& module, const char* name) {
  return falseOnFailure([&] {
    const Reference cls = attr(importModule(module), name);
    return isInstance(attr(datetime, "tzinfo"), cls);
  });
}

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

bool eachIsInstance(Borrowed sequence, const char* name, std::uint64_t& firstBad) {
  const Frame api;
  const auto length = static_cast<std::size_t>(api->PySequence_Length(sequence));
  Reference cls;  // an empty sequence needs none
  bool allPass = true;
  eachItem(api, sequence, length, [&](std::size_t i, PyObject* element) {
    allPass = falseOnFailure([&] {
      if (cls.get() == nullptr) cls = attr(importModule(u"datetime"), name);
      return api->PyObject_IsInstance(element, cls.get());
    });
    if (!allPass) firstBad = i + 1;
    return allPass;
  });
  return allPass;
}

std::string timezoneOf(Borrowed datetime) {
  const Reference tzinfo = attr(datetime, "tzinfo");
  if (isNone(tzinfo)) return {};
  if (tzinfoIsInstanceOf(datetime, u"zoneinfo", "ZoneInfo")) {
    return platform::toUtf8(ustring(attr(tzinfo, "key")));
  }
  if (!tzinfoIsInstanceOf(datetime, u"datetime", "timezone")) {
    fail("Timezone type not supported.");
  }
  const Reference offset = attr(tzinfo, "utcoffset")({own<&PyAPIImpl::getNone>()});
  return offsetText(toDouble(attr(offset, "total_seconds")()));
}

const std::string& ZoneReader::operator()(Borrowed datetime) {
  // More zones than a list has, unless it was made to hold a new object in every element.
  constexpr std::size_t limit = 64;
  Reference tzinfo = own<&PyAPIImpl::PyObject_GetAttr>(datetime, name_);
  for (const auto& [zone, text] : known_) {
    if (zone.get() == tzinfo.get()) return text;
  }
  text_ = timezoneOf(datetime);
  if (known_.size() < limit && isImmutableZone(tzinfo)) {
    known_.emplace_back(std::move(tzinfo), text_);
  }
  return text_;
}

}  // namespace detail

namespace api {

using namespace detail;

bool type::pyObjTypeIsDatetime(pyArray* object) {
  return isInstanceOfMember(object, u"datetime", "datetime");
}

bool type::pyObjTypeIsTimedelta(pyArray* object) {
  return isInstanceOfMember(object, u"datetime", "timedelta");
}

bool type::pyTypeIsDatetime(pyArray* type) { return equalsMember(type, u"datetime", "datetime"); }

bool type::pyTypeIsTimedelta(pyArray* type) { return equalsMember(type, u"datetime", "timedelta"); }

bool type::pyTypeIsTimedelta64(pyArray* type) {
  return equalsMember(type, u"numpy", "timedelta64");
}

bool type::pyDatetimeIsZoneInfoBased(pyArray* datetime) {
  return tzinfoIsInstanceOf(datetime, u"zoneinfo", "ZoneInfo");
}

bool type::pyEachObjTypeOfListIsDatetime(pyArray* sequence, std::uint64_t& firstBad) {
  return eachIsInstance(sequence, "datetime", firstBad);
}

bool type::pyEachObjTypeOfListIsTimeDelta(pyArray* sequence, std::uint64_t& firstBad) {
  return eachIsInstance(sequence, "timedelta", firstBad);
}

std::string object::pyDatetimeGetTimezone(pyArray* datetime) { return timezoneOf(datetime); }

}  // namespace api
}  // namespace pelion_core
