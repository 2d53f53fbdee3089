#include <windows.h>

#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

namespace {

// Of the two paths of a call the system doesn't say which one isn't there.
[[noreturn]] void RaiseOfEither(DWORD error, std::string_view source, std::string_view target) {
  const bool isMissing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  if (isMissing && GetFileAttributesW(CallPathOf(source).c_str()) == INVALID_FILE_ATTRIBUTES)
    RaiseSystemFailure(LastError(), source);
  RaiseSystemFailure(error == ERROR_FILE_NOT_FOUND ? DWORD{ERROR_PATH_NOT_FOUND} : error, target);
}

bool IsFolder(const std::wstring& native) {
  const DWORD attributes = GetFileAttributesW(native.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Without a closing separator, which a name that is to be given can't have.
std::wstring NewPathOf(std::string_view path) {
  while (path.size() > 1 && (path.back() == '\\' || path.back() == '/'))
    path.remove_suffix(1);
  return CallPathOf(path);
}

}  // namespace

void Copy(std::string_view source, std::string_view target) {
  const std::wstring from = CallPathOf(source);
  const std::wstring to = CallPathOf(target);
  if (IsFolder(from)) RefuseAccess(source, "is a folder");
  if (IsFolder(to)) RefuseAccess(target, "is a folder");
  const auto identity = TryIdentify(target);
  if (identity && identity == TryIdentify(source)) RefuseAccess(target, "is the file to be copied");
  const int attributes = TryReadAttributes(target).value_or(0);
  if ((attributes & kReadOnly) != 0) RefuseAccess(target, "is read-only", Hint::MakeWritable);
  if (CopyFileW(from.c_str(), to.c_str(), FALSE) == 0) RaiseOfEither(LastError(), source, target);
}

bool RenameToNewName(std::string_view source, std::string_view target) {
  if (MoveFileExW(CallPathOf(source).c_str(), NewPathOf(target).c_str(), 0) != 0) return true;
  const DWORD error = LastError();
  if (error == ERROR_NOT_SAME_DEVICE) return false;
  RaiseOfEither(error, source, target);
}

void Rename(std::string_view source, std::string_view target) {
  if (RenameToNewName(source, target)) return;
  const std::wstring from = CallPathOf(source);
  if (IsFolder(from)) RaiseSystemFailure(ERROR_NOT_SAME_DEVICE, target);
  // The system removes the source after the target was written whole, and waits until that is on the disk.
  constexpr DWORD kByCopy = MOVEFILE_COPY_ALLOWED | MOVEFILE_WRITE_THROUGH;
  if (MoveFileExW(from.c_str(), NewPathOf(target).c_str(), kByCopy) == 0)
    RaiseOfEither(LastError(), source, target);
}

}  // namespace vorlent::os
