#include "Standalone/StandaloneItem.h"

#include <utility>

#include "Common/StdModul.h"
#include "Host/Connector.h"
#include "Host/FileKeys.h"
#include "Host/Location.h"
#include "Standalone/FileDescription.h"
#include "Standalone/HostActions.h"

namespace vorlent {

namespace {

// The stamps of a log text "<created>,<modified>*<mark>"; the mail's log is one stamp alone.
struct LogStamps {
  explicit LogStamps(std::string log) {
    std::string stamps = CutToken(log, "*");
    mark = std::move(log);
    created = CutToken(stamps, ",");
    modified = CutToken(stamps, ",");
  }

  std::string created, modified, mark;
};

bool HasKeyword(std::string keywords, std::string_view keyword) {
  while (!keywords.empty()) {
    if (CutToken(keywords, ",") == keyword) return true;
  }
  return false;
}

}  // namespace

StandaloneItem::StandaloneItem(std::shared_ptr<const ItemListenerSlot> listeners)
    : listeners_(std::move(listeners)) {
  record_.Set(record_key::kId, NewGuidText());
}

void StandaloneItem::SetText(std::string_view text) {
  record_.Set(record_key::kText, text);
  Changed(action::kChangeText, {});
}

void StandaloneItem::SetDate(std::string_view date) {
  record_.Set(record_key::kDate, date);
  Changed(action::kDate, {});
}

void StandaloneItem::SetData(std::string_view key, std::string_view value, bool) {
  record_.SetData(key, value);
  Changed(action::kDataSet, std::string(key).append("=").append(value));
}

void StandaloneItem::AddKeyword(std::string_view keyword, bool) {
  std::string keywords = Keywords();
  if (keyword.empty() || HasKeyword(keywords, keyword)) return;
  if (!keywords.empty()) keywords += ',';
  record_.Set(record_key::kKeywords, keywords.append(keyword));
  Changed(action::kKeywordAdd, keyword);
}

std::string StandaloneItem::DateCreated() const {
  LogStamps stamps(Log());
  return stamps.created.empty() ? Date() : StampToDisplay(stamps.created);
}

std::string StandaloneItem::DateModified() const {
  LogStamps stamps(Log());
  return stamps.modified.empty() ? DateCreated() : StampToDisplay(stamps.modified);
}

std::string StandaloneItem::FullText() const {
  std::string text = Text();
  for (std::int32_t pos = 1; pos <= DataCount(); ++pos) {
    text += "\r\n";
    text += DescribesFile(DataKey(pos)) ? FileNameIn(record_.DataValue(pos)) : record_.DataValue(pos);
  }
  return text;
}

void StandaloneItem::ImportRecord(std::string_view record) {
  record_.Import(record);
}

std::string StandaloneItem::Address() const {
  const ObjectPtr owner = Location();
  LocationPtr location = std::dynamic_pointer_cast<vorlent::Location>(owner);
  if (const auto connector = std::dynamic_pointer_cast<Connector>(owner)) location = connector->LocObject();
  return location == nullptr ? ID() : location->Name() + "#" + ID();
}

std::string StandaloneItem::DataFile(std::string_view key, std::int32_t index) const {
  std::string description = index == 0 ? DataText(key) : std::string();
  if (description.empty()) return {};
  const auto mailbox = std::dynamic_pointer_cast<MailConnector>(Location());
  if (mailbox == nullptr || !record_.HasData(data_key::kSourceFile)) return CutLine(description);
  return mailbox->GetFile(std::const_pointer_cast<StandaloneItem>(shared_from_this()), key);
}

void StandaloneItem::TakeFile(std::string_view, std::string_view path, std::string_view, std::string_view) {
  throw Failure(
      ErrorNumber::PathAccess,
      "the item '" + ID() + "' is in no archive and can't keep the file '" + std::string(path) + "'");
}

void StandaloneItem::Changed(std::int32_t action, std::string_view value) {
  if (!connected_ || !ready_) return;
  NoteModification();
  if (listeners_ != nullptr && listeners_->listener != nullptr) {
    listeners_->listener->ItemChanged(*this, action, value);
  }
}

void StandaloneItem::NoteModification() {
  const LogStamps stamps(Log());
  std::string log = stamps.created.empty() ? DisplayToStamp(Date()) : stamps.created;
  log += "," + NowStamp();
  if (!stamps.mark.empty()) log += "*" + stamps.mark;
  record_.Set(record_key::kLog, log);
}

std::string KeywordsOf(const Item& item) {
  const auto* own = dynamic_cast<const StandaloneItem*>(&item);
  return own == nullptr ? std::string() : own->Keywords();
}

std::vector<std::string> FileNames(const Item& item) {
  std::vector<std::string> names;
  for (std::int32_t pos = 1; pos <= item.DataCount(); ++pos) {
    const std::string key = item.DataKey(pos);
    if (DescribesFile(key)) names.push_back(FileNameIn(item.DataText(key)));
  }
  return names;
}

}  // namespace vorlent
