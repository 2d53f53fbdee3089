#include "Connectors/Mozilla/Thunderbird_Module.h"

#include <algorithm>

#include "Common/LineFile.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/LocationRecord.h"
#include "Connectors/Mozilla/Profiles.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

constexpr std::string_view kAll = "*";
// Stands in the address of everything on the disks.
constexpr std::string_view kDisksMark = "://./";

// One profile's preferences are in memory at a time.
KeyedList<std::string> prefNames;
KeyedList<std::string> prefValues;

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

// The text up to a quote, which is cut with it; all of the text without one.
std::string_view CutAtQuote(std::string_view& text) {
  const std::string_view token = text.substr(0, text.find('"'));
  text.remove_prefix(std::min(text.size(), token.size() + 1));
  return token;
}

// Takes lines of the form user_pref("<name>", "<value>"); as far as they go. A number or a truth value takes
// the value of the quoted preference above it, which does no harm: only texts are ever asked for.
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
    if (line.starts_with('"')) {
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

// The entry of a folder `name`; its address ends in "*" if there is something below it.
std::string FolderEntry(std::string_view prefix, const std::string& name, std::string_view folder,
                        bool hasEntries) {
  std::string location = Joined(prefix, name, "/");
  if (hasEntries) location += '*';
  return JoinDiscoveryEntry({name, location, Joined(folder, name)});
}

// The mailboxes of a folder, told by the summary files beside them.
void AddMailboxes(KeyedList<std::string>& list, std::string_view prefix, std::string_view folder,
                  const KeyedList<std::string>& files, const KeyedList<std::string>& folders) {
  const SiblingNames summaries(files, kSummary);
  const SiblingNames subfolders(folders, kSubfolders);
  // Only after a closed path do the names that are asked for lie among those listed.
  const bool isListed = folder.ends_with('\\');
  for (const std::string& name : files) {
    const std::string file = Joined(folder, name);
    if (isListed ? !summaries.StandBeside(name) : !FileExists(Joined(file, kSummary))) continue;
    const bool mayHaveEntries = !isListed || subfolders.StandBeside(name);
    list.Add(
        FolderEntry(prefix, name, folder, mayHaveEntries && FolderHasEntries(Joined(file, kSubfolders))));
  }
}

}  // namespace

KeyedList<std::string> GetMozillaProfiles(std::string_view prefix, std::string_view filter,
                                          std::string_view appFolder) {
  KeyedList<std::string> list;
  for (const MozillaProfile& profile : ReadMozillaProfiles(appFolder)) {
    if (filter == kAll) {
      list.Add(JoinDiscoveryEntry({"Profil '" + profile.name + "'", Joined(prefix, profile.name, "/*"),
                                   AccountFolders(prefix, profile.path)}));
    } else if (filter == profile.name) {
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
  if (profilePath == kDisks) return GetDrives(prefix, filter);
  prefNames.Clear();
  prefValues.Clear();
  const std::string prefs = AddPathSep(profilePath) + "prefs.js";
  if (FileExists(prefs)) ReadPrefs(prefs);

  KeyedList<std::string> list;
  std::string accounts = GetPref("mail.accountmanager.accounts");
  while (!accounts.empty()) {
    const std::string server = GetPref("mail.account." + CutToken(accounts, ",") + ".server");
    if (server.empty()) continue;
    const std::string name = GetPref("mail.server." + server + ".name");
    std::string folder = GetPref("mail.server." + server + ".directory");
    ReplaceText(folder, "\\\\", "\\");
    folder = AddPathSep(folder);
    if (filter == kAll) {
      list.Add(JoinDiscoveryEntry({name, Joined(prefix, name, "/*"), folder}));
    } else if (filter == name) {
      list.Add(folder);
      break;
    }
  }
  return list;
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
        list.Add(FolderEntry(prefix, name, folder, FolderHasEntries(Joined(folder, name))));
      }
    }
    AddMailboxes(list, prefix, folder, files, folders);
  } else {
    for (const std::string& name : onDisks ? folders : files) {
      if (filter == name) list.Add(Joined(folder, name, onDisks ? "\\" : kSubfolderStep));
    }
  }
  return list;
}

std::string GetPref(std::string_view key) {
  const std::string* value = prefValues.Find(key);
  return value == nullptr ? std::string() : *value;
}

bool FolderHasEntries(std::string_view folder) {
  return !FirstFolderEntry(folder).empty();
}

std::string GetKeywordsOfFile(std::string_view file) {
  for (const MozillaProfile& profile : ReadMozillaProfiles(kThunderbirdScheme.appFolder)) {
    for (const std::string& entry : GetAccounts("", kAll, profile.path)) {
      const DiscoveryEntry account = SplitDiscoveryEntry(entry);
      const std::string folder = AddPathSep(account.path);
      if (!EqualNoCase(file.substr(0, folder.size()), folder)) continue;
      std::string folders(file.substr(folder.size()));
      ReplaceText(folders, kSubfolderStep, ",");
      return "Account=" + account.text + (folders.empty() ? "" : ",") + folders;
    }
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
