#include "pelion_core/datetime/datetime_components.h"

#include <tuple>
#include <utility>

#include "api/expression.h"
#include "datetime/numpy_value.h"
#include "datetime/value_members.h"
#include "datetime/zone_memo.h"
#include "pelion_core/api/module.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/primitive.h"
#include "pelion_core/api/sequence.h"
#include "pelion_core/datetime/type_tests.h"
#include "platform/text.h"

namespace pelion_core::api::primitive {

namespace {

/// The attributes of a `datetime.datetime` that are kept as integers, in the order of the columns.
constexpr const char* componentNames[] = {"year", "month", "day", "hour", "minute"};

enum Component : std::size_t { Year, Month, Day, Hour, Minute, Second, Nanosecond };

constexpr double microsecondsPerMillisecond = 1000.0;
constexpr double nanosecondsPerMillisecond = 1e6;

PyHandle plus(const PyHandle& value, HostLong number) {
  return callMethod(value.get(), "__add__", {pyCreateInt(number)});
}

PyHandle minus(const PyHandle& value, const PyHandle& start) {
  return callMethod(value.get(), "__sub__", {start});
}

/// Calls `take(component, numbers)` for each component of a `datetime64` scalar or array. NumPy
/// truncates to a unit downwards, so what is past it counts upwards before 1970 too.
template <class Take>
void takeApart(pyArray* obj, Take take) {
  const PyHandle value = share(obj);
  const auto floor = [obj](const std::u16string& unit) {
    return astype(obj, u"M8[" + unit + u"]");
  };
  const auto past = [&](const PyHandle& start, const std::u16string& unit) {
    return astype(minus(value, start).get(), u"m8[" + unit + u"]");
  };
  const auto numbers = [](const PyHandle& counts) { return astype(counts.get(), u"int"); };
  {
    const PyHandle years = floor(u"Y");
    const PyHandle months = floor(u"M");
    const PyHandle days = floor(u"D");
    take(Year, plus(numbers(years), 1970));
    take(Month, plus(numbers(minus(months, years)), 1));
    take(Day, plus(numbers(minus(days, months)), 1));
    take(Hour, numbers(past(days, u"h")));
  }
  take(Minute, numbers(past(floor(u"h"), u"m")));
  take(Second, numbers(past(floor(u"m"), u"s")));
  take(Nanosecond, astype(past(floor(u"s"), u"ns").get(), u"float"));
}

}  // namespace

// One value

Datetime64Component::Datetime64Component(pyArray* obj) {
  const Frame api;
  std::tie(isValid_, isNumpyKind_) = classifyDatetimeInput(obj, "datetime64");
  if (!isValid_) return;
  if (isNumpyKind_) {
    readNumpy(obj);
  } else {
    readObject(obj);
  }
}

void Datetime64Component::readNumpy(pyArray* obj) {
  isNaT_ = pyBoolGetData(primitive::isNaT(obj).get());
  if (isNaT_) return;
  // An array of one element is no integer to the C API, but Python's `int` takes it.
  const PyHandle toInt = object::pyGetMember(module::pyCreateBuiltinsModule().get(), "int");
  takeApart(obj, [&](Component component, const PyHandle& number) {
    if (component == Nanosecond) {
      millisecond_ = pyFloatGetData(number.get()) / nanosecondsPerMillisecond;
      return;
    }
    const HostLong count = pyIntGetData(call(toInt, {number}).get());
    if (component == Second) {
      second_ = count;
    } else {
      calendar_[component] = count;
    }
  });
}

void Datetime64Component::readObject(pyArray* obj) {
  const PyHandle value = callMethod(obj, "tolist");
  isNaT_ = !DatetimeModuleTest()(value.get());
  if (isNaT_) return;

  const auto attribute = [&](const char* name) {
    return pyIntGetData(object::pyGetMember(value.get(), name).get());
  };
  const auto attributeOrZero = [&](const char* name) {
    return object::pyHasMember(value.get(), name) ? attribute(name) : HostLong{0};
  };
  for (const Component date : {Year, Month, Day}) {
    calendar_[date] = attribute(componentNames[date]);
  }
  for (const Component clock : {Hour, Minute}) {
    calendar_[clock] = attributeOrZero(componentNames[clock]);
  }
  second_ = attributeOrZero("second");
  millisecond_ = attributeOrZero("microsecond") / microsecondsPerMillisecond;
}

PELION_CORE_DEFINE_VALUE_MEMBERS(Datetime64Component)
std::int32_t Datetime64Component::year() const { return calendar_[Year]; }
std::int32_t Datetime64Component::month() const { return calendar_[Month]; }
std::int32_t Datetime64Component::day() const { return calendar_[Day]; }
std::int32_t Datetime64Component::hour() const { return calendar_[Hour]; }
std::int32_t Datetime64Component::minute() const { return calendar_[Minute]; }
double Datetime64Component::second() const { return second_; }
double Datetime64Component::millisecond() const { return millisecond_; }
bool Datetime64Component::isNaT() const { return isNaT_; }
bool Datetime64Component::isValid() const { return isValid_; }

// Columns

namespace {

void resize(DatetimeColumns& columns, std::size_t size) {
  for (auto& column : columns.calendar) column.resize(size);
  columns.seconds.resize(size);
  columns.milliseconds.resize(size);
}

/// Fills rows of columns from the attributes of `datetime.datetime` objects.
class RowReader {
 public:
  RowReader(const Frame& api, DatetimeColumns& columns)
      : columns_(columns), second_(api, "second"), microsecond_(api, "microsecond") {
    for (const char* const name : componentNames) calendar_.emplace_back(api, name);
  }

  void operator()(std::size_t row, PyObject* datetime) const {
    for (std::size_t i = 0; i < calendar_.size(); ++i) {
      columns_.calendar[i][row] = calendar_[i](datetime);
    }
    columns_.seconds[row] = second_(datetime);
    columns_.milliseconds[row] = microsecond_(datetime) / microsecondsPerMillisecond;
  }

 private:
  DatetimeColumns& columns_;
  std::vector<IntAttribute> calendar_;
  IntAttribute second_;
  IntAttribute microsecond_;
};

}  // namespace

// An array

Datetime64ArrayComponents::Datetime64ArrayComponents(pyArray* arr) {
  const Frame api;
  std::tie(isValid_, isNumpyKind_) = classifyDatetimeInput(arr, "datetime64");
  if (!isValid_) return;
  resize(columns_, sizeOf(arr));
  if (isNumpyKind_) {
    readNumpy(arr);
  } else {
    readObjects(arr);
  }
  shape_ = shapeOf(arr);
}

void Datetime64ArrayComponents::readNumpy(pyArray* arr) {
  const Frame api;
  natIndices_ = natElements(api, arr, numel());
  takeApart(arr, [&](Component component, const PyHandle& numbers) {
    const PyHandle flat = flatten(numbers.get());
    if (component == Nanosecond) {
      readElements(api, flat, natIndices_, &PyAPIImpl::PyFloat_AsDouble, columns_.milliseconds);
      for (double& each : columns_.milliseconds) each /= nanosecondsPerMillisecond;
    } else if (component == Second) {
      readElements(api, flat, natIndices_, &PyAPIImpl::PyFloat_AsDouble, columns_.seconds);
    } else {
      readElements(api, flat, natIndices_, &PyAPIImpl::intAsLong, columns_.calendar[component]);
    }
  });
}

void Datetime64ArrayComponents::readObjects(pyArray* arr) {
  const Frame api;
  natIndices_.resize(numel());
  const PyHandle objects = astype(astype(arr, u"datetime64[us]").get(), u"object");
  DatetimeModuleTest isFromDatetimeModule;
  const RowReader readRow(api, columns_);
  eachItem(api, flatten(objects.get()).get(), numel(), [&](std::size_t i, PyObject* element) {
    natIndices_[i] = !isFromDatetimeModule(toPyArray(element));
    if (!natIndices_[i]) readRow(i, element);
  });
}

PELION_CORE_DEFINE_VALUE_MEMBERS(Datetime64ArrayComponents)
Datetime64ArrayComponents::Datetime64ArrayComponents() = default;
std::vector<std::int64_t> Datetime64ArrayComponents::years() const {
  return columns_.calendar[Year];
}
std::vector<std::int64_t> Datetime64ArrayComponents::months() const {
  return columns_.calendar[Month];
}
std::vector<std::int64_t> Datetime64ArrayComponents::days() const { return columns_.calendar[Day]; }
std::vector<std::int64_t> Datetime64ArrayComponents::hours() const {
  return columns_.calendar[Hour];
}
std::vector<std::int64_t> Datetime64ArrayComponents::minutes() const {
  return columns_.calendar[Minute];
}
std::vector<double> Datetime64ArrayComponents::seconds() const { return columns_.seconds; }
std::vector<double> Datetime64ArrayComponents::milliseconds() const {
  return columns_.milliseconds;
}
std::vector<bool> Datetime64ArrayComponents::natIndices() const { return natIndices_; }
std::uint64_t Datetime64ArrayComponents::numel() const { return columns_.calendar[Year].size(); }
std::pair<std::uint64_t, std::vector<std::uint64_t>> Datetime64ArrayComponents::shape() const {
  return shape_;
}
bool Datetime64ArrayComponents::isValid() const { return isValid_; }

// A list

DatetimeListComponent::DatetimeListComponent(pyArray* list) {
  const Frame api;
  const std::uint64_t size = sequence::pySequenceLength(list);
  std::uint64_t position = 0;
  if (!type::pyEachObjTypeOfListIsDatetime(list, position)) return;

  resize(columns_, size);
  const std::string unread = "Default_Value";
  std::string reference = unread;
  std::string zone;
  ZoneMemo zoneOf;
  const RowReader readRow(api, columns_);
  eachItem(api, list, size, [&](std::size_t i, PyObject* datetime) {
    readRow(i, datetime);
    zone = zoneOf(toPyArray(datetime));
    if (reference == unread) {
      reference = zone;
    } else if (zone != reference) {
      areTimeZoneElementsOfListSame_ = false;
    }
  });
  timezone_ = platform::toUtf16(zone);
}

PELION_CORE_DEFINE_VALUE_MEMBERS(DatetimeListComponent)
DatetimeListComponent::DatetimeListComponent() = default;
std::vector<std::int64_t> DatetimeListComponent::years() const { return columns_.calendar[Year]; }
std::vector<std::int64_t> DatetimeListComponent::months() const { return columns_.calendar[Month]; }
std::vector<std::int64_t> DatetimeListComponent::days() const { return columns_.calendar[Day]; }
std::vector<std::int64_t> DatetimeListComponent::hours() const { return columns_.calendar[Hour]; }
std::vector<std::int64_t> DatetimeListComponent::minutes() const {
  return columns_.calendar[Minute];
}
std::vector<double> DatetimeListComponent::seconds() const { return columns_.seconds; }
std::vector<double> DatetimeListComponent::milliseconds() const { return columns_.milliseconds; }
std::u16string DatetimeListComponent::timezone() const { return timezone_; }
bool DatetimeListComponent::areTimeZoneElementsOfListSame() const {
  return areTimeZoneElementsOfListSame_;
}

}  // namespace pelion_core::api::primitive
