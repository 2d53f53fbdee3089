// For tests of moments.
#pragma once

#include <chrono>
#include <cstdint>

#include "Platform/Time.h"

namespace vorlent {

// The UTC fields of a moment, counted in seconds from 1970.
inline DateTime FromEpoch(std::int64_t seconds) {
  using namespace std::chrono;
  const sys_seconds moment{std::chrono::seconds(seconds)};
  const auto midnight = floor<days>(moment);
  const year_month_day date(midnight);
  const hh_mm_ss time(moment - midnight);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(time.hours().count()),
          static_cast<int>(time.minutes().count()),
          static_cast<int>(time.seconds().count()),
          0};
}

}  // namespace vorlent
