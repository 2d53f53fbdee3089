#include "Platform/Files.h"
#include "Platform/Posix/PathMapping.h"

namespace vorlent::os {

std::string NativePath(std::string_view path) {
  return ToNativePath(path);
}

}  // namespace vorlent::os
