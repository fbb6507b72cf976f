#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "pelion_core/api/handle.h"

/// @file
/// Dates taken apart. A constructor does all the work, under the interpreter lock, and borrows its
/// object; afterwards the objects are plain values and every accessor answers a copy.
///
/// Give the NumPy classes NumPy values: a pandas Series or Index passes their test of the kind but
/// cannot be taken apart, which throws. Inputs of other kinds do not throw, they are not valid;
/// once an input is accepted, a Python error in taking it apart throws as anywhere, so does NumPy's
/// refusal of units below the nanosecond.

namespace pelion_core::api {
class Frame;
}

namespace pelion_core::api::primitive {

/// One `datetime64`, as a scalar or a zero-dimensional array, or a zero-dimensional object array
/// with one `datetime.datetime`. The components are zero when the value is not valid or not-a-time.
class Datetime64Component {
 public:
  /// Takes the value apart.
  PELION_CORE_EXPORT explicit Datetime64Component(pyArray* obj);

  /// The year of the Gregorian calendar.
  std::int32_t year() const { return calendar_[0]; }
  /// 1 to 12.
  std::int32_t month() const { return calendar_[1]; }
  /// 1 to 31.
  std::int32_t day() const { return calendar_[2]; }
  /// 0 to 23.
  std::int32_t hour() const { return calendar_[3]; }
  /// 0 to 59.
  std::int32_t minute() const { return calendar_[4]; }
  /// Whole seconds.
  double second() const { return second_; }
  /// Milliseconds within the second, with their fraction.
  double millisecond() const { return millisecond_; }
  /// Whether the value is not-a-time.
  bool isNaT() const { return isNaT_; }
  /// Whether the input was of a kind that this class takes apart.
  bool isValid() const { return isValid_; }

 private:
  void readNumpy(pyArray* obj);
  void readObject(pyArray* obj);

  std::array<std::int32_t, 5> calendar_ = {};
  double second_ = 0.0;
  double millisecond_ = 0.0;
  bool isNaT_ = false;
  bool isValid_ = false;
  bool isNumpyKind_ = false;
};

/// Dates as columns: one vector for each component, of equal lengths.
class DatetimeColumns {
 public:
  /// Years of the Gregorian calendar.
  std::vector<std::int64_t> years() const { return calendar_[0]; }
  /// 1 to 12.
  std::vector<std::int64_t> months() const { return calendar_[1]; }
  /// 1 to 31.
  std::vector<std::int64_t> days() const { return calendar_[2]; }
  /// 0 to 23.
  std::vector<std::int64_t> hours() const { return calendar_[3]; }
  /// 0 to 59.
  std::vector<std::int64_t> minutes() const { return calendar_[4]; }
  /// Whole seconds.
  std::vector<double> seconds() const { return seconds_; }
  /// Milliseconds within the second, with their fraction.
  std::vector<double> milliseconds() const { return milliseconds_; }

 protected:
  DatetimeColumns() = default;

  /// Gives every column `size` zeros.
  void resize(std::size_t size);
  class RowReader;

  std::vector<double> seconds_;       ///< whole seconds
  std::vector<double> milliseconds_;  ///< milliseconds within the second
  /// Years, months, days, hours, minutes.
  std::array<std::vector<std::int64_t>, 5> calendar_;
};

/// A `datetime64` array, or an object array whose first element is a `datetime.datetime`; in the
/// latter a `date` reads as its midnight, None as not-a-time, and `pandas.NaT` throws. The columns
/// are in column-major order of the array and hold zeros for not-a-time. An empty array is not
/// valid.
class Datetime64ArrayComponents : public DatetimeColumns {
 public:
  Datetime64ArrayComponents() = default;
  /// Takes every element apart.
  PELION_CORE_EXPORT explicit Datetime64ArrayComponents(pyArray* arr);

  /// True where the element is not-a-time.
  std::vector<bool> natIndices() const { return natIndices_; }
  /// The number of elements.
  std::uint64_t numel() const { return calendar_[0].size(); }
  /// The array's rank and extents.
  std::pair<std::uint64_t, std::vector<std::uint64_t>> shape() const { return shape_; }
  /// Whether the input was of a kind that this class takes apart.
  bool isValid() const { return isValid_; }

 private:
  void readNumpy(const Frame& api, pyArray* arr);
  void readObjects(const Frame& api, pyArray* arr);

  std::pair<std::uint64_t, std::vector<std::uint64_t>> shape_ = {};
  std::vector<bool> natIndices_;
  bool isValid_ = false;
  bool isNumpyKind_ = false;
};

/// A list (any sequence) of `datetime.datetime`; a list with anything else in it leaves the columns
/// empty. Keep `pandas.NaT` out: it passes for a `datetime` but has no integer components, so that,
/// as the versions of Python and pandas have it, the constructor throws or its row reads as -1 with
/// a Python error pending.
class DatetimeListComponent : public DatetimeColumns {
 public:
  DatetimeListComponent() = default;
  /// Throws "Timezone type not supported." for a time zone that `object::pyDatetimeGetTimezone`
  /// does not describe.
  PELION_CORE_EXPORT explicit DatetimeListComponent(pyArray* list);

  /// The time zone of the last element, as `object::pyDatetimeGetTimezone` describes it.
  std::u16string timezone() const { return timezone_; }
  /// Whether all elements have the same time zone text.
  bool areTimeZoneElementsOfListSame() const { return areTimeZoneElementsOfListSame_; }

 private:
  std::u16string timezone_;
  bool areTimeZoneElementsOfListSame_ = true;
};

}  // namespace pelion_core::api::primitive
