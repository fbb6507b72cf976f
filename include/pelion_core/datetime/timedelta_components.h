#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "pelion_core/api/handle.h"
#include "pelion_core/datetime/value_members.h"

/// @file
/// Durations, decomposed by the rules that datetime_components.h states for dates.
///
/// A NumPy duration is not normalised: its count stands in the one field of its unit (hours,
/// minutes, seconds, whole milliseconds), and every other unit is converted to `millisecond` with a
/// fraction, a year being 365.2425 days and a month 30. A `datetime.timedelta` gives its days as
/// hours, its seconds within the day as seconds, and its microseconds as `millisecond`; its hours
/// are a 32-bit product, which wraps beyond 89,478,485 days. The host adds the fields up.

PELION_CORE_CLASSES_BEGIN

namespace pelion_core::api::primitive {

/// One `timedelta64`, as a scalar or a zero-dimensional array, or an object array with one
/// `datetime.timedelta`. The fields are zero when the value is not valid or not-a-time.
class PELION_CORE_EXPORT Timedelta64Component {
 public:
  /// Decomposes the value.
  explicit Timedelta64Component(pyArray* obj);
  PELION_CORE_VALUE_MEMBERS(Timedelta64Component)

  /// The count of a value in hours; the days of a `datetime.timedelta`, as hours.
  std::int64_t hour() const;
  /// The count of a value in minutes.
  std::int64_t minute() const;
  /// The count of a value in seconds; the seconds of a `datetime.timedelta`.
  std::int64_t second() const;
  /// The count of a value in milliseconds.
  std::int64_t millisecond_int() const;
  /// Milliseconds with their fraction: every other unit, and the microseconds of a
  /// `datetime.timedelta`.
  double millisecond() const;
  /// Whether the value is not-a-time.
  bool isNaT() const;
  /// Whether the input was of a kind and unit that this class decomposes.
  bool isValid() const;
  /// Whether the unit is the millisecond, so that the value stands in `millisecond_int`; false for
  /// not-a-time.
  bool isMsInt() const;

 private:
  void readNumber(pyArray* obj);
  void readObject(pyArray* obj);

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
class PELION_CORE_EXPORT Timedelta64ArrayComponents {
 public:
  /// Decomposes every element.
  explicit Timedelta64ArrayComponents(pyArray* arr);
  PELION_CORE_VALUE_MEMBERS(Timedelta64ArrayComponents)

  /// As `Timedelta64Component::hour`.
  std::vector<std::int64_t> hours() const;
  /// The counts of an array in minutes.
  std::vector<std::int64_t> minutes() const;
  /// As `Timedelta64Component::second`.
  std::vector<std::int64_t> seconds() const;
  /// The counts of an array in milliseconds.
  std::vector<std::int64_t> milliseconds_int() const;
  /// As `Timedelta64Component::millisecond`.
  std::vector<double> milliseconds() const;
  /// True where the element is not-a-time.
  std::vector<bool> natIndices() const;
  /// NumPy's text for the unit ("ms"), empty for an object array.
  std::string dtypeFlag() const;
  /// The array's rank and extents.
  std::pair<std::uint64_t, std::vector<std::uint64_t>> shape() const;
  /// The number of elements.
  std::uint64_t numel() const;
  /// Whether the unit is the millisecond, so that the values stand in `milliseconds_int`.
  bool isMsInt() const;
  /// Whether the input was of a kind and unit that this class decomposes.
  bool isValid() const;

 private:
  void readNumbers(pyArray* arr);
  void readObjects(pyArray* arr);

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
class PELION_CORE_EXPORT TimedeltaListComponent {
 public:
  TimedeltaListComponent();
  /// Decomposes every element.
  explicit TimedeltaListComponent(pyArray* list);
  PELION_CORE_VALUE_MEMBERS(TimedeltaListComponent)

  /// The days, as hours.
  std::vector<std::int64_t> hours() const;
  /// The seconds within the day.
  std::vector<std::int64_t> seconds() const;
  /// The microseconds, as milliseconds.
  std::vector<double> milliseconds() const;

 private:
  std::vector<double> milliseconds_;
  std::vector<std::int64_t> hours_;
  std::vector<std::int64_t> seconds_;
};

}  // namespace pelion_core::api::primitive

PELION_CORE_CLASSES_END
