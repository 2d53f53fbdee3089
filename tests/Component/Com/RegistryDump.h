// Keys and values of the registry as text, to see what changed.
#pragma once

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "Host/Com/Text.h"
#include "Host/Com/WindowsApi.h"

namespace vorlent::com {

// "Key\Key", "Key\Key|name=value" for everything below a key.
class RegistryDump {
 public:
  static std::set<std::string> Of(HKEY root, const std::wstring& path = {}) {
    RegistryDump dump;
    dump.Add(root, path);
    return std::move(dump.lines_);
  }

 private:
  void Add(HKEY root, const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
    AddValues(key, path);
    std::vector<std::wstring> children;
    wchar_t name[256];
    for (DWORD i = 0, length = 256;
         RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         ++i, length = 256)
      children.emplace_back(name, length);
    RegCloseKey(key);
    for (const std::wstring& child : children) {
      const std::wstring below = path.empty() ? child : path + L"\\" + child;
      lines_.insert(TextOf(below));
      Add(root, below);
    }
  }

  void AddValues(HKEY key, const std::wstring& path) {
    wchar_t name[256];
    std::vector<wchar_t> data(4096);
    for (DWORD i = 0;; ++i) {
      DWORD length = 256, type = 0, size = static_cast<DWORD>((data.size() - 1) * sizeof(wchar_t));
      std::fill(data.begin(), data.end(), L'\0');
      const LSTATUS status =
          RegEnumValueW(key, i, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(data.data()), &size);
      if (status == ERROR_NO_MORE_ITEMS) return;
      if (status != ERROR_SUCCESS) continue;
      const std::string value =
          type == REG_SZ ? TextOf(std::wstring_view(data.data())) : std::to_string(type);
      lines_.insert(TextOf(path) + "|" + TextOf(std::wstring_view(name, length)) + "=" + value);
    }
  }

  std::set<std::string> lines_;
};

// Lines of the second that the first lacks.
inline std::vector<std::string> Added(const std::set<std::string>& before,
                                      const std::set<std::string>& after) {
  std::vector<std::string> added;
  std::set_difference(after.begin(), after.end(), before.begin(), before.end(), std::back_inserter(added));
  return added;
}

}  // namespace vorlent::com
