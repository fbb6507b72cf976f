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
template <class T>
inline constexpr bool isList = false;
template <class T>
inline constexpr bool isList<std::vector<T>> = !isNumber<T>;

/// Throws the `OverflowError` of a value that does not fit.
[[noreturn]] void doesNotFit(PyObject* value, const std::string& type);
/// Throws the `ValueError` of a wrong length.
[[noreturn]] void wrongLength(std::size_t found, std::size_t wanted);

inline Owned made(bool value) { return Owned(api->PyBool_FromLong(value)); }
inline Owned made(std::int64_t value) { return Owned(api->PyLong_FromLongLong(value)); }
inline Owned made(std::uint64_t value) { return Owned(api->PyLong_FromUnsignedLongLong(value)); }
inline Owned made(double value) { return Owned(api->PyFloat_FromDouble(value)); }
void read(PyObject* object, bool& value);
void read(PyObject* object, std::int64_t& value);
void read(PyObject* object, std::uint64_t& value);
void read(PyObject* object, double& value);
std::complex<double> readComplex(PyObject* object);
std::string readUtf8(PyObject* object);
std::u16string readUtf16(PyObject* object);
Owned makeUtf16(const std::u16string& text);
/// The items of an iterable that is no text, as the objects that they are.
std::vector<Owned> readItems(PyObject* iterable);
bool isNone(PyObject* object);

/// A number in a narrower type: infinities and NaN as they are, no new infinity.
template <class T, class Wide>
T narrowed(Wide value, PyObject* object) {
  const T result = static_cast<T>(value);
  if constexpr (std::is_floating_point_v<T>) {
    if (!std::isfinite(result) && std::isfinite(value)) doesNotFit(object, "a float of 32 bits");
  } else if (static_cast<Wide>(result) != value) {
    doesNotFit(object, std::string(std::is_signed_v<T> ? "a signed" : "an unsigned") +
                           " integer of " + std::to_string(8 * sizeof(T)) + " bits");
  }
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

/// `bool`: `True`, `False`. Reads a `bool` or a NumPy one, nothing else. Integers: an `int`. Reads
/// what is an integer to Python (`operator.index`) and fits. Floating numbers: a `float`. Reads
/// anything with `__float__` or `__index__`, so no strings.
template <class T>
struct Converter<T, std::enable_if_t<std::is_floating_point_v<T> || detail::isInteger<T> ||
                                     std::is_same_v<T, bool>>> {
  static detail::Owned toPython(T value) { return detail::made(static_cast<Wide>(value)); }
  static T fromPython(PyObject* object) {
    Wide value{};
    detail::read(object, value);
    return detail::narrowed<T>(value, object);
  }

 private:
  using Wide = std::conditional_t<
      std::is_floating_point_v<T>, double,
      std::conditional_t<std::is_same_v<T, bool>, bool,
                         std::conditional_t<std::is_signed_v<T>, std::int64_t, std::uint64_t>>>;
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
    static_assert(std::is_same_v<T, std::string>, "read strings as std::string, which owns them");
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
                  "read strings as std::u16string, which owns them");
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

/// Vectors: a `list`, but of numbers a block, see block.h; sets: a `set`. Read every iterable but
/// texts. Maps: a `dict`. Read every mapping.
template <class Container>
struct Converter<Container,
                 std::enable_if_t<detail::isList<Container> || detail::hasKeys<Container>>> {
  static detail::Owned toPython(const Container& values) {
    if constexpr (detail::isMap<Container>) {
      detail::Owned dict(detail::api->PyDict_New());
      for (const auto& [key, value] : values) {
        detail::api->PyObject_SetItem(dict, detail::lent(key), detail::lent(value));
      }
      return dict;
    } else {
      const detail::Owned items = detail::makeTuple(detail::eachToPython(values));
      if (detail::hasKeys<Container>) return detail::callHelper(detail::Helper::set, {items});
      return detail::Owned(detail::api->PySequence_List(items));
    }
  }
  static Container fromPython(PyObject* object) {
    Container values;
    const auto add = [&](auto value) { values.insert(values.end(), std::move(value)); };
    if constexpr (detail::isMap<Container>) {
      using Item = std::pair<typename Container::key_type, typename Container::mapped_type>;
      detail::eachFromPython<Item>(detail::callHelper(detail::Helper::items, {object}), add);
    } else {
      detail::eachFromPython<typename Container::value_type>(object, add);
    }
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

/// A duration is a `datetime.timedelta`, rounded down to its microseconds; it is read from one, and
/// from NumPy's. A time point is a `datetime.datetime` in UTC; it is read from one of any time
/// zone, and from NumPy's; without a time zone it is taken as UTC.
template <class T>
struct Converter<T, std::enable_if_t<detail::isDuration<T> || detail::isInstant<T>>> {
  static detail::Owned toPython(const T& value) {
    return detail::callHelper(make, {detail::toPython(detail::toMicroseconds(value))});
  }
  static T fromPython(PyObject* object) {
    const detail::Owned count = detail::callHelper(read, {object});
    const auto value = detail::fromMicroseconds<T>(detail::fromPython<std::int64_t>(count));
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
