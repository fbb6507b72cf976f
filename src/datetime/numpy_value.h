#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "api/frame.h"
#include "api/reference.h"
#include "pelion_core/api/handle.h"

/// What the decompositions of dates and durations share: questions to a NumPy value, and the walk
/// over elements.
namespace pelion_core::api::primitive {

/// Whether a NumPy value is valid, which is to hold `wanted` ("datetime64" or "timedelta64") or
/// objects of the `datetime` type that belongs to it, judged by the first one; and whether it holds
/// the NumPy type itself. Empty values and failures are not valid.
std::pair<bool, bool> classifyDatetimeInput(pyArray* obj, const std::string& wanted);

/// `numpy.isnat(obj)`.
PyHandle isNaT(pyArray* obj);

/// The unit in `obj.dtype.name`: "ms" of "timedelta64[ms]"; empty when it has none.
std::string unitText(pyArray* obj);

/// `obj.astype(dtype)`.
PyHandle astype(pyArray* obj, const std::u16string& dtype);

/// `obj.flatten(order="F")`.
PyHandle flatten(pyArray* obj);

/// `obj.size`.
std::uint64_t sizeOf(pyArray* obj);

/// `obj.ndim` and `obj.shape`.
std::pair<std::uint64_t, std::vector<std::uint64_t>> shapeOf(pyArray* obj);

/// Tells whether an object's type comes from Python's `datetime` module, so that it is not None
/// either. In a walk most elements have the type of the one before, which is not named again.
class DatetimeModuleTest {
 public:
  bool operator()(pyArray* obj);

 private:
  PyHandle type_;
  bool isFromDatetime_ = false;
};

/// Reads one integer attribute, its low 32 bits. The name is one object for a whole walk: Python's
/// cache of type look-ups knows it again.
class IntAttribute {
 public:
  IntAttribute(const Frame& api, const char* name);

  HostLong operator()(PyObject* obj) const {
    const Reference value = own(api_, api_->PyObject_GetAttr(obj, toPyObject(name_.get())));
    return api_->intAsLong(value.get());
  }

 private:
  const Frame& api_;
  PyHandle name_;
};

/// `sequence[index]`.
inline Reference itemAt(const Frame& api, pyArray* sequence, std::size_t index) {
  return own(api, api->PySequence_GetItem(toPyObject(sequence), static_cast<std::int64_t>(index)));
}

/// Calls `use(index, item)` with the items 0 to `count` - 1 of a sequence.
template <class Use>
void eachItem(const Frame& api, pyArray* sequence, std::size_t count, Use use) {
  for (std::size_t i = 0; i < count; ++i) use(i, itemAt(api, sequence, i).get());
}

/// The elements of `isNaT(obj)`, which has `count` of them.
std::vector<bool> natElements(const Frame& api, pyArray* obj, std::size_t count);

/// Reads the elements of a flat array with an operation of the interface into `out`, which has as
/// many. Those that are not-a-time are not looked at and become zero.
template <class Element, class Number>
void readElements(const Frame& api, const PyHandle& flat, const std::vector<bool>& nat,
                  Number (PyAPIImpl::*read)(PyObject*), std::vector<Element>& out) {
  for (std::size_t i = 0; i < nat.size(); ++i) {
    out[i] = nat[i] ? 0 : ((*api).*read)(itemAt(api, flat.get(), i).get());
  }
}

}  // namespace pelion_core::api::primitive
