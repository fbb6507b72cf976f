#pragma once

#include <cstddef>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "pelion_core/host/error.h"
#include "pelion_core/host/runtime.h"

namespace pelion_core::host {

/// How a C++ type crosses to Python and back. Specialise it for a type of your own:
///
///     template <>
///     struct pelion_core::host::Converter<Point> {
///       static Object toPython(const Point& point);
///       static Point fromPython(const Object& object);
///     };
///
/// The conversions that exist stand in convert.h, block.h and table.h.
template <class T, class Enable = void>
struct Converter;

/// A keyword argument of a call. Lives as long as the call's full expression.
template <class T>
struct Keyword {
  const char* name;  ///< UTF-8
  const T& value;    ///< converted when the call is made
};

/// A keyword argument: `f(1, kw("key", 2))` is `f(1, key=2)`.
template <class T>
Keyword<T> kw(const char* name, const T& value) {
  return {name, value};
}

namespace detail {

// What the members of `Object` are made of, in an operation; below.
template <class T>
Owned toPython(const T& value);
template <class T>
T fromPython(PyObject* object);
template <class T>
auto lent(const T& value);
template <class Key>
Owned item(PyObject* object, const Key& key);
template <class... Arguments>
Owned call(PyObject* callable, const Arguments&... arguments);

}  // namespace detail

/// One Python object. Copies share it. Every member is one Python expression; values convert both
/// ways as their `Converter` says, and what Python raises is thrown as `Error`. An empty object, or
/// one of a closed session, can be destroyed and assigned; else it throws `std::logic_error`.
class Object {
 public:
  /// No object.
  Object() = default;
  /// Takes the result of a flat function in. An empty handle gives an empty object.
  explicit Object(const PyHandle& handle);
  /// Takes a reference over, in an operation.
  explicit Object(detail::Owned object) : reference_(detail::enlist(std::move(object))) {}
  /// Makes a Python object of a C++ value.
  template <class T>
  static Object of(const T& value) {
    return detail::perform([&] { return Object(detail::toPython(value)); });
  }

  /// Shares the object.
  Object(const Object& other) noexcept : reference_(other.reference_) {
    if (reference_ != nullptr) reference_->users.fetch_add(1, std::memory_order_relaxed);
  }
  /// Leaves `other` empty.
  Object(Object&& other) noexcept : reference_(std::exchange(other.reference_, nullptr)) {}
  /// Shares the object.
  Object& operator=(const Object& other) noexcept { return *this = Object(other); }
  /// Gives the other one what this one had.
  Object& operator=(Object&& other) noexcept {
    std::swap(reference_, other.reference_);
    return *this;
  }
  /// Drops the reference, unless the session is closed.
  ~Object() {
    if (reference_ == nullptr) return;
    if (reference_->users.fetch_sub(1, std::memory_order_acq_rel) == 1) detail::retire(reference_);
  }

  /// Whether there is an object, of an open session.
  explicit operator bool() const { return reference_ != nullptr && reference_->object != nullptr; }
  /// The handle, for the flat functions. It must not outlive the session.
  const PyHandle& handle() const;
  /// The object itself, borrowed.
  ::python::pyArray* get() const {
    if (!*this) fail();
    return toPyArray(reference_->object);
  }

  /// `object.name`.
  Object attr(const std::string& name) const;
  /// `object.name = value`.
  template <class T>
  void set(const std::string& name, const T& value) const {
    detail::perform(
        [&] { detail::api->PyObject_SetAttrString(object(), name.c_str(), detail::lent(value)); });
  }
  /// `hasattr(object, name)`.
  bool has(const std::string& name) const;

  /// `object[key]`: a key or an index, from the end when negative.
  template <class Key>
  Object operator[](const Key& key) const {
    return detail::perform([&] { return Object(detail::item(object(), key)); });
  }
  /// `object[key] = value`.
  template <class Key, class T>
  void setItem(const Key& key, const T& value) const {
    detail::perform(
        [&] { detail::api->PyObject_SetItem(object(), detail::lent(key), detail::lent(value)); });
  }
  /// `del object[key]`.
  template <class Key>
  void remove(const Key& key) const {
    detail::perform([&] {
      detail::callHelper(detail::Helper::remove, {object(), detail::lent(key)});
    });
  }

  /// `object(*arguments)`, those made by `kw` as keywords.
  template <class... Arguments>
  Object operator()(const Arguments&... arguments) const {
    return detail::perform([&] { return Object(detail::call(object(), arguments...)); });
  }
  /// `object(*arguments, **keywords)`: a call whose arguments only running the program tells.
  Object apply(const std::vector<Object>& arguments,
               const std::map<std::string, Object>& keywords = {}) const;

  /// `len(object)`.
  std::size_t size() const;
  /// `value in object`.
  template <class T>
  bool contains(const T& value) const {
    return detail::perform([&] {
      return detail::fromPython<bool>(
          detail::callHelper(detail::Helper::contains, {object(), detail::lent(value)}));
    });
  }
  /// `bool(object == value)`.
  template <class T>
  bool operator==(const T& value) const {
    return detail::perform(
        [&] { return detail::api->PyObject_RichCompareBool(object(), detail::lent(value)); });
  }
  /// `bool(object == value)`, negated.
  template <class T>
  bool operator!=(const T& value) const {
    return !(*this == value);
  }
  /// `object is other`.
  bool is(const Object& other) const { return get() == other.get(); }
  /// `object is None`.
  bool isNone() const;

  /// `str(object)` as UTF-8; a lone surrogate stands in it as an escape.
  std::string str() const;
  /// `repr(object)`, likewise.
  std::string repr() const;

  /// The value as C++ has it: `object.as<double>()`. Throws `Error` when it is of another kind
  /// (`TypeError`), does not fit (`OverflowError`) or has the wrong length (`ValueError`).
  template <class T>
  T as() const {
    return detail::perform([&] { return detail::fromPython<T>(object()); });
  }

  class Iterator;
  /// `iter(object)`: `for (Object item : object)`.
  Iterator begin() const;
  /// The end of every iteration.
  Iterator end() const;

 private:
  PyObject* object() const { return toPyObject(get()); }
  [[noreturn]] void fail() const;

  detail::Reference* reference_ = nullptr;
};

/// Walks through what Python iterates over, once.
class Object::Iterator {
 public:
  using iterator_category = std::input_iterator_tag;  ///< for algorithms
  using value_type = Object;                          ///< for algorithms
  using difference_type = std::ptrdiff_t;             ///< for algorithms
  using pointer = const Object*;                      ///< for algorithms
  using reference = const Object&;                    ///< for algorithms

  /// The end.
  Iterator() = default;
  /// At the first item of `iter(object)`.
  explicit Iterator(const Object& object);

  /// The item.
  const Object& operator*() const { return item_; }
  /// The item.
  const Object* operator->() const { return &item_; }
  /// `next(iterator)`.
  Iterator& operator++();
  /// Whether both are, or neither is, at the end.
  bool operator==(const Iterator& other) const { return !item_ == !other.item_; }
  /// Whether one of them is at the end.
  bool operator!=(const Iterator& other) const { return !(*this == other); }

 private:
  Object arguments_;  // (iterator, what `next` gives at the end)
  Object item_;
};

namespace detail {

inline PyObject* borrowed(const Object& object) { return toPyObject(object.get()); }
inline Owned owned(Owned object) { return object; }
inline Owned owned(const Object& object) { return share(borrowed(object)); }

/// A C++ value made a Python object. In an operation.
template <class T>
Owned toPython(const T& value) {
  if constexpr (std::is_same_v<T, Object>) {
    return owned(value);
  } else {
    return owned(Converter<std::decay_t<const T&>>::toPython(value));
  }
}

template <class T, class... Others>
inline constexpr bool isOneOf = (std::is_same_v<T, Others> || ...);

/// The integers that are numbers, not characters or truth values.
template <class T>
inline constexpr bool isInteger =
    std::is_integral_v<T> && !isOneOf<T, bool, char, wchar_t, char16_t, char32_t>;

/// The same, as an argument: an object as it is, without a reference of its own.
template <class T>
auto lent(const T& value) {
  if constexpr (std::is_same_v<T, Object>) {
    return borrowed(value);
  } else {
    return toPython(value);
  }
}

/// `object[key]`. Lists and tuples need no `int` for an index that is none from their end.
template <class Key>
Owned item(PyObject* object, const Key& key) {
  if constexpr (isInteger<Key>) {
    const auto index = static_cast<std::int64_t>(key);
    if (index >= 0 && (api->PyList_Check(object) || api->PyTuple_Check(object))) {
      return Owned(api->PySequence_GetItem(object, index));
    }
  }
  return Owned(api->PyObject_GetItem(object, lent(key)));
}

template <class T, class = void>
inline constexpr bool readsBorrowed = false;
template <class T>
inline constexpr bool
    readsBorrowed<T, std::void_t<decltype(Converter<T>::fromPython(std::declval<PyObject*>()))>> =
        true;

/// A Python object read as a C++ value. In an operation.
template <class T>
T fromPython(PyObject* object) {
  if constexpr (std::is_same_v<T, Object>) {
    return Object(share(object));
  } else if constexpr (readsBorrowed<T>) {
    return Converter<T>::fromPython(object);
  } else {
    return Converter<T>::fromPython(Object(share(object)));
  }
}

template <class T>
inline constexpr bool isKeyword = false;
template <class T>
inline constexpr bool isKeyword<Keyword<T>> = true;

/// The arguments of one call.
struct Call {
  Owned tuple;
  Owned keywords{};
  std::int64_t count = 0;

  template <class T>
  void add(const T& value) {
    if constexpr (isKeyword<T>) {
      addKeyword(toPython(value.name), lent(value.value));
    } else {
      api->setTupleItem(tuple, count++, lent(value));
    }
  }
  void addKeyword(PyObject* name, PyObject* value) {
    if (keywords == nullptr) keywords = Owned(api->PyDict_New());
    api->PyObject_SetItem(keywords, name, value);
  }
};

/// `callable(*arguments)`, those made by `kw` as keywords.
template <class... Arguments>
Owned call(PyObject* callable, const Arguments&... arguments) {
  Call all{Owned(api->PyTuple_New((0 + ... + (isKeyword<Arguments> ? 0 : 1))))};
  (all.add(arguments), ...);
  return Owned(api->PyObject_Call(callable, all.tuple, all.keywords));
}

}  // namespace detail

inline Object::Iterator Object::begin() const { return Iterator(*this); }
inline Object::Iterator Object::end() const { return Iterator(); }

}  // namespace pelion_core::host

#include "pelion_core/host/convert.h"
