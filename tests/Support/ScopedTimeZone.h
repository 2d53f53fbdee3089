// The system's time zone for one test.
#pragma once

#include <memory>
#include <string>

namespace vorlent {

// Puts a zone in force as long as what is returned lives.
std::shared_ptr<void> PutZoneInForce(const std::string& name);

// Makes a zone the system's own as long as this object lives: one of the time-zone database, such as
// "Europe/Berlin", or one by its rules, as in "CET-1CEST,M3.5.0,M10.5.0/3".
class ScopedTimeZone {
 public:
  explicit ScopedTimeZone(const std::string& name) : inForce_(PutZoneInForce(name)) {}
  ScopedTimeZone(const ScopedTimeZone&) = delete;
  ScopedTimeZone& operator=(const ScopedTimeZone&) = delete;

 private:
  std::shared_ptr<void> inForce_;
};

}  // namespace vorlent
