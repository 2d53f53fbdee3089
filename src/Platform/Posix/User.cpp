#include "Platform/User.h"

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include "Platform/NativePaths.h"

namespace vorlent::os {

std::string LoginName() {
  const passwd* user = getpwuid(geteuid());
  return user == nullptr ? std::string() : ToWindowsName(user->pw_name);
}

std::string TemporaryFolder() {
  const char* named = getenv("TMPDIR");
  std::string folder = ToWindowsPath(named == nullptr || *named == '\0' ? "/tmp" : named);
  if (folder.empty() || (folder.back() != '\\' && folder.back() != '/')) folder += '\\';
  return folder;
}

}  // namespace vorlent::os
