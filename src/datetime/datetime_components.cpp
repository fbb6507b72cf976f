#include "pelion_core/datetime/datetime_components.h"

#include <tuple>
#include <utility>

#include "api/expression.h"
#include "datetime/numpy_value.h"
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
  takeApart(obj, [this](Component component, const PyHandle& number) {
    if (component == Nanosecond) {
      millisecond_ = pyFloatGetData(number.get()) / nanosecondsPerMillisecond;
    } else if (component == Second) {
      second_ = pyIntGetData(number.get());
    } else {
      calendar_[component] = pyIntGetData(number.get());
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

// Columns

void DatetimeColumns::resize(std::size_t size) {
  for (auto& column : calendar_) column.resize(size);
  seconds_.resize(size);
  milliseconds_.resize(size);
}

/// Fills rows of columns from the attributes of `datetime.datetime` objects.
class DatetimeColumns::RowReader {
 public:
  RowReader(const Frame& api, DatetimeColumns& columns)
      : columns_(columns), second_(api, "second"), microsecond_(api, "microsecond") {
    for (const char* const name : componentNames) calendar_.emplace_back(api, name);
  }

  void operator()(std::size_t row, PyObject* datetime) const {
    for (std::size_t i = 0; i < calendar_.size(); ++i) {
      columns_.calendar_[i][row] = calendar_[i](datetime);
    }
    columns_.seconds_[row] = second_(datetime);
    columns_.milliseconds_[row] = microsecond_(datetime) / microsecondsPerMillisecond;
  }

 private:
  DatetimeColumns& columns_;
  std::vector<IntAttribute> calendar_;
  IntAttribute second_;
  IntAttribute microsecond_;
};

// An array

Datetime64ArrayComponents::Datetime64ArrayComponents(pyArray* arr) {
  const Frame api;
  std::tie(isValid_, isNumpyKind_) = classifyDatetimeInput(arr, "datetime64");
  if (!isValid_) return;
  resize(sizeOf(arr));
  if (isNumpyKind_) {
    readNumpy(api, arr);
  } else {
    readObjects(api, arr);
  }
  shape_ = shapeOf(arr);
}

void Datetime64ArrayComponents::readNumpy(const Frame& api, pyArray* arr) {
  natIndices_ = natElements(api, arr, numel());
  takeApart(arr, [&](Component component, const PyHandle& numbers) {
    const PyHandle flat = flatten(numbers.get());
    if (component == Nanosecond) {
      readElements(api, flat, natIndices_, &PyAPIImpl::PyFloat_AsDouble, milliseconds_);
      for (double& each : milliseconds_) each /= nanosecondsPerMillisecond;
    } else if (component == Second) {
      readElements(api, flat, natIndices_, &PyAPIImpl::PyFloat_AsDouble, seconds_);
    } else {
      readElements(api, flat, natIndices_, &PyAPIImpl::intAsLong, calendar_[component]);
    }
  });
}

void Datetime64ArrayComponents::readObjects(const Frame& api, pyArray* arr) {
  natIndices_.resize(numel());
  const PyHandle objects = astype(astype(arr, u"datetime64[us]").get(), u"object");
  DatetimeModuleTest isFromDatetimeModule;
  const RowReader readRow(api, *this);
  eachItem(api, flatten(objects.get()).get(), numel(), [&](std::size_t i, PyObject* element) {
    natIndices_[i] = !isFromDatetimeModule(toPyArray(element));
    if (!natIndices_[i]) readRow(i, element);
  });
}

// A list

DatetimeListComponent::DatetimeListComponent(pyArray* list) {
  const Frame api;
  const std::uint64_t size = sequence::pySequenceLength(list);
  std::uint64_t position = 0;
  if (!type::pyEachObjTypeOfListIsDatetime(list, position)) return;

  resize(size);
  const std::string unread = "Default_Value";
  std::string reference = unread;
  std::string zone;
  PyHandle tzinfo;
  const RowReader readRow(api, *this);
  eachItem(api, list, size, [&](std::size_t i, PyObject* datetime) {
    readRow(i, datetime);
    // Neighbours mostly share one tzinfo, and so its text, which is costly to find.
    const PyHandle previous =
        std::exchange(tzinfo, object::pyGetMember(toPyArray(datetime), "tzinfo"));
    if (tzinfo == previous) return;
    zone = object::pyDatetimeGetTimezone(toPyArray(datetime));
    if (reference == unread) {
      reference = zone;
    } else if (zone != reference) {
      areTimeZoneElementsOfListSame_ = false;
    }
  });
  timezone_ = platform::toUtf16(zone);
}

}  // namespace pelion_core::api::primitive
