#include "Connectors/Mozilla/FolderNames.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "Common/JsonReader.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/ImapNames.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Platform/Files.h"
#include "Platform/NativePaths.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

static_assert(kSummary.size() == kSubfolders.size());

// Thousands of folders need a few megabytes. Of a larger file as much is read.
constexpr std::uint64_t kMostOfCache = 64 << 20;

bool FoldersHaveShownNames() {
  return CurrentRules().folderNames == MailFolderNames::Shown;
}

bool IsPathOfWindows(std::string_view path) {
  return (path.size() > 2 && path.substr(1, 2) == ":\\") || path.starts_with("\\\\");
}

// A name of several lines, or with other characters that aren't to be seen, is none to show.
bool MayBeShown(std::string_view name) {
  return !name.empty() &&
         std::none_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

bool IsAnywhere(const std::string& path) {
  return os::TryReadAttributes(path).has_value();
}

// A native path or one of the cache with "/" for each separator.
std::string WithSlashes(std::string path) {
  if (IsPathOfWindows(path)) ReplaceText(path, "\\", "/");
  return path;
}

std::string FolderWithSlashes(std::string_view folder) {
  std::string path = WithSlashes(os::ToNativePath(folder));
  if (!path.ends_with('/')) path += '/';
  return path;
}

}  // namespace

std::string KeywordsOfRecord(std::string_view keywords) {
  return FoldersHaveShownNames() ? EscapeValue(keywords) : std::string(keywords);
}

void FolderNames::TurnTo(std::string_view profileFolder) {
  profile_ = profileFolder;
  foldersOfServers_.clear();
  isUpToDate_ = false;
}

std::string FolderNames::Shown(std::string_view folder, const std::string& name) {
  if (!FoldersHaveShownNames() || profile_.empty()) return name;
  BringUpToDate();
  const std::string* told = Find(folder, name);
  return told == nullptr ? NameByServer(folder, name) : os::ToWindowsName(*told);
}

std::string FolderNames::OnDisk(std::string_view folder, const std::string& name) {
  if (!FoldersHaveShownNames()) return name;
  const std::string path = std::string(folder) + name;
  if (IsAnywhere(path) || IsAnywhere(path + std::string(kSubfolders))) return name;
  std::optional<std::string> found;
  Swallow([&] {
    for (std::string file : os::ListNames(folder, "*.*", os::kDirectory)) {
      if (HasEnding(file, kSummary) || HasEnding(file, kSubfolders))
        file.resize(file.size() - kSummary.size());
      if (!found && Shown(folder, file) == name) found = std::move(file);
    }
  });
  return found.value_or(name);
}

std::string FolderNames::NameByServer(std::string_view folder, const std::string& name) const {
  const bool isByServer = name.find('&') != std::string::npos &&
                          std::ranges::any_of(foldersOfServers_, [&](const std::string& account) {
                            return folder.starts_with(account);
                          });
  const auto meant = isByServer ? FromImapName(name) : std::nullopt;
  if (meant && MayBeShown(*meant)) return os::ToWindowsName(*meant);
  std::string shown = name;
  for (const char c : os::kUnsayable)
    ReplaceText(shown, os::StandInFor(c), c == '\\' ? "\\" : " ");
  return shown;
}

void FolderNames::BringUpToDate() {
  if (std::exchange(isUpToDate_, true)) return;
  const std::string file = AddPathSep(profile_) + "folderCache.json";
  Stamp stamp = {profile_};
  Swallow([&] { stamp = {profile_, os::FileLength(file), os::ReadChangeTime(file)}; });
  if (stamp == stamp_) return;
  stamp_ = stamp;
  Forget();
  nativeProfile_ = FolderWithSlashes(profile_);
  Swallow([&] { ReadCache(file); });
}

// An object that has for each summary file, by its path, an object with the name of the folder among others.
void FolderNames::ReadCache(const std::string& file) {
  os::File source = os::File::Open(file, os::File::Mode::Read);
  std::string text(static_cast<std::size_t>(std::min(source.Length(), kMostOfCache)), '\0');
  text.resize(source.Read(text.data(), text.size()));
  JsonReader json(text);
  if (!json.EnterObject()) return;
  for (std::string key, member; json.NextMember(key);) {
    if (!json.EnterObject()) continue;
    std::optional<std::string> name;
    while (json.NextMember(member)) {
      if (member == "folderName") {
        name = json.TakeText();
      } else {
        json.Skip();
      }
    }
    if (name && MayBeShown(*name)) Learn(key, *std::move(name));
  }
}

// The last of several with one key counts, as it does to Thunderbird.
void FolderNames::Learn(std::string key, std::string name) {
  if (!key.ends_with(kSummary)) return;
  key.resize(key.size() - kSummary.size());
  const auto [entry, isNew] = told_.insert_or_assign(WithSlashes(std::move(key)), std::move(name));
  if (!isNew) return;
  const std::string_view path = entry->first;
  toldByMailbox_.emplace(path.substr(path.rfind('/') + 1), &*entry);
}

void FolderNames::Forget() {
  toldByMailbox_.clear();
  told_.clear();
}

// The mailbox's own path tells best. A profile that was moved has paths of its old place, which end alike
// from the profile's folder on.
const std::string* FolderNames::Find(std::string_view folder, const std::string& name) const {
  const std::string mailbox = os::ToNativeName(name);
  const auto [first, last] = toldByMailbox_.equal_range(mailbox);
  if (first == last) return nullptr;
  const std::string file = FolderWithSlashes(folder) + mailbox;
  if (const auto own = told_.find(file); own != told_.end()) return &own->second;
  if (!file.starts_with(nativeProfile_)) return nullptr;
  const std::string within = "/" + file.substr(nativeProfile_.size());
  const auto moved =
      std::find_if(first, last, [&](const auto& each) { return each.second->first.ends_with(within); });
  return moved == last ? nullptr : &moved->second->second;
}

}  // namespace vorlent
