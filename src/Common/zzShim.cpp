#include "Common/StdModul.h"
#include "Platform/Files.h"
namespace vorlent {
bool FileExists(std::string_view p) {
  bool plain = false;
  Swallow([&] { plain = (os::ReadAttributes(p) & os::kDirectory) == 0; });
  return plain;
}
}
