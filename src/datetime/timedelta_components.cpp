#include "pelion_core/datetime/timedelta_components.h"

#include <algorithm>
#include <string_view>

#include "datetime/columns.h"
#include "datetime/count_blocks.h"
#include "datetime/exact_types.h"
#include "datetime/numpy_value.h"
#include "datetime/type_tests.h"
#include "datetime/value_members.h"

namespace pelion_core::api::primitive {

using namespace detail;

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
Reference apply(const UnitRule& rule, Borrowed value) {
  if (rule.field != Millisecond) {
    return attr(value, "astype")({attr(importModule(u"numpy"), "int64")});
  }
  return attr(astype(value, u"float"), rule.scale)({floating(rule.operand)});
}

/// Decomposes `datetime.timedelta` objects.
class TimedeltaReader {
 public:
  TimedeltaParts operator()(const Frame& api, Borrowed timedelta) const {
    const HostLong days = days_(api, timedelta);
    const HostLong seconds = seconds_(api, timedelta);
    return timedeltaParts(days, seconds, microseconds_(api, timedelta));
  }

 private:
  IntAttribute days_{"days"};
  IntAttribute seconds_{"seconds"};
  IntAttribute microseconds_{"microseconds"};
};

}  // namespace

// One value

Timedelta64Component::Timedelta64Component(pyArray* obj) {
  const Frame api;
  const Contents contents = classify(obj, durationKind).contents;
  isValid_ = contents != Contents::Unsupported;
  isNumpyKind_ = contents == Contents::Numbers;
  if (isNumpyKind_) {
    readNumber(obj);
  } else if (isValid_) {
    readObject(obj);
  }
}

void Timedelta64Component::readNumber(pyArray* obj) {
  isNaT_ = toBool(detail::isNaT(obj));
  if (isNaT_) return;
  unit_ = unitText(obj);
  const UnitRule* const rule = findRule(unit_);
  isValid_ = rule != nullptr;
  if (!isValid_) return;

  const Reference number = apply(*rule, obj);
  if (rule->field == Millisecond) {
    millisecond_ = toDouble(number);
  } else {
    std::int64_t* const counts[] = {&hour_, &minute_, &second_, &millisecond_int_};
    *counts[rule->field] = toInt64(number);
  }
}

void Timedelta64Component::readObject(pyArray* obj) {
  Reference value = astype(obj, u"object");
  if (isInstanceOfMember(value, u"numpy", "ndarray")) value = attr(value, "item")({integer(0)});
  isNaT_ = !DatetimeModuleTest()(value);
  if (isNaT_) return;
  const TimedeltaParts parts = TimedeltaReader()(Frame(), value);
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
  const auto [contents, size] = classify(arr, durationKind);
  isValid_ = contents != Contents::Unsupported;
  isNumpyKind_ = contents == Contents::Numbers;
  if (!isValid_) return;
  for (auto* counts : {&hours_, &minutes_, &seconds_, &milliseconds_int_}) counts->resize(size);
  milliseconds_.resize(size);
  if (isNumpyKind_) {
    readNumbers(arr);
  } else {
    natIndices_.resize(size);
    readObjects(arr);
  }
  shape_ = shapeOf(arr);
}

void Timedelta64ArrayComponents::readNumbers(pyArray* arr) {
  const NotATime nat = natElements(arr, numel());
  natIndices_ = nat.marks;
  dtypeFlag_ = unitText(arr);
  isMsInt_ = dtypeFlag_ == "ms";
  const UnitRule* const rule = findRule(dtypeFlag_);
  isValid_ = rule != nullptr;
  if (!isValid_) return;

  const Reference numbers = apply(*rule, flatten(arr));
  if (rule->field == Millisecond) {
    readColumn<AsDouble>(numbers, nat, milliseconds_);
  } else {
    std::vector<std::int64_t>* const counts[] = {&hours_, &minutes_, &seconds_, &milliseconds_int_};
    readColumn<AsInt64>(numbers, nat, *counts[rule->field]);
  }
}

void Timedelta64ArrayComponents::readObjects(pyArray* arr) {
  const Frame api;
  const auto store = [this](std::size_t i, const TimedeltaParts& parts) {
    hours_[i] = parts.hours;
    seconds_[i] = parts.seconds;
    milliseconds_[i] = parts.milliseconds;
  };
  const Reference microseconds = astype(arr, u"timedelta64[us]");
  if (isExactArray(microseconds) && eachPythonDuration(flatten(microseconds), natIndices_, store)) {
    return;
  }
  const Reference objects = flatten(astype(microseconds, u"object"));
  const Reference takeItem = attr(objects, "item");
  DatetimeModuleTest isFromDatetimeModule;
  const TimedeltaReader partsOf;
  for (std::size_t i = 0; i < natIndices_.size(); ++i) {
    const Reference element = takeItem({integer(static_cast<std::int64_t>(i))});
    natIndices_[i] = !isFromDatetimeModule(element);
    if (!natIndices_[i]) store(i, partsOf(api, element));
  }
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
  const auto size = static_cast<std::size_t>(api->PySequence_Length(toPyObject(list)));
  std::uint64_t position = 0;
  if (!eachIsInstance(list, "timedelta", position)) return;

  milliseconds_.reserve(size);
  hours_.reserve(size);
  seconds_.reserve(size);
  const TimedeltaReader partsOf;
  eachItem(api, list, size, [&](std::size_t, Borrowed timedelta) {
    const TimedeltaParts parts = partsOf(api, timedelta);
    hours_.push_back(parts.hours);
    seconds_.push_back(parts.seconds);
    milliseconds_.push_back(parts.milliseconds);
    return true;
  });
}

PELION_CORE_DEFINE_VALUE_MEMBERS(TimedeltaListComponent)
TimedeltaListComponent::TimedeltaListComponent() = default;
std::vector<std::int64_t> TimedeltaListComponent::hours() const { return hours_; }
std::vector<std::int64_t> TimedeltaListComponent::seconds() const { return seconds_; }
std::vector<double> TimedeltaListComponent::milliseconds() const { return milliseconds_; }

}  // namespace pelion_core::api::primitive
