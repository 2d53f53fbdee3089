#include "Platform/Posix/System.h"

#include <cstring>

#include "Platform/Failure.h"
#include "Platform/NativePaths.h"

namespace vorlent::os {

namespace {

// Whether the folder that a path lies in is there: tells a missing file from a missing path.
bool ParentExists(std::string_view path) {
  const std::size_t lastOfName = path.find_last_not_of("\\/");
  const std::size_t separator = path.find_last_of("\\/", lastOfName);
  if (lastOfName == std::string_view::npos || separator == std::string_view::npos) return !path.empty();
  struct stat status;
  return stat(ToNativePath(path.substr(0, separator + 1)).c_str(), &status) == 0;
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

Hint HintOf(int error, ErrorNumber number) {
  if (error == ENOENT && number == ErrorNumber::PathNotFound) return Hint::MakeFolder;
  return error == EDQUOT ? Hint::MakeRoom : HintFor({error, std::generic_category()});
}

}  // namespace

void RaiseSystemFailure(int error, std::string_view path) {
  const ErrorNumber number = NumberOf(error, path);
  throw Failure(number, path, std::strerror(error), HintOf(error, number));
}

void RefuseAccess(std::string_view path, std::string_view reason, Hint hint) {
  throw Failure(ErrorNumber::PathAccess, path, reason, hint);
}

std::string WithoutClosingSlash(std::string native) {
  while (native.size() > 1 && native.back() == '/')
    native.pop_back();
  return native;
}

}  // namespace vorlent::os
