#include "Standalone/ArchiveItem.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Standalone/FileDescription.h"

namespace vorlent {

namespace {

bool HasOption(std::string_view options, std::string_view option) {
  for (std::string rest(options); !rest.empty();) {
    if (CutToken(rest, "|") == option) return true;
  }
  return false;
}

// A hash of all that makes two mails the same: every field but the time of import, and of a description of a
// file all but its path.
std::int64_t FingerprintOf(const ItemRecord& record) {
  constexpr std::uint64_t kPrime = 1099511628211ULL;
  std::uint64_t hash = 14695981039346656037ULL;
  const auto add = [&](std::string_view text) {
    std::uint64_t word = 0;
    for (; text.size() >= sizeof word; text.remove_prefix(sizeof word)) {
      text.copy(reinterpret_cast<char*>(&word), sizeof word);
      hash = std::rotl((hash ^ word) * kPrime, 29);
    }
    word = text.size();
    text.copy(reinterpret_cast<char*>(&word) + 1, text.size());
    hash = std::rotl((hash ^ word) * kPrime, 29);
  };
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string_view key = record.FieldKey(i);
    if (key == "Log") continue;
    std::string value = record.FieldValue(i);
    if (key.starts_with("Data") && DescribesFile(key.substr(4))) CutLine(value);
    add(key);
    add(value);
  }
  return static_cast<std::int64_t>(hash);
}

}  // namespace

ArchiveItem::ArchiveItem(std::weak_ptr<ArchiveContent> content, StoredItem stored)
    : content_(std::move(content)) {
  Become(std::move(stored));
}

std::shared_ptr<ArchiveItem> ArchiveItem::Paste(const std::shared_ptr<ArchiveContent>& content,
                                                std::string_view record) {
  auto item = std::make_shared<ArchiveItem>(content, StoredItem{});
  ItemRecord& fields = item->record_;
  fields.Import(record);
  if (fields.Value("ID").empty()) fields.Set("ID", NewGuidText());
  const bool filesLieElsewhere = fields.HasData("_SourceFile");
  for (std::int32_t pos = 1; pos <= fields.DataCount() && !filesLieElsewhere; ++pos) {
    const std::string key = fields.DataKey(pos);
    std::string description = fields.DataValue(pos);
    const std::string path = CutLine(description);
    if (DescribesFile(key) && IsAbsolutePath(path)) item->Expect(key, path);
  }
  const std::int64_t fingerprint = FingerprintOf(fields);
  item->twins_ = content->Store().NumbersOf(item->ID(), fingerprint);
  item->number_ = content->Insert(fields, fingerprint, item->StoredFiles());
  content->Hold(item->number_, item);
  content->FilesExpected(static_cast<std::int64_t>(item->files_.size()));
  return item;
}

void ArchiveItem::Become(StoredItem stored) {
  number_ = stored.number;
  record_ = std::move(stored.record);
  files_.clear();
  namesOfSources_.clear();
  usedNames_.clear();
  arrivedNames_.clear();
  for (StoredFile& file : stored.files) {
    usedNames_.insert(LowerCase(file.name));
    if (!file.missing) arrivedNames_.insert(file.name);
    files_[file.key] = {file.name, {}, file.missing ? File::State::Missing : File::State::In};
    Describe(file.key, DataText(file.key));
  }
}

void ArchiveItem::SetID(std::string_view id) {
  StandaloneItem::SetID(id);
  Save();
}

void ArchiveItem::SetType(std::string_view type) {
  StandaloneItem::SetType(type);
  Save();
}

void ArchiveItem::ImportRecord(std::string_view record) {
  StandaloneItem::ImportRecord(record);
  Save();
}

void ArchiveItem::Changed(std::int32_t action, std::string_view value) {
  StandaloneItem::Changed(action, value);
  Save();
}

void ArchiveItem::SetConnected(bool connected) {
  StandaloneItem::SetConnected(connected);
  if (connected) MergeWithTwins();
}

bool ArchiveItem::IsIncomplete() const {
  return std::any_of(files_.begin(), files_.end(),
                     [](const auto& entry) { return entry.second.state == File::State::Missing; });
}

std::string ArchiveItem::DataFile(std::string_view key, std::int32_t index) const {
  const auto file = files_.find(key);
  if (index != 0 || file == files_.end()) return StandaloneItem::DataFile(key, index);
  if (file->second.state == File::State::Expected) return file->second.source;
  return Content()->Files().PathOf(number_, file->second.name);
}

void ArchiveItem::TakeFile(std::string_view key, std::string_view path, std::string_view options,
                           std::string_view metaData) {
  const auto before = files_.find(key);
  if (before != files_.end() && before->second.state == File::State::In) {
    return Replace(before->second, key, path, options, metaData);
  }
  const bool isAwaited = before != files_.end() && before->second.state == File::State::Expected;
  const bool isExpected = isAwaited && before->second.source == path;
  std::string described = DataText(key);
  CutLine(described);
  if (!isExpected || described != metaData) {
    // The item tells of the file before that comes, so that there is never a file without an item.
    if (!isAwaited) Content()->FilesExpected(1);
    if (!isExpected) Expect(key, path);
    record_.SetData(key, std::string(path).append("\r\n").append(metaData));
    Save();
  }
  BringIn(key, options);
  Describe(key, metaData);
}

// The file that is there stays the item's until the new one is safe beside it, and the source until that is
// the item's.
void ArchiveItem::Replace(File& file, std::string_view key, std::string_view path, std::string_view options,
                          std::string_view metaData) {
  const std::shared_ptr<ArchiveContent> content = Content();
  const std::string name = FreeName(GetFileName(path));
  content->Files().Take(path, number_, name, false);
  const std::string replaced = std::exchange(file.name, name);
  if (HasOption(options, "nofileattribute")) content->Files().AllowWriting(number_, file.name);
  Describe(key, metaData);
  Save();
  arrivedNames_.insert(file.name);
  if (HasOption(options, "move")) ArchiveFiles::RemoveSource(path);
  const bool isShared = std::any_of(files_.begin(), files_.end(),
                                    [&](const auto& entry) { return entry.second.name == replaced; });
  if (!isShared) content->Files().Remove(number_, replaced);
}

// A file of a path that was told before shares its name.
void ArchiveItem::Expect(std::string_view key, std::string_view path) {
  const auto [known, isNew] = namesOfSources_.try_emplace(std::string(path));
  if (isNew) known->second = FreeName(GetFileName(path));
  files_.insert_or_assign(std::string(key), File{known->second, std::string(path), File::State::Expected});
}

std::string ArchiveItem::FreeName(std::string_view bareName) {
  const std::string wanted = ArchiveFiles::SafeName(bareName);
  std::string name = wanted;
  for (int count = 2; !usedNames_.insert(LowerCase(name)).second; ++count) {
    name = "(" + std::to_string(count) + ") " + wanted;
  }
  return name;
}

void ArchiveItem::BringIn(std::string_view key, std::string_view options) {
  const std::shared_ptr<ArchiveContent> content = Content();
  ArchiveFiles& files = content->Files();
  File& file = files_.find(key)->second;
  // Two descriptions of one path: the file came with the first.
  const bool isShared = arrivedNames_.contains(file.name);
  content->FilesExpected(-1);
  if (!isShared) {
    try {
      files.Take(file.source, number_, file.name, HasOption(options, "move"));
    } catch (const Failure&) {
      Swallow([&] { content->Store().MarkMissing(number_, key, true); });
      file.state = File::State::Missing;
      throw;
    }
    if (HasOption(options, "nofileattribute")) files.AllowWriting(number_, file.name);
  }
  file.state = File::State::In;
  arrivedNames_.insert(file.name);
}

// Puts the file's place in front of the lines that describe it.
void ArchiveItem::Describe(std::string_view key, std::string_view metaData) {
  const std::string path = Content()->Files().PathOf(number_, files_.find(key)->second.name);
  record_.SetData(key, path + "\r\n" + std::string(metaData));
}

std::shared_ptr<ArchiveContent> ArchiveItem::Content() const {
  auto content = content_.lock();
  if (content == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "the archive of the item is closed");
  return content;
}

std::vector<StoredFile> ArchiveItem::StoredFiles() const {
  std::vector<StoredFile> stored;
  for (const auto& [key, file] : files_) {
    stored.push_back({key, file.name, file.state == File::State::Missing});
  }
  return stored;
}

void ArchiveItem::Save() {
  Content()->Update(number_, record_, StoredFiles());
}

void ArchiveItem::MergeWithTwins() {
  if (twins_.empty()) return;
  const bool isWhole = std::all_of(files_.begin(), files_.end(),
                                   [](const auto& entry) { return entry.second.state == File::State::In; });
  if (!isWhole) return;
  const std::shared_ptr<ArchiveContent> content = Content();
  for (const std::int64_t number : std::exchange(twins_, {})) {
    StoredItem twin;
    if (!content->Store().Read(number, twin) || !HasFilesOf(twin)) continue;
    const bool twinIsWhole = std::none_of(twin.files.begin(), twin.files.end(),
                                          [](const StoredFile& file) { return file.missing; });
    if (!twinIsWhole) {
      content->Remove(twin);
      continue;
    }
    content->Remove({number_, {}, StoredFiles()});
    std::string keywords = Keywords();
    Become(std::move(twin));
    if (content->HeldItem(number_) == nullptr) content->Hold(number_, shared_from_this());
    while (!keywords.empty())
      AddKeyword(CutToken(keywords, ","));
    return;
  }
}

bool ArchiveItem::HasFilesOf(const StoredItem& twin) const {
  if (twin.files.size() != files_.size()) return false;
  const ArchiveFiles& files = Content()->Files();
  return std::all_of(twin.files.begin(), twin.files.end(), [&](const StoredFile& file) {
    const auto own = files_.find(file.key);
    if (own == files_.end() || own->second.name != file.name) return false;
    return file.missing || files.HaveSameBytes(number_, twin.number, file.name);
  });
}

}  // namespace vorlent
