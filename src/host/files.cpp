#include "files.h"

#include <algorithm>
#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/trim.hpp>
#include <boost/locale/encoding_utf.hpp>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace pelion_core::host {
namespace {

// The string at a path of keys, or nothing.
std::string stringIn(const nlohmann::json& document, const char* path) {
  const nlohmann::json::json_pointer place(path);
  if (!document.contains(place) || !document[place].is_string()) return {};
  return document[place].get<std::string>();
}

}  // namespace

#if defined(_WIN32)
fs::path pathOf(const std::string& utf8) { return boost::locale::conv::utf_to_utf<wchar_t>(utf8); }
std::string utf8(const fs::path& path) {
  return boost::locale::conv::utf_to_utf<char>(fs::path(path).make_preferred().native());
}
#else
fs::path pathOf(const std::string& utf8) { return utf8; }
std::string utf8(const fs::path& path) { return path.native(); }
#endif

bool isFile(const fs::path& path) {
  std::error_code ignored;
  return fs::is_regular_file(path, ignored);
}

bool isFolder(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored);
}

fs::path realPath(const fs::path& path) {
  std::error_code error;
  const fs::path found = fs::canonical(path, error);
  return error ? path : found;
}

std::string whyUnreadable(const fs::path& path) {
  std::error_code error;
  const fs::file_status status = fs::status(path, error);
  if (!fs::status_known(status) || !fs::exists(status)) return error.message();
  if (fs::is_directory(status)) {
    const fs::directory_iterator folder(path, error);
    return error ? error.message() : std::string();
  }
  if (!fs::is_regular_file(status)) return "it is neither a file nor a folder";
  errno = 0;
  if (std::ifstream(path, std::ios::binary)) return {};
  return std::generic_category().message(errno);
}

std::vector<fs::path> entriesOf(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  fs::directory_iterator place(folder, error);
  for (; !error && place != fs::directory_iterator(); place.increment(error)) {
    entries.push_back(place->path());
  }
  // By the whole string: comparing paths part by part is slow in folders of thousands.
  std::sort(entries.begin(), entries.end(),
            [](const auto& left, const auto& right) { return left.native() < right.native(); });
  return entries;
}

std::optional<std::string> readText(const fs::path& path, std::size_t most) {
  if (!isFile(path)) return std::nullopt;  // a pipe would never end
  std::ifstream file(path, std::ios::binary);
  if (!file) return std::nullopt;
  std::string text(most, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<std::size_t>(file.gcount()));
  return text;
}

std::map<std::string, std::string> environmentConfig(const std::string& text) {
  std::map<std::string, std::string> values;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    const auto equals = line.find('=');
    if (equals == std::string::npos) continue;
    const std::string key = boost::to_lower_copy(boost::trim_copy(line.substr(0, equals)));
    values.emplace(key, boost::trim_copy(line.substr(equals + 1)));
  }
  return values;
}

std::string buildVariable(const std::string& text, const std::string& key) {
  const std::string mark = '\'' + key + "': '";
  const auto found = text.find(mark);
  if (found == std::string::npos) return {};
  const auto start = found + mark.size();
  const auto end = text.find('\'', start);
  return end == std::string::npos ? std::string() : text.substr(start, end - start);
}

std::string metadataField(const std::string& text, const std::string& key) {
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line) && !boost::trim_copy(line).empty();) {
    if (boost::istarts_with(line, key + ":")) return boost::trim_copy(line.substr(key.size() + 1));
  }
  return {};
}

BuildDetails buildDetails(const std::string& json) {
  const auto document = nlohmann::json::parse(json, nullptr, false);
  if (!document.is_object()) return {};
  return {stringIn(document, "/language/version"), stringIn(document, "/base_prefix"),
          stringIn(document, "/libpython/dynamic")};
}

std::string versionNumber(const std::string& text, std::size_t parts) {
  std::size_t end = 0;
  std::size_t found = 0;
  while (found < parts) {
    const std::size_t digits = found == 0 ? end : end + 1;
    if (found != 0 && (end >= text.size() || text[end] != '.')) break;
    const auto after = std::min(text.find_first_not_of("0123456789", digits), text.size());
    if (after <= digits) break;
    end = after;
    ++found;
  }
  return found < 2 ? std::string() : text.substr(0, end);
}

}  // namespace pelion_core::host
