#include <stdlib.h>

#include <memory>

#include "Support/ScopedEnvironment.h"
#include "Support/ScopedTemporaryPlace.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {

const char* const kTemporaryPlaceVariable = "TMPDIR";

void SetVariable(const std::string& name, const char* value) {
  if (value == nullptr) {
    unsetenv(name.c_str());
  } else {
    setenv(name.c_str(), value, 1);
  }
}

std::shared_ptr<void> PutZoneInForce(const std::string& name) {
  return std::make_shared<ScopedEnvironment>("TZ", name.c_str());
}

}  // namespace vorlent
