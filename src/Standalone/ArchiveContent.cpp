#include "Standalone/ArchiveContent.h"

#include <algorithm>
#include <charconv>
#include <iterator>

#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/Failure.h"
#include "Standalone/ArchiveSql.h"

namespace vorlent {

namespace {

constexpr std::string_view kDatabaseName = "archive.sqlite";
constexpr std::string_view kFilesName = "files\\";

// Set while there may be something to put in order.
constexpr std::string_view kOpen = "open";

constexpr std::size_t kHeldItems = 1024;

// The item's number in front of a file name "<number> <name>", 0 for a file that isn't the archive's.
std::int64_t ItemOf(std::string_view fileName) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(fileName.data(), fileName.data() + fileName.size(), number);
  const bool isOurs = error == std::errc() && end != fileName.data() + fileName.size() && *end == ' ';
  return isOurs ? number : 0;
}

std::string FileNameOf(std::int64_t item, std::string_view name) {
  return std::to_string(item) + " " + std::string(name);
}

// SQLite's log of what isn't in the database file yet.
std::string LogOf(const std::string& database) {
  return database + "-wal";
}

void RequireStill(const std::string& path, const std::optional<os::Identity>& opened) {
  const std::optional<os::Identity> now = os::TryIdentify(path);
  if (now && now == opened) return;
  throw Failure(ErrorNumber::PathAccess, path,
                now ? "is another by now than the archive was opened with"
                    : "is gone, and the archive was opened with it");
}

}  // namespace

ArchiveContent::ArchiveContent(const std::string& folder)
    : folder_(RemovePathSep(folder)),
      files_(folder + std::string(kFilesName)),
      filesFolder_(RemovePathSep(files_.Folder())),
      store_(folder + std::string(kDatabaseName)),
      index_(store_, files_),
      databasePath_(folder + std::string(kDatabaseName)),
      database_(os::TryIdentify(databasePath_)),
      log_(os::TryIdentify(LogOf(databasePath_))),
      changeNoted_(store_.State(kOpen) != 0) {
  if (changeNoted_) PutInOrder();
}

std::int64_t ArchiveContent::Insert(const ItemRecord& record, std::int64_t fingerprint,
                                    const std::vector<StoredFile>& files) {
  NoteChange();
  const std::int64_t number = store_.Insert(record, fingerprint, files);
  if (numbers_ != nullptr) numbers_->push_back(number);
  if (portion_) portion_->Note();
  Confirm(number);
  return number;
}

void ArchiveContent::Update(std::int64_t number, const ItemRecord& record,
                            const std::vector<StoredFile>& files) {
  NoteChange();
  SqliteTransaction transaction(store_.Database());
  store_.Update(number, record, files);
  index_.Update(number, record);
  transaction.Commit();
}

void ArchiveContent::Remove(const StoredItem& item) {
  NoteChange();
  {
    SqliteTransaction transaction(store_.Database());
    store_.Remove(item.number);
    index_.Remove(item.number);
    transaction.Commit();
  }
  if (numbers_ != nullptr) std::erase(*numbers_, item.number);
  for (const StoredFile& file : item.files) {
    // Two descriptions may share a file, and one may be missing.
    if (files_.Exists(item.number, file.name)) files_.Remove(item.number, file.name);
  }
}

std::int64_t ArchiveContent::NumberAt(std::int32_t pos) {
  return pos < 1 || pos > Count() ? 0 : Numbers()[static_cast<std::size_t>(pos) - 1];
}

std::int32_t ArchiveContent::PositionOf(std::int64_t number) {
  const std::vector<std::int64_t>& numbers = Numbers();
  const auto found = std::lower_bound(numbers.begin(), numbers.end(), number);
  return found == numbers.end() || *found != number ? 0 : ToInt32(found - numbers.begin() + 1);
}

std::int32_t ArchiveContent::Count() {
  return ToInt32(Numbers().size());
}

const std::vector<std::int64_t>& ArchiveContent::Numbers() {
  if (numbers_ == nullptr) numbers_ = std::make_unique<std::vector<std::int64_t>>(store_.AllNumbers());
  return *numbers_;
}

ItemPtr ArchiveContent::HeldItem(std::int64_t number) const {
  const auto found = heldItems_.find(number);
  return found == heldItems_.end() ? nullptr : found->second.lock();
}

void ArchiveContent::Hold(std::int64_t number, const ItemPtr& item) {
  if (heldItems_.size() >= heldItemsLimit_) {
    std::erase_if(heldItems_, [](const auto& entry) { return entry.second.expired(); });
    heldItemsLimit_ = std::max(kHeldItems, 2 * heldItems_.size());
  }
  heldItems_.insert_or_assign(number, item);
}

void ArchiveContent::TakeFile(std::string_view source, std::int64_t item, std::string_view name, bool move) {
  using Safe = ArchiveFiles::Safe;
  files_.Take(source, item, name, move, portion_ ? Safe::AfterSync : Safe::AtOnce);
}

void ArchiveContent::BeginPortion() {
  EndPortion();
  NoteChange();
  portion_.emplace(store_.Database(), files_);
}

void ArchiveContent::EndFullPortion() {
  if (portion_ && portion_->IsFull()) BeginPortion();
}

void ArchiveContent::EndPortion() {
  if (!portion_) return;
  try {
    portion_->MakeDurable();
  } catch (const Failure&) {
    numbers_.reset();
    throw;
  }
  portion_.reset();
}

void ArchiveContent::Prove() {
  RequireStill(folder_.Path(), folder_.Held());
  RequireStill(filesFolder_.Path(), filesFolder_.Held());
  RequireStill(databasePath_, database_);
  ProveLog();
  ProveFiles();
}

// What stands in a log that can't be reached any more must be in the database.
void ArchiveContent::ProveLog() {
  const std::optional<os::Identity> now = os::TryIdentify(LogOf(databasePath_));
  if (now && now == log_) return;
  if (SqliteStatement(store_.Database(), archive_sql::kWriteLog).RunForNumber() != 0) {
    throw Failure(ErrorNumber::PathAccess, LogOf(databasePath_),
                  "is gone, and what stood there can't be written to the database");
  }
}

void ArchiveContent::Confirm(std::int64_t number) {
  // Sources that keep their mails ask for no proof.
  if (portion_) return;
  if (unproven_.empty() || unproven_.back().last + 1 != number) {
    unproven_.push_back({number, number});
  } else {
    unproven_.back().last = number;
  }
}

// Each folder is listed once, however many files are looked for there.
void ArchiveContent::ProveFiles() {
  std::ranges::sort(unproven_, {}, &Row::first);
  for (std::size_t i = 0; i < unproven_.size();) {
    Row row = unproven_[i];
    while (++i < unproven_.size() && unproven_[i].first <= row.last + 1)
      row.last = std::max(row.last, unproven_[i].last);
    ProveFiles(row);
  }
  unproven_.clear();
}

void ArchiveContent::ProveFiles(const Row& row) {
  constexpr std::int64_t kPerFolder = ArchiveFiles::kItemsPerFolder;
  for (std::int64_t first = row.first; first <= row.last;) {
    const std::int64_t folder = first / kPerFolder;
    const std::int64_t last = std::min(row.last, (folder + 1) * kPerFolder - 1);
    const std::vector<std::string> listed = files_.NamesIn(folder);
    const std::set<std::string> names(listed.begin(), listed.end());
    for (const auto& [item, file] : store_.FilesOf(first, last)) {
      // A mail that lacks a file is known as such, and stays in its mailbox.
      if (file.missing || names.contains(FileNameOf(item, file.name))) continue;
      throw Failure(ErrorNumber::FileNotFound, files_.PathOf(item, file.name), "is gone from the archive");
    }
    first = last + 1;
  }
}

void ArchiveContent::Finish() {
  EndPortion();
  if (changeNoted_ && filesExpected_ == 0) store_.SetState(kOpen, 0);
  changeNoted_ = false;
  if (os::TryIdentify(databasePath_) != database_) EmptyLog();
}

// SQLite leaves the log of a database that was replaced, and it would be taken for the other's.
void ArchiveContent::EmptyLog() {
  Swallow([&] { store_.Database().Execute(archive_sql::kEmptyLog); });
}

void ArchiveContent::NoteChange() {
  if (!changeNoted_) store_.SetState(kOpen, 1);
  changeNoted_ = true;
}

void ArchiveContent::PutInOrder() {
  std::set<std::int64_t> folders = files_.FolderNumbers();
  for (std::int64_t number = 0; number <= store_.HighestNumber() / ArchiveFiles::kItemsPerFolder; ++number) {
    folders.insert(number);
  }
  for (const std::int64_t number : folders)
    PutInOrder(number);
}

void ArchiveContent::PutInOrder(std::int64_t folderNumber) {
  const std::int64_t first = folderNumber * ArchiveFiles::kItemsPerFolder;
  const auto wanted = store_.FilesOf(first, first + ArchiveFiles::kItemsPerFolder - 1);
  std::set<std::string> wantedNames;
  for (const auto& [item, file] : wanted)
    wantedNames.insert(FileNameOf(item, file.name));
  std::set<std::string> names;
  for (const std::string& name : files_.NamesIn(folderNumber)) {
    if (ItemOf(name) == 0) continue;
    if (wantedNames.contains(name)) {
      names.insert(name);
    } else {
      files_.RemoveFromFolder(folderNumber, name);
    }
  }
  SqliteTransaction transaction(store_.Database());
  for (const auto& [item, file] : wanted) {
    const bool isMissing = !names.contains(FileNameOf(item, file.name));
    if (isMissing != file.missing) store_.MarkMissing(item, file.key, isMissing);
  }
  transaction.Commit();
}

}  // namespace vorlent
