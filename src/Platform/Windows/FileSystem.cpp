#include <windows.h>

#include <optional>
#include <utility>

#include "Platform/EpochTime.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Names.h"
#include "Platform/NativePaths.h"
#include "Platform/Windows/FileTime.h"
#include "Platform/Windows/System.h"

namespace vorlent::os {

namespace {

constexpr int kOwnBits = kReadOnly | kHidden | kSystem | kDirectory | kArchive;
constexpr int kSettableBits = kReadOnly | kHidden | kSystem | kArchive;

static_assert(kReadOnly == FILE_ATTRIBUTE_READONLY && kHidden == FILE_ATTRIBUTE_HIDDEN &&
              kSystem == FILE_ATTRIBUTE_SYSTEM && kDirectory == FILE_ATTRIBUTE_DIRECTORY &&
              kArchive == FILE_ATTRIBUTE_ARCHIVE);

using Status = BY_HANDLE_FILE_INFORMATION;

std::optional<Status> StatusOf(const Handle& entry) {
  Status status;
  if (!entry.IsOpen() || GetFileInformationByHandle(entry.Get(), &status) == 0) return std::nullopt;
  return status;
}

// The status of what a path leads to; nothing, with the reason in LastError, if that can't be told.
std::optional<Status> TryTargetStatus(const std::wstring& native) {
  return StatusOf(OpenEntry(native, FILE_READ_ATTRIBUTES, OfLink::Target));
}

Status TargetStatus(std::string_view path) {
  const std::optional<Status> status = TryTargetStatus(CallPathOf(path));
  Require(status.has_value(), path);
  return *status;
}

std::uint64_t Joined(DWORD high, DWORD low) {
  return std::uint64_t{high} << 32 | low;
}

Identity IdentityOf(const Status& status) {
  return {status.dwVolumeSerialNumber, Joined(status.nFileIndexHigh, status.nFileIndexLow)};
}

// Other entries carry that mark too, such as files that are fetched over the network when they are read.
bool IsLink(const WIN32_FIND_DATAW& entry) {
  return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (entry.dwReserved0 == IO_REPARSE_TAG_SYMLINK || entry.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

bool IsLink(const std::wstring& native, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
  WIN32_FIND_DATAW entry;
  const HANDLE search = FindFirstFileW(native.c_str(), &entry);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return IsLink(entry);
}

std::wstring WithoutClosingSeparator(std::wstring native) {
  while (native.size() > 1 && native.back() == L'\\' && native[native.size() - 2] != L':')
    native.pop_back();
  return native;
}

std::optional<int> TryAttributesOf(const std::wstring& native) {
  const DWORD own = GetFileAttributesW(native.c_str());
  if (own == INVALID_FILE_ATTRIBUTES) return std::nullopt;
  const int bits = static_cast<int>(own) & kOwnBits;
  const std::wstring bare = WithoutClosingSeparator(native);
  if (!IsLink(bare, own)) return bits;
  const std::optional<Status> target = TryTargetStatus(bare);
  const int bitsOfTarget = target ? static_cast<int>(target->dwFileAttributes) & kOwnBits : kArchive;
  return kLink | (bits & kHidden) | (bitsOfTarget & ~kHidden);
}

bool IsReadOnly(int attributes) {
  return (attributes & kReadOnly) != 0 && (attributes & kLink) == 0;
}

}  // namespace

// --- Length, attributes, times ---------------------------------------------------------------------------

std::uint64_t FileLength(std::string_view path) {
  const std::wstring native = CallPathOf(path);
  WIN32_FILE_ATTRIBUTE_DATA data;
  Require(GetFileAttributesExW(native.c_str(), GetFileExInfoStandard, &data) != 0, path);
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) RefuseAccess(path, "is a folder");
  if ((data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
    return Joined(data.nFileSizeHigh, data.nFileSizeLow);
  const Status status = TargetStatus(path);
  return Joined(status.nFileSizeHigh, status.nFileSizeLow);
}

int ReadAttributes(std::string_view path) {
  const std::optional<int> attributes = TryAttributesOf(CallPathOf(path));
  Require(attributes.has_value(), path);
  return *attributes;
}

std::optional<int> TryReadAttributes(std::string_view path) {
  return TryAttributesOf(CallPathOf(path));
}

std::optional<Identity> TryIdentify(std::string_view path) {
  const std::optional<Status> status = TryTargetStatus(CallPathOf(path));
  if (!status) return std::nullopt;
  return IdentityOf(*status);
}

HeldFolder::HeldFolder(std::string_view path) : path_(path) {
  Handle folder = OpenEntry(CallPathOf(path), FILE_READ_ATTRIBUTES, OfLink::Target);
  const std::optional<Status> status = StatusOf(folder);
  Require(status.has_value(), path);
  if ((status->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) RaiseSystemFailure(ERROR_DIRECTORY, path);
  identity_ = IdentityOf(*status);
  handle_ = folder.Release();
}

HeldFolder::~HeldFolder() {
  CloseHandle(AsHandle(handle_));
}

void WriteAttributes(std::string_view path, int attributes) {
  const std::wstring native = CallPathOf(path);
  const DWORD own = GetFileAttributesW(native.c_str());
  Require(own != INVALID_FILE_ATTRIBUTES, path);
  const int wanted = attributes & kSettableBits;
  if ((static_cast<int>(own) & kSettableBits) == wanted) return;
  const DWORD bits = wanted == 0 ? DWORD{FILE_ATTRIBUTE_NORMAL} : static_cast<DWORD>(wanted);
  Require(SetFileAttributesW(native.c_str(), bits) != 0, path);
}

DateTime ReadChangeTime(std::string_view path) {
  const FILETIME time = TargetStatus(path).ftLastWriteTime;
  const Moment moment = MomentOf(Joined(time.dwHighDateTime, time.dwLowDateTime));
  return EpochToLocal(moment.second, moment.millisecond);
}

void WriteTimes(std::string_view path, const DateTime& local) {
  const std::wstring native = CallPathOf(path);
  const std::optional<int> attributes = TryAttributesOf(native);
  Require(attributes.has_value(), path);
  if ((*attributes & kDirectory) == 0 && IsReadOnly(*attributes))
    RefuseAccess(path, "is read-only", Hint::MakeWritable);
  const std::uint64_t ticks = TicksOf({LocalToEpoch(local), local.millisecond});
  const FILETIME time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  const Handle entry = OpenEntry(native, FILE_WRITE_ATTRIBUTES, OfLink::Target);
  Require(entry.IsOpen() && SetFileTime(entry.Get(), &time, &time, &time) != 0, path);
}

// --- Listing ---------------------------------------------------------------------------------------------

namespace {

// The entries of a folder, in the order of the disk.
class Listing {
 public:
  explicit Listing(std::string_view folder) {
    std::string native = ToNativePath(folder);
    if (native.empty()) {
      SetLastError(ERROR_PATH_NOT_FOUND);
      return;
    }
    native += native.ends_with('\\') || native.ends_with(':') ? "*" : "\\*";
    search_ = FindFirstFileExW(ToCallPath(native).c_str(), FindExInfoBasic, &entry_, FindExSearchNameMatch,
                               nullptr, FIND_FIRST_EX_LARGE_FETCH);
  }
  ~Listing() {
    if (IsOpen()) FindClose(search_);
  }
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;

  // If not, LastError tells the reason.
  bool IsOpen() const { return search_ != INVALID_HANDLE_VALUE; }
  const WIN32_FIND_DATAW& Entry() const { return entry_; }
  bool Next() { return FindNextFileW(search_, &entry_) != 0; }

 private:
  HANDLE search_ = INVALID_HANDLE_VALUE;
  WIN32_FIND_DATAW entry_ = {};
};

// The root of a drive may hold nothing, not even itself.
bool IsEmptyRoot(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND;
}

bool IsNoFolder(DWORD error) {
  return error == ERROR_PATH_NOT_FOUND || error == ERROR_DIRECTORY || error == ERROR_INVALID_NAME ||
         error == ERROR_BAD_PATHNAME || error == ERROR_BAD_NETPATH || error == ERROR_BAD_NET_NAME ||
         error == ERROR_NOT_READY;
}

bool IsFolder(const std::wstring& folder, const WIN32_FIND_DATAW& entry) {
  if (!IsLink(entry)) return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  const std::optional<Status> target = TryTargetStatus(folder + L"\\" + entry.cFileName);
  return target && (target->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Whether a listing with these attributes shows an entry.
bool IsShown(const WIN32_FIND_DATAW& entry, bool isFolder, int attributes) {
  const std::wstring_view name = entry.cFileName;
  if (name == L"." || name == L"..") return false;
  const int special = static_cast<int>(entry.dwFileAttributes) & (kHidden | kSystem);
  return (special & ~attributes) == 0 && (!isFolder || (attributes & kDirectory) != 0);
}

}  // namespace

bool MayList(std::string_view path) {
  const Listing listing(path);
  return listing.IsOpen() || IsEmptyRoot(LastError());
}

std::vector<FolderEntry> ListEntries(std::string_view folder, std::string_view pattern, int attributes) {
  Listing listing(folder);
  if (!listing.IsOpen()) {
    const DWORD error = LastError();
    if (IsEmptyRoot(error) || IsNoFolder(error)) return {};
    RaiseSystemFailure(error, folder);
  }
  const std::wstring native = CallPathOf(folder);
  std::vector<FolderEntry> found;
  do {
    const bool isFolder = IsFolder(native, listing.Entry());
    if (!IsShown(listing.Entry(), isFolder, attributes)) continue;
    // What isn't Unicode can't be said in a path.
    const std::optional<std::string> nativeName = ToUtf8(listing.Entry().cFileName);
    if (!nativeName) continue;
    std::string name = ToWindowsName(*nativeName);
    if (NameMatches(name, pattern)) found.push_back({std::move(name), isFolder});
  } while (listing.Next());
  if (LastError() != ERROR_NO_MORE_FILES) RaiseSystemFailure(LastError(), folder);
  return InOrderOfNames(std::move(found));
}

// --- Making and removing ---------------------------------------------------------------------------------

void RemoveFile(std::string_view path) {
  const std::wstring native = CallPathOf(path);
  const std::optional<int> attributes = TryAttributesOf(native);
  Require(attributes.has_value(), path);
  const bool isLink = (*attributes & kLink) != 0;
  if (!isLink && (*attributes & kDirectory) != 0) RefuseAccess(path, "is a folder");
  if (IsReadOnly(*attributes)) RefuseAccess(path, "is read-only", Hint::MakeWritable);
  Require(DeleteFileW(native.c_str()) != 0, path);
}

bool TryRemovePlainFile(std::string_view path) {
  const std::wstring native = CallPathOf(path);
  const DWORD attributes = GetFileAttributesW(native.c_str());
  constexpr DWORD kOther = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_REPARSE_POINT;
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kOther) == 0 &&
         DeleteFileW(native.c_str()) != 0;
}

void CreateFolder(std::string_view path) {
  const std::wstring native = CallPathOf(path);
  if (CreateDirectoryW(native.c_str(), nullptr) != 0) return;
  const DWORD error = LastError();
  if (error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS) RefuseAccess(path, "exists");
  RaiseSystemFailure(error, path);
}

void RemoveFolder(std::string_view path) {
  const std::wstring native = CallPathOf(path);
  const std::optional<int> attributes = TryAttributesOf(native);
  Require(attributes.has_value(), path);
  if (IsReadOnly(*attributes)) RefuseAccess(path, "is read-only", Hint::MakeWritable);
  Require(RemoveDirectoryW(native.c_str()) != 0, path);
}

// --- Syncing ---------------------------------------------------------------------------------------------

// What the system's file systems do to folders stands in their log before the call returns.
void SyncFolder(std::string_view path) {
  const HeldFolder mustBeThere(path);
}

// Only an administrator may flush a whole disk.
void SyncTogether(std::string_view folder, const std::vector<std::string>& files) {
  const HeldFolder mustBeThere(folder);
  for (const std::string& path : files) {
    if (TryReadAttributes(path)) File::Open(path, File::Mode::Read).Sync();
  }
}

}  // namespace vorlent::os
