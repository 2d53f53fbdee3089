// The system's time zone for one test.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace vorlent {

// Makes a zone of the time-zone database, such as "Europe/Berlin", the system's own as long as this object
// lives.
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const std::string& name) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    Set(name);
  }
  ~ScopedTimeZone() { Set(before_); }
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

 private:
  static void Set(const std::optional<std::string>& name) {
    if (name) {
      setenv("TZ", name->c_str(), 1);
    } else {
      unsetenv("TZ");
    }
    tzset();
  }

  std::optional<std::string> before_;
};

}  // namespace vorlent
