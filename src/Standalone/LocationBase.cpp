#include "Standalone/LocationBase.h"

#include "Standalone/StandaloneGlobal.h"

namespace vorlent {

std::shared_ptr<HostErrorFactory> LocationBase::ErrorFactory() {
  return Global()->ErrorFactory();
}

std::string LocationBase::GetSetting(std::string_view key) {
  return parameterItem_ == nullptr ? std::string() : parameterItem_->DataText(key);
}

std::string LocationBase::GetOption(std::string_view key) {
  const auto found = options_.find(key);
  return found == options_.end() ? std::string() : found->second;
}

std::shared_ptr<StandaloneGlobal> LocationBase::Global() const {
  auto global = global_.lock();
  if (global == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "the host of '" + name_ + "' is gone");
  return global;
}

}  // namespace vorlent
