// The place for temporary files for one test.
#pragma once

#include <filesystem>

#include "Support/ScopedEnvironment.h"

namespace vorlent {

// The variable by which the system is told where that place is.
extern const char* const kTemporaryPlaceVariable;

// Has the system name that folder as long as this object lives.
class ScopedTemporaryPlace {
 public:
  explicit ScopedTemporaryPlace(const std::filesystem::path& native)
      : variable_(kTemporaryPlaceVariable, native.string().c_str()) {}

 private:
  ScopedEnvironment variable_;
};

}  // namespace vorlent
