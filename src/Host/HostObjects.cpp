#include "Host/HostObjects.h"

#include <utility>

namespace vorlent {

namespace {

std::shared_ptr<HostObjects> currentHost;

}  // namespace

HostObjects& HostObjects::Current() {
  if (currentHost == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "no host is installed");
  return *currentHost;
}

std::shared_ptr<HostObjects> HostObjects::Install(std::shared_ptr<HostObjects> host) {
  return std::exchange(currentHost, std::move(host));
}

}  // namespace vorlent
