#include "Platform/User.h"

#include <windows.h>

#include <iterator>

#include "Platform/NativePaths.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

std::string LoginName() {
  wchar_t name[257];  // the longest name of an account, and the closing zero
  auto size = static_cast<DWORD>(std::size(name));
  if (GetUserNameW(name, &size) == 0 || size == 0) return "";
  return ToWindowsName(ToUtf8({name, size - 1}).value_or(""));
}

std::string TemporaryFolder() {
  wchar_t folder[MAX_PATH + 1];
  const DWORD size = GetTempPathW(static_cast<DWORD>(std::size(folder)), folder);
  if (size == 0 || size >= std::size(folder)) return "";
  std::string path = ToWindowsPath(ToUtf8({folder, size}).value_or(""));
  if (!path.ends_with('\\')) path += '\\';
  return path;
}

}  // namespace vorlent::os
