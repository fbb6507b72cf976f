#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "pelion_core/api/handle.h"

/// @file
/// Durations taken apart, by the rules that datetime_components.h states for dates.
///
/// A NumPy duration is not normalised: its count stands in the one field of its unit (hours,
/// minutes, seconds, whole milliseconds), and every other unit is converted to `millisecond` with a
/// fraction, a year being 365.2425 days and a month 30. A `datetime.timedelta` gives its days as
/// hours, its seconds within the day as seconds, and its microseconds as `millisecond`; its hours
/// are a 32-bit product, which wraps beyond 89,478,485 days. The host adds the fields up.

namespace pelion_core::api {
class Frame;
}

namespace pelion_core::api::primitive {

/// One `timedelta64`, as a scalar or a zero-dimensional array, or an object array with one
/// `datetime.timedelta`. The fields are zero when the value is not valid or not-a-time.
class Timedelta64Component {
 public:
  /// Takes the value apart.
  PELION_CORE_EXPORT explicit Timedelta64Component(pyArray* obj);

  /// The count of a value in hours; the days of a `datetime.timedelta`, as hours.
  std::int64_t hour() const { return hour_; }
  /// The count of a value in minutes.
  std::int64_t minute() const { return minute_; }
  /// The count of a value in seconds; the seconds of a `datetime.timedelta`.
  std::int64_t second() const { return second_; }
  /// The count of a value in milliseconds.
  std::int64_t millisecond_int() const { return millisecond_int_; }
  /// Milliseconds with their fraction: every other unit, and the microseconds of a
  /// `datetime.timedelta`.
  double millisecond() const { return millisecond_; }
  /// Whether the value is not-a-time.
  bool isNaT() const { return isNaT_; }
  /// Whether the input was of a kind and unit that this class takes apart.
  bool isValid() const { return isValid_; }
  /// Whether the unit is the millisecond, so that the value stands in `millisecond_int`; false for
  /// not-a-time.
  bool isMsInt() const { return unit_ == "ms"; }

 private:
  void readNumpy(pyArray* obj);
  void readObject(const Frame& api, pyArray* obj);

  std::int64_t hour_ = 0;
  std::int64_t minute_ = 0;
  std::int64_t second_ = 0;
  std::int64_t millisecond_int_ = 0;
  double millisecond_ = 0.0;
  std::string unit_;
  bool isValid_ = false;
  bool isNumpyKind_ = false;
  bool isNaT_ = false;
};

/// A `timedelta64` array, or an object array whose first element is a `datetime.timedelta`, where
/// None reads as not-a-time. The vectors are in column-major order of the array, all of its length,
/// with zeros for not-a-time and where the unit does not select them. An empty array is not valid.
class Timedelta64ArrayComponents {
 public:
  /// Takes every element apart.
  PELION_CORE_EXPORT explicit Timedelta64ArrayComponents(pyArray* arr);

  /// As `Timedelta64Component::hour`.
  std::vector<std::int64_t> hours() const { return hours_; }
  /// The counts of an array in minutes.
  std::vector<std::int64_t> minutes() const { return minutes_; }
  /// As `Timedelta64Component::second`.
  std::vector<std::int64_t> seconds() const { return seconds_; }
  /// The counts of an array in milliseconds.
  std::vector<std::int64_t> milliseconds_int() const { return milliseconds_int_; }
  /// As `Timedelta64Component::millisecond`.
  std::vector<double> milliseconds() const { return milliseconds_; }
  /// True where the element is not-a-time.
  std::vector<bool> natIndices() const { return natIndices_; }
  /// NumPy's text for the unit ("ms"), empty for an object array.
  std::string dtypeFlag() const { return dtypeFlag_; }
  /// The array's rank and extents.
  std::pair<std::uint64_t, std::vector<std::uint64_t>> shape() const { return shape_; }
  /// The number of elements.
  std::uint64_t numel() const { return hours_.size(); }
  /// Whether the unit is the millisecond, so that the values stand in `milliseconds_int`.
  bool isMsInt() const { return isMsInt_; }
  /// Whether the input was of a kind and unit that this class takes apart.
  bool isValid() const { return isValid_; }

 private:
  void readNumpy(const Frame& api, pyArray* arr);
  void readObjects(const Frame& api, pyArray* arr);

  std::vector<std::int64_t> hours_;
  std::vector<std::int64_t> minutes_;
  std::vector<std::int64_t> seconds_;
  std::vector<std::int64_t> milliseconds_int_;
  std::vector<double> milliseconds_;
  std::pair<std::uint64_t, std::vector<std::uint64_t>> shape_ = {};
  std::string dtypeFlag_;
  bool isValid_ = false;
  bool isNumpyKind_ = false;
  bool isMsInt_ = false;
  std::vector<bool> natIndices_;
};

/// A list (any sequence) of `datetime.timedelta`; a list with anything else in it leaves the
/// vectors empty.
class TimedeltaListComponent {
 public:
  TimedeltaListComponent() = default;
  /// Takes every element apart.
  PELION_CORE_EXPORT explicit TimedeltaListComponent(pyArray* list);

  /// The days, as hours.
  std::vector<std::int64_t> hours() const { return hours_; }
  /// The seconds within the day.
  std::vector<std::int64_t> seconds() const { return seconds_; }
  /// The microseconds, as milliseconds.
  std::vector<double> milliseconds() const { return milliseconds_; }

 private:
  std::vector<double> milliseconds_;
  std::vector<std::int64_t> hours_;
  std::vector<std::int64_t> seconds_;
};

}  // namespace pelion_core::api::primitive
