#include "Standalone/ArchiveRehearsal.h"

#include <algorithm>
#include <array>

#include "Common/StdModul.h"
#include "Common/TextHash.h"
#include "Host/FileKeys.h"
#include "Platform/Files.h"
#include "Standalone/Archive.h"
#include "Standalone/Fingerprint.h"
#include "Standalone/SameMail.h"
#include "Standalone/StandaloneGlobal.h"

namespace vorlent {

namespace {

// A hash of an item with what its files hold.
std::int64_t FullFingerprintOf(const RehearsedItem& item) {
  TextHash all;
  all.Add(std::to_string(item.Fingerprint()));
  std::array<char, 64 * 1024> block;
  for (const std::string& heading : HeadingsOf(item.Taken()))
    all.Add(heading);
  for (const auto& [key, path] : item.Files()) {
    all.Add(key);
    if (key == kMailFileKey) {
      AddMail(all, path);
      continue;
    }
    os::File file = os::File::Open(path, os::File::Mode::Read);
    for (std::size_t count = block.size(); count == block.size();) {
      count = file.Read(block.data(), block.size());
      all.Add(std::string_view(block.data(), count));
    }
  }
  return static_cast<std::int64_t>(all.Value());
}

}  // namespace

RehearsedItem::RehearsedItem(std::weak_ptr<ArchiveRehearsal> rehearsal, std::string_view record)
    : rehearsal_(std::move(rehearsal)) {
  ImportRecord(record);
  fingerprint_ = FingerprintOf(record_);
}

void RehearsedItem::TakeFile(std::string_view key, std::string_view path, std::string_view,
                             std::string_view metaData) {
  os::FileLength(path);
  taken_.SetData(key, metaData);
  files_.insert_or_assign(std::string(key), std::string(path));
}

void RehearsedItem::SetConnected(bool connected) {
  StandaloneItem::SetConnected(connected);
  const auto rehearsal = rehearsal_.lock();
  if (!connected || rehearsal == nullptr) return;
  wasThere_ = rehearsal->Has(*this);
  for (const auto& [key, path] : files_)
    RemoveExactFile(path);
}

ArchiveRehearsal::ArchiveRehearsal(std::weak_ptr<StandaloneGlobal> global, std::string_view folder)
    : LocationBase(std::move(global), Archive::NameOf(folder)) {
  if (!Archive::IsArchive(folder)) return;
  const std::string place = AddPathSep(name_);
  knowsArchive_ = !FileExists(place + "archive.sqlite-wal");
  if (!knowsArchive_) return;
  store_.emplace(place + "archive.sqlite", ArchiveStore::Access::Look);
  if (FolderExists(place + "files\\")) files_.emplace(place + "files\\");
}

ItemPtr ArchiveRehearsal::PasteRecord(std::string_view record) {
  const auto item = std::make_shared<RehearsedItem>(weak_from_this(), record);
  NotePasted(item);
  if (const auto global = GlobalIfThere()) global->Report(report::kItemPasted, record, item);
  return item;
}

bool ArchiveRehearsal::Has(const RehearsedItem& item) {
  const bool isNew = seen_.insert(FullFingerprintOf(item)).second;
  return !isNew || ArchiveHas(item);
}

bool ArchiveRehearsal::ArchiveHas(const RehearsedItem& item) {
  if (!store_ || !files_) return false;
  const std::vector<std::int64_t> numbers = store_->NumbersOfTwins(item.Fields());
  return std::any_of(numbers.begin(), numbers.end(), [&](std::int64_t number) {
    StoredItem stored;
    return store_->Read(number, stored) && HasFilesOf(stored, item);
  });
}

bool ArchiveRehearsal::HasFilesOf(const StoredItem& stored, const RehearsedItem& item) const {
  if (stored.files.size() != item.Files().size() || HaveOtherHeadings(stored.record, item.Taken()))
    return false;
  return std::all_of(stored.files.begin(), stored.files.end(), [&](const StoredFile& file) {
    const auto own = item.Files().find(file.key);
    const auto areAlike = file.key == kMailFileKey ? &HoldSameMail : &ArchiveFiles::HaveSameBytes;
    return own != item.Files().end() && files_->Exists(stored.number, file.name) &&
           areAlike(own->second, files_->PathOf(stored.number, file.name));
  });
}

}  // namespace vorlent
