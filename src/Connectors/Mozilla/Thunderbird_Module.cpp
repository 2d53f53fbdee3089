#include "Connectors/Mozilla/Thunderbird_Module.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "Common/JsonReader.h"
#include "Common/LineFile.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/FolderNames.h"
#include "Connectors/Mozilla/LocationRecord.h"
#include "Connectors/Mozilla/MailboxFiles.h"
#include "Connectors/Mozilla/Profiles.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Platform.h"
#include "Platform/Rules.h"
#include "Platform/Time.h"

namespace vorlent {

namespace {

constexpr std::string_view kAll = "*";
// Stands in the address of everything on the disks.
constexpr std::string_view kDisksMark = "://./";

// One profile's preferences are in memory at a time.
KeyedList<std::string> prefNames;
KeyedList<std::string> prefValues;
std::vector<MailAccount> mailAccounts;
std::string profileOfAccounts;  // "" for none and for the disks
// Of the preferences that tell them: length and time of the last change.
std::pair<std::uint64_t, DateTime> stampOfAccounts;
FolderNames folderNames;

std::string Joined(std::string_view a, std::string_view b, std::string_view c = {}) {
  std::string text;
  text.reserve(a.size() + b.size() + c.size());
  return text.append(a).append(b).append(c);
}

// The folders of all accounts of a profile, joined by "|".
std::string AccountFolders(std::string_view prefix, std::string_view profilePath) {
  std::string folders;
  for (const std::string& account : GetAccounts(prefix, kAll, profilePath)) {
    folders += AddPathSep(SplitDiscoveryEntry(account).path) + '|';
  }
  DropRight(folders, 1);
  return folders;
}

// By the rules of today a profile that can't be read hides no other one: it is told when it is read itself.
std::string AccountFoldersOrNone(std::string_view prefix, std::string_view profilePath) {
  std::string folders;
  const auto ask = [&] { folders = AccountFolders(prefix, profilePath); };
  BrokenItemsAreNamed() ? static_cast<void>(Swallow(ask)) : ask();
  return folders;
}

// The names of a mailbox and the folders that it lies in below `folder`, joined by commas.
std::string ShownPath(std::string folder, std::string_view below) {
  std::string names;
  for (;;) {
    const std::size_t end = below.find(kSubfolderStep);
    const std::string name(below.substr(0, end));
    names += ShownFolderName(folder, name);
    if (end == std::string_view::npos) return names;
    names += ',';
    folder.append(name).append(kSubfolderStep);
    below.remove_prefix(end + kSubfolderStep.size());
  }
}

// The text up to a quote, which is cut with it; all of the text without one.
std::string_view CutAtQuote(std::string_view& text) {
  const std::string_view token = text.substr(0, text.find('"'));
  text.remove_prefix(std::min(text.size(), token.size() + 1));
  return token;
}

// The value as the program that wrote it meant it; as it stands if it is no text.
std::string WholeValue(std::string_view written) {
  if (const auto text = JsonReader(written).TakeText()) return os::ToWindowsName(*text);
  if (written.starts_with('"')) written.remove_prefix(1);
  return std::string(written.substr(0, written.find_first_of("\")")));
}

// Takes lines of the form user_pref("<name>", "<value>"); as far as they go. By the rules of old a number or
// a truth value takes the value of the quoted preference above it, which does no harm: only texts are ever
// asked for.
void ReadPrefs(std::string_view file) {
  constexpr std::string_view kLead = "user_pref(\"";
  LineFile lines(file, os::File::Mode::Read);
  std::string value;
  while (!lines.AtEnd()) {
    std::string_view line = lines.ReadLine();
    if (!line.starts_with(kLead)) continue;
    line.remove_prefix(kLead.size());
    const std::string name(CutAtQuote(line));
    if (line.starts_with(',')) line.remove_prefix(1);
    line = TrimView(line);
    if (AccountsAreAsShown()) {
      value = WholeValue(line);
      prefValues.TryRemove(LowerCase(name));
    } else if (line.starts_with('"')) {
      line.remove_prefix(1);
      value = CutAtQuote(line);
    }
    prefNames.Add(name);
    prefValues.Add(value, LowerCase(name));
  }
}

KeyedList<std::string> GetDrives(std::string_view prefix, std::string_view filter) {
  KeyedList<std::string> drives;
  if (filter == kAll) {
    for (char letter = 'C'; letter <= 'Z'; ++letter) {
      const std::string drive = {letter, ':', '\\'};
      if (Platform::Current().DriveType(drive) == kNoRootDirectory) continue;
      drives.Add(JoinDiscoveryEntry({drive, std::string(prefix) + letter + "/*", drive}));
    }
  } else if (filter.size() == 1 &&
             ((filter[0] >= 'A' && filter[0] <= 'Z') || (filter[0] >= 'a' && filter[0] <= 'z'))) {
    drives.Add(Joined(filter, ":\\"));
  }
  return drives;
}

// The entry of a folder `name` that is shown as `text`; its address ends in "*" if there is something below
// it.
std::string FolderEntry(std::string_view prefix, const std::string& text, const std::string& name,
                        std::string_view folder, bool hasEntries) {
  std::string location = Joined(prefix, name, "/");
  if (hasEntries) location += '*';
  return JoinDiscoveryEntry({text, location, Joined(folder, name)});
}

void AddMailboxes(KeyedList<std::string>& list, std::string_view prefix, std::string_view folder,
                  const KeyedList<std::string>& files, const KeyedList<std::string>& folders) {
  const bool onDisks = prefix.find(kDisksMark) != std::string_view::npos;
  const SiblingNames summaries(files, kSummary);
  const SiblingNames subfolders(folders, kSubfolders);
  // Only after a closed path do the names that are asked for lie among those listed.
  const bool isListed = folder.ends_with('\\');
  for (const std::string& name : files) {
    const std::string file = Joined(folder, name);
    const bool hasSummary = isListed ? summaries.StandBeside(name) : FileExists(Joined(file, kSummary));
    if (!IsMailbox(folder, name, hasSummary, onDisks ? MailboxPlace::Disks : MailboxPlace::Account)) continue;
    const bool mayHaveEntries = !isListed || subfolders.StandBeside(name);
    list.Add(FolderEntry(prefix, ShownFolderName(folder, name), name, folder,
                         mayHaveEntries && FolderHasEntries(Joined(file, kSubfolders))));
  }
}

// Lets names of folders be those of the accounts in memory.
void TurnFolderNames(std::string_view profilePath) {
  folderNames.TurnTo(profilePath);
  std::vector<std::string> foldersOfImap;
  for (const MailAccount& account : mailAccounts) {
    if (account.isImap) foldersOfImap.push_back(account.folder);
  }
  folderNames.ServersNameThoseIn(std::move(foldersOfImap));
}

std::string PrefsOf(std::string_view profilePath) {
  return AddPathSep(profilePath) + "prefs.js";
}

std::pair<std::uint64_t, DateTime> StampOfPrefs(std::string_view profilePath) {
  std::pair<std::uint64_t, DateTime> stamp;
  const std::string prefs = PrefsOf(profilePath);
  Swallow([&] { stamp = {os::FileLength(prefs), os::ReadChangeTime(prefs)}; });
  return stamp;
}

// The keyword path of a mailbox of one of the accounts in memory.
std::optional<std::string> KeywordsByAccounts(std::string_view file) {
  for (const MailAccount& account : mailAccounts) {
    const std::string folder = AddPathSep(account.folder);
    if (!EqualNoCase(file.substr(0, folder.size()), folder)) continue;
    const std::string folders = ShownPath(folder, file.substr(folder.size()));
    return "Account=" + account.name + (folders.empty() ? "" : ",") + folders;
  }
  return std::nullopt;
}

// The same of a mailbox in the profile read last: a run asks for each of its mailboxes, and by the rules of
// today the preferences aren't read for each of them unless they have changed.
std::optional<std::string> KeywordsByMemory(std::string_view file) {
  if (!AccountsAreAsShown() || profileOfAccounts.empty() ||
      !file.starts_with(AddPathSep(profileOfAccounts)) || StampOfPrefs(profileOfAccounts) != stampOfAccounts)
    return std::nullopt;
  TurnFolderNames(profileOfAccounts);
  return KeywordsByAccounts(file);
}

// Of a profile folder, whose preferences are read anew.
void ReadMailAccounts(std::string_view profilePath) {
  ForgetAccounts();
  prefNames.Clear();
  prefValues.Clear();
  const auto stamp = StampOfPrefs(profilePath);
  const std::string prefs = PrefsOf(profilePath);
  if (FileExists(prefs)) ReadPrefs(prefs);
  mailAccounts = MailAccountsOf(profilePath, GetPref);
  TurnFolderNames(profilePath);
  stampOfAccounts = stamp;
  profileOfAccounts = profilePath;
}

// The folder of the account in memory that an address names, if there is one.
KeyedList<std::string> FolderOfAccount(std::string_view segment) {
  KeyedList<std::string> folder;
  if (const MailAccount* const account = FindMailAccount(segment)) folder.Add(account->folder);
  return folder;
}

}  // namespace

KeyedList<std::string> GetMozillaProfiles(std::string_view prefix, std::string_view filter,
                                          std::string_view appFolder) {
  KeyedList<std::string> list;
  for (const MozillaProfile& profile : ReadMozillaProfiles(appFolder)) {
    if (filter == kAll) {
      list.Add(JoinDiscoveryEntry({"Profil '" + profile.name + "'", Joined(prefix, profile.segment, "/*"),
                                   AccountFoldersOrNone(prefix, profile.path)}));
    } else if (filter == profile.segment) {
      list.Add(profile.path);
      return list;
    }
  }
  if (filter == kDisks) {
    list.Add(std::string(kDisks));
  } else if (filter == kAll) {
    list.Add(JoinDiscoveryEntry({"Lokale Laufwerke", Joined(prefix, "./*"), AccountFolders(prefix, kDisks)}));
  }
  return list;
}

KeyedList<std::string> GetAccounts(std::string_view prefix, std::string_view filter,
                                   std::string_view profilePath) {
  folderNames.TurnTo(profilePath == kDisks ? "" : profilePath);
  if (profilePath == kDisks) {
    ForgetAccounts();
    return GetDrives(prefix, filter);
  }
  ReadMailAccounts(profilePath);
  if (filter != kAll) return FolderOfAccount(filter);
  KeyedList<std::string> list;
  for (const MailAccount& account : mailAccounts)
    list.Add(JoinDiscoveryEntry({account.name, Joined(prefix, account.segment, "/*"), account.folder}));
  return list;
}

void ForgetAccounts() {
  mailAccounts.clear();
  profileOfAccounts.clear();
}

KeyedList<std::string> GetListedAccount(std::string_view segment, std::string_view profilePath) {
  const bool isInMemory = !profileOfAccounts.empty() && profilePath == profileOfAccounts;
  return isInMemory ? FolderOfAccount(segment) : GetAccounts("", segment, profilePath);
}

KeyedList<std::string> GetMailFolders(std::string_view prefix, std::string_view filter,
                                      std::string_view folder) {
  KeyedList<std::string> list;
  if (!FolderExists(folder)) return list;
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  ListFolder(folder, &files, &folders, "*.*");
  const bool onDisks = prefix.find(kDisksMark) != std::string_view::npos;
  if (filter == kAll) {
    if (onDisks) {
      for (const std::string& name : folders) {
        list.Add(FolderEntry(prefix, name, name, folder, FolderHasEntries(Joined(folder, name))));
      }
    }
    AddMailboxes(list, prefix, folder, files, folders);
    if (onDisks) return list;
    for (const std::string& name : NamesOfSubfoldersOnly(folder)) {
      list.Add(FolderEntry(prefix, ShownFolderName(folder, name), name, folder,
                           FolderHasEntries(Joined(folder, name, kSubfolders))));
    }
  } else if (onDisks) {
    for (const std::string& name : folders) {
      if (filter == name) list.Add(Joined(folder, name, "\\"));
    }
  } else {
    const std::string wanted = FolderNameOnDisk(folder, std::string(filter));
    for (const auto& names : {files, NamesOfSubfoldersOnly(folder)}) {
      for (const std::string& name : names) {
        if (wanted == name) list.Add(Joined(folder, name, kSubfolderStep));
      }
    }
  }
  return list;
}

std::string ShownFolderName(std::string_view folder, const std::string& name) {
  return folderNames.Shown(folder, name);
}

std::string FolderNameOnDisk(std::string_view folder, const std::string& name) {
  return folderNames.OnDisk(folder, name);
}

bool HasSubfoldersOnly(const std::string& path) {
  return CurrentRules().subfolders == Subfolders::OfAny && !FileExists(path) &&
         FolderExists(Joined(path, kSubfolders));
}

KeyedList<std::string> NamesOfSubfoldersOnly(std::string_view folder) {
  KeyedList<std::string> names;
  if (CurrentRules().subfolders == Subfolders::OfMailboxes) return names;
  KeyedList<std::string> files;
  KeyedList<std::string> folders;
  ListFolder(folder, &files, &folders, "*.*");
  const SiblingNames mailboxes(files, "");
  for (std::string name : folders) {
    if (!HasEnding(name, kSubfolders)) continue;
    name.resize(name.size() - kSubfolders.size());
    if (!mailboxes.StandBeside(name)) names.Add(name);
  }
  return names;
}

const MailAccount* FindMailAccount(std::string_view segment) {
  const auto found = std::ranges::find(mailAccounts, segment, &MailAccount::segment);
  return found == mailAccounts.end() ? nullptr : &*found;
}

bool IsToldAsMaildir(const MailAccount& account) {
  return CurrentRules().mailStores == MailStores::Told && account.isMaildir;
}

std::string GetPref(std::string_view key) {
  const std::string* value = prefValues.Find(key);
  return value == nullptr ? std::string() : *value;
}

bool FolderHasEntries(std::string_view folder) {
  return !FirstFolderEntry(folder).empty();
}

std::string GetKeywordsOfFile(std::string_view file) {
  if (const auto keywords = KeywordsByMemory(file)) return *keywords;
  for (const MozillaProfile& profile : ReadMozillaProfiles(kThunderbirdScheme.appFolder)) {
    GetAccounts("", kAll, profile.path);
    if (const auto keywords = KeywordsByAccounts(file)) return *keywords;
  }
  std::string folders(file);
  ReplaceText(folders, kSubfolderStep, ",");
  ReplaceText(folders, "\\", ",");
  constexpr std::size_t kDriveLength = 3;
  return folders.substr(std::min(folders.size(), kDriveLength));
}

const KeyedList<std::string>& PrefNames() {
  return prefNames;
}

const KeyedList<std::string>& PrefValues() {
  return prefValues;
}

}  // namespace vorlent
