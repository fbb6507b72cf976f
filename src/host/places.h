#pragma once

#include <string>
#include <vector>

#include "files.h"

namespace pelion_core::host {

/// A folder that may hold an installation or an environment, and how it was found.
struct Place {
  fs::path folder;
  std::string found;
};

/// What the system's registry of Pythons names: PEP 514 on Windows, nothing elsewhere.
std::vector<Place> registeredPlaces();

/// Where tools and people put Pythons on this system, each group the newest first.
std::vector<Place> usualPlaces();

/// The value of an environment variable as UTF-8, or nothing.
std::string variable(const char* name);

/// The entries of a variable such as `PATH`, without empty ones.
std::vector<fs::path> pathList(const std::string& value);

/// The folder of the user and below it.
fs::path userFolder();

/// Adds each folder in `parent`, the newest version first.
void addAllIn(std::vector<Place>& places, const fs::path& parent, const char* found);

/// Adds conda's base below the given folders, its environments, and those that conda has written
/// down.
void addConda(std::vector<Place>& places, const std::vector<fs::path>& bases);

}  // namespace pelion_core::host
