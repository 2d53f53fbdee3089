#include "Standalone/StandaloneGlobal.h"

#include <algorithm>
#include <utility>

#include "Common/StdModul.h"
#include "Component/Component.h"
#include "Platform/CodePage.h"
#include "Platform/Locale.h"
#include "Platform/User.h"
#include "Standalone/ArchiveRehearsal.h"
#include "Standalone/HostActions.h"

namespace vorlent {

namespace {

constexpr std::string_view kTopicsName = "topics";
constexpr std::string_view kOpensProgress = "0/100:";

// Numbers in reports are written with the user's decimal sign.
double PercentIn(std::string_view text) {
  std::string number(text);
  std::replace(number.begin(), number.end(), os::DecimalSign(), '.');
  return ReadNumber(number);
}

}  // namespace

StandaloneGlobal::StandaloneGlobal(HostObserver& observer)
    : observer_(observer),
      window_(std::make_shared<StandaloneWindow>(observer)),
      errorFactory_(std::make_shared<StandaloneErrorFactory>(observer)),
      createConnector_([](std::string_view progId) { return vorlent::CreateObject(progId); }),
      userName_(os::LoginName()) {}

StandaloneGlobal::~StandaloneGlobal() {
  for (const StandaloneLocationPtr& location : OpenLocations())
    Swallow([&] { location->Close(); });
  workFolder_.reset();
}

ObjectPtr StandaloneGlobal::GetObject(std::string_view name) {
  if (EqualNoCase(name, kTopicsName)) return TopicsOfHost();
  if (rehearsal_ != nullptr && rehearsal_->Name() == name) return rehearsal_;
  for (const StandaloneLocationPtr& location : OpenLocations()) {
    if (EqualNoCase(location->Name(), name)) return location;
  }
  if (ArchivePtr archive = OpenArchiveNamed(name)) return archive;
  return Archive::IsArchive(name) ? OpenArchive(name) : nullptr;
}

ArchivePtr StandaloneGlobal::OpenArchiveNamed(std::string_view name) const {
  const std::string path = Archive::NameOf(name);
  for (const ArchivePtr& archive : archives_) {
    const bool isMeant =
        EqualNoCase(archive->Name(), path) || EqualNoCase(GetFileName(archive->Name()), path);
    if (archive->IsOpen() && isMeant) return archive;
  }
  return nullptr;
}

ArchivePtr StandaloneGlobal::OpenArchive(std::string_view folder) {
  std::erase_if(archives_, [](const ArchivePtr& archive) { return !archive->IsOpen(); });
  const std::string name = Archive::NameOf(folder);
  for (const ArchivePtr& archive : archives_) {
    if (EqualNoCase(archive->Name(), name)) return archive;
  }
  auto archive = std::make_shared<Archive>(weak_from_this());
  archive->Open(folder);
  archives_.push_back(archive);
  return archive;
}

std::shared_ptr<ArchiveRehearsal> StandaloneGlobal::RehearseArchive(std::string_view folder) {
  rehearsal_ = std::make_shared<ArchiveRehearsal>(weak_from_this(), folder);
  return rehearsal_;
}

ItemPtr StandaloneGlobal::FindItem(std::string_view id) {
  if (chosenItem_ != nullptr && chosenItem_->ID() == id) return chosenItem_;
  for (const StandaloneLocationPtr& location : OpenLocations()) {
    if (ItemPtr item = RequireAs<Connector>(location->Connector())->GetItem(id)) return item;
  }
  for (const ArchivePtr& archive : archives_) {
    if (!archive->IsOpen()) continue;
    if (ItemPtr item = archive->FindItem(id)) return item;
  }
  return nullptr;
}

KeyedList<LocationPtr> StandaloneGlobal::Locations() {
  KeyedList<LocationPtr> locations;
  for (const ArchivePtr& archive : archives_) {
    if (archive->IsOpen()) locations.Add(archive);
  }
  for (const StandaloneLocationPtr& location : OpenLocations())
    locations.Add(location);
  return locations;
}

void StandaloneGlobal::Report(std::int32_t code, std::string_view text, const ItemPtr& item) {
  switch (code) {
    case report::kProgress:
      return ReportProgress(text);
    case report::kStatus:
      return observer_.StatusChanged(text);
    case report::kLog:
      if (logEnabled_) observer_.LogLine(text);
      return;
    case report::kDatabaseLog:
      if (logEnabled_) observer_.DatabaseLogLine(text);
      return;
    case report::kUnreadable:
      return observer_.LocationUnreadable({.reason = std::string(text)});
    case report::kRemark:
      return observer_.Remarked({.reason = std::string(text)});
    case report::kItemPasted:
      return observer_.ItemPasted(text, item);
    case report::kItemDeleted:
      return observer_.ItemDeleted(item);
    case report::kImportFinished:
      return observer_.ImportFinished();
    case report::kTreeImported:
      return observer_.TreeImported();
    default:
      return observer_.OtherReport(code, text, item);
  }
}

void StandaloneGlobal::ReportProgress(std::string_view text) {
  if (isReading_ && Cancelled()) throw Failure(ErrorNumber::Host, "cancelled");
  if (text.empty()) {
    observer_.ProgressClosed();
  } else if (text.starts_with(kOpensProgress)) {
    observer_.ProgressOpened(text.substr(kOpensProgress.size()));
  } else {
    observer_.ProgressMoved(PercentIn(text));
  }
}

std::string StandaloneGlobal::GetOption(std::string_view key) {
  const auto found = options_.find(key);
  return found == options_.end() ? std::string() : found->second;
}

std::string StandaloneGlobal::TempPath() {
  if (tempPath_.empty()) {
    if (!workFolder_) workFolder_.emplace();
    // A folder of its own keeps the work folder's marker out of reach, whatever mails call their files.
    const std::string path = workFolder_->Path() + "files\\";
    os::CreateFolder(RemovePathSep(path));
    tempPath_ = path;
  }
  return tempPath_;
}

const std::shared_ptr<TopicsLocation>& StandaloneGlobal::TopicsOfHost() {
  if (topics_ == nullptr) topics_ = std::make_shared<TopicsLocation>(weak_from_this());
  return topics_;
}

std::string StandaloneGlobal::ActionName(std::int32_t msg) {
  return std::string(HostActionName(msg));
}

void StandaloneGlobal::Remember(const StandaloneLocationPtr& location) {
  std::erase_if(openLocations_, [&](const std::weak_ptr<StandaloneLocation>& held) {
    const StandaloneLocationPtr known = held.lock();
    return known == nullptr || !known->IsOpen() || known == location;
  });
  openLocations_.push_back(location);
}

std::vector<StandaloneLocationPtr> StandaloneGlobal::OpenLocations() const {
  std::vector<StandaloneLocationPtr> open;
  for (const std::weak_ptr<StandaloneLocation>& held : openLocations_) {
    StandaloneLocationPtr location = held.lock();
    if (location != nullptr && location->IsOpen()) open.push_back(std::move(location));
  }
  return open;
}

}  // namespace vorlent
