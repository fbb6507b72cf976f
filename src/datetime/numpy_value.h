#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "api/expression.h"
#include "datetime/columns.h"

/// What the decompositions of dates and durations share: questions to a NumPy value.
namespace pelion_core::detail {

/// The two kinds of value that are decomposed.
struct DatetimeKind {
  const char* dtype;       ///< how the name of NumPy's type begins
  const char* objectType;  ///< what a host calls Python's type
};
constexpr DatetimeKind dateKind = {"datetime64", "py.datetime.datetime"};
constexpr DatetimeKind durationKind = {"timedelta64", "py.datetime.timedelta"};

/// How a NumPy value holds them.
enum class Contents {
  Unsupported,  ///< not at all, or it is empty, or asking failed
  Numbers,      ///< as the NumPy type
  Objects,      ///< as Python objects, judged by the first one
};

struct Classified {
  Contents contents = Contents::Unsupported;
  std::uint64_t size = 0;
};

/// What a value holds, and how much of it.
Classified classify(Borrowed value, const DatetimeKind& kind);

/// `numpy.isnat(value)`.
Reference isNaT(Borrowed value);

/// The elements of `isNaT(array)`, of which there are `count`.
NotATime natElements(Borrowed array, std::size_t count);

/// The unit in `value.dtype.name`: "ms" of "timedelta64[ms]"; empty when it has none.
std::string unitText(Borrowed value);

/// `value.astype(dtype)`.
Reference astype(Borrowed value, const std::u16string& dtype);

/// `array.flatten(order="F")`.
Reference flatten(Borrowed array);

/// `array.ndim` and `array.shape`.
std::pair<std::uint64_t, std::vector<std::uint64_t>> shapeOf(Borrowed array);

/// Tells whether an object's type comes from Python's `datetime` module, so that it is not None
/// either. In a walk most elements have the type of the one before, which is not named again.
class DatetimeModuleTest {
 public:
  bool operator()(Borrowed object);

 private:
  Reference type_;
  bool isFromDatetime_ = false;
};

/// Reads one integer attribute, its low 32 bits. The name is one object for a whole walk: Python's
/// cache of type look-ups knows it again.
class IntAttribute {
 public:
  explicit IntAttribute(const char* name) : name_(str(std::string(name))) {}

  HostLong operator()(const Frame& api, Borrowed object) const {
    PyObject* const value = api->PyObject_GetAttr(object, name_.get());
    const HostLong number = api->intAsLong(value);
    api->Py_DecRef(value);
    return number;
  }

 private:
  Reference name_;
};

}  // namespace pelion_core::detail
