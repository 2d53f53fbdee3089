// The system calls by which a program works on the disk, so that a test can let each of them go wrong.
//
// A program that takes these calls over (see tests/CMakeLists.txt) sees those of all its libraries, SQLite
// among them; what the C library calls inside itself it doesn't see.
#pragma once

#include <errno.h>

#include <functional>
#include <string>
#include <string_view>

namespace vorlent {

// Kinds of calls; several are joined with |.
enum class DiskCall : unsigned {
  Open = 1 << 0,         // open, openat
  Read = 1 << 1,         // read, pread
  Write = 1 << 2,        // write, pwrite
  Seek = 1 << 3,         // lseek
  Truncate = 1 << 4,     // ftruncate
  Close = 1 << 5,        // close; the descriptor is gone even so
  Status = 1 << 6,       // stat, lstat, fstat, fstatat, statx
  List = 1 << 7,         // opendir, readdir, getdents64
  Sync = 1 << 8,         // fsync, fdatasync, syncfs
  Rename = 1 << 9,       // rename, renameat2
  Remove = 1 << 10,      // unlink, unlinkat, rmdir
  MakeFolder = 1 << 11,  // mkdir
  SetMode = 1 << 12,     // chmod, fchmod
  SetTimes = 1 << 13,    // utimensat, futimens
};

constexpr DiskCall operator|(DiskCall a, DiskCall b) {
  return static_cast<DiskCall>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

// What may find no space on a full disk.
inline constexpr DiskCall kTakingSpace =
    DiskCall::Write | DiskCall::Truncate | DiskCall::Sync | DiskCall::Rename | DiskCall::MakeFolder;
// Between any two of these the disk is in a state of its own.
inline constexpr DiskCall kChangingTheDisk = kTakingSpace | DiskCall::Remove;

enum class DiskTrouble {
  Death,     // the process is killed in place of the call
  Once,      // the call fails
  FromHere,  // so do all that follow, until the trouble ends
};

// What goes wrong: of the calls of these kinds on files whose native path ends so ("" for every file), that
// with this number, counted from 0.
struct DiskPlan {
  DiskCall calls = {};
  long number = 0;
  DiskTrouble trouble = DiskTrouble::Once;
  int error = EIO;
  std::string_view pathEnd = {};
};

// The trouble, in the whole process and in those it forks off, as long as this object lives. One at a time.
class DiskFault {
 public:
  explicit DiskFault(const DiskPlan& plan);
  ~DiskFault();
  DiskFault(const DiskFault&) = delete;
  DiskFault& operator=(const DiskFault&) = delete;

  // Whether the call was made.
  bool WasReached() const;
};

// Counts calls as long as it lives, beside no trouble.
class DiskCallCount {
 public:
  explicit DiskCallCount(DiskCall calls, std::string_view pathEnd = {});
  ~DiskCallCount();
  DiskCallCount(const DiskCallCount&) = delete;
  DiskCallCount& operator=(const DiskCallCount&) = delete;

  long Count() const;
};

// Somebody who is called before each call of these kinds, with the native path of its file, as long as this
// object lives, beside trouble or none. The calls that he makes himself aren't watched.
class DiskWatch {
 public:
  using Watcher = std::function<void(DiskCall call, const std::string& path)>;
  DiskWatch(DiskCall calls, Watcher watcher);
  ~DiskWatch();
  DiskWatch(const DiskWatch&) = delete;
  DiskWatch& operator=(const DiskWatch&) = delete;

 private:
  Watcher watcher_;
};

}  // namespace vorlent
