// A host and a platform at work.
#pragma once

#include <memory>
#include <utility>

#include "Host/HostObjects.h"
#include "Platform/Platform.h"

namespace vorlent {

// Installs both for the component, and puts back at the end what was installed before.
class InstalledHost {
 public:
  InstalledHost(std::shared_ptr<Platform> platform, std::shared_ptr<HostObjects> host)
      : platform_(Platform::Install(std::move(platform))), host_(HostObjects::Install(std::move(host))) {}
  ~InstalledHost() {
    HostObjects::Install(std::move(host_));
    Platform::Install(std::move(platform_));
  }
  InstalledHost(const InstalledHost&) = delete;
  InstalledHost& operator=(const InstalledHost&) = delete;

 private:
  std::shared_ptr<Platform> platform_;
  std::shared_ptr<HostObjects> host_;
};

}  // namespace vorlent
