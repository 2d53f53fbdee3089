#include "Connectors/Mozilla/LocationFrame.h"

#include "Platform/CodePage.h"
#include "Platform/Files.h"
#include "Platform/Platform.h"

namespace vorlent::frame {

void FillParameterItem(Item& item, const ObjectPtr& connector, const ParameterSettings& settings) {
  item.SetLocation(connector);
  item.SetReady(false);
  item.SetID("parameter");
  item.SetType("parameter");
  item.SetText("Parameter");
  item.SetData("Condition", settings.condition, false);
  item.SetData("Flags", settings.flags, false);
  if (settings.restrictsAccess) {
    item.SetAccessDefault("-");
    item.SetAccessList(HostObjects::Current().Global().UserName() + ":rd");
  }
  item.SetReady(true);
  item.SetConnected(true);
}

void ReadBesideTopics(const ObjectPtr& connector, const std::function<void()>& read) {
  const ObjectPtr topics = HostObjects::Current().Global().GetObject("topics");
  if (IsNothing(topics)) {
    read();
    return;
  }
  const auto topicsConnector = RequireAs<TopicsConnector>(RequireAs<Location>(topics)->Connector());
  topicsConnector->SetNotify(false);
  topicsConnector->ClearLocation(connector);
  read();
  topicsConnector->AddLocation(connector);
  topicsConnector->SetNotify(true);
}

void ReportDeleted(const ItemPtr& item) {
  HostObjects::Current().Global().Report(report::kItemDeleted, "", item);
}

void ReportUnreadable(const Cause& why) {
  HostObjects::Current().Global().ReportUnreadable(why);
}

void Remark(const Cause& what) {
  HostObjects::Current().Global().Remark(what);
}

void ReportForeignAddress() {
  ReportUnreadable({.reason = std::string("ungültige Location!"_cp)});
}

std::string CutScheme(std::string& address, std::string_view scheme) {
  if (!address.starts_with(scheme)) return {};
  address.erase(0, scheme.size());
  return std::string(scheme);
}

bool PassesOver(const std::string& path) {
  const std::int32_t attributes = GetFileAttr(path);
  if (attributes < 0 || (attributes & (os::kArchive | os::kDirectory)) != 0) return false;
  ReportUnreadable({path, std::string("keine Datei, sondern Pipe, Socket oder Gerät; wird übergangen!"_cp)});
  return true;
}

void ShowUnreadable(std::string_view text) {
  Platform::Current().ShowMessage(text, "error", MessageIcon::Critical, MessageButtons::Ok);
  ReportUnreadable({.reason = std::string(text)});
}

}  // namespace vorlent::frame
