#pragma once

#include <array>
#include <chrono>
#include <cmath>
#include <complex>
#include <cstdint>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "pelion_core/host/object.h"

/// @file
/// The conversions between C++ and Python, but for blocks and tables. Each reader throws `Error`
/// for what it does not take.

namespace pelion_core::host {
namespace detail {

/// What crosses as a block when there are many.
template <class T>
inline constexpr bool isNumber = isInteger<T> || isOneOf<T, float, double>;

template <class T>
inline constexpr bool isUtf8 =
    std::is_convertible_v<const T&, std::string_view> && !std::is_same_v<T, std::nullptr_t>;
template <class T>
inline constexpr bool isUtf16 =
    std::is_convertible_v<const T&, std::u16string_view> && !std::is_same_v<T, std::nullptr_t>;

template <class T>
inline constexpr bool isDuration = false;
template <class Rep, class Period>
inline constexpr bool isDuration<std::chrono::duration<Rep, Period>> = true;
template <class T>
inline constexpr bool isInstant = false;
template <class Duration>
inline constexpr bool isInstant<std::chrono::time_point<std::chrono::system_clock, Duration>> =
    true;

/// Containers by the types that they declare: maps have `mapped_type`, sets only `key_type`.
template <class T, class = void>
inline constexpr bool hasKeys = false;
template <class T>
inline constexpr bool hasKeys<T, std::void_t<typename T::key_type>> = true;
template <class T, class = void>
inline constexpr bool isMap = false;
template <class T>
inline constexpr bool isMap<T, std::void_t<typename T::mapped_type>> = hasKeys<T>;

/// Throws the `OverflowError` of a value that does not fit.
[[noreturn]] void doesNotFit(PyObject* value, const std::string& type);
/// Throws the `ValueError` of a wrong length.
[[noreturn]] void wrongLength(std::size_t found, std::size_t wanted);

std::int64_t readSigned(PyObject* object);
std::uint64_t readUnsigned(PyObject* object);
double readDouble(PyObject* object);
std::complex<double> readComplex(PyObject* object);
bool readBool(PyObject* object);
std::string readUtf8(PyObject* object);
std::u16string readUtf16(PyObject* object);
Owned makeUtf16(const std::u16string& text);
/// The items of an iterable that is no text, as the objects that they are.
std::vector<Owned> readItems(PyObject* iterable);
bool isNone(PyObject* object);

/// A floating value in a narrower type: infinities and NaN as they are, no new infinity.
template <class T>
T narrowed(double value, PyObject* object) {
  const T result = static_cast<T>(value);
  if (result - result != 0 && value - value == 0) doesNotFit(object, "a float of 32 bits");
  return result;
}

template <class Range>
std::vector<Owned> eachToPython(const Range& values) {
  std::vector<Owned> items;
  items.reserve(values.size());
  for (const auto& value : values) items.push_back(toPython(value));
  return items;
}

/// Reads each item of an iterable and hands it on.
template <class T, class Take>
void eachFromPython(PyObject* iterable, Take take) {
  for (PyObject* const item : readItems(iterable)) take(fromPython<T>(item));
}

/// A duration, or a time point's since the start of 1970, in microseconds, Python's unit; rounded
/// down. Throws `std::overflow_error` for what does not fit.
template <class T>
std::int64_t toMicroseconds(const T& value) {
  if constexpr (isInstant<T>) {
    return toMicroseconds(value.time_since_epoch());
  } else {
    constexpr long double limit = 9223372036854775808.0L;
    const long double wide = std::chrono::duration<long double, std::micro>(value).count();
    if (!(wide >= -limit && wide < limit)) throw std::overflow_error("a duration");
    return std::chrono::floor<std::chrono::microseconds>(value).count();
  }
}

/// The other way round, rounded down; nothing when it does not fit.
template <class T>
std::optional<T> fromMicroseconds(std::int64_t count) {
  const std::chrono::microseconds duration(count);
  if constexpr (isInstant<T>) {
    const auto sinceStart = fromMicroseconds<typename T::duration>(count);
    return sinceStart ? std::optional<T>(*sinceStart) : std::nullopt;
  } else if constexpr (std::chrono::treat_as_floating_point_v<typename T::rep>) {
    return std::chrono::duration_cast<T>(duration);
  } else {
    using Bounds = std::numeric_limits<typename T::rep>;
    using Wide = std::chrono::duration<long double, typename T::period>;
    const long double wide = std::floor(Wide(duration).count());
    if (wide < static_cast<long double>(Bounds::min())) return std::nullopt;
    if (wide > static_cast<long double>(Bounds::max())) return std::nullopt;
    return std::chrono::floor<T>(duration);
  }
}

}  // namespace detail

/// `True`, `False`. Reads a `bool` or a NumPy one, nothing else.
template <>
struct Converter<bool> {
  static detail::Owned toPython(bool value) {
    return detail::Owned(detail::api->PyBool_FromLong(value));
  }
  static bool fromPython(PyObject* object) { return detail::readBool(object); }
};

/// An `int`. Reads what is an integer to Python (`operator.index`) and fits.
template <class T>
struct Converter<T, std::enable_if_t<detail::isInteger<T>>> {
  static detail::Owned toPython(T value) {
    if constexpr (std::is_signed_v<T>) {
      return detail::Owned(detail::api->PyLong_FromLongLong(value));
    } else {
      return detail::Owned(detail::api->PyLong_FromUnsignedLongLong(value));
    }
  }
  static T fromPython(PyObject* object) {
    using Wide = std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>;
    const Wide value = [&]() -> Wide {
      if constexpr (std::is_signed_v<T>) {
        return detail::readSigned(object);
      } else {
        return detail::readUnsigned(object);
      }
    }();
    if (value != static_cast<Wide>(static_cast<T>(value))) {
      detail::doesNotFit(object, std::string(std::is_signed_v<T> ? "a signed" : "an unsigned") +
                                     " integer of " + std::to_string(8 * sizeof(T)) + " bits");
    }
    return static_cast<T>(value);
  }
};

/// A `float`. Reads anything with `__float__` or `__index__`, so no strings.
template <class T>
struct Converter<T, std::enable_if_t<std::is_floating_point_v<T>>> {
  static detail::Owned toPython(T value) {
    return detail::Owned(detail::api->PyFloat_FromDouble(static_cast<double>(value)));
  }
  static T fromPython(PyObject* object) {
    return detail::narrowed<T>(detail::readDouble(object), object);
  }
};

/// A `complex`. Reads every number.
template <class T>
struct Converter<std::complex<T>> {
  static detail::Owned toPython(const std::complex<T>& value) {
    return detail::Owned(detail::api->PyComplex_FromDoubles(static_cast<double>(value.real()),
                                                            static_cast<double>(value.imag())));
  }
  static std::complex<T> fromPython(PyObject* object) {
    const std::complex<double> value = detail::readComplex(object);
    return {detail::narrowed<T>(value.real(), object), detail::narrowed<T>(value.imag(), object)};
  }
};

/// A `str` from UTF-8: strings, views and literals. Reads a `str` into a `std::string`.
template <class T>
struct Converter<T, std::enable_if_t<detail::isUtf8<T>>> {
  static detail::Owned toPython(std::string_view utf8) {
    return detail::Owned(detail::api->PyUnicode_FromStringAndSize(utf8.data(), utf8.size()));
  }
  static std::string fromPython(PyObject* object) {
    static_assert(std::is_same_v<T, std::string>, "read texts as std::string, which owns them");
    return detail::readUtf8(object);
  }
};

/// A `str` from UTF-16: strings, views and literals. Reads a `str` into a `std::u16string`.
template <class T>
struct Converter<T, std::enable_if_t<detail::isUtf16<T>>> {
  static detail::Owned toPython(const T& utf16) {
    if constexpr (std::is_same_v<T, std::u16string>) return detail::makeUtf16(utf16);
    return detail::makeUtf16(std::u16string(utf16));
  }
  static std::u16string fromPython(PyObject* object) {
    static_assert(std::is_same_v<T, std::u16string>,
                  "read texts as std::u16string, which owns them");
    return detail::readUtf16(object);
  }
};

/// `None`.
template <class T>
struct Converter<T, std::enable_if_t<detail::isOneOf<T, std::nullptr_t, std::nullopt_t>>> {
  static detail::Owned toPython(T) { return detail::share(detail::helper(detail::Helper::none)); }
};

/// The value, or `None`.
template <class T>
struct Converter<std::optional<T>> {
  static detail::Owned toPython(const std::optional<T>& value) {
    return value ? detail::toPython(*value) : detail::toPython(nullptr);
  }
  static std::optional<T> fromPython(PyObject* object) {
    if (detail::isNone(object)) return std::nullopt;
    return detail::fromPython<T>(object);
  }
};

/// A `list`. Reads every iterable but texts. Vectors of numbers are blocks: see block.h.
template <class T>
struct Converter<std::vector<T>, std::enable_if_t<!detail::isNumber<T>>> {
  static detail::Owned toPython(const std::vector<T>& values) {
    const detail::Owned items = detail::makeTuple(detail::eachToPython(values));
    return detail::Owned(detail::api->PySequence_List(items));
  }
  static std::vector<T> fromPython(PyObject* object) {
    std::vector<T> values;
    detail::eachFromPython<T>(object, [&](T value) { values.push_back(std::move(value)); });
    return values;
  }
};

/// As a vector; what is read has exactly that many items.
template <class T, std::size_t size>
struct Converter<std::array<T, size>> {
  static detail::Owned toPython(const std::array<T, size>& values) {
    return detail::toPython(std::vector<T>(values.begin(), values.end()));
  }
  static std::array<T, size> fromPython(PyObject* object) {
    std::vector<T> values = detail::fromPython<std::vector<T>>(object);
    if (values.size() != size) detail::wrongLength(values.size(), size);
    std::array<T, size> result{};
    std::move(values.begin(), values.end(), result.begin());
    return result;
  }
};

namespace detail {

template <class Tuple, class... Ts>
struct TupleConverter {
  static Owned toPython(const Tuple& values) {
    const auto make = [](const Ts&... each) {
      return makeTuple(std::initializer_list<PyObject*>{detail::toPython(each)...});
    };
    return std::apply(make, values);
  }
  static Tuple fromPython(PyObject* object) {
    const std::vector<Owned> items = readItems(object);
    if (items.size() != sizeof...(Ts)) wrongLength(items.size(), sizeof...(Ts));
    [[maybe_unused]] auto item = items.begin();
    return Tuple{detail::fromPython<Ts>(*item++)...};
  }
};

}  // namespace detail

/// A `tuple`. Reads an iterable with exactly that many items.
template <class... Ts>
struct Converter<std::tuple<Ts...>> : detail::TupleConverter<std::tuple<Ts...>, Ts...> {};
/// As a `std::tuple` of two.
template <class First, class Second>
struct Converter<std::pair<First, Second>>
    : detail::TupleConverter<std::pair<First, Second>, First, Second> {};

/// Maps: a `dict`. Reads every mapping.
template <class Map>
struct Converter<Map, std::enable_if_t<detail::isMap<Map>>> {
  static detail::Owned toPython(const Map& map) {
    detail::Owned dict(detail::api->PyDict_New());
    for (const auto& [key, value] : map) {
      detail::api->PyObject_SetItem(dict, detail::toPython(key), detail::toPython(value));
    }
    return dict;
  }
  static Map fromPython(PyObject* object) {
    using Item = std::pair<typename Map::key_type, typename Map::mapped_type>;
    Map map;
    detail::eachFromPython<Item>(detail::callHelper(detail::Helper::items, {object}),
                                 [&](Item item) { map.insert(std::move(item)); });
    return map;
  }
};

/// Sets: a `set`. Reads every iterable but texts.
template <class Set>
struct Converter<Set, std::enable_if_t<detail::hasKeys<Set> && !detail::isMap<Set>>> {
  static detail::Owned toPython(const Set& values) {
    return detail::callHelper(detail::Helper::set,
                              {detail::makeTuple(detail::eachToPython(values))});
  }
  static Set fromPython(PyObject* object) {
    Set values;
    using T = typename Set::value_type;
    detail::eachFromPython<T>(object, [&](T value) { values.insert(std::move(value)); });
    return values;
  }
};

/// A duration is a `datetime.timedelta`, rounded down to its microseconds; it is read from one, and
/// from NumPy's. A time point is a `datetime.datetime` in UTC; it is read from one of any time
/// zone, and from NumPy's; without a time zone it is taken as UTC.
template <class T>
struct Converter<T, std::enable_if_t<detail::isDuration<T> || detail::isInstant<T>>> {
  static detail::Owned toPython(const T& value) {
    return detail::callHelper(make, {detail::toPython(detail::toMicroseconds(value))});
  }
  static T fromPython(PyObject* object) {
    const auto value =
        detail::fromMicroseconds<T>(detail::readSigned(detail::callHelper(read, {object})));
    if (!value) detail::doesNotFit(object, "the unit of the duration");
    return *value;
  }

 private:
  static constexpr detail::Helper make =
      detail::isInstant<T> ? detail::Helper::makeInstant : detail::Helper::makeDuration;
  static constexpr detail::Helper read =
      detail::isInstant<T> ? detail::Helper::instantOf : detail::Helper::durationOf;
};

}  // namespace pelion_core::host

#include "pelion_core/host/block.h"
