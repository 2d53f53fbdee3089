#include "Standalone/Archive.h"

#include <algorithm>
#include <utility>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Standalone/StandaloneGlobal.h"

namespace vorlent {

namespace {

// The host's progress display while an index is made. One that is made at a stroke shows none.
class IndexProgress {
 public:
  IndexProgress(StandaloneGlobal* global, std::string_view archive) : global_(global), archive_(archive) {}
  ~IndexProgress() {
    if (!isShown_) return;
    Swallow([&] { global_->SetProgressVisible(false); });
    Swallow([&] { global_->Report(report::kProgress, "", nullptr); });
  }
  IndexProgress(const IndexProgress&) = delete;
  IndexProgress& operator=(const IndexProgress&) = delete;

  // `done` goes from 0 to 1.
  void Show(double done) {
    if (global_ == nullptr || (!isShown_ && done == 1)) return;
    if (!isShown_) {
      isShown_ = true;
      global_->Report(report::kProgress, "0/100:Index " + archive_, nullptr);
      global_->SetProgressVisible(true);
    }
    global_->Report(report::kProgress, NumberText(done * 100), nullptr);
  }

 private:
  StandaloneGlobal* global_;
  std::string archive_;
  bool isShown_ = false;
};

}  // namespace

Archive::~Archive() {
  Swallow([&] { Close(); });
}

bool Archive::IsArchive(std::string_view folder) {
  return !folder.empty() && FileExists(AddPathSep(folder) + "archive.sqlite");
}

std::string Archive::NameOf(std::string_view folder) {
  return RemovePathSep(folder);
}

LocationState Archive::Open(std::string_view folder) {
  Close();
  const std::string name = NameOf(folder);
  if (!FolderExists(name)) {
    MakePath(name);
    // MakePath keeps silent; this one tells why there still is no folder.
    if (!FolderExists(name)) os::CreateFolder(name);
    os::SyncFolder(GetPath(name));
  }
  content_ = std::make_shared<ArchiveContent>(AddPathSep(name));
  name_ = name;
  return LocationState::Read;
}

void Archive::Close() {
  if (!IsOpen()) return;
  NotePasted(nullptr);
  const std::shared_ptr<ArchiveContent> closing = std::exchange(content_, nullptr);
  closing->Finish();
}

ItemPtr Archive::PasteRecord(std::string_view record) {
  ArchiveContent& content = Opened();
  content.EndFullPortion();
  const auto item = ArchiveItem::Paste(content_, record);
  item->SetLocation(shared_from_this());
  NotePasted(item);
  SetItemCounter(ToInt32(std::int64_t{ItemCounter()} + 1));
  SetLastItemTimer(static_cast<float>(SecondsSinceMidnight()));
  if (const auto global = GlobalIfThere()) global->Report(report::kItemPasted, record, item);
  return item;
}

ItemPtr Archive::ItemAt(std::int32_t pos) {
  const std::int64_t number = Opened().NumberAt(pos);
  return number == 0 ? nullptr : ItemOf(number);
}

std::int32_t Archive::PositionOf(const ArchiveItem& item) {
  return Opened().PositionOf(item.Number());
}

std::int32_t Archive::ItemCount() const {
  return IsOpen() ? content_->Count() : 0;
}

std::string Archive::GetSetting(std::string_view key) {
  return Opened().Store().Setting(key);
}

void Archive::SetSetting(std::string_view key, std::string_view value) {
  Opened().Store().SetSetting(key, value);
}

std::string Archive::FileLocation() const {
  return IsOpen() ? content_->Files().Folder() : std::string();
}

ItemPtr Archive::FindItem(std::string_view id) {
  const std::vector<std::int64_t> numbers = Opened().Store().NumbersOf(id);
  return numbers.empty() ? nullptr : ItemOf(numbers.front());
}

std::vector<std::shared_ptr<ArchiveItem>> Archive::ItemsOf(std::string_view id) {
  return ItemsOf(Opened().Store().NumbersOf(id));
}

std::int32_t Archive::CopyNumberOf(const ArchiveItem& item) {
  const std::vector<std::int64_t> numbers = Opened().Store().NumbersOf(item.ID());
  return ToInt32(
      std::ranges::count_if(numbers, [&](std::int64_t number) { return number <= item.Number(); }));
}

std::vector<std::shared_ptr<ArchiveItem>> Archive::IncompleteItems() {
  return ItemsOf(Opened().Store().IncompleteNumbers());
}

std::vector<std::shared_ptr<ArchiveItem>> Archive::Search(std::string_view words) {
  if (!UpdateIndex()) return {};
  return ItemsOf(Opened().Index().Find(words));
}

bool Archive::UpdateIndex() {
  ArchiveContent& content = Opened();
  const auto global = GlobalIfThere();
  IndexProgress progress(global.get(), name_);
  return content.Index().Reach(content.Store().HighestNumber(), [&](double done) {
    progress.Show(done);
    return global == nullptr || !global->Cancelled();
  });
}

std::vector<std::shared_ptr<ArchiveItem>> Archive::ItemsOf(const std::vector<std::int64_t>& numbers) {
  std::vector<std::shared_ptr<ArchiveItem>> items;
  for (const std::int64_t number : numbers) {
    if (auto item = ItemOf(number)) items.push_back(std::move(item));
  }
  return items;
}

std::shared_ptr<ArchiveItem> Archive::ItemOf(std::int64_t number) {
  ArchiveContent& content = Opened();
  if (auto held = std::dynamic_pointer_cast<ArchiveItem>(content.HeldItem(number))) return held;
  StoredItem stored;
  if (!content.Store().Read(number, stored)) return nullptr;
  auto item = std::make_shared<ArchiveItem>(content_, std::move(stored));
  item->SetLocation(shared_from_this());
  item->SetConnected(true);
  content.Hold(number, item);
  return item;
}

ArchiveContent& Archive::Opened() const {
  if (!IsOpen()) throw Failure(ErrorNumber::ObjectNotSet, "the archive '" + name_ + "' isn't open");
  return *content_;
}

void Archive::Prove() {
  Opened().Prove();
}

Archive::Portions::Portions(Archive& archive) : content_(archive.content_) {
  archive.Opened().BeginPortion();
}

Archive::Portions::~Portions() {
  Swallow([&] { Finish(); });
}

void Archive::Portions::Finish() {
  if (const auto content = content_.lock()) content->EndPortion();
  content_.reset();
}

}  // namespace vorlent
