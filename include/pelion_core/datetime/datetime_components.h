#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "pelion_core/api/handle.h"
#include "pelion_core/datetime/value_members.h"

/// @file
/// Dates, decomposed. A constructor does all the work, under the interpreter lock, and borrows its
/// object; afterwards the objects are plain values and every accessor returns a copy.
///
/// Give the NumPy classes NumPy values: a pandas Series or Index passes their test of the kind but
/// cannot be decomposed, which throws. Inputs of other kinds do not throw, they are not valid;
/// once an input is accepted, a Python error in its decomposition throws as anywhere, so does
/// NumPy's refusal of units below the nanosecond.

PELION_CORE_CLASSES_BEGIN

namespace pelion_core::api::primitive {

/// One `datetime64`, as a scalar or a zero-dimensional array, or a zero-dimensional object array
/// with one `datetime.datetime`. The components are zero when the value is not valid or not-a-time.
class PELION_CORE_EXPORT Datetime64Component {
 public:
  /// Decomposes the value.
  explicit Datetime64Component(pyArray* obj);
  PELION_CORE_VALUE_MEMBERS(Datetime64Component)

  /// The year of the Gregorian calendar.
  std::int32_t year() const;
  /// 1 to 12.
  std::int32_t month() const;
  /// 1 to 31.
  std::int32_t day() const;
  /// 0 to 23.
  std::int32_t hour() const;
  /// 0 to 59.
  std::int32_t minute() const;
  /// Whole seconds.
  double second() const;
  /// Milliseconds within the second, with their fraction.
  double millisecond() const;
  /// Whether the value is not-a-time.
  bool isNaT() const;
  /// Whether the input was of a kind that this class decomposes.
  bool isValid() const;

 private:
  void readNumber(pyArray* obj);
  void readObject(pyArray* obj);

  std::array<std::int32_t, 5> calendar_ = {};
  double second_ = 0.0;
  double millisecond_ = 0.0;
  bool isNaT_ = false;
  bool isValid_ = false;
  bool isNumpyKind_ = false;
};

/// What the two classes below have inside: one vector for each component, of equal lengths.
struct DatetimeColumns {
  /// Years, months, days, hours, minutes.
  std::array<std::vector<std::int64_t>, 5> calendar;
  std::vector<double> seconds;       ///< whole seconds
  std::vector<double> milliseconds;  ///< milliseconds within the second
};

/// A `datetime64` array, or an object array whose first element is a `datetime.datetime`; in the
/// latter a `date` reads as its midnight, None as not-a-time, and `pandas.NaT` throws. The columns
/// are in column-major order of the array and hold zeros for not-a-time. An empty array is not
/// valid.
class PELION_CORE_EXPORT Datetime64ArrayComponents {
 public:
  Datetime64ArrayComponents();
  /// Decomposes every element.
  explicit Datetime64ArrayComponents(pyArray* arr);
  PELION_CORE_VALUE_MEMBERS(Datetime64ArrayComponents)

  /// Years of the Gregorian calendar.
  std::vector<std::int64_t> years() const;
  /// 1 to 12.
  std::vector<std::int64_t> months() const;
  /// 1 to 31.
  std::vector<std::int64_t> days() const;
  /// 0 to 23.
  std::vector<std::int64_t> hours() const;
  /// 0 to 59.
  std::vector<std::int64_t> minutes() const;
  /// Whole seconds.
  std::vector<double> seconds() const;
  /// Milliseconds within the second, with their fraction.
  std::vector<double> milliseconds() const;
  /// True where the element is not-a-time.
  std::vector<bool> natIndices() const;
  /// The number of elements.
  std::uint64_t numel() const;
  /// The array's rank and extents.
  std::pair<std::uint64_t, std::vector<std::uint64_t>> shape() const;
  /// Whether the input was of a kind that this class decomposes.
  bool isValid() const;

 private:
  void readNumbers(pyArray* arr);
  void readObjects(pyArray* arr);

  DatetimeColumns columns_;
  std::pair<std::uint64_t, std::vector<std::uint64_t>> shape_ = {};
  std::vector<bool> natIndices_;
  bool isValid_ = false;
  bool isNumpyKind_ = false;
};

/// A list (any sequence) of `datetime.datetime`; a list with anything else in it leaves the columns
/// empty. Keep `pandas.NaT` out: it passes for a `datetime` but has no integer components, so that,
/// as the versions of Python and pandas have it, the constructor throws or its row reads as -1 with
/// a Python error pending.
class PELION_CORE_EXPORT DatetimeListComponent {
 public:
  DatetimeListComponent();
  /// Decomposes every element. Throws "Timezone type not supported." for a time zone that
  /// `object::pyDatetimeGetTimezone` does not describe.
  explicit DatetimeListComponent(pyArray* list);
  PELION_CORE_VALUE_MEMBERS(DatetimeListComponent)

  /// Years of the Gregorian calendar.
  std::vector<std::int64_t> years() const;
  /// 1 to 12.
  std::vector<std::int64_t> months() const;
  /// 1 to 31.
  std::vector<std::int64_t> days() const;
  /// 0 to 23.
  std::vector<std::int64_t> hours() const;
  /// 0 to 59.
  std::vector<std::int64_t> minutes() const;
  /// Whole seconds.
  std::vector<double> seconds() const;
  /// Milliseconds within the second, with their fraction.
  std::vector<double> milliseconds() const;
  /// The time zone of the last element, as `object::pyDatetimeGetTimezone` describes it.
  std::u16string timezone() const;
  /// Whether all elements have the same time zone text.
  bool areTimeZoneElementsOfListSame() const;

 private:
  DatetimeColumns columns_;
  std::u16string timezone_;
  bool areTimeZoneElementsOfListSame_ = true;
};

}  // namespace pelion_core::api::primitive

PELION_CORE_CLASSES_END
