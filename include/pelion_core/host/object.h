#pragma once

#include <cstddef>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "pelion_core/api/mapping.h"
#include "pelion_core/api/object.h"
#include "pelion_core/api/sequence.h"
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

/// One Python object. Copies share it. Every member is one Python expression; values convert both
/// ways as their `Converter` says, and what Python raises is thrown as `Error`. An empty object, or
/// one of a closed session, can be destroyed and assigned; else it throws `std::logic_error`.
class Object {
 public:
  /// No object.
  Object() = default;
  /// Takes the result of a flat function in. An empty handle gives an empty object.
  explicit Object(PyHandle handle);
  /// Makes a Python object of a C++ value.
  template <class T>
  static Object of(const T& value);

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
  explicit operator bool() const { return reference_ != nullptr && reference_->handle; }
  /// The handle, for the flat functions. It must not outlive the session.
  const PyHandle& handle() const;
  /// The object itself, borrowed.
  ::python::pyArray* get() const { return handle().get(); }

  /// `object.name`.
  Object attr(const std::string& name) const;
  /// `object.name = value`.
  template <class T>
  void set(const std::string& name, const T& value) const;
  /// `hasattr(object, name)`.
  bool has(const std::string& name) const;

  /// `object[key]`: a key or an index, from the end when negative.
  template <class Key>
  Object operator[](const Key& key) const;
  /// `object[key] = value`.
  template <class Key, class T>
  void setItem(const Key& key, const T& value) const;
  /// `del object[key]`.
  template <class Key>
  void remove(const Key& key) const;

  /// `object(*arguments)`, those made by `kw` as keywords.
  template <class... Arguments>
  Object operator()(const Arguments&... arguments) const;
  /// `object(*arguments, **keywords)`: a call whose arguments only running the program tells.
  Object apply(const std::vector<Object>& arguments,
               const std::map<std::string, Object>& keywords = {}) const;

  /// `len(object)`.
  std::size_t size() const;
  /// `value in object`.
  template <class T>
  bool contains(const T& value) const;
  /// `bool(object == value)`.
  template <class T>
  bool operator==(const T& value) const;
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
  T as() const;

  class Iterator;
  /// `iter(object)`: `for (Object item : object)`.
  Iterator begin() const;
  /// The end of every iteration.
  Iterator end() const;

 private:
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

inline PyHandle handleOf(PyHandle handle) { return handle; }
inline PyHandle handleOf(const Object& object) { return object.handle(); }

/// A C++ value made a Python object. In an operation.
template <class T>
PyHandle toPython(const T& value) {
  return handleOf(Converter<std::decay_t<const T&>>::toPython(value));
}
inline PyHandle toPython(const Object& object) { return object.handle(); }

template <class T, class = void>
struct ReadsHandles : std::false_type {};
template <class T>
struct ReadsHandles<
    T, std::void_t<decltype(Converter<T>::fromPython(std::declval<const PyHandle&>()))>>
    : std::true_type {};

/// A Python object read as a C++ value. In an operation.
template <class T>
T fromPython(const PyHandle& handle) {
  if constexpr (std::is_same_v<T, Object>) {
    return Object(handle);
  } else if constexpr (ReadsHandles<T>::value) {
    return Converter<T>::fromPython(handle);
  } else {
    return Converter<T>::fromPython(Object(handle));
  }
}

template <class T>
inline constexpr bool isKeyword = false;
template <class T>
inline constexpr bool isKeyword<Keyword<T>> = true;

/// The arguments of one call; the positional ones go straight into their tuple.
struct Call {
  PyHandle tuple;
  std::uint64_t count = 0;
  PyKeywords keywords;

  template <class T>
  void add(const T& value) {
    if constexpr (isKeyword<T>) {
      keywords.emplace_back(toPython(value.name), toPython(value.value));
    } else if constexpr (std::is_same_v<T, Object>) {
      api::sequence::pyTupleSetValue(tuple.get(), count++, value.get());
    } else {
      api::sequence::pyTupleSetValue(tuple.get(), count++, toPython(value).get());
    }
  }
  PyHandle invoke(::python::pyArray* callable) const;
};

}  // namespace detail

template <class T>
Object Object::of(const T& value) {
  return detail::perform([&] { return Object(detail::toPython(value)); });
}

template <class T>
void Object::set(const std::string& name, const T& value) const {
  detail::perform([&] {
    api::object::pySetMember(get(), detail::toPython(name).get(), detail::toPython(value).get());
  });
}

template <class Key>
Object Object::operator[](const Key& key) const {
  return detail::perform(
      [&] { return Object(api::mapping::pyMappingGetItem(get(), detail::toPython(key).get())); });
}

template <class Key, class T>
void Object::setItem(const Key& key, const T& value) const {
  detail::perform([&] {
    api::mapping::pyMappingSetKey(get(), detail::toPython(key).get(),
                                  detail::toPython(value).get());
  });
}

template <class Key>
void Object::remove(const Key& key) const {
  detail::perform([&] {
    detail::callHelper(detail::Helper::remove, {handle(), detail::toPython(key)});
  });
}

template <class... Arguments>
Object Object::operator()(const Arguments&... arguments) const {
  return detail::perform([&] {
    constexpr std::size_t positional = (0 + ... + (detail::isKeyword<Arguments> ? 0 : 1));
    detail::Call call{api::sequence::pyTupleCreateSize(positional), 0, {}};
    (call.add(arguments), ...);
    return Object(call.invoke(get()));
  });
}

template <class T>
bool Object::contains(const T& value) const {
  return detail::perform([&] {
    return detail::fromPython<bool>(
        detail::callHelper(detail::Helper::contains, {handle(), detail::toPython(value)}));
  });
}

template <class T>
bool Object::operator==(const T& value) const {
  return detail::perform(
      [&] { return api::object::pyEqual(get(), detail::toPython(value).get()); });
}

template <class T>
T Object::as() const {
  return detail::perform([&] { return detail::fromPython<T>(handle()); });
}

inline Object::Iterator Object::begin() const { return Iterator(*this); }
inline Object::Iterator Object::end() const { return Iterator(); }

}  // namespace pelion_core::host

#include "pelion_core/host/convert.h"
