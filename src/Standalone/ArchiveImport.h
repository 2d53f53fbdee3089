// The import of mails into an archive of the standalone host.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "Component/Component.h"
#include "Standalone/Archive.h"
#include "Standalone/RunTally.h"
#include "Standalone/StandaloneGlobal.h"

namespace vorlent {

// Runs the component's import with the tally of it. Mails that stay in their mailboxes come in by portions,
// as a crash costs nothing then that can't be imported again. Before mails are marked as deleted, the archive
// proves that it has them.
class ArchiveImport : public RunTally {
 public:
  // Carries out what the host's wizard answers. A failure of the run rises. `create` makes the component's
  // objects.
  void Run(const StandaloneGlobal::ConnectorFactory& create = CreateObject);

  // Those of the mails delivered that the archive had already.
  std::int64_t AlreadyThere() const { return alreadyThere_; }

  void ImportBegins(const LocationPtr& target, bool moves) override;
  void MailDelivered(const MailPlace& mail, bool hidesPlace) override;
  void MarkingBegins(const std::string& mailbox) override;

 private:
  // Not held: whoever counts may outlive the host.
  std::weak_ptr<LocationBase> target_;
  std::int64_t alreadyThere_ = 0;
  std::optional<Archive::Portions> portions_;
};

}  // namespace vorlent
