#include "Standalone/StandaloneLocation.h"

#include "Common/StdModul.h"
#include "Connectors/Mozilla/Schemes.h"
#include "Platform/CodePage.h"
#include "Standalone/StandaloneGlobal.h"

namespace vorlent {

LocationState StandaloneLocation::Open(std::string_view address) {
  Close();
  name_ = address;
  const std::shared_ptr<StandaloneGlobal> global = Global();
  const Scheme* scheme = SchemeOf(address);
  if (scheme == nullptr) {
    global->ReportUnreadable({.reason = std::string("ungültige Location!"_cp)});
    return LocationState::Unreadable;
  }
  SetOption("type", scheme->Name());
  connector_ = RequireAs<vorlent::Connector>(global->CreateConnector(scheme->progId));
  global->Remember(shared_from_this());
  try {
    connector_->SetLocObject(shared_from_this());
    return connector_->InitLocation(name_) ? LocationState::Read : LocationState::Unreadable;
  } catch (const Failure&) {
    Close();
    throw;
  }
}

void StandaloneLocation::Load() {
  if (!IsOpen()) return;
  const std::shared_ptr<StandaloneGlobal> global = Global();
  const StandaloneGlobal::Reading reading(*global);
  state_ = connector_->OpenLocation(name_);
}

void StandaloneLocation::Close() {
  if (!IsOpen()) return;
  // Whatever the connector's ways of ending do, the two must let go of each other.
  const ConnectorPtr closing = std::exchange(connector_, nullptr);
  state_ = LocationState::Unreadable;
  SetParameterItem(nullptr);
  Swallow([&] { closing->Disconnect(); });
  Swallow([&] { closing->SetLocObject(nullptr); });
}

ItemPtr StandaloneLocation::PasteRecord(std::string_view record) {
  return Opened().PasteItem(record, true);
}

ItemPtr StandaloneLocation::ItemAt(std::int32_t pos) {
  return Opened().Item(pos);
}

std::int32_t StandaloneLocation::ItemCount() const {
  return IsOpen() ? connector_->Count() : 0;
}

TreePtr StandaloneLocation::FiledTree() {
  const TreePtr tree = Opened().Tree();
  tree->ClearItems();
  const std::int32_t count = connector_->Count();
  for (std::int32_t pos = 1; pos <= count; ++pos)
    tree->AddItem(connector_->Item(pos));
  return tree;
}

vorlent::Connector& StandaloneLocation::Opened() const {
  if (!IsOpen()) throw Failure(ErrorNumber::ObjectNotSet, "the Location '" + name_ + "' isn't open");
  return *connector_;
}

}  // namespace vorlent
