// The names under which Thunderbird shows mail folders.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/Time.h"

namespace vorlent {

// A keyword path as the value of a record: the names in it that are shown may hold anything.
std::string KeywordsOfRecord(std::string_view keywords);

// The names of a profile's folders as Thunderbird shows them, by its folderCache.json. The files can't always
// be called so: a name that is long or holds certain characters is hashed. By the rules of old a folder is
// shown by the name of its file, and so it is today where the profile tells nothing of it that can be read;
// in IMAP accounts, what that means to the server.
//
// Folders are given with their closing separator, names are those of mailboxes.
class FolderNames {
 public:
  FolderNames() = default;
  FolderNames(const FolderNames&) = delete;
  FolderNames& operator=(const FolderNames&) = delete;

  // Turns to another profile folder, "" for none. What it tells is read when it is first needed, and again
  // after it was changed.
  void TurnTo(std::string_view profileFolder);

  // The folders of accounts whose files are called as servers write the names of folders. They hold until the
  // next turn.
  void ServersNameThoseIn(std::vector<std::string> folders) { foldersOfServers_ = std::move(folders); }

  // The name to show for the mailbox `name` in a folder.
  std::string Shown(std::string_view folder, const std::string& name);

  // The mailbox in a folder that is called so or, if there is none, shown so; else the name as it is given.
  std::string OnDisk(std::string_view folder, const std::string& name);

 private:
  struct Stamp {
    std::string profile = {};
    std::uint64_t length = 0;
    DateTime changed = {};
    bool operator==(const Stamp&) const = default;
  };

  void BringUpToDate();
  void ReadCache(const std::string& file);
  void Learn(std::string key, std::string name);
  void Forget();
  std::string NameByServer(std::string_view folder, const std::string& name) const;
  const std::string* Find(std::string_view folder, const std::string& name) const;

  std::string profile_;
  std::vector<std::string> foldersOfServers_;
  bool isUpToDate_ = false;
  Stamp stamp_;                // of what was read last
  std::string nativeProfile_;  // of that, with "/" for each separator, a closing one included
  // Names by the native path of the mailbox, with "/" for each separator; and these paths by their last part.
  using ByPath = std::unordered_map<std::string, std::string>;
  ByPath told_;
  std::unordered_multimap<std::string_view, const ByPath::value_type*> toldByMailbox_;
};

}  // namespace vorlent
