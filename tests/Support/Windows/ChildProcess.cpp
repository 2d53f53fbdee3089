#include "Support/ChildProcess.h"

namespace vorlent {

std::optional<bool> WasKilledInCopy(const std::function<void()>&) {
  return std::nullopt;
}

}  // namespace vorlent
