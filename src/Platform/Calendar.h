// The calendar of moments as fields.
#pragma once

#include <chrono>

#include "Platform/Time.h"

namespace vorlent {

// The date of a day, at midnight.
constexpr DateTime MidnightOf(std::chrono::sys_days day) {
  const std::chrono::year_month_day date{day};
  return {.year = static_cast<int>(date.year()),
          .month = static_cast<int>(static_cast<unsigned>(date.month())),
          .day = static_cast<int>(static_cast<unsigned>(date.day()))};
}

// The date of a moment, which may be none of the calendar. Its month and day lie between 0 and 255.
constexpr std::chrono::year_month_day DateOf(const DateTime& moment) {
  return std::chrono::year{moment.year} / moment.month / moment.day;
}

}  // namespace vorlent
