// The standalone host over COM, for a component that is loaded into the same process.
#pragma once

#include <memory>
#include <vector>

#include "Component/Com/Counted.h"
#include "Host/Com/WindowsApi.h"
#include "Host/HostObjects.h"

namespace vorlent::com {

// Serves the host's classes under the identifiers of the contract for as long as this lives, to callers of
// this process only. The host's objects have one face each, which all callers share. The program has the
// host's type library for its first resource, and COM is there for its thread.
class HostServer {
 public:
  // Raises what the system refuses.
  explicit HostServer(const std::shared_ptr<HostObjects>& host);
  HostServer(const HostServer&) = delete;
  HostServer& operator=(const HostServer&) = delete;
  ~HostServer();

 private:
  template <class Make>
  void Serve(REFCLSID id, Make make);

  std::vector<DWORD> served_;
};

}  // namespace vorlent::com
