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

using Text = Zanthic::String::detail::StringArrayVariant;

struct Column {
  std::string name;
  Kind kind;
  std::variant<std::vector<double>, std::vector<std::int64_t>, std::vector<std::uint8_t>,
               StringArray>
      values;
  /// Of integers and booleans, when some are missing: 1 for each that is. In the other kinds a
  /// value of its own says so.
  std::vector<std::uint8_t> mask;

  bool lacks(std::size_t, double value) const { return value != value; }
  bool lacks(std::size_t, const Text& value) const { return value.isMissing(); }
  bool lacks(std::size_t row, std::uint8_t) const { return !mask.empty() && mask[row] != 0; }
  bool lacks(std::size_t row, std::int64_t value) const {
    return kind == Kind::integers ? lacks(row, std::uint8_t{}) : value == noTime;
  }

  static constexpr std::int64_t noTime = std::numeric_limits<std::int64_t>::min();
};

[[noreturn]] void wrongKind(const Column& column, Kind wanted);
[[noreturn]] void hasMissing(const Column& column);
[[noreturn]] void columnOverflow(const std::string& column, const std::string& type);
std::string utf8Of(const std::u16string& text);
std::u16string utf16Of(std::string_view text);

/// The kind of column that values of a type make.
template <class T>
constexpr Kind kindOf() {
  if (isUtf8<T> || isUtf16<T>) return Kind::texts;
  if (std::is_same_v<T, bool>) return Kind::booleans;
  if (std::is_floating_point_v<T>) return Kind::numbers;
  return isInteger<T> ? Kind::integers : isInstant<T> ? Kind::instants : Kind::durations;
}

template <class To, class From>
To fitting(From value) {
  const To result = static_cast<To>(value);
  if (static_cast<From>(result) != value || (result < To{}) != (value < From{})) {
    throw std::overflow_error("an integer");
  }
  return result;
}

/// A value as it stands in a column.
template <class T>
auto stored(const T& value) {
  if constexpr (isUtf8<T>) {
    return Text(utf16Of(value));
  } else if constexpr (isUtf16<T>) {
    return Text(std::u16string(value));
  } else if constexpr (std::is_same_v<T, bool>) {
    return std::uint8_t{value};
  } else if constexpr (std::is_floating_point_v<T>) {
    return static_cast<double>(value);
  } else if constexpr (isInteger<T>) {
    return fitting<std::int64_t>(value);
  } else {
    static_assert(isDuration<T> || isInstant<T>, "no column is made of this type");
    return toMicroseconds(value);
  }
}

/// The other way round.
template <class T, class Stored>
T loaded(const Stored& value) {
  if constexpr (isUtf8<T>) {
    return utf8Of(value.text());
  } else if constexpr (isUtf16<T>) {
    return value.text();
  } else if constexpr (std::is_same_v<T, bool>) {
    return value != 0;
  } else if constexpr (std::is_floating_point_v<T>) {
    return static_cast<T>(value);
  } else if constexpr (isInteger<T>) {
    return fitting<T>(value);
  } else {
    const std::optional<T> time = fromMicroseconds<T>(value);
    if (!time) throw std::overflow_error("a duration");
    return *time;
  }
}

template <class T>
struct Element {
  using Type = T;
};
template <class T>
struct Element<std::optional<T>> {
  using Type = T;
};
template <class T>
inline constexpr bool isOptional = !std::is_same_v<T, typename Element<T>::Type>;

template <class Each>
Column makeColumn(const std::string& name, const std::vector<Each>& values) {
  using T = typename Element<Each>::Type;
  using Stored = decltype(stored(std::declval<const T&>()));
  Column column{name, kindOf<T>(), {}, {}};
  std::vector<Stored> all;
  if constexpr (std::is_same_v<Each, Stored>) {
    all = values;
  } else if constexpr (isOptional<Each>) {
    for (const Each& value : values) {
      Stored none{};
      if constexpr (std::is_same_v<Stored, double>) none = std::numeric_limits<double>::quiet_NaN();
      if constexpr (isDuration<T> || isInstant<T>) none = Column::noTime;
      all.push_back(value ? stored<T>(*value) : none);
      if constexpr (std::is_same_v<T, bool> || isInteger<T>) column.mask.push_back(!value);
    }
  } else {
    all.reserve(values.size());
    for (const Each& value : values) all.push_back(stored<T>(value));
  }
  if constexpr (std::is_same_v<Stored, Text>) {
    column.values = StringArray(std::move(all));
  } else {
    column.values = std::move(all);
  }
  return column;
}

template <class Each>
std::vector<Each> readColumn(const Column& column) {
  using T = typename Element<Each>::Type;
  const auto read = [&](const auto& values) {
    std::vector<Each> result;
    result.reserve(values.size());
    for (std::size_t row = 0; row < values.size(); ++row) {
      if constexpr (isOptional<Each>) {
        const bool lacks = column.lacks(row, values[row]);
        result.push_back(lacks ? Each() : Each(loaded<T>(values[row])));
      } else if (!column.lacks(row, values[row])) {
        result.push_back(loaded<T>(values[row]));
      } else if constexpr (std::is_floating_point_v<T>) {
        result.push_back(std::numeric_limits<T>::quiet_NaN());
      } else {
        hasMissing(column);
      }
    }
    return result;
  };
  if constexpr (kindOf<T>() == Kind::numbers) {
    if (column.kind == Kind::integers) {
      return read(std::get<std::vector<std::int64_t>>(column.values));
    }
  }
  if (column.kind != kindOf<T>()) wrongKind(column, kindOf<T>());
  if constexpr (kindOf<T>() == Kind::texts) {
    return read(std::get<StringArray>(column.values));
  } else {
    return read(std::get<std::vector<decltype(stored(std::declval<const T&>()))>>(column.values));
  }
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
      return append(detail::makeColumn(name, values));
    } catch (const std::overflow_error& failure) {
      detail::columnOverflow(name, failure.what());
    }
  }
  /// Adds a column of strings; an array of several dimensions counts as one in column-major order.
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
      return detail::readColumn<T>(find(name));
    } catch (const std::overflow_error& failure) {
      detail::columnOverflow(name, failure.what());
    }
  }
  /// A column of strings, missing ones included.
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

/// A NumPy array of strings, of objects when some are missing. Reads an array or sequence of them,
/// where `None`, NaN and `pandas.NA` are missing.
template <>
struct Converter<StringArray> {
  static detail::Owned toPython(const StringArray& texts);
  static StringArray fromPython(PyObject* object);
};

}  // namespace pelion_core::host
