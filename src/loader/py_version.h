#pragma once

#include <string>

namespace pelion_core {

/// What the host said of the interpreter it loaded; one record per process.
struct PyVersionPerProcess {
  std::u16string version;
  bool flag = true;  ///< the host's own
};

/// The record; throws `platform::RegistryError` before the first successful load.
const PyVersionPerProcess& currentPyVersion();

/// The record, made with its defaults when there is none.
PyVersionPerProcess& getOrCreatePyVersion();

/// Whether the host declared Python 2.7, whose names some functions then use.
inline bool isVersionTwo() { return currentPyVersion().version == u"2.7"; }

}  // namespace pelion_core
