// The time zone whose rules count.
#pragma once

#include <optional>

namespace vorlent::os {

// When the clock is changed each year: at that weekday (0 for Sunday) of the month, the first to the fourth
// one, or the last for 5.
struct ZoneChange {
  int month;
  int week;
  int weekday;
  int hour;
};

// Minutes that local time is behind UTC, and what is taken off them in summer.
struct Zone {
  int bias = 0;
  int summerBias = 0;
  std::optional<ZoneChange> toSummer = std::nullopt;
  std::optional<ZoneChange> toWinter = std::nullopt;
};

// Puts a zone in the place of the machine's, or takes it away again. Only tests choose one.
void UseZone(const std::optional<Zone>& zone);

}  // namespace vorlent::os
