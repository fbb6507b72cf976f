#define WIN32_LEAN_AND_MEAN
#if !defined(NOMINMAX)
#define NOMINMAX
#endif
#include <windows.h>

#include <algorithm>

#include "installation.h"
#include "places.h"

namespace pelion_core::host {
namespace {

class Key {
 public:
  Key(HKEY parent, const std::wstring& name, REGSAM view) {
    if (RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ | view, &key_) != ERROR_SUCCESS) {
      key_ = nullptr;
    }
  }
  ~Key() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;

  HKEY get() const { return key_; }

  std::vector<std::wstring> keys() const {
    std::vector<std::wstring> names;
    for (DWORD i = 0; key_ != nullptr; ++i) {
      std::wstring name(256, L'\0');  // the longest that a key can have
      DWORD size = static_cast<DWORD>(name.size());
      const LSTATUS status =
          RegEnumKeyExW(key_, i, name.data(), &size, nullptr, nullptr, nullptr, nullptr);
      if (status != ERROR_SUCCESS) break;
      names.push_back(name.substr(0, size));
    }
    return names;
  }

  // The string without a name of a key below.
  std::wstring stringOf(const wchar_t* below) const {
    std::wstring value(32768, L'\0');
    DWORD size = static_cast<DWORD>(value.size() * sizeof(wchar_t));
    if (key_ == nullptr || RegGetValueW(key_, below, nullptr, RRF_RT_REG_SZ, nullptr, value.data(),
                                        &size) != ERROR_SUCCESS) {
      return {};
    }
    return value.c_str();
  }

 private:
  HKEY key_ = nullptr;
};

void addRegistered(std::vector<Place>& places, HKEY root, REGSAM view, const char* found) {
  const Key software(root, L"Software\\Python", view);
  for (const std::wstring& company : software.keys()) {
    if (company == L"PyLauncher") continue;  // reserved, as PEP 514 says
    const Key vendor(software.get(), company, view);
    std::vector<std::wstring> tags = vendor.keys();
    std::stable_sort(tags.begin(), tags.end(), [](const auto& left, const auto& right) {
      return isOlder(utf8(fs::path(right)), utf8(fs::path(left)));
    });
    const std::string wanted = variable("PY_PYTHON");
    std::stable_partition(tags.begin(), tags.end(),
                          [&](const auto& tag) { return utf8(fs::path(tag)) == wanted; });
    for (const std::wstring& tag : tags) {
      const std::wstring folder = Key(vendor.get(), tag, view).stringOf(L"InstallPath");
      if (!folder.empty()) places.push_back({folder, found});
    }
  }
}

}  // namespace

std::string variable(const char* name) {
  const wchar_t* const value = _wgetenv(pathOf(name).c_str());
  return value != nullptr ? utf8(fs::path(value)) : std::string();
}

fs::path userFolder() { return pathOf(variable("USERPROFILE")); }

std::vector<Place> registeredPlaces() {
  std::vector<Place> places;
  addRegistered(places, HKEY_CURRENT_USER, 0, "registry (this user)");
  addRegistered(places, HKEY_LOCAL_MACHINE, KEY_WOW64_64KEY, "registry (machine)");
  addRegistered(places, HKEY_LOCAL_MACHINE, KEY_WOW64_32KEY, "registry (machine, 32-bit)");
  return places;
}

std::vector<Place> usualPlaces() {
  const fs::path user = userFolder();
  std::vector<Place> places;
  addAllIn(places, user / ".pyenv" / "pyenv-win" / "versions", "pyenv");
  addAllIn(places, pathOf(variable("APPDATA")) / "uv" / "python", "uv");
  addConda(places, {user / "miniforge3", user / "miniconda3", user / "anaconda3",
                    pathOf(variable("ProgramData")) / "miniconda3",
                    pathOf(variable("ProgramData")) / "anaconda3"});
  addAllIn(places, pathOf(variable("LOCALAPPDATA")) / "Programs" / "Python", "user folders");
  addAllIn(places, pathOf(variable("LOCALAPPDATA")) / "Python", "user folders");
  for (const fs::path& parent : {pathOf(variable("ProgramFiles")), fs::path("C:\\")}) {
    std::vector<Place> here;
    addAllIn(here, parent, "system folders");
    for (Place& place : here) {
      if (!buildName(utf8(place.folder.filename())).version.empty()) {
        places.push_back(std::move(place));
      }
    }
  }
  return places;
}

}  // namespace pelion_core::host
