#include "Standalone/ArchiveItem.h"

#include <algorithm>
#include <utility>

#include "Common/StdModul.h"
#include "Host/FileKeys.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Standalone/Fingerprint.h"
#include "Standalone/SameMail.h"

namespace vorlent {

namespace {

bool HasOption(std::string_view options, std::string_view option) {
  for (std::string rest(options); !rest.empty();) {
    if (CutToken(rest, "|") == option) return true;
  }
  return false;
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
  if (fields.Value(record_key::kId).empty()) fields.Set(record_key::kId, NewGuidText());
  const bool filesLieElsewhere = fields.HasData(data_key::kSourceFile);
  for (std::int32_t pos = 1; pos <= fields.DataCount() && !filesLieElsewhere; ++pos) {
    const std::string key = fields.DataKey(pos);
    std::string description = fields.DataValue(pos);
    const std::string path = CutLine(description);
    if (DescribesFile(key) && IsAbsolutePath(path)) item->Expect(key, path);
  }
  const std::int64_t fingerprint = FingerprintOf(fields);
  item->twins_ = content->Store().NumbersOfTwins(fields);
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
  names_ = DistinctNames(ArchiveFiles::kLongestName);
  arrivedNames_.clear();
  for (StoredFile& file : stored.files) {
    names_.Reserve(file.name);
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
  if (!connected) return;
  if (isUnsaved_) Save();
  MergeWithTwins();
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
  if (!isExpected) {
    // The item tells of the file before that comes, so that there is never a file without an item.
    if (!isAwaited) Content()->FilesExpected(1);
    Expect(key, path);
    record_.SetData(key, std::string(path).append("\r\n").append(metaData));
    Save();
  } else if (described != metaData) {
    SetDescription(key, path, metaData);
  }
  BringIn(key, options);
  Describe(key, metaData);
}

// A mail of many files is saved once, when it has all of them.
void ArchiveItem::SetDescription(std::string_view key, std::string_view path, std::string_view metaData) {
  record_.SetData(key, std::string(path).append("\r\n").append(metaData));
  isUnsaved_ = true;
  if (IsConnected()) Save();
}

// The file that is there stays the item's until the new one is safe beside it, and the source until that is
// the item's.
void ArchiveItem::Replace(File& file, std::string_view key, std::string_view path, std::string_view options,
                          std::string_view metaData) {
  const std::shared_ptr<ArchiveContent> content = Content();
  const std::string name = names_.Take(ArchiveFiles::OwnName(GetFileName(path)));
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
  const auto known = namesOfSources_.find(std::string(path));
  const std::string name = known == namesOfSources_.end() ? NameFor(key, path) : known->second;
  namesOfSources_.insert_or_assign(std::string(path), name);
  files_.insert_or_assign(std::string(key), File{name, std::string(path), File::State::Expected});
}

// A file that comes from another place than was told is called after the one that was: it may be there under
// a name that means nothing.
std::string ArchiveItem::NameFor(std::string_view key, std::string_view path) {
  const auto awaited = files_.find(key);
  const bool wasTold = awaited != files_.end() && awaited->second.state == File::State::Expected;
  if (!wasTold) return names_.Take(ArchiveFiles::OwnName(GetFileName(path)));
  const File& told = awaited->second;
  const bool isShared = std::any_of(files_.begin(), files_.end(), [&](const auto& entry) {
    return entry.first != key && entry.second.name == told.name;
  });
  if (isShared) return names_.Take(ArchiveFiles::OwnName(GetFileName(told.source)));
  namesOfSources_.erase(told.source);
  return told.name;
}

void ArchiveItem::BringIn(std::string_view key, std::string_view options) {
  const std::shared_ptr<ArchiveContent> content = Content();
  File& file = files_.find(key)->second;
  // Two descriptions of one path: the file came with the first.
  const bool isShared = arrivedNames_.contains(file.name);
  content->FilesExpected(-1);
  if (!isShared) {
    try {
      content->TakeFile(file.source, number_, file.name, HasOption(options, "move"));
    } catch (const Failure&) {
      Swallow([&] { content->Store().MarkMissing(number_, key, true); });
      file.state = File::State::Missing;
      throw;
    }
    if (HasOption(options, "nofileattribute")) content->Files().AllowWriting(number_, file.name);
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
  stored.reserve(files_.size());
  for (const auto& [key, file] : files_) {
    stored.push_back({key, file.name, file.state == File::State::Missing});
  }
  return stored;
}

void ArchiveItem::Save() {
  Content()->Update(number_, record_, StoredFiles());
  isUnsaved_ = false;
}

void ArchiveItem::MergeWithTwins() {
  const bool isAwaitingFiles = std::any_of(files_.begin(), files_.end(), [](const auto& entry) {
    return entry.second.state == File::State::Expected;
  });
  if (twins_.empty() || isAwaitingFiles) return;
  const std::shared_ptr<ArchiveContent> content = Content();
  for (const std::int64_t number : std::exchange(twins_, {})) {
    StoredItem twin;
    if (!content->Store().Read(number, twin)) continue;
    const Fuller fuller = Compare(twin);
    if (fuller == Fuller::This) content->Remove(twin);
    if (fuller != Fuller::Twin) continue;
    content->Remove({number_, {}, StoredFiles()});
    std::string keywords = Keywords();
    const std::map<std::string, std::string> headed = DescriptionsFor(twin);
    Become(std::move(twin));
    wasThere_ = true;
    for (const auto& [key, description] : headed)
      Describe(key, description);
    if (!headed.empty()) Save();
    content->Confirm(number_);
    if (content->HeldItem(number_) == nullptr) content->Hold(number_, shared_from_this());
    while (!keywords.empty())
      AddKeyword(CutToken(keywords, ","));
    return;
  }
}

// What this item tells of its attachments' headings where the twin, of an archive of before, doesn't.
std::map<std::string, std::string> ArchiveItem::DescriptionsFor(const StoredItem& twin) const {
  std::map<std::string, std::string> descriptions;
  if (HeadingsOf(record_).empty() || !HeadingsOf(twin.record).empty()) return descriptions;
  for (const auto& [key, file] : files_) {
    if (!DescribesAttachment(key)) continue;
    std::string description = record_.DataValue(key);
    CutLine(description);
    descriptions.emplace(key, description);
  }
  return descriptions;
}

ArchiveItem::Fuller ArchiveItem::Compare(const StoredItem& twin) const {
  if (twin.files.size() != files_.size() || HaveOtherHeadings(record_, twin.record)) return Fuller::Neither;
  const ArchiveFiles& files = Content()->Files();
  bool lacksFiles = false;
  bool twinLacksFiles = false;
  for (const StoredFile& file : twin.files) {
    const auto own = files_.find(file.key);
    if (own == files_.end()) return Fuller::Neither;
    const bool isIn = own->second.state == File::State::In;
    // Someone may have taken a file out of the archive.
    const bool twinIsIn = !file.missing && files.Exists(twin.number, file.name);
    const auto areAlike = file.key == kMailFileKey ? &HoldSameMail : &ArchiveFiles::HaveSameBytes;
    const bool differs =
        isIn && twinIsIn &&
        !areAlike(files.PathOf(number_, own->second.name), files.PathOf(twin.number, file.name));
    if (differs) return Fuller::Neither;
    lacksFiles = lacksFiles || (twinIsIn && !isIn);
    twinLacksFiles = twinLacksFiles || (isIn && !twinIsIn);
  }
  if (!twinLacksFiles) return Fuller::Twin;
  return lacksFiles ? Fuller::Neither : Fuller::This;
}

}  // namespace vorlent
