#include "pelion_core/datetime/timedelta_components.h"

#include <algorithm>
#include <string_view>
#include <tuple>

#include "api/expression.h"
#include "datetime/numpy_value.h"
#include "datetime/value_members.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/sequence.h"
#include "pelion_core/datetime/type_tests.h"

namespace pelion_core::api::primitive {

namespace {

enum Field : std::size_t { Hour, Minute, Second, WholeMillisecond, Millisecond };

/// Where a NumPy unit goes. What becomes milliseconds is scaled as a float; the others are counts.
struct UnitRule {
  std::string_view unit;
  Field field;
  const char* scale = nullptr;
  double operand = 0.0;
};

constexpr UnitRule unitRules[] = {
    {"Y", Millisecond, "__mul__", 31556952000.0},  // 365.2425 days
    {"M", Millisecond, "__mul__", 2592000000.0},   // 30 days
    {"W", Millisecond, "__mul__", 604800000.0},
    {"D", Millisecond, "__mul__", 86400000.0},
    {"h", Hour},
    {"m", Minute},
    {"s", Second},
    {"ms", WholeMillisecond},
    {"us", Millisecond, "__truediv__", 1e3},
    {"ns", Millisecond, "__truediv__", 1e6},
    {"ps", Millisecond, "__truediv__", 1e9},
    {"fs", Millisecond, "__truediv__", 1e12},
    {"as", Millisecond, "__truediv__", 1e15},
};

/// The rule of a unit; null when there is none.
const UnitRule* findRule(const std::string& unit) {
  const auto rule = std::find_if(std::begin(unitRules), std::end(unitRules),
                                 [&](const UnitRule& each) { return each.unit == unit; });
  return rule == std::end(unitRules) ? nullptr : rule;
}

/// What the rule's field gets of a `timedelta64` scalar or array. Scaling the durations themselves
/// would truncate them to their unit.
PyHandle apply(const UnitRule& rule, pyArray* obj) {
  if (rule.field != Millisecond) {
    return callMethod(obj, "astype", {importMember(u"numpy", "int64")});
  }
  return callMethod(astype(obj, u"float").get(), rule.scale, {pyCreateFloat(rule.operand)});
}

struct TimedeltaParts {
  std::int64_t hours;
  std::int64_t seconds;
  double milliseconds;
};

/// Takes `datetime.timedelta` objects apart.
class TimedeltaReader {
 public:
  explicit TimedeltaReader(const Frame& api)
      : days_(api, "days"), seconds_(api, "seconds"), microseconds_(api, "microseconds") {}

  TimedeltaParts operator()(PyObject* timedelta) const {
    // The hours are a product of 32 bits, which hosts expect to wrap.
    const auto days = static_cast<std::uint32_t>(days_(timedelta));
    return {static_cast<std::int32_t>(days * 24U), seconds_(timedelta),
            microseconds_(timedelta) / 1000.0};
  }

 private:
  IntAttribute days_;
  IntAttribute seconds_;
  IntAttribute microseconds_;
};

}  // namespace

// One value

Timedelta64Component::Timedelta64Component(pyArray* obj) {
  const Frame api;
  std::tie(isValid_, isNumpyKind_) = classifyDatetimeInput(obj, "timedelta64");
  if (!isValid_) return;
  if (isNumpyKind_) {
    readNumpy(obj);
  } else {
    readObject(obj);
  }
}

void Timedelta64Component::readNumpy(pyArray* obj) {
  isNaT_ = pyBoolGetData(primitive::isNaT(obj).get());
  if (isNaT_) return;
  unit_ = unitText(obj);
  const UnitRule* const rule = findRule(unit_);
  isValid_ = rule != nullptr;
  if (!isValid_) return;

  const PyHandle number = apply(*rule, obj);
  if (rule->field == Millisecond) {
    millisecond_ = pyFloatGetData(number.get());
  } else {
    std::int64_t* const counts[] = {&hour_, &minute_, &second_, &millisecond_int_};
    pyLongGetData(number.get(), counts[rule->field]);
  }
}

void Timedelta64Component::readObject(pyArray* obj) {
  const Frame api;
  PyHandle value = astype(obj, u"object");
  if (isInstanceOfMember(value.get(), u"numpy", "ndarray")) {
    value = callMethod(value.get(), "item", {pyCreateInt(0)});
  }
  isNaT_ = !DatetimeModuleTest()(value.get());
  if (isNaT_) return;
  const TimedeltaParts parts = TimedeltaReader(api)(toPyObject(value.get()));
  hour_ = parts.hours;
  second_ = parts.seconds;
  millisecond_ = parts.milliseconds;
}

PELION_CORE_DEFINE_VALUE_MEMBERS(Timedelta64Component)
std::int64_t Timedelta64Component::hour() const { return hour_; }
std::int64_t Timedelta64Component::minute() const { return minute_; }
std::int64_t Timedelta64Component::second() const { return second_; }
std::int64_t Timedelta64Component::millisecond_int() const { return millisecond_int_; }
double Timedelta64Component::millisecond() const { return millisecond_; }
bool Timedelta64Component::isNaT() const { return isNaT_; }
bool Timedelta64Component::isValid() const { return isValid_; }
bool Timedelta64Component::isMsInt() const { return unit_ == "ms"; }

// An array

Timedelta64ArrayComponents::Timedelta64ArrayComponents(pyArray* arr) {
  const Frame api;
  std::tie(isValid_, isNumpyKind_) = classifyDatetimeInput(arr, "timedelta64");
  if (!isValid_) return;

  const std::uint64_t size = sizeOf(arr);
  for (auto* counts : {&hours_, &minutes_, &seconds_, &milliseconds_int_}) counts->resize(size);
  milliseconds_.resize(size);
  if (isNumpyKind_) {
    readNumpy(arr);
  } else {
    readObjects(arr);
  }
  shape_ = shapeOf(arr);
}

void Timedelta64ArrayComponents::readNumpy(pyArray* arr) {
  const Frame api;
  natIndices_ = natElements(api, arr, numel());
  dtypeFlag_ = unitText(arr);
  isMsInt_ = dtypeFlag_ == "ms";
  const UnitRule* const rule = findRule(dtypeFlag_);
  isValid_ = rule != nullptr;
  if (!isValid_) return;

  const PyHandle numbers = apply(*rule, flatten(arr).get());
  if (rule->field == Millisecond) {
    readElements(api, numbers, natIndices_, &PyAPIImpl::PyFloat_AsDouble, milliseconds_);
  } else {
    std::vector<std::int64_t>* const counts[] = {&hours_, &minutes_, &seconds_, &milliseconds_int_};
    readElements(api, numbers, natIndices_, &PyAPIImpl::PyLong_AsLongLong, *counts[rule->field]);
  }
}

void Timedelta64ArrayComponents::readObjects(pyArray* arr) {
  const Frame api;
  natIndices_.resize(numel());
  const PyHandle objects = astype(astype(arr, u"timedelta64[us]").get(), u"object");
  DatetimeModuleTest isFromDatetimeModule;
  const TimedeltaReader takeApart(api);
  eachItem(api, flatten(objects.get()).get(), numel(), [&](std::size_t i, PyObject* element) {
    natIndices_[i] = !isFromDatetimeModule(toPyArray(element));
    if (natIndices_[i]) return;
    const TimedeltaParts parts = takeApart(element);
    hours_[i] = parts.hours;
    seconds_[i] = parts.seconds;
    milliseconds_[i] = parts.milliseconds;
  });
}

PELION_CORE_DEFINE_VALUE_MEMBERS(Timedelta64ArrayComponents)
std::vector<std::int64_t> Timedelta64ArrayComponents::hours() const { return hours_; }
std::vector<std::int64_t> Timedelta64ArrayComponents::minutes() const { return minutes_; }
std::vector<std::int64_t> Timedelta64ArrayComponents::seconds() const { return seconds_; }
std::vector<std::int64_t> Timedelta64ArrayComponents::milliseconds_int() const {
  return milliseconds_int_;
}
std::vector<double> Timedelta64ArrayComponents::milliseconds() const { return milliseconds_; }
std::vector<bool> Timedelta64ArrayComponents::natIndices() const { return natIndices_; }
std::string Timedelta64ArrayComponents::dtypeFlag() const { return dtypeFlag_; }
std::pair<std::uint64_t, std::vector<std::uint64_t>> Timedelta64ArrayComponents::shape() const {
  return shape_;
}
std::uint64_t Timedelta64ArrayComponents::numel() const { return hours_.size(); }
bool Timedelta64ArrayComponents::isMsInt() const { return isMsInt_; }
bool Timedelta64ArrayComponents::isValid() const { return isValid_; }

// A list

TimedeltaListComponent::TimedeltaListComponent(pyArray* list) {
  const Frame api;
  const std::uint64_t size = sequence::pySequenceLength(list);
  std::uint64_t position = 0;
  if (!type::pyEachObjTypeOfListIsTimeDelta(list, position)) return;

  milliseconds_.reserve(size);
  hours_.reserve(size);
  seconds_.reserve(size);
  const TimedeltaReader takeApart(api);
  eachItem(api, list, size, [&](std::size_t, PyObject* timedelta) {
    const TimedeltaParts parts = takeApart(timedelta);
    hours_.push_back(parts.hours);
    seconds_.push_back(parts.seconds);
    milliseconds_.push_back(parts.milliseconds);
  });
}

PELION_CORE_DEFINE_VALUE_MEMBERS(TimedeltaListComponent)
TimedeltaListComponent::TimedeltaListComponent() = default;
std::vector<std::int64_t> TimedeltaListComponent::hours() const { return hours_; }
std::vector<std::int64_t> TimedeltaListComponent::seconds() const { return seconds_; }
std::vector<double> TimedeltaListComponent::milliseconds() const { return milliseconds_; }

}  // namespace pelion_core::api::primitive
