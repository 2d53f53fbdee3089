#include "Platform/Windows/System.h"

#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"

namespace vorlent::os {

namespace {

// From this length on, with room for a short name to be added, the system's calls ask for the long form.
constexpr std::size_t kLongPath = MAX_PATH - 12;

// The headers of MinGW lack it.
constexpr DWORD kDiskQuotaExceeded = 1295;

struct ErrorRow {
  DWORD error;
  ErrorNumber number;
  int reason;  // as the C library tells it
  Hint hint = Hint::None;
};

constexpr ErrorRow kErrors[] = {
    {ERROR_FILE_NOT_FOUND, ErrorNumber::FileNotFound, ENOENT},
    {ERROR_PATH_NOT_FOUND, ErrorNumber::PathNotFound, ENOENT, Hint::MakeFolder},
    {ERROR_INVALID_NAME, ErrorNumber::PathNotFound, ENOENT, Hint::MakeFolder},
    {ERROR_BAD_PATHNAME, ErrorNumber::PathNotFound, ENOENT, Hint::MakeFolder},
    {ERROR_INVALID_DRIVE, ErrorNumber::PathNotFound, ENOENT, Hint::MakeFolder},
    {ERROR_BAD_NETPATH, ErrorNumber::PathNotFound, ENOENT, Hint::MakeFolder},
    {ERROR_BAD_NET_NAME, ErrorNumber::PathNotFound, ENOENT, Hint::MakeFolder},
    {ERROR_DIRECTORY, ErrorNumber::PathNotFound, ENOTDIR, Hint::MakeFolder},
    {ERROR_FILENAME_EXCED_RANGE, ErrorNumber::PathNotFound, ENAMETOOLONG},
    {kIsFolder, ErrorNumber::PathAccess, EISDIR},
    {ERROR_ACCESS_DENIED, ErrorNumber::PathAccess, EACCES, Hint::AllowAccess},
    {ERROR_PRIVILEGE_NOT_HELD, ErrorNumber::PathAccess, EPERM, Hint::AllowAccess},
    {ERROR_WRITE_PROTECT, ErrorNumber::PathAccess, EROFS, Hint::MakeWritable},
    {ERROR_DIR_NOT_EMPTY, ErrorNumber::PathAccess, ENOTEMPTY},
    {ERROR_SHARING_VIOLATION, ErrorNumber::PathAccess, EBUSY, Hint::CloseOther},
    {ERROR_LOCK_VIOLATION, ErrorNumber::PathAccess, EBUSY, Hint::CloseOther},
    {ERROR_USER_MAPPED_FILE, ErrorNumber::PathAccess, EBUSY, Hint::CloseOther},
    {ERROR_BUSY, ErrorNumber::PathAccess, EBUSY, Hint::CloseOther},
    {ERROR_CURRENT_DIRECTORY, ErrorNumber::PathAccess, EBUSY, Hint::CloseOther},
    {ERROR_NOT_SAME_DEVICE, ErrorNumber::PathAccess, EXDEV},
    {ERROR_DISK_FULL, ErrorNumber::DiskFull, ENOSPC, Hint::MakeRoom},
    {ERROR_HANDLE_DISK_FULL, ErrorNumber::DiskFull, ENOSPC, Hint::MakeRoom},
    {kDiskQuotaExceeded, ErrorNumber::DiskFull, ENOSPC, Hint::MakeRoom},
    {ERROR_FILE_TOO_LARGE, ErrorNumber::DiskFull, EFBIG},
    {ERROR_INVALID_HANDLE, ErrorNumber::BadFileNumber, EBADF},
    {ERROR_FILE_EXISTS, ErrorNumber::FileExists, EEXIST},
    {ERROR_ALREADY_EXISTS, ErrorNumber::FileExists, EEXIST},
};

// Tells a missing file from a missing path, which the system doesn't do in every call.
bool ParentExists(std::string_view path) {
  const std::size_t lastOfName = path.find_last_not_of("\\/");
  const std::size_t separator = path.find_last_of("\\/", lastOfName);
  if (lastOfName == std::string_view::npos || separator == std::string_view::npos) return !path.empty();
  const DWORD attributes = GetFileAttributesW(CallPathOf(path.substr(0, separator + 1)).c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Whether a file stands where the path has a folder.
bool LeadsThroughFile(std::string_view path) {
  for (std::size_t end = path.size(); (end = path.find_last_of("\\/", end - 1)) != std::string_view::npos;) {
    const DWORD attributes = GetFileAttributesW(CallPathOf(path.substr(0, end)).c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) return (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    if (end == 0) return false;
  }
  return false;
}

// The system's own words for what has none above.
std::string WordsOf(DWORD error) {
  wchar_t words[512];
  const DWORD size = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                    error, 0, words, static_cast<DWORD>(std::size(words)), nullptr);
  std::string text = TextFromUtf8(ToUtf8({words, size}).value_or(""));
  text.erase(text.find_last_not_of("\r\n .") + 1);
  return text.empty() ? "error " + std::to_string(error) + " of the system" : text;
}

// Calls that fill a buffer say how much room they need, the closing zero counted, if it is too small.
template <class Call>
std::wstring FilledBy(Call&& call) {
  std::wstring text(MAX_PATH, L'\0');
  DWORD size = call(text.data(), static_cast<DWORD>(text.size()));
  if (size > text.size()) {
    text.resize(size);
    size = call(text.data(), size);
  }
  text.resize(std::min<std::size_t>(size, text.size()));
  return text;
}

std::wstring Complete(const std::wstring& path) {
  return FilledBy(
      [&](wchar_t* room, DWORD size) { return GetFullPathNameW(path.c_str(), size, room, nullptr); });
}

}  // namespace

// --- Texts -----------------------------------------------------------------------------------------------

std::wstring ToWide(std::string_view utf8) {
  if (utf8.empty()) return {};
  const int size = static_cast<int>(utf8.size());
  std::wstring wide(utf8.size(), L'\0');
  const int count = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), size, wide.data(), size);
  wide.resize(static_cast<std::size_t>(count));
  return wide;
}

std::optional<std::string> ToUtf8(std::wstring_view wide) {
  if (wide.empty()) return "";
  const int size = static_cast<int>(wide.size());
  std::string utf8(wide.size() * 3, '\0');
  const int count = WideCharToMultiByte(CP_UTF8, WC_ERR_INVALID_CHARS, wide.data(), size, utf8.data(),
                                        static_cast<int>(utf8.size()), nullptr, nullptr);
  if (count <= 0) return std::nullopt;
  utf8.resize(static_cast<std::size_t>(count));
  return utf8;
}

std::wstring ToCallPath(const std::string& native) {
  std::wstring path = ToWide(native);
  if (path.size() < kLongPath || path.starts_with(L"\\\\?\\")) return path;
  path = Complete(path);
  return path.starts_with(L"\\\\") ? L"\\\\?\\UNC" + path.substr(1) : L"\\\\?\\" + path;
}

std::wstring CallPathOf(std::string_view path) {
  return ToCallPath(ToNativePath(path));
}

std::string CompletePath(const std::string& native) {
  return ToUtf8(Complete(ToWide(native))).value_or("");
}

// --- Failures --------------------------------------------------------------------------------------------

unsigned long LastError() {
  return GetLastError();
}

void RaiseSystemFailure(unsigned long error, std::string_view path) {
  if (error == ERROR_FILE_NOT_FOUND && !ParentExists(path)) error = ERROR_PATH_NOT_FOUND;
  if (error == ERROR_PATH_NOT_FOUND && LeadsThroughFile(path)) error = ERROR_DIRECTORY;
  const auto* row = std::ranges::find(kErrors, error, &ErrorRow::error);
  if (row == std::end(kErrors)) throw Failure(ErrorNumber::DeviceIo, path, WordsOf(error));
  throw Failure(row->number, path, std::generic_category().message(row->reason), row->hint);
}

void RefuseAccess(std::string_view path, std::string_view reason, Hint hint) {
  throw Failure(ErrorNumber::PathAccess, path, reason, hint);
}

// --- Handles ---------------------------------------------------------------------------------------------

Handle::~Handle() {
  if (IsOpen()) CloseHandle(Get());
}

Handle OpenEntry(const std::wstring& path, unsigned long access, OfLink ofLink) {
  const DWORD link = ofLink == OfLink::Itself ? FILE_FLAG_OPEN_REPARSE_POINT : 0;
  return Handle(CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS | link, nullptr));
}

}  // namespace vorlent::os
