#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

/// What is read of the files of an installation. Each function takes whatever the bytes are, reads
/// a bounded part, and throws nothing but std::bad_alloc.
namespace pelion_core::host {

namespace fs = std::filesystem;

/// Paths to and from UTF-8. Unlike `u8path` and `u8string` they do not throw: what has no form in
/// the other encoding is left out.
fs::path pathOf(const std::string& utf8);
std::string utf8(const fs::path& path);

bool isFile(const fs::path& path);
bool isFolder(const fs::path& path);
fs::path realPath(const fs::path& path);  ///< without symbolic links; as it is when that fails

/// Why a file or folder cannot be looked into, in the system's words; empty when it can.
std::string whyUnreadable(const fs::path& path);

/// The entries of a folder, sorted by name; none of one that cannot be read.
std::vector<fs::path> entriesOf(const fs::path& folder);

/// The beginning of a file; none when it cannot be read.
std::optional<std::string> readText(const fs::path& path, std::size_t most = 1U << 20U);

/// The `key = value` lines of a `pyvenv.cfg`, the keys in lower case.
std::map<std::string, std::string> environmentConfig(const std::string& text);

/// The string that a line `'KEY': 'value',` of CPython's build configuration gives, or nothing.
std::string buildVariable(const std::string& text, const std::string& key);

/// The value of the first line `Key: value` of a package's metadata, or nothing.
std::string metadataField(const std::string& text, const std::string& key);

/// What `build-details.json` says; empty strings for what is not there.
struct BuildDetails {
  std::string version;  ///< "3.14"
  std::string prefix;   ///< may be relative to the folder of the file
  std::string library;  ///< may be relative to `prefix`
};
BuildDetails buildDetails(const std::string& json);

/// "3.12.1" of "3.12.1.final.0", "3.12.1+" and the like; `parts` numbers at most. Nothing when it
/// does not begin with a number and a point.
std::string versionNumber(const std::string& text, std::size_t parts);

}  // namespace pelion_core::host
