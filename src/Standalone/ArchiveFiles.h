// The files of an archive.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

// A file of an item lies in a folder for every hundred items and is called by the item's number and a name of
// its own: "files\000012\1234 mail.eml". Failures are those of os::File and name the path.
class ArchiveFiles {
 public:
  static constexpr std::int64_t kItemsPerFolder = 100;
  // Encrypted folders hold names of up to 143 bytes; the item's number and a suffix come to this one.
  static constexpr std::size_t kLongestName = 100;

  // The folder of the files, with its closing separator; made if need be.
  explicit ArchiveFiles(std::string folder);

  const std::string& Folder() const { return folder_; }
  std::string PathOf(std::int64_t item, std::string_view name) const;
  // The archive's own name for a file of that name, one that every file system takes and gives back. The true
  // one stands in the item's description of the file.
  static std::string OwnName(std::string_view name);

  // When a file that is moved in is safe from a crash of the machine. One that has to be copied is so at
  // once.
  enum class Safe { AtOnce, AfterSync };
  // Brings a file in. It is whole at its place and safe before the source goes and before this returns;
  // `move` says whether the source goes. A place that is taken raises FileExists, a source that is a folder
  // PathAccess.
  void Take(std::string_view source, std::int64_t item, std::string_view name, bool move,
            Safe safe = Safe::AtOnce);
  // Makes all files safe that were taken so far.
  void SyncAll();
  // Removes a file that was taken from where it came from, read-only or not.
  static void RemoveSource(std::string_view source);
  // Takes the read-only attribute from a file.
  void AllowWriting(std::int64_t item, std::string_view name);
  void Remove(std::int64_t item, std::string_view name);
  bool Exists(std::int64_t item, std::string_view name) const;
  static bool HaveSameBytes(std::string_view path, std::string_view otherPath);

  // The numbers of the folders that are there, and the names "<item> <name>" in one.
  std::set<std::int64_t> FolderNumbers() const;
  std::vector<std::string> NamesIn(std::int64_t folderNumber) const;
  void RemoveFromFolder(std::int64_t folderNumber, std::string_view name);

 private:
  std::string FolderOf(std::int64_t folderNumber) const;
  void EnsureFolder(std::int64_t folderNumber);

  std::string folder_;
  std::int64_t knownFolder_ = -1;
  std::vector<std::string> notYetSafe_;  // the paths of files that were moved in since the last sync
};

}  // namespace vorlent
