#include "Standalone/ArchiveImport.h"

#include <memory>

#include "Host/Connector.h"

namespace vorlent {

void ArchiveImport::Run(const StandaloneGlobal::ConnectorFactory& create) {
  const auto actions = RequireAs<ActionList>(create("VorlentMozilla.Actions"));
  actions->SetRunObserver(this);
  const auto settle = [&] {
    if (portions_) portions_->Finish();
  };
  try {
    actions->execute("importmails");
  } catch (const Failure&) {
    // What was delivered before is told as imported.
    Swallow(settle);
    throw;
  }
  settle();
}

void ArchiveImport::ImportBegins(const LocationPtr& target, bool moves) {
  target_ = std::dynamic_pointer_cast<LocationBase>(target);
  const auto archive = std::dynamic_pointer_cast<Archive>(target);
  if (archive != nullptr && !moves) portions_.emplace(*archive);
}

void ArchiveImport::MailDelivered(const MailPlace& mail, bool hidesPlace) {
  RunTally::MailDelivered(mail, hidesPlace);
  const auto target = target_.lock();
  const ItemPtr item = target == nullptr ? nullptr : target->LastPasted();
  if (item != nullptr && AsStandalone(item)->WasThere()) ++alreadyThere_;
}

void ArchiveImport::MarkingBegins(const std::string&) {
  if (const auto archive = std::dynamic_pointer_cast<Archive>(target_.lock())) archive->Prove();
}

}  // namespace vorlent
