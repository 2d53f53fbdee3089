// Calls of the system go through pointers that the linker takes from the system's import library, unless the
// program defines them itself, as here.
#include "Support/DiskOperations.h"

#include <windows.h>
// after it
#include <winternl.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <string_view>

#include "Support/DiskCalls.h"
#include "Support/ScopedSizeLimit.h"

namespace {

using vorlent::DiskCall;

constinit std::uint64_t sizeLimit = vorlent::kNoSizeLimit;

// The system's own function of that name.
template <class Function>
Function OwnCall(Function& kept, const char* name) {
  if (kept == nullptr) {
    const FARPROC found = GetProcAddress(GetModuleHandleW(L"kernel32.dll"), name);
    kept = reinterpret_cast<Function>(reinterpret_cast<void*>(found));
  }
  return kept;
}

#define OWN(name)                                    \
  decltype(&name) Own##name() {                      \
    static constinit decltype(&name) kept = nullptr; \
    return OwnCall(kept, #name);                     \
  }
OWN(CreateFileW)
OWN(ReadFile)
OWN(WriteFile)
OWN(SetFilePointer)
OWN(SetFilePointerEx)
OWN(SetEndOfFile)
OWN(CloseHandle)
OWN(GetFileAttributesW)
OWN(GetFileAttributesExW)
OWN(GetFileInformationByHandle)
OWN(GetFileInformationByHandleEx)
OWN(GetFileSize)
OWN(GetFileSizeEx)
OWN(FindFirstFileW)
OWN(FindFirstFileExW)
OWN(FindNextFileW)
OWN(FlushFileBuffers)
OWN(MoveFileExW)
OWN(DeleteFileW)
OWN(RemoveDirectoryW)
OWN(CreateDirectoryW)
OWN(SetFileAttributesW)
OWN(SetFileTime)
#undef OWN

struct ErrorPair {
  int error;
  DWORD ofSystem;
};
constexpr ErrorPair kErrorPairs[] = {{ENOSPC, ERROR_DISK_FULL},         {EACCES, ERROR_ACCESS_DENIED},
                                     {EPERM, ERROR_PRIVILEGE_NOT_HELD}, {ENOENT, ERROR_FILE_NOT_FOUND},
                                     {EXDEV, ERROR_NOT_SAME_DEVICE},    {EROFS, ERROR_WRITE_PROTECT},
                                     {EFBIG, ERROR_FILE_TOO_LARGE},     {EBUSY, ERROR_SHARING_VIOLATION}};

DWORD PlannedSystemError() {
  for (const auto& [error, ofSystem] : kErrorPairs) {
    if (error == vorlent::PlannedError()) return ofSystem;
  }
  return ERROR_IO_DEVICE;
}

// Paths with slashes, as tests name them.
std::string PathOf(std::wstring_view wide) {
  std::string path(wide.size() * 3, '\0');
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), path.data(),
                                       static_cast<int>(path.size()), nullptr, nullptr);
  path.resize(static_cast<std::size_t>(size));
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

std::string PathOf(const wchar_t* path) {
  return PathOf(std::wstring_view(path));
}

std::string PathOf(HANDLE file) {
  wchar_t path[4096];
  const DWORD size = GetFinalPathNameByHandleW(file, path, 4096, 0);
  return size > 0 && size < 4096 ? PathOf(std::wstring_view(path, size)) : std::string();
}

// Calls on what is no file, such as a pipe, are none of the disk.
bool IsOfDisk(const wchar_t*) {
  return true;
}
bool IsOfDisk(HANDLE file) {
  return GetFileType(file) == FILE_TYPE_DISK;
}

// True, with the system's error set, if a call shall fail.
template <class File>
bool Fails(DiskCall call, File file) {
  const bool isPlanned = vorlent::IsPlanned(call);
  if (!isPlanned && !vorlent::IsWatched(call)) return false;
  const DWORD before = GetLastError();
  bool fails = false;
  if (IsOfDisk(file)) {
    if (vorlent::IsWatched(call)) vorlent::TellWatcher(call, PathOf(file));
    const std::string_view pathEnd = vorlent::PlannedPathEnd();
    fails = isPlanned && (pathEnd.empty() || PathOf(file).ends_with(pathEnd)) && vorlent::FailsNow();
  }
  SetLastError(fails ? PlannedSystemError() : before);
  return fails;
}

template <class Result, class File, class Own, class... Arguments>
Result CallOrFail(DiskCall call, File file, Result failed, Own own, Arguments... arguments) {
  return Fails(call, file) ? failed : own(arguments...);
}

// Whatever the position is, a file that may be appended to only is written at its end.
bool IsAppendedTo(HANDLE file) {
  ACCESS_MASK access = 0;
  IO_STATUS_BLOCK status;
  NtQueryInformationFile(file, &status, &access, sizeof access, FileAccessInformation);
  return (access & (FILE_APPEND_DATA | FILE_WRITE_DATA)) == FILE_APPEND_DATA;
}

// How many of the bytes fit below the limit of a file's size.
DWORD FittingBelowLimit(HANDLE file, DWORD size, const OVERLAPPED* place) {
  if (sizeLimit == vorlent::kNoSizeLimit || GetFileType(file) != FILE_TYPE_DISK) return size;
  LARGE_INTEGER position = {};
  if (place != nullptr) {
    position.LowPart = place->Offset;
    position.HighPart = static_cast<LONG>(place->OffsetHigh);
  } else {
    OwnSetFilePointerEx()(file, {}, &position, IsAppendedTo(file) ? FILE_END : FILE_CURRENT);
  }
  const std::uint64_t at = static_cast<std::uint64_t>(position.QuadPart);
  return static_cast<DWORD>(std::min<std::uint64_t>(size, sizeLimit - std::min(at, sizeLimit)));
}

}  // namespace

// --- What stands for the system's calls

extern "C" {

HANDLE WINAPI TakenCreateFileW(LPCWSTR path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                               DWORD how, DWORD flags, HANDLE model) {
  return CallOrFail(DiskCall::Open, path, INVALID_HANDLE_VALUE, OwnCreateFileW(), path, access, share,
                    security, how, flags, model);
}
WINBOOL WINAPI TakenReadFile(HANDLE file, void* bytes, DWORD size, DWORD* count, OVERLAPPED* place) {
  return CallOrFail(DiskCall::Read, file, FALSE, OwnReadFile(), file, bytes, size, count, place);
}
WINBOOL WINAPI TakenWriteFile(HANDLE file, const void* bytes, DWORD size, DWORD* count, OVERLAPPED* place) {
  if (Fails(DiskCall::Write, file)) return FALSE;
  const DWORD fitting = FittingBelowLimit(file, size, place);
  const WINBOOL written = OwnWriteFile()(file, bytes, fitting, count, place);
  if (written == 0 || fitting == size) return written;
  SetLastError(ERROR_FILE_TOO_LARGE);
  return FALSE;
}
DWORD WINAPI TakenSetFilePointer(HANDLE file, LONG low, LONG* high, DWORD from) {
  return CallOrFail(DiskCall::Seek, file, INVALID_SET_FILE_POINTER, OwnSetFilePointer(), file, low, high,
                    from);
}
WINBOOL WINAPI TakenSetFilePointerEx(HANDLE file, LARGE_INTEGER to, LARGE_INTEGER* result, DWORD from) {
  return CallOrFail(DiskCall::Seek, file, FALSE, OwnSetFilePointerEx(), file, to, result, from);
}
WINBOOL WINAPI TakenSetEndOfFile(HANDLE file) {
  return CallOrFail(DiskCall::Truncate, file, FALSE, OwnSetEndOfFile(), file);
}
// The handle is gone even so.
WINBOOL WINAPI TakenCloseHandle(HANDLE file) {
  const bool fails = Fails(DiskCall::Close, file);
  const DWORD error = GetLastError();
  const WINBOOL closed = OwnCloseHandle()(file);
  if (!fails) return closed;
  SetLastError(error);
  return FALSE;
}

DWORD WINAPI TakenGetFileAttributesW(LPCWSTR path) {
  return CallOrFail(DiskCall::Status, path, INVALID_FILE_ATTRIBUTES, OwnGetFileAttributesW(), path);
}
WINBOOL WINAPI TakenGetFileAttributesExW(LPCWSTR path, GET_FILEEX_INFO_LEVELS level, void* status) {
  return CallOrFail(DiskCall::Status, path, FALSE, OwnGetFileAttributesExW(), path, level, status);
}
WINBOOL WINAPI TakenGetFileInformationByHandle(HANDLE file, BY_HANDLE_FILE_INFORMATION* status) {
  return CallOrFail(DiskCall::Status, file, FALSE, OwnGetFileInformationByHandle(), file, status);
}
WINBOOL WINAPI TakenGetFileInformationByHandleEx(HANDLE file, FILE_INFO_BY_HANDLE_CLASS level, void* status,
                                                 DWORD size) {
  return CallOrFail(DiskCall::Status, file, FALSE, OwnGetFileInformationByHandleEx(), file, level, status,
                    size);
}
DWORD WINAPI TakenGetFileSize(HANDLE file, DWORD* high) {
  return CallOrFail(DiskCall::Status, file, INVALID_FILE_SIZE, OwnGetFileSize(), file, high);
}
WINBOOL WINAPI TakenGetFileSizeEx(HANDLE file, LARGE_INTEGER* size) {
  return CallOrFail(DiskCall::Status, file, FALSE, OwnGetFileSizeEx(), file, size);
}

HANDLE WINAPI TakenFindFirstFileW(LPCWSTR path, WIN32_FIND_DATAW* found) {
  return CallOrFail(DiskCall::List, path, INVALID_HANDLE_VALUE, OwnFindFirstFileW(), path, found);
}
HANDLE WINAPI TakenFindFirstFileExW(LPCWSTR path, FINDEX_INFO_LEVELS level, void* found,
                                    FINDEX_SEARCH_OPS kind, void* filter, DWORD flags) {
  return CallOrFail(DiskCall::List, path, INVALID_HANDLE_VALUE, OwnFindFirstFileExW(), path, level, found,
                    kind, filter, flags);
}
// The listing is no file, and its path is gone.
WINBOOL WINAPI TakenFindNextFileW(HANDLE listing, WIN32_FIND_DATAW* found) {
  return CallOrFail(DiskCall::List, L"", FALSE, OwnFindNextFileW(), listing, found);
}

WINBOOL WINAPI TakenFlushFileBuffers(HANDLE file) {
  return CallOrFail(DiskCall::Sync, file, FALSE, OwnFlushFileBuffers(), file);
}
WINBOOL WINAPI TakenMoveFileExW(LPCWSTR from, LPCWSTR to, DWORD flags) {
  return CallOrFail(DiskCall::Rename, to, FALSE, OwnMoveFileExW(), from, to, flags);
}
WINBOOL WINAPI TakenDeleteFileW(LPCWSTR path) {
  return CallOrFail(DiskCall::Remove, path, FALSE, OwnDeleteFileW(), path);
}
WINBOOL WINAPI TakenRemoveDirectoryW(LPCWSTR path) {
  return CallOrFail(DiskCall::Remove, path, FALSE, OwnRemoveDirectoryW(), path);
}
WINBOOL WINAPI TakenCreateDirectoryW(LPCWSTR path, SECURITY_ATTRIBUTES* security) {
  return CallOrFail(DiskCall::MakeFolder, path, FALSE, OwnCreateDirectoryW(), path, security);
}
WINBOOL WINAPI TakenSetFileAttributesW(LPCWSTR path, DWORD attributes) {
  return CallOrFail(DiskCall::SetMode, path, FALSE, OwnSetFileAttributesW(), path, attributes);
}
WINBOOL WINAPI TakenSetFileTime(HANDLE file, const FILETIME* created, const FILETIME* read,
                                const FILETIME* changed) {
  return CallOrFail(DiskCall::SetTimes, file, FALSE, OwnSetFileTime(), file, created, read, changed);
}

// What is called through the pointer, and what is called or stored by its name.
#define TAKE(name)                            \
  decltype(&name) __imp_##name = Taken##name; \
  __asm__(".globl " #name "\n.set " #name ", Taken" #name);
TAKE(CreateFileW)
TAKE(ReadFile)
TAKE(WriteFile)
TAKE(SetFilePointer)
TAKE(SetFilePointerEx)
TAKE(SetEndOfFile)
TAKE(CloseHandle)
TAKE(GetFileAttributesW)
TAKE(GetFileAttributesExW)
TAKE(GetFileInformationByHandle)
TAKE(GetFileInformationByHandleEx)
TAKE(GetFileSize)
TAKE(GetFileSizeEx)
TAKE(FindFirstFileW)
TAKE(FindFirstFileExW)
TAKE(FindNextFileW)
TAKE(FlushFileBuffers)
TAKE(MoveFileExW)
TAKE(DeleteFileW)
TAKE(RemoveDirectoryW)
TAKE(CreateDirectoryW)
TAKE(SetFileAttributesW)
TAKE(SetFileTime)
}
#undef TAKE

namespace vorlent {

void Die() {
  TerminateProcess(GetCurrentProcess(), 1);
  for (;;)
    Sleep(INFINITE);
}

ScopedSizeLimit::ScopedSizeLimit(std::uint64_t bytes) : before_(sizeLimit) {
  sizeLimit = bytes;
}

ScopedSizeLimit::~ScopedSizeLimit() {
  sizeLimit = before_;
}

}  // namespace vorlent
