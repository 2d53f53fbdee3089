// The operating system's files and folders.
//
// Paths are Windows paths in the code page; each system maps them to its own at the last moment. Every
// function that fails raises a Failure that names the path and the reason: FileNotFound or PathNotFound for
// what isn't there, PathAccess for what may not be touched or is read-only, DiskFull, FileExists, DeviceIo
// for the rest.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Time.h"

namespace vorlent::os {

// Attribute bits of a file.
inline constexpr int kReadOnly = 1;
inline constexpr int kHidden = 2;
inline constexpr int kSystem = 4;
inline constexpr int kDirectory = 16;
inline constexpr int kArchive = 32;
// The entry is a link to another; all other bits but the name's are those of what it leads to.
inline constexpr int kLink = 1024;

// An open file of bytes. Positions are counted from 0 here. Move-only; closed by its destructor without a
// word, by Close with a failure where the system reports one.
class File {
 public:
  enum class Mode {
    Read,       // must exist
    ReadWrite,  // created empty if missing; a read-only file is refused, whoever the user is
    Change,     // must exist; otherwise as ReadWrite
    Create,     // created or emptied; a read-only file is refused
    Append,     // created if missing; every write goes to the end
  };

  File() = default;
  // A folder and a pipe are refused in every mode with PathAccess; no call waits for another program.
  static File Open(std::string_view path, Mode mode);

  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File();

  bool IsOpen() const { return handle_ != kClosed; }
  // The path as given to Open.
  const std::string& Path() const { return path_; }

  // Reads up to `size` bytes at the file position and returns how many came; fewer only at the end.
  std::size_t Read(char* buffer, std::size_t size);
  // Writes all of the bytes or raises.
  void Write(const char* bytes, std::size_t size);
  void Seek(std::uint64_t position);
  std::uint64_t Length() const;
  // What was written so far survives a crash of the machine once this returns.
  void Sync();
  void Close();

 private:
  static constexpr std::intptr_t kClosed = -1;
  std::intptr_t handle_ = kClosed;
  std::string path_;
};

// Length in bytes of a file. A folder raises PathAccess.
std::uint64_t FileLength(std::string_view path);

// Attribute bits of a file or folder.
int ReadAttributes(std::string_view path);
// The same without a failure: nothing if they can't be read.
std::optional<int> TryReadAttributes(std::string_view path);

// Sets the read-only bit as given; the system keeps what it can't express. What a link leads to isn't
// touched.
void WriteAttributes(std::string_view path, int attributes);

// Tells an entry of the disks from all others, whatever path leads to it.
struct Identity {
  std::uint64_t device;
  std::uint64_t number;

  bool operator==(const Identity&) const = default;
};
// That of what the path leads to; nothing if there is none.
std::optional<Identity> TryIdentify(std::string_view path);

// Holds a folder, so that no later one gets its identity, even if it is removed meanwhile.
class HeldFolder {
 public:
  explicit HeldFolder(std::string_view path);
  ~HeldFolder();
  HeldFolder(const HeldFolder&) = delete;
  HeldFolder& operator=(const HeldFolder&) = delete;

  // The path as given, and what stood there.
  const std::string& Path() const { return path_; }
  const Identity& Held() const { return identity_; }

 private:
  std::string path_;
  Identity identity_ = {};
  std::intptr_t handle_;
};

// Time of last change in local time.
DateTime ReadChangeTime(std::string_view path);

// Sets creation, access and change time, as far as the system has them, to one local time. Works on folders
// too; a read-only file is refused.
void WriteTimes(std::string_view path, const DateTime& local);

// Whether a folder is there and may be listed.
bool MayList(std::string_view path);

// Names in a folder that match a pattern with "*" and "?" ("*.*" matches every name), without "." and "..",
// sorted without regard to case. Plain files always come, read-only ones included; hidden ones, system ones
// and folders only with their bit in `attributes`. A folder that isn't there gives no names; one that may not
// be read raises.
std::vector<std::string> ListNames(std::string_view folder, std::string_view pattern, int attributes);

struct FolderEntry {
  std::string name;
  bool isFolder;  // also for a link that leads to a folder
};

// As ListNames, and what each entry is, which costs nothing more.
std::vector<FolderEntry> ListEntries(std::string_view folder, std::string_view pattern, int attributes);

// A read-only file and a folder are refused. Of a link only the link goes, here and in RemoveFolder.
void RemoveFile(std::string_view path);
// Removes a plain file that may be written. False if there is none of just that name, or if it can't go.
bool TryRemovePlainFile(std::string_view path);
// The parent must exist. An existing entry raises PathAccess. Below a folder that is shared with other users,
// such as that for temporary files, the new one is private.
void CreateFolder(std::string_view path);
// The folder must be empty; a read-only one is refused.
void RemoveFolder(std::string_view path);
// What was created, renamed and removed in a folder so far survives a crash of the machine once this returns.
void SyncFolder(std::string_view path);
// The same for a folder and all below it, and for what these files there hold. Where the system can do so,
// all of its file system is made safe at once. A file that is gone by then needs nothing.
void SyncTogether(std::string_view folder, const std::vector<std::string>& files);
// An existing target raises FileExists, unless it is the source by another case of letters. Across file
// systems a file is copied, complete before the source goes; a folder raises PathAccess.
void Rename(std::string_view source, std::string_view target);
// As Rename, for a name that the target's folder is known not to hold in another case of letters: that isn't
// looked for. Never copies: false if the two places lie on different file systems.
bool RenameToNewName(std::string_view source, std::string_view target);
// Copies a plain file with its attributes and time of last change. Replaces the target, but not a read-only
// one or the source itself; a target that could not be written whole is removed.
void Copy(std::string_view source, std::string_view target);

}  // namespace vorlent::os
