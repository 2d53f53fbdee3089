// The host as the component sees it where both meet over COM.
#pragma once

#include <memory>

#include "Host/Com/HostFace.h"
#include "Host/HostObjects.h"

namespace vorlent::com {

// Makes the host's objects by the class identifiers of the contract. What the system can't make raises.
// HostGlobal and HostDialogs are made on first use and held until Forget.
class ComHost final : public HostObjects {
 public:
  explicit ComHost(Expose expose);
  ~ComHost() override;

  ItemPtr NewItem() override;
  TreePtr NewTree() override;
  LocationPtr NewLocation() override;
  HostEnumPtr NewEnum() override;
  HostDatabasePtr NewDatabase() override;
  HostGlobal& Global() override;
  HostDialogs& Dialogs() override;

  // Lets go of what is held.
  void Forget();

 private:
  std::shared_ptr<HostGlobal> global_;
  std::shared_ptr<HostDialogs> dialogs_;
};

}  // namespace vorlent::com
