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

// Whether a moment's year has four digits at most and isn't before the first, which is as far as fields go.
constexpr bool HasFields(std::chrono::sys_seconds moment) {
  using std::chrono::sys_days;
  constexpr std::chrono::sys_seconds kYear1 = sys_days(std::chrono::year{1} / 1 / 1);
  constexpr std::chrono::sys_seconds kYear10000 = sys_days(std::chrono::year{10000} / 1 / 1);
  return moment >= kYear1 && moment < kYear10000;
}

// The fields counted as if they were UTC, without their milliseconds, and back.
constexpr std::chrono::sys_seconds SecondsOf(const DateTime& moment) {
  return std::chrono::sys_days(DateOf(moment)) + std::chrono::hours(moment.hour) +
         std::chrono::minutes(moment.minute) + std::chrono::seconds(moment.second);
}

constexpr DateTime FieldsOf(std::chrono::sys_seconds moment, int millisecond = 0) {
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::hh_mm_ss time{moment - day};
  DateTime fields = MidnightOf(day);
  fields.hour = static_cast<int>(time.hours().count());
  fields.minute = static_cast<int>(time.minutes().count());
  fields.second = static_cast<int>(time.seconds().count());
  fields.millisecond = millisecond;
  return fields;
}

}  // namespace vorlent
