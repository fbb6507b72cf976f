#pragma once

#include <string>
#include <vector>

#include "pelion_core/host/settings.h"

/// @file
/// Which Pythons a machine has.

namespace pelion_core::host {

/// A Python that was found. Its files were looked at, no program was run, nothing was loaded.
struct Candidate {
  /// As far as the files tell; the others are empty. `version` is "3.12".
  Settings settings;

  /// The folder of its virtual environment; empty for none.
  std::string environment;

  /// "venv", "conda", "pyenv", "uv", "system" (of the operating system), "python" (any other),
  /// "library" (no program belongs to it).
  std::string kind;

  /// How it was found, each way in words: "VIRTUAL_ENV", "PATH", "pyenv".
  std::vector<std::string> found;
};

/// The Pythons of this machine in the order in which a user means them:
///
/// 1. the active virtual environment (`VIRTUAL_ENV`), then the active conda environment
///    (`CONDA_PREFIX`)
/// 2. `PATH`, folder by folder: `python3`, `python`, then `python3.X`, the newest first. A pyenv
/// shim
///    stands for the version that `PYENV_VERSION`, a `.python-version` or pyenv's `version` selects
/// 3. Windows: what is registered after PEP 514, of this user and then of the machine, after the
///    version of `PY_PYTHON`, the newest first
/// 4. pyenv, uv and conda below the user's folder, then the fixed places of the system, each the
///    newest first
/// 5. runtime libraries beside these that belong to none of the programs, a debug build for example
///
/// One library file with one environment is one candidate, in the first place where it was found.
/// Takes milliseconds: no program is run. Throws nothing but std::bad_alloc.
std::vector<Candidate> discover();

/// The Python that `what` names: a runtime library, a program (by path or by its name on `PATH`),
/// an environment or an installation by its folder, or a version ("3.12", "3.12.1"), which gives
/// every one of `discover()` of this version. Empty for a version that is not there; else one
/// candidate, whether or not it exists: `inspect` tells.
std::vector<Candidate> discover(const std::string& what);

/// The settings of the first of `discover()` that can be used, which `inspect` finds without
/// loading it. Programs are run where their files do not tell which Python they start.
///
/// @throws LoadError  none can be used; the message lists each with the reason, and a remedy
Settings firstUsable();

}  // namespace pelion_core::host
