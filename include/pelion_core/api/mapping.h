#pragma once

#include "pelion_core/api/handle.h"

/// Dictionaries and mappings in general.
namespace pelion_core::api::mapping {

/// `isinstance(object, dict)`.
PELION_CORE_EXPORT bool pyIsDict(pyArray* object);

/// Whether the object supports the mapping protocol (so does a `list`).
PELION_CORE_EXPORT bool pyIsMapping(pyArray* object);

/// An empty dictionary.
PELION_CORE_EXPORT PyHandle pyCreateDict();

/// A dictionary of the pairs (key, value), in one frame; of two equal keys the later wins. The
/// vector keeps its handles.
PELION_CORE_EXPORT PyHandle pyCreateDict(const std::vector<std::pair<PyHandle, PyHandle>>& items);

/// `map[key]`; a missing key raises `KeyError`.
PELION_CORE_EXPORT PyHandle pyMappingGetItem(pyArray* map, pyArray* key);

/// `map[key] = value`; "Python API (probably set) failed." when Python raised.
PELION_CORE_EXPORT void pyMappingSetKey(pyArray* map, pyArray* key, pyArray* value);

/// `map.items()`, made a list when it is no sequence.
PELION_CORE_EXPORT PyHandle pyMappingGetItems(pyArray* map);

}  // namespace pelion_core::api::mapping
