#pragma once

#include <string>
#include <vector>

#include "files.h"
#include "pelion_core/host/discover.h"

namespace pelion_core::host {

/// What a `pyvenv.cfg` says of its environment.
struct Environment {
  fs::path folder;
  std::string version;  ///< of the Python that made it, "3.12"
  fs::path base;        ///< the folder of the program that made it; may be gone
  fs::path program;     ///< that program, when it is told; may be gone
};

/// The environment in a folder; its `folder` is empty when it is none.
Environment environmentIn(const fs::path& folder);

/// What a file name says of a Python: "libpython3.6dm.so.1.0", "python312_d.dll", "python3.13t".
struct BuildName {
  std::string version;  ///< "3.6"; empty when it names none
  bool debug = false;
  bool freeThreaded = false;
};
BuildName buildName(const std::string& fileName);
bool namesLibrary(const std::string& fileName);

/// Whether a file is the library of a framework, Apple's way to install:
/// "Python.framework/Versions/3.12/Python".
bool isFrameworkLibrary(const fs::path& file);

/// The folder of a version's standard library under a home, or the archive that it is.
/// Empty when there is none.
fs::path standardLibrary(const fs::path& home, const BuildName& build);
/// The same on a module search path.
fs::path standardLibraryOn(const std::vector<fs::path>& path);

/// The folders in which packages of a candidate lie, in the order of import.
std::vector<fs::path> packageFolders(const Candidate& candidate);

/// What the files tell of the Python that a library, a program or a folder belongs to.
Candidate candidateOfLibrary(const fs::path& library);
Candidate candidateOfProgram(const fs::path& program);
Candidate candidateOfFolder(const fs::path& folder);

/// The programs of a folder that are called like a Python's, in order of preference, and the
/// runtime libraries.
std::vector<fs::path> programsIn(const fs::path& folder);
std::vector<fs::path> librariesIn(const fs::path& folder);

/// The folders of an installation in which its libraries may lie.
std::vector<fs::path> libraryFolders(const fs::path& home);

/// By number: "3.9" comes before "3.10".
bool isOlder(const std::string& version, const std::string& other);

}  // namespace pelion_core::host
