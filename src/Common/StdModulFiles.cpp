#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

constexpr int kPlainFiles = os::kReadOnly | os::kHidden | os::kSystem | os::kArchive;
constexpr int kAllEntries = kPlainFiles | os::kDirectory;

// Removes a subfolder with all that it holds. Of a link only the link goes: what it leads to is none of the
// folder's.
void RemoveSubfolder(const std::string& p, std::int32_t attributes) {
  if ((attributes & os::kLink) != 0) {
    Swallow([&] { os::RemoveFolder(p); });
  } else {
    DeleteFolder(p, true, true);
  }
}

bool AreOnOneDrive(std::string_view target, std::string_view source) {
  return source.size() > 1 && source[1] == ':' && EqualNoCase(target.substr(0, 2), source.substr(0, 2));
}

}  // namespace

// --- Asking ----------------------------------------------------------------------------------------------

bool FolderExists(std::string_view p) {
  if (p.size() == 3 && p.substr(1) == ":\\") return Platform::Current().DriveType(p) != kNoRootDirectory;
  // A file, which is nearly always asked about, is told by a look at it.
  const std::int32_t attributes = p.empty() ? -1 : GetFileAttr(p);
  return attributes >= 0 && (attributes & os::kDirectory) != 0 && os::MayList(AddPathSep(p));
}

bool FileExists(std::string_view p) {
  return !p.empty() && Swallow([&] { os::FileLength(p); });
}

std::int32_t GetFileAttr(std::string_view p) {
  if (p.ends_with("\\.") || p.ends_with("\\..")) return -1;
  return os::TryReadAttributes(p).value_or(-1);
}

std::string GetFileAttrText(std::string_view p) {
  const std::int32_t attributes = GetFileAttr(p);
  std::string letters;
  const auto add = [&](int bit, char letter) {
    if ((attributes & bit) != 0) letters += letter;
  };
  add(os::kArchive, 'A');
  add(os::kReadOnly, 'R');
  add(os::kHidden, 'H');
  add(os::kSystem, 'S');
  add(os::kDirectory, 'D');
  return letters;
}

// --- Making, deleting, moving ----------------------------------------------------------------------------

void MakePath(std::string_view p) {
  // Nearly always the folder is there, which one look tells.
  const std::int32_t attributes = GetFileAttr(p);
  if (attributes >= 0 && (attributes & os::kDirectory) != 0) return;
  std::string_view rest = p;
  std::string path(CutToken(rest, "\\"));
  // Where a folder neither is there nor can be made, none below it can.
  while (Swallow([&] { os::CreateFolder(path); }) || path.empty() || os::TryReadAttributes(path)) {
    if (rest.empty()) return;
    path.append("\\").append(CutToken(rest, "\\"));
  }
}

void RemoveExactFile(std::string_view p) {
  // The common case, with one look at the file.
  if (os::TryRemovePlainFile(p)) return;
  const std::int32_t attributes = GetFileAttr(p);
  if (attributes < 0) return;
  if (attributes != os::kArchive) Swallow([&] { os::WriteAttributes(p, 0); });
  Swallow([&] { os::RemoveFile(p); });
}

void KillFile(std::string_view p) {
  // A system may allow these characters in names, and then an entry of just that name is the one that is
  // meant.
  const bool isPattern = p.find_first_of("*?") != std::string_view::npos && GetFileAttr(p) < 0;
  if (!isPattern) {
    RemoveExactFile(p);
    return;
  }
  const std::string folder = GetPath(p);
  KeyedList<std::string> files;
  ListFolder(folder.empty() ? ".\\" : folder, &files, nullptr, GetFileName(p));
  for (const std::string& name : files)
    RemoveExactFile(folder + name);
}

void DeleteFolder(std::string_view p, bool files, bool self) {
  const std::string folder = AddPathSep(p);
  std::vector<std::string> fileNames;
  std::vector<std::pair<std::string, std::int32_t>> folderNames;
  FolderEntries entries;
  for (std::string name = entries.First(p); !name.empty(); name = entries.Next()) {
    const std::int32_t attributes = GetFileAttr(folder + name);
    if (attributes < 0) continue;
    if ((attributes & os::kDirectory) != 0) {
      folderNames.emplace_back(std::move(name), attributes);
    } else {
      fileNames.push_back(std::move(name));
    }
  }
  for (const auto& [name, attributes] : folderNames)
    RemoveSubfolder(folder + name, attributes);
  if (files) {
    for (const std::string& name : fileNames)
      RemoveExactFile(folder + name);
  }
  if (self) {
    const std::string bare = RemovePathSep(p);
    Swallow([&] { os::WriteAttributes(bare, 0); });
    Swallow([&] { os::RemoveFolder(bare); });
  }
}

void MoveFile(std::string_view target, std::string_view source) {
  if (EqualNoCase(target, source) || !FileExists(source)) return;
  RemoveExactFile(target);
  MakePath(GetPath(target));
  int attributes = 0;
  const bool areAttributesKnown = Swallow([&] { attributes = os::ReadAttributes(source); });
  const std::string date = GetFileDate(source);
  if (AreOnOneDrive(target, source)) {
    if (!Swallow([&] { os::Rename(source, target); }) || !areAttributesKnown) return;
  } else {
    if (!Swallow([&] { os::Copy(source, target); })) return;
    RemoveExactFile(source);
  }
  // The date goes first, since a read-only file refuses it.
  SetFileDate(target, date);
  Swallow([&] { os::WriteAttributes(target, attributes); });
}

// --- Listing ---------------------------------------------------------------------------------------------

std::string FolderEntries::First(std::string_view folder) {
  names_.clear();
  next_ = 0;
  Swallow([&] { names_ = os::ListNames(AddPathSep(folder), "*.*", kAllEntries); });
  return Next();
}

std::string FolderEntries::Next() {
  return next_ < names_.size() ? names_[next_++] : "";
}

std::string FirstFolderEntry(std::string_view p) {
  return FolderEntries().First(p);
}

void ListFolder(std::string_view p, KeyedList<std::string>* files, KeyedList<std::string>* folders,
                std::string_view pattern) {
  if (files != nullptr) ClearCollection(*files);
  if (folders != nullptr) ClearCollection(*folders);
  const std::string folder = AddPathSep(p);
  std::vector<os::FolderEntry> entries;
  Swallow(
      [&] { entries = os::ListEntries(folder, pattern, folders != nullptr ? kAllEntries : kPlainFiles); });
  for (os::FolderEntry& entry : entries) {
    KeyedList<std::string>* list = entry.isFolder ? folders : files;
    if (list != nullptr) list->Add(std::move(entry.name));
  }
}

}  // namespace vorlent
