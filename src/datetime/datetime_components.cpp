#include "pelion_core/datetime/datetime_components.h"

#include "datetime/columns.h"
#include "datetime/count_blocks.h"
#include "datetime/exact_types.h"
#include "datetime/numpy_value.h"
#include "datetime/type_tests.h"
#include "datetime/value_members.h"
#include "platform/text.h"

namespace pelion_core::api::primitive {

using namespace detail;

namespace {

/// The attributes of a `datetime.datetime` that are kept as integers, in the order of the columns.
constexpr const char* componentNames[] = {"year", "month", "day", "hour", "minute"};

enum Component : std::size_t { Year, Month, Day, Hour, Minute, Second, Nanosecond };

constexpr double microsecondsPerMillisecond = 1000.0;
constexpr double nanosecondsPerMillisecond = 1e6;

Reference plus(Borrowed value, HostLong number) {
  return attr(value, "__add__")({integer(number)});
}

Reference minus(Borrowed value, Borrowed start) { return attr(value, "__sub__")({start}); }

/// Calls `take(component, numbers)` for each component of a `datetime64` scalar or array. NumPy
/// truncates to a unit downwards, so what is past it counts upwards before 1970 too.
template <class Take>
void decompose(Borrowed value, Take take) {
  const auto floor = [&](const std::u16string& unit) {
    return astype(value, u"M8[" + unit + u"]");
  };
  const auto past = [&](const Reference& start, const std::u16string& unit) {
    return astype(minus(value, start), u"m8[" + unit + u"]");
  };
  const auto numbers = [](const Reference& counts) { return astype(counts, u"int"); };
  {
    const Reference years = floor(u"Y");
    const Reference months = floor(u"M");
    const Reference days = floor(u"D");
    take(Year, plus(numbers(years), 1970));
    take(Month, plus(numbers(minus(months, years)), 1));
    take(Day, plus(numbers(minus(days, months)), 1));
    take(Hour, numbers(past(days, u"h")));
  }
  take(Minute, numbers(past(floor(u"h"), u"m")));
  take(Second, numbers(past(floor(u"m"), u"s")));
  take(Nanosecond, astype(past(floor(u"s"), u"ns"), u"float"));
}

}  // namespace

// One value

Datetime64Component::Datetime64Component(pyArray* obj) {
  const Frame api;
  const Contents contents = classify(obj, dateKind).contents;
  isValid_ = contents != Contents::Unsupported;
  isNumpyKind_ = contents == Contents::Numbers;
  if (isNumpyKind_) {
    readNumber(obj);
  } else if (isValid_) {
    readObject(obj);
  }
}

void Datetime64Component::readNumber(pyArray* obj) {
  isNaT_ = toBool(detail::isNaT(obj));
  if (isNaT_) return;
  // An array of one element is no integer to the C API, but Python's `int` takes it.
  const Reference toInt = attr(importBuiltins(), "int");
  decompose(obj, [&](Component component, const Reference& number) {
    if (component == Nanosecond) {
      millisecond_ = toDouble(number) / nanosecondsPerMillisecond;
      return;
    }
    const HostLong count = toHostLong(toInt({number}));
    if (component == Second) {
      second_ = count;
    } else {
      calendar_[component] = count;
    }
  });
}

void Datetime64Component::readObject(pyArray* obj) {
  const Reference value = attr(obj, "tolist")();
  isNaT_ = !DatetimeModuleTest()(value);
  if (isNaT_) return;

  const auto attribute = [&](const char* name) { return toHostLong(attr(value, name)); };
  const auto attributeOrZero = [&](const char* name) {
    const bool hasIt = perform<&PyAPIImpl::PyObject_HasAttrString>(value, name);
    return hasIt ? attribute(name) : HostLong{0};
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
  explicit RowReader(DatetimeColumns& columns) : columns_(columns) {
    for (const char* const name : componentNames) calendar_.emplace_back(name);
  }

  void operator()(const Frame& api, std::size_t row, Borrowed datetime) const {
    for (std::size_t i = 0; i < calendar_.size(); ++i) {
      columns_.calendar[i][row] = calendar_[i](api, datetime);
    }
    columns_.seconds[row] = second_(api, datetime);
    columns_.milliseconds[row] = microsecond_(api, datetime) / microsecondsPerMillisecond;
  }

 private:
  DatetimeColumns& columns_;
  std::vector<IntAttribute> calendar_;
  IntAttribute second_{"second"};
  IntAttribute microsecond_{"microsecond"};
};

}  // namespace

// An array

Datetime64ArrayComponents::Datetime64ArrayComponents(pyArray* arr) {
  const Frame api;
  const auto [contents, size] = classify(arr, dateKind);
  isValid_ = contents != Contents::Unsupported;
  isNumpyKind_ = contents == Contents::Numbers;
  if (!isValid_) return;
  resize(columns_, size);
  if (isNumpyKind_) {
    readNumbers(arr);
  } else {
    natIndices_.resize(size);
    readObjects(arr);
  }
  shape_ = shapeOf(arr);
}

void Datetime64ArrayComponents::readNumbers(pyArray* arr) {
  const NotATime nat = natElements(arr, numel());
  natIndices_ = nat.marks;
  if (isExactArray(arr) && readDates(flatten(arr), nat, columns_)) return;

  decompose(arr, [&](Component component, const Reference& numbers) {
    const Reference flat = flatten(numbers);
    if (component == Nanosecond) {
      readColumn<AsDouble>(flat, nat, columns_.milliseconds);
      for (double& each : columns_.milliseconds) each /= nanosecondsPerMillisecond;
    } else if (component == Second) {
      readColumn<AsDouble>(flat, nat, columns_.seconds);
    } else {
      readColumn<AsHostLong>(flat, nat, columns_.calendar[component]);
    }
  });
}

void Datetime64ArrayComponents::readObjects(pyArray* arr) {
  const Frame api;
  const Reference microseconds = astype(arr, u"datetime64[us]");
  if (isExactArray(microseconds) && readPythonDates(flatten(microseconds), natIndices_, columns_)) {
    return;
  }
  const Reference objects = flatten(astype(microseconds, u"object"));
  const Reference takeItem = attr(objects, "item");
  DatetimeModuleTest isFromDatetimeModule;
  const RowReader readRow(columns_);
  for (std::size_t i = 0; i < natIndices_.size(); ++i) {
    const Reference element = takeItem({integer(static_cast<std::int64_t>(i))});
    natIndices_[i] = !isFromDatetimeModule(element);
    if (!natIndices_[i]) readRow(api, i, element);
  }
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
  const auto size = static_cast<std::size_t>(api->PySequence_Length(toPyObject(list)));
  std::uint64_t position = 0;
  if (!eachIsInstance(list, "datetime", position)) return;

  resize(columns_, size);
  const std::string unread = "Default_Value";
  std::string reference = unread;
  std::string zone;
  ZoneReader zoneOf;
  const RowReader readRow(columns_);
  eachItem(api, list, size, [&](std::size_t i, Borrowed datetime) {
    readRow(api, i, datetime);
    zone = zoneOf(datetime);
    if (reference == unread) {
      reference = zone;
    } else if (zone != reference) {
      areTimeZoneElementsOfListSame_ = false;
    }
    return true;
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
