// The way to the host: what the component creates of the host's classes, and the host's global objects.
#pragma once

#include <memory>

#include "Host/HostDatabase.h"
#include "Host/HostDialogs.h"
#include "Host/HostEnum.h"
#include "Host/HostGlobal.h"
#include "Host/Item.h"
#include "Host/Location.h"
#include "Host/Tree.h"
#include "Platform/Public.h"

namespace vorlent {

// Installed and called on the component's one thread (Component/Component.h).
class VORLENT_PUBLIC HostObjects {
 public:
  virtual ~HostObjects() = default;

  // The host in use. Raises ObjectNotSet before one is installed.
  static HostObjects& Current();

  // Makes a host current (nothing is allowed) and returns the one before it.
  static std::shared_ptr<HostObjects> Install(std::shared_ptr<HostObjects> host);

  // New objects of the host's classes, never nothing; what the host can't make raises. An item comes with an
  // ID of its own, a tree without nodes, the others bound to nothing yet.
  virtual ItemPtr NewItem() = 0;
  virtual TreePtr NewTree() = 0;
  virtual LocationPtr NewLocation() = 0;
  virtual HostEnumPtr NewEnum() = 0;
  virtual HostDatabasePtr NewDatabase() = 0;

  // Each exists once, is made on first use and lives as long as the host.
  virtual HostGlobal& Global() = 0;
  virtual HostDialogs& Dialogs() = 0;
};

}  // namespace vorlent
