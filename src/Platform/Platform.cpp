#include "Platform/Platform.h"

#include <utility>

namespace vorlent {

namespace {

std::shared_ptr<Platform>& CurrentSlot() {
  static std::shared_ptr<Platform> current = os::NewPlatform();
  return current;
}

}  // namespace

Platform& Platform::Current() {
  return *CurrentSlot();
}

std::shared_ptr<Platform> Platform::Install(std::shared_ptr<Platform> platform) {
  if (platform == nullptr) platform = os::NewPlatform();
  return std::exchange(CurrentSlot(), std::move(platform));
}

}  // namespace vorlent
