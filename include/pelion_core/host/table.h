#pragma once

#include <variant>

#include "pelion_core/host/block.h"
#include "pelion_core/platform/string_array.h"

namespace pelion_core::host {

/// Texts in the shape of an array, each UTF-16 or missing.
using StringArray = coretypes::array::Array<Zanthic::String::detail::StringArrayVariant>;

namespace detail {

/// What a column holds, by the letter of its NumPy type.
enum class Kind : char {
  numbers = 'd',
  integers = 'q',
  booleans = '?',
  instants = 'M',
  durations = 'm',
  texts = 's'
};

struct Column {
  std::string name;
  Kind kind;
  std::variant<std::vector<double>, std::vector<std::int64_t>, std::vector<std::uint8_t>,
               StringArray>
      values;
  std::vector<std::size_t> missing;  // rows, ascending; what their values are does not matter
};

[[noreturn]] void wrongKind(const Column& column, Kind wanted);
[[noreturn]] void hasMissing(const Column& column);
[[noreturn]] void columnOverflow(const std::string& column, const std::string& type);
std::string utf8Of(const std::u16string& text);
std::u16string utf16Of(std::string_view text);

/// How a value of C++ stands in a column, and which kind of column that is.
template <class T, class Enable = void>
struct Cell;

template <class T>
struct Cell<T, std::enable_if_t<std::is_floating_point_v<T>>> {
  static constexpr Kind kind = Kind::numbers;
  using Stored = double;
  static double store(T value) { return static_cast<double>(value); }
  static T load(double value) { return static_cast<T>(value); }
  static double missing() { return std::numeric_limits<double>::quiet_NaN(); }
};

template <class T>
struct Cell<T, std::enable_if_t<isInteger<T>>> {
  static constexpr Kind kind = Kind::integers;
  using Stored = std::int64_t;
  static std::int64_t store(T value) { return converted<std::int64_t>(value); }
  static T load(std::int64_t value) { return converted<T>(value); }
  static std::int64_t missing() { return 0; }

 private:
  template <class To, class From>
  static To converted(From value) {
    const To result = static_cast<To>(value);
    if (static_cast<From>(result) != value || (result < To{}) != (value < From{})) {
      throw std::overflow_error("an integer");
    }
    return result;
  }
};

template <>
struct Cell<bool> {
  static constexpr Kind kind = Kind::booleans;
  using Stored = std::uint8_t;
  static std::uint8_t store(bool value) { return value ? 1 : 0; }
  static bool load(std::uint8_t value) { return value != 0; }
  static std::uint8_t missing() { return 0; }
};

template <class Rep, class Period>
struct Cell<std::chrono::duration<Rep, Period>> {
  using Duration = std::chrono::duration<Rep, Period>;
  static constexpr Kind kind = Kind::durations;
  using Stored = std::int64_t;
  static std::int64_t store(const Duration& value) { return toMicroseconds(value); }
  static Duration load(std::int64_t count) {
    if (!fitsMicroseconds<Duration>(count)) throw std::overflow_error("a duration");
    return fromMicroseconds<Duration>(count);
  }
  static std::int64_t missing() { return std::numeric_limits<std::int64_t>::min(); }
};

template <class Duration>
struct Cell<std::chrono::time_point<std::chrono::system_clock, Duration>> : Cell<Duration> {
  using Instant = std::chrono::time_point<std::chrono::system_clock, Duration>;
  static constexpr Kind kind = Kind::instants;
  static std::int64_t store(const Instant& value) {
    return toMicroseconds(value.time_since_epoch());
  }
  static Instant load(std::int64_t count) { return Instant(Cell<Duration>::load(count)); }
};

template <class T>
struct Cell<T, std::enable_if_t<isUtf8<T>>> {
  static constexpr Kind kind = Kind::texts;
  using Stored = std::u16string;
  static std::u16string store(const T& value) { return utf16Of(value); }
  static std::string load(const std::u16string& value) { return utf8Of(value); }
};

template <class T>
struct Cell<T, std::enable_if_t<isUtf16<T>>> {
  static constexpr Kind kind = Kind::texts;
  using Stored = std::u16string;
  static std::u16string store(const T& value) { return std::u16string(value); }
  static T load(const std::u16string& value) { return value; }
};

template <class T>
struct Element {
  using Type = T;
  static constexpr bool isOptional = false;
};
template <class T>
struct Element<std::optional<T>> {
  using Type = T;
  static constexpr bool isOptional = true;
};

template <class T, class Each>
Column makeColumn(const std::string& name, const std::vector<Each>& values) {
  using C = Cell<T>;
  Column column{name, C::kind, {}, {}};
  if constexpr (C::kind == Kind::texts) {
    StringArray& texts = column.values.template emplace<StringArray>(
        std::vector<Zanthic::String::detail::StringArrayVariant>(values.size()));
    for (std::size_t i = 0; i < values.size(); ++i) {
      if constexpr (Element<Each>::isOptional) {
        if (values[i]) texts[i] = C::store(*values[i]);
      } else {
        texts[i] = C::store(values[i]);
      }
    }
  } else {
    auto& stored = column.values.template emplace<std::vector<typename C::Stored>>();
    stored.reserve(values.size());
    for (const auto& value : values) {
      if constexpr (Element<Each>::isOptional) {
        if (!value) column.missing.push_back(stored.size());
        stored.push_back(value ? C::store(*value) : C::missing());
      } else {
        stored.push_back(C::store(value));
      }
    }
  }
  return column;
}

template <class T, class Each>
std::vector<Each> readColumn(const Column& column) {
  using C = Cell<T>;
  constexpr bool optional = Element<Each>::isOptional;
  std::vector<Each> result;
  if constexpr (C::kind == Kind::texts) {
    if (column.kind != Kind::texts) wrongKind(column, C::kind);
    for (const auto& each : std::get<StringArray>(column.values).elements()) {
      if constexpr (optional) {
        result.push_back(each.isMissing() ? Each() : Each(C::load(each.text())));
      } else {
        if (each.isMissing()) hasMissing(column);
        result.push_back(C::load(each.text()));
      }
    }
  } else {
    const auto fill = [&](const auto& stored) {
      result.reserve(stored.size());
      for (const auto value : stored) {
        result.push_back(C::load(static_cast<typename C::Stored>(value)));
      }
    };
    if (column.kind == C::kind) {
      fill(std::get<std::vector<typename C::Stored>>(column.values));
    } else if (C::kind == Kind::numbers && column.kind == Kind::integers) {
      fill(std::get<std::vector<std::int64_t>>(column.values));
    } else {
      wrongKind(column, C::kind);
    }
    for (const std::size_t row : column.missing) {
      if constexpr (optional) {
        result[row].reset();
      } else if constexpr (std::is_floating_point_v<T>) {
        result[row] = std::numeric_limits<T>::quiet_NaN();
      } else {
        hasMissing(column);
      }
    }
  }
  return result;
}

}  // namespace detail

/// Named columns of one length, for pandas and back. Its own mistakes are standard exceptions, so
/// it needs no session until it meets pandas: `std::invalid_argument` for a name that is there,
/// another length, or a column read as what it does not hold; `std::out_of_range` for a name that
/// is not there; `std::overflow_error` for a value that does not fit.
class Table {
 public:
  /// Adds a column of numbers, `bool`, strings (UTF-8 or UTF-16), time points of the system clock
  /// or durations; elements of `std::optional` may be missing.
  template <class T>
  Table& add(const std::string& name, const std::vector<T>& values) {
    try {
      return append(detail::makeColumn<typename detail::Element<T>::Type>(name, values));
    } catch (const std::overflow_error& failure) {
      detail::columnOverflow(name, failure.what());
    }
  }
  /// Adds a column of texts; an array of several dimensions counts as one in column-major order.
  Table& add(const std::string& name, StringArray texts);

  /// The number of rows.
  std::size_t rows() const;
  /// The names, in the order of the columns.
  std::vector<std::string> names() const;
  /// Whether there is a column of this name.
  bool has(const std::string& name) const;

  /// A column, copied. `double` also reads integers. A column that has missing values is read as
  /// elements of `std::optional`, or as floating numbers with NaN for them.
  template <class T>
  std::vector<T> column(const std::string& name) const {
    try {
      return detail::readColumn<typename detail::Element<T>::Type, T>(find(name));
    } catch (const std::overflow_error& failure) {
      detail::columnOverflow(name, failure.what());
    }
  }
  /// A column of texts, missing ones included.
  const StringArray& texts(const std::string& name) const;

  /// A `pandas.DataFrame`.
  Object toPandas() const;
  /// The columns of a `pandas.DataFrame` (or of a `Series`), an index that is more than a count
  /// first.
  static Table fromPandas(const Object& frame);

 private:
  Table& append(detail::Column column);
  const detail::Column& find(const std::string& name) const;

  std::vector<detail::Column> columns_;
};

/// A `pandas.DataFrame`.
template <>
struct Converter<Table> {
  static Object toPython(const Table& table) { return table.toPandas(); }
  static Table fromPython(const Object& frame) { return Table::fromPandas(frame); }
};

/// A NumPy array of texts, of objects when some are missing. Reads an array or a sequence of texts,
/// where `None`, NaN and `pandas.NA` are missing.
template <>
struct Converter<StringArray> {
  static PyHandle toPython(const StringArray& texts);
  static StringArray fromPython(const PyHandle& object);
};

}  // namespace pelion_core::host
