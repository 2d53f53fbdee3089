#include "Platform/Posix/System.h"

#include <cstring>

#include "Platform/Failure.h"
#include "Platform/Posix/PathMapping.h"

namespace vorlent::os {

namespace {

// Whether the folder that a path lies in is there: tells a missing file from a missing path.
bool ParentExists(std::string_view path) {
  std::string native = ToNativePath(path);
  while (native.size() > 1 && native.back() == '/')
    native.pop_back();
  if (native.empty()) return false;
  const std::size_t slash = native.rfind('/');
  struct stat status;
  return stat(slash == std::string::npos ? "." : native.substr(0, slash + 1).c_str(), &status) == 0;
}

ErrorNumber NumberOf(int error, std::string_view path) {
  switch (error) {
    case ENOENT:
      return ParentExists(path) ? ErrorNumber::FileNotFound : ErrorNumber::PathNotFound;
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      return ErrorNumber::PathNotFound;
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ENOTEMPTY:
    case EBUSY:
    case ETXTBSY:
    case ENXIO:
      return ErrorNumber::PathAccess;
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return ErrorNumber::DiskFull;
    case EBADF:
      return ErrorNumber::BadFileNumber;
    case EEXIST:
      return ErrorNumber::FileExists;
    default:
      return ErrorNumber::DeviceIo;
  }
}

}  // namespace

void RaiseSystemFailure(int error, std::string_view path) {
  throw Failure(NumberOf(error, path), std::string(path) + ": " + std::strerror(error));
}

void RefuseAccess(std::string_view path, std::string_view reason) {
  throw Failure(ErrorNumber::PathAccess, std::string(path) + ": " + std::string(reason));
}

}  // namespace vorlent::os
