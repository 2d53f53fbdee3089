#include <time.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "Platform/EpochTime.h"
#include "Platform/Failure.h"

namespace vorlent::os {

namespace {

// Takes up the zone that the environment names, if that has changed: the C library would look at the zone's
// file each time.
void FollowZone() {
  static thread_local std::optional<std::string> known;
  const char* const zone = std::getenv("TZ");
  const std::string current = zone == nullptr ? "no zone" : std::string("TZ=") + zone;
  if (current == known) return;
  tzset();
  known = current;
}

}  // namespace

std::chrono::seconds LocalOffsetAt(std::chrono::sys_seconds moment) {
  FollowZone();
  const time_t seconds = moment.time_since_epoch().count();
  tm broken = {};
  if (localtime_r(&seconds, &broken) == nullptr)
    throw Failure(ErrorNumber::InvalidCall, "no such date or time");
  return std::chrono::seconds(broken.tm_gmtoff);
}

}  // namespace vorlent::os
