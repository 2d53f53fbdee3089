// The system's time zone for one test.
#pragma once

#include <string>

#include "Support/ScopedEnvironment.h"

namespace vorlent {

// Makes a zone of the time-zone database, such as "Europe/Berlin", the system's own as long as this object
// lives.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const std::string& name) : variable_("TZ", name.c_str()) {}

 private:
  ScopedEnvironment variable_;
};

}  // namespace vorlent
