#include "places.h"

#include <algorithm>
#include <boost/algorithm/string/trim.hpp>
#include <sstream>

#include "installation.h"

namespace pelion_core::host {

std::vector<fs::path> pathList(const std::string& value) {
#if defined(_WIN32)
  constexpr char separator = ';';
#else
  constexpr char separator = ':';
#endif
  std::vector<fs::path> entries;
  std::istringstream parts(value);
  for (std::string part; std::getline(parts, part, separator);) {
    if (!part.empty()) entries.push_back(pathOf(part));
  }
  return entries;
}

void addAllIn(std::vector<Place>& places, const fs::path& parent, const char* found) {
  std::vector<fs::path> folders = entriesOf(parent);
  std::stable_sort(folders.begin(), folders.end(), [](const auto& left, const auto& right) {
    return isOlder(utf8(right.filename()), utf8(left.filename()));
  });
  for (fs::path& folder : folders) {
    if (isFolder(folder)) places.push_back({std::move(folder), found});
  }
}

void addConda(std::vector<Place>& places, const std::vector<fs::path>& bases) {
  for (const fs::path& base : bases) {
    if (!isFolder(base / "conda-meta")) continue;
    places.push_back({base, "conda"});
    addAllIn(places, base / "envs", "conda");
  }
  std::istringstream known(readText(userFolder() / ".conda" / "environments.txt").value_or(""));
  for (std::string line; std::getline(known, line);) {
    boost::trim(line);
    if (!line.empty()) places.push_back({pathOf(line), "conda"});
  }
}

}  // namespace pelion_core::host
