// The standalone host's error objects, which hand on what is raised.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "Host/HostError.h"
#include "Standalone/HostObserver.h"

namespace vorlent {

class StandaloneError : public HostError {
 public:
  explicit StandaloneError(HostObserver& observer) : observer_(observer) {}

  void Raise(std::int32_t kind, std::string_view source, bool flag, std::string_view text) override {
    observer_.ErrorRaised(kind, source, flag, text);
  }
  void RaiseForDrive(std::string_view source, std::string_view text) override {
    observer_.ErrorRaisedForDrive(source, text);
  }
  // This host never keeps errors back.
  bool Suppressed() const override { return false; }
  bool Silent() const override { return false; }

 private:
  HostObserver& observer_;
};

class StandaloneErrorFactory : public HostErrorFactory {
 public:
  explicit StandaloneErrorFactory(HostObserver& observer) : observer_(observer) {}

  std::shared_ptr<HostError> Error() override { return std::make_shared<StandaloneError>(observer_); }

 private:
  HostObserver& observer_;
};

}  // namespace vorlent
