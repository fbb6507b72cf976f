#pragma once

#include <memory>

#include "api/frame.h"
#include "pelion_core/api/handle.h"

/// References that live and die inside one frame. They cost no control block and no frame of their
/// own, which a `PyHandle` does.
namespace pelion_core::api {

struct ReferenceReleaser {
  PyAPIImpl* api;
  void operator()(PyObject* object) const { api->Py_DecRef(object); }
};

/// Owns one reference; must not outlive the frame it was made in.
using Reference = std::unique_ptr<PyObject, ReferenceReleaser>;

inline Reference own(const Frame& api, PyObject* newReference) {
  return Reference(newReference, ReferenceReleaser{&*api});
}

/// A tuple of the items, each with a reference of its own.
Reference newTuple(const Frame& api, const std::vector<PyHandle>& items);

/// A dictionary of the pairs (key, value), in their order.
Reference newDict(const Frame& api, const std::vector<std::pair<PyHandle, PyHandle>>& items);

}  // namespace pelion_core::api
