#pragma once

#include <array>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "pelion_core/api/primitive.h"
#include "pelion_core/host/object.h"

/// @file
/// The conversions between C++ and Python, but for blocks and tables. Each reader throws `Error`
/// for what it does not take.

namespace pelion_core::host {
namespace detail {

template <class T, class... Others>
inline constexpr bool isOneOf = (std::is_same_v<T, Others> || ...);

/// The integers that are numbers, not characters or truth values.
template <class T>
inline constexpr bool isInteger =
    std::is_integral_v<T> && !isOneOf<T, bool, char, wchar_t, char16_t, char32_t>;

/// What crosses as a block when there are many.
template <class T>
inline constexpr bool isNumber = isInteger<T> || isOneOf<T, float, double>;

template <class T>
inline constexpr bool isUtf8 =
    std::is_convertible_v<const T&, std::string_view> && !std::is_same_v<T, std::nullptr_t>;
template <class T>
inline constexpr bool isUtf16 =
    std::is_convertible_v<const T&, std::u16string_view> && !std::is_same_v<T, std::nullptr_t>;

/// Throws the `OverflowError` of a value that does not fit.
[[noreturn]] void doesNotFit(const PyHandle& value, const std::string& type);
/// Throws the `ValueError` of a wrong length.
[[noreturn]] void wrongLength(std::size_t found, std::size_t wanted);

std::int64_t readSigned(const PyHandle& object);
std::uint64_t readUnsigned(const PyHandle& object);
double readDouble(const PyHandle& object);
std::complex<double> readComplex(const PyHandle& object);
bool readBool(const PyHandle& object);
std::string readUtf8(const PyHandle& object);
std::u16string readUtf16(const PyHandle& object);
PyHandle makeUtf16(std::u16string_view text);
/// The items of an iterable that is no text, as the objects that they are.
std::vector<PyHandle> readItems(const PyHandle& iterable);
/// The items of a mapping, as tuples (key, value).
std::vector<PyHandle> readPairs(const PyHandle& mapping);
PyHandle makeList(const PyArguments& items);
PyHandle makeSet(const PyArguments& items);
bool isNone(const PyHandle& object);

/// A floating value in a narrower type: infinities and NaN as they are, no new infinity.
template <class T>
T narrowed(double value, const PyHandle& object) {
  const T result = static_cast<T>(value);
  if (result - result != 0 && value - value == 0) doesNotFit(object, "a float of 32 bits");
  return result;
}

template <class Range>
PyArguments eachToPython(const Range& values) {
  PyArguments items;
  items.reserve(values.size());
  for (const auto& value : values) items.push_back(toPython(value));
  return items;
}

}  // namespace detail

/// `True`, `False`. Reads a `bool` or a NumPy one, nothing else.
template <>
struct Converter<bool> {
  static PyHandle toPython(bool value) { return api::primitive::pyCreateBool(value); }
  static bool fromPython(const PyHandle& object) { return detail::readBool(object); }
};

/// An `int`. Reads what is an integer to Python (`operator.index`) and fits.
template <class T>
struct Converter<T, std::enable_if_t<detail::isInteger<T>>> {
  static PyHandle toPython(T value) {
    if constexpr (std::is_signed_v<T>) return api::primitive::pyCreateLong(value);
    return api::primitive::pyCreateULong(static_cast<std::uint64_t>(value));
  }
  static T fromPython(const PyHandle& object) {
    const auto value = [&] {
      if constexpr (std::is_signed_v<T>) {
        return detail::readSigned(object);
      } else {
        return detail::readUnsigned(object);
      }
    }();
    if (value < std::numeric_limits<T>::min() || value > std::numeric_limits<T>::max()) {
      detail::doesNotFit(object, std::string(std::is_signed_v<T> ? "a signed" : "an unsigned") +
                                     " integer of " + std::to_string(8 * sizeof(T)) + " bits");
    }
    return static_cast<T>(value);
  }
};

/// A `float`. Reads anything with `__float__` or `__index__`, so no strings.
template <class T>
struct Converter<T, std::enable_if_t<std::is_floating_point_v<T>>> {
  static PyHandle toPython(T value) {
    return api::primitive::pyCreateFloat(static_cast<double>(value));
  }
  static T fromPython(const PyHandle& object) {
    return detail::narrowed<T>(detail::readDouble(object), object);
  }
};

/// A `complex`. Reads every number.
template <class T>
struct Converter<std::complex<T>> {
  static PyHandle toPython(const std::complex<T>& value) {
    return api::primitive::pyCreateComplex(static_cast<double>(value.real()),
                                           static_cast<double>(value.imag()));
  }
  static std::complex<T> fromPython(const PyHandle& object) {
    const std::complex<double> value = detail::readComplex(object);
    return {detail::narrowed<T>(value.real(), object), detail::narrowed<T>(value.imag(), object)};
  }
};

/// A `str` from UTF-8: strings, views and literals. Reads a `str` into a `std::string`.
template <class T>
struct Converter<T, std::enable_if_t<detail::isUtf8<T>>> {
  static PyHandle toPython(std::string_view utf8) {
    return api::primitive::pyCreateString(std::string(utf8));
  }
  static std::string fromPython(const PyHandle& object) {
    static_assert(std::is_same_v<T, std::string>, "read texts as std::string, which owns them");
    return detail::readUtf8(object);
  }
};

/// A `str` from UTF-16: strings, views and literals. Reads a `str` into a `std::u16string`.
template <class T>
struct Converter<T, std::enable_if_t<detail::isUtf16<T>>> {
  static PyHandle toPython(std::u16string_view utf16) { return detail::makeUtf16(utf16); }
  static std::u16string fromPython(const PyHandle& object) {
    static_assert(std::is_same_v<T, std::u16string>,
                  "read texts as std::u16string, which owns them");
    return detail::readUtf16(object);
  }
};

/// `None`.
template <>
struct Converter<std::nullptr_t> {
  static PyHandle toPython(std::nullptr_t) { return api::primitive::pyCreateNone(); }
};

/// `None`.
template <>
struct Converter<std::nullopt_t> {
  static PyHandle toPython(std::nullopt_t) { return api::primitive::pyCreateNone(); }
};

/// The value, or `None`.
template <class T>
struct Converter<std::optional<T>> {
  static PyHandle toPython(const std::optional<T>& value) {
    return value ? detail::toPython(*value) : api::primitive::pyCreateNone();
  }
  static std::optional<T> fromPython(const PyHandle& object) {
    if (detail::isNone(object)) return std::nullopt;
    return detail::fromPython<T>(object);
  }
};

/// A `list`. Reads every iterable but texts. Vectors of numbers are blocks: see block.h.
template <class T>
struct Converter<std::vector<T>, std::enable_if_t<!detail::isNumber<T>>> {
  static PyHandle toPython(const std::vector<T>& values) {
    return detail::makeList(detail::eachToPython(values));
  }
  static std::vector<T> fromPython(const PyHandle& object) {
    std::vector<T> values;
    const std::vector<PyHandle> items = detail::readItems(object);
    values.reserve(items.size());
    for (const PyHandle& item : items) values.push_back(detail::fromPython<T>(item));
    return values;
  }
};

/// As a vector; what is read has exactly that many items.
template <class T, std::size_t size>
struct Converter<std::array<T, size>> {
  static PyHandle toPython(const std::array<T, size>& values) {
    return detail::toPython(std::vector<T>(values.begin(), values.end()));
  }
  static std::array<T, size> fromPython(const PyHandle& object) {
    std::vector<T> values = detail::fromPython<std::vector<T>>(object);
    if (values.size() != size) detail::wrongLength(values.size(), size);
    std::array<T, size> result{};
    std::move(values.begin(), values.end(), result.begin());
    return result;
  }
};

/// A `tuple`. Reads an iterable with exactly that many items.
template <class... Ts>
struct Converter<std::tuple<Ts...>> {
  static PyHandle toPython(const std::tuple<Ts...>& values) {
    return std::apply(
        [](const Ts&... each) { return api::sequence::pyTupleCreate({detail::toPython(each)...}); },
        values);
  }
  static std::tuple<Ts...> fromPython(const PyHandle& object) {
    return read(object, std::index_sequence_for<Ts...>());
  }

 private:
  template <std::size_t... positions>
  static std::tuple<Ts...> read(const PyHandle& object, std::index_sequence<positions...>) {
    const std::vector<PyHandle> items = detail::readItems(object);
    if (items.size() != sizeof...(Ts)) detail::wrongLength(items.size(), sizeof...(Ts));
    return std::tuple<Ts...>{detail::fromPython<Ts>(items[positions])...};
  }
};

/// As a `std::tuple` of two.
template <class First, class Second>
struct Converter<std::pair<First, Second>> {
  static PyHandle toPython(const std::pair<First, Second>& value) {
    return api::sequence::pyTupleCreate(
        {detail::toPython(value.first), detail::toPython(value.second)});
  }
  static std::pair<First, Second> fromPython(const PyHandle& object) {
    auto [first, second] = detail::fromPython<std::tuple<First, Second>>(object);
    return {std::move(first), std::move(second)};
  }
};

namespace detail {

template <class Map>
struct MapConverter {
  static PyHandle toPython(const Map& map) {
    PyKeywords items;
    items.reserve(map.size());
    for (const auto& [key, value] : map) {
      items.emplace_back(detail::toPython(key), detail::toPython(value));
    }
    return api::mapping::pyCreateDict(items);
  }
  static Map fromPython(const PyHandle& object) {
    Map map;
    for (const PyHandle& item : readPairs(object)) {
      map.insert(
          detail::fromPython<std::pair<typename Map::key_type, typename Map::mapped_type>>(item));
    }
    return map;
  }
};

template <class Set>
struct SetConverter {
  static PyHandle toPython(const Set& values) { return makeSet(eachToPython(values)); }
  static Set fromPython(const PyHandle& object) {
    Set values;
    for (const PyHandle& item : readItems(object)) {
      values.insert(detail::fromPython<typename Set::value_type>(item));
    }
    return values;
  }
};

/// Whether that many microseconds, Python's unit, fit another unit.
template <class Duration>
bool fitsMicroseconds(std::int64_t count) {
  using Rep = typename Duration::rep;
  using Wide = std::chrono::duration<long double, typename Duration::period>;
  if (std::chrono::treat_as_floating_point_v<Rep>) return true;
  const long double wide = std::floor(Wide(std::chrono::microseconds(count)).count());
  return wide <= static_cast<long double>(std::numeric_limits<Rep>::max()) &&
         wide >= static_cast<long double>(std::numeric_limits<Rep>::min());
}

/// Microseconds in another unit, rounded down.
template <class Duration>
Duration fromMicroseconds(std::int64_t count) {
  if constexpr (std::chrono::treat_as_floating_point_v<typename Duration::rep>) {
    return std::chrono::duration_cast<Duration>(std::chrono::microseconds(count));
  } else {
    return std::chrono::floor<Duration>(std::chrono::microseconds(count));
  }
}

/// The other way round, rounded down; throws `std::overflow_error` for what does not fit.
template <class Duration>
std::int64_t toMicroseconds(const Duration& duration) {
  using Wide = std::chrono::duration<long double, std::micro>;
  constexpr long double limit = 9223372036854775808.0L;
  const long double wide = Wide(duration).count();
  if (!(wide >= -limit && wide < limit)) throw std::overflow_error("a duration");
  return std::chrono::floor<std::chrono::microseconds>(duration).count();
}

/// Reads a duration of microseconds in another unit.
template <class Duration>
Duration readMicroseconds(std::int64_t count, const PyHandle& object) {
  if (!fitsMicroseconds<Duration>(count)) doesNotFit(object, "the unit of the duration");
  return fromMicroseconds<Duration>(count);
}

PyHandle makeDuration(std::int64_t microseconds);
std::int64_t durationOf(const PyHandle& object);
PyHandle makeInstant(std::int64_t microseconds);
std::int64_t instantOf(const PyHandle& object);

}  // namespace detail

/// A `dict`. Reads every mapping.
template <class Key, class T, class Order, class Memory>
struct Converter<std::map<Key, T, Order, Memory>>
    : detail::MapConverter<std::map<Key, T, Order, Memory>> {};
/// A `dict`. Reads every mapping.
template <class Key, class T, class Hash, class Equal, class Memory>
struct Converter<std::unordered_map<Key, T, Hash, Equal, Memory>>
    : detail::MapConverter<std::unordered_map<Key, T, Hash, Equal, Memory>> {};
/// A `set`. Reads every iterable but texts.
template <class T, class Order, class Memory>
struct Converter<std::set<T, Order, Memory>> : detail::SetConverter<std::set<T, Order, Memory>> {};
/// A `set`. Reads every iterable but texts.
template <class T, class Hash, class Equal, class Memory>
struct Converter<std::unordered_set<T, Hash, Equal, Memory>>
    : detail::SetConverter<std::unordered_set<T, Hash, Equal, Memory>> {};

/// A `datetime.timedelta`, rounded down to its microseconds. Reads one, and NumPy's.
template <class Rep, class Period>
struct Converter<std::chrono::duration<Rep, Period>> {
  using Duration = std::chrono::duration<Rep, Period>;  ///< what is converted
  static PyHandle toPython(const Duration& value) {
    return detail::makeDuration(detail::toMicroseconds(value));
  }
  static Duration fromPython(const PyHandle& object) {
    return detail::readMicroseconds<Duration>(detail::durationOf(object), object);
  }
};

/// A `datetime.datetime` in UTC. Reads one of any time zone, and NumPy's; without a time zone it is
/// taken as UTC.
template <class Duration>
struct Converter<std::chrono::time_point<std::chrono::system_clock, Duration>> {
  using Instant = std::chrono::time_point<std::chrono::system_clock, Duration>;  ///< likewise
  static PyHandle toPython(const Instant& value) {
    return detail::makeInstant(detail::toMicroseconds(value.time_since_epoch()));
  }
  static Instant fromPython(const PyHandle& object) {
    return Instant(detail::readMicroseconds<Duration>(detail::instantOf(object), object));
  }
};

}  // namespace pelion_core::host

#include "pelion_core/host/block.h"
