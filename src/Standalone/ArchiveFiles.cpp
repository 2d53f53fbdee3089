#include "Standalone/ArchiveFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <memory>
#include <utility>

#include "Common/StdModul.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Standalone/FittingName.h"

namespace vorlent {

namespace {

constexpr std::size_t kFolderDigits = 6;

// What a copy on its way is called. No file of an item can be, as names begin with no blank.
constexpr std::string_view kOnItsWay = " part";

void MakeWritable(const std::string& path) {
  const int attributes = os::ReadAttributes(path);
  if ((attributes & os::kReadOnly) != 0) os::WriteAttributes(path, attributes & ~os::kReadOnly);
}

// Removes a file, read-only or not, by exactly that name.
void Delete(const std::string& path) {
  MakeWritable(path);
  os::RemoveFile(path);
}

// The item's folder "000012".
std::string FolderName(std::int64_t folderNumber) {
  const std::string digits = std::to_string(folderNumber);
  return std::string(digits.size() < kFolderDigits ? kFolderDigits - digits.size() : 0, '0') + digits;
}

}  // namespace

ArchiveFiles::ArchiveFiles(std::string folder) : folder_(std::move(folder)) {
  if (FolderExists(folder_)) return;
  const std::string folderItself = RemovePathSep(folder_);
  os::CreateFolder(folderItself);
  os::SyncFolder(GetPath(folderItself));
}

std::string ArchiveFiles::PathOf(std::int64_t item, std::string_view name) const {
  return FolderOf(item / kItemsPerFolder) + std::to_string(item) + " " + std::string(name);
}

std::string ArchiveFiles::OwnName(std::string_view name) {
  return FittingAsciiName(DecodeFileName(DecodeFileName(name)), kLongestName);
}

void ArchiveFiles::Take(std::string_view source, std::int64_t item, std::string_view name, bool move,
                        Safe safe) {
  // A folder could be renamed like a file.
  os::FileLength(source);
  const std::int64_t folderNumber = item / kItemsPerFolder;
  EnsureFolder(folderNumber);
  const std::string target = PathOf(item, name);
  if (move) {
    // The bytes must be safe before their new name is.
    if (safe == Safe::AtOnce) os::File::Open(source, os::File::Mode::Read).Sync();
    // The item's number makes the name the only one of its kind.
    if (os::RenameToNewName(source, target)) {
      if (safe == Safe::AtOnce) {
        os::SyncFolder(FolderOf(folderNumber));
      } else {
        notYetSafe_.push_back(target);
      }
      return;
    }
  }
  const std::string part = PathOf(item, kOnItsWay);
  os::Copy(source, part);
  os::File::Open(part, os::File::Mode::Read).Sync();
  os::Rename(part, target);
  os::SyncFolder(FolderOf(folderNumber));
  if (move) RemoveSource(source);
}

void ArchiveFiles::RemoveSource(std::string_view source) {
  Delete(std::string(source));
}

void ArchiveFiles::AllowWriting(std::int64_t item, std::string_view name) {
  MakeWritable(PathOf(item, name));
}

void ArchiveFiles::Remove(std::int64_t item, std::string_view name) {
  Delete(PathOf(item, name));
}

bool ArchiveFiles::Exists(std::int64_t item, std::string_view name) const {
  return FileExists(PathOf(item, name));
}

namespace {

// Whether the next `count` bytes of both are the same.
bool GoOnAlike(os::File& a, os::File& b, std::uint64_t count) {
  constexpr std::size_t kBlock = 256 * 1024;
  const auto blockOfA = std::make_unique<char[]>(kBlock);
  const auto blockOfB = std::make_unique<char[]>(kBlock);
  while (count > 0) {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(count, kBlock));
    if (a.Read(blockOfA.get(), wanted) != wanted || b.Read(blockOfB.get(), wanted) != wanted) return false;
    if (!std::equal(blockOfA.get(), blockOfA.get() + wanted, blockOfB.get())) return false;
    count -= wanted;
  }
  return true;
}

}  // namespace

bool ArchiveFiles::HaveSameBytes(std::string_view path, std::string_view otherPath) {
  os::File a = os::File::Open(path, os::File::Mode::Read);
  os::File b = os::File::Open(otherPath, os::File::Mode::Read);
  return a.Length() == b.Length() && GoOnAlike(a, b, a.Length());
}

void ArchiveFiles::SyncAll() {
  os::SyncTogether(folder_, notYetSafe_);
  notYetSafe_.clear();
}

std::set<std::int64_t> ArchiveFiles::FolderNumbers() const {
  std::set<std::int64_t> numbers;
  for (const auto& [name, isFolder] : os::ListEntries(folder_, "*.*", os::kDirectory)) {
    if (!isFolder) continue;
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool isNumber = error == std::errc() && end == name.data() + name.size();
    constexpr std::int64_t kHighest = std::numeric_limits<std::int64_t>::max() / kItemsPerFolder;
    if (isNumber && number >= 0 && number < kHighest && name == FolderName(number)) numbers.insert(number);
  }
  return numbers;
}

std::vector<std::string> ArchiveFiles::NamesIn(std::int64_t folderNumber) const {
  return os::ListNames(FolderOf(folderNumber), "*.*", os::kHidden | os::kSystem);
}

void ArchiveFiles::RemoveFromFolder(std::int64_t folderNumber, std::string_view name) {
  Delete(FolderOf(folderNumber) + std::string(name));
}

std::string ArchiveFiles::FolderOf(std::int64_t folderNumber) const {
  return folder_ + FolderName(folderNumber) + "\\";
}

void ArchiveFiles::EnsureFolder(std::int64_t folderNumber) {
  if (folderNumber == knownFolder_) return;
  const std::string folder = FolderOf(folderNumber);
  if (!FolderExists(folder)) {
    os::CreateFolder(RemovePathSep(folder));
    os::SyncFolder(folder_);
  }
  knownFolder_ = folderNumber;
}

}  // namespace vorlent
