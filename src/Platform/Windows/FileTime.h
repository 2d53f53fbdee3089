// Moments as the system's file systems count them: in steps of 100 nanoseconds from the year 1601.
#pragma once

#include <chrono>
#include <cstdint>

namespace vorlent::os {

struct Moment {
  std::chrono::sys_seconds second;
  int millisecond;
};

using FileTicks = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;
inline constexpr std::chrono::sys_days kFirstFileTick{std::chrono::year(1601) / 1 / 1};

inline Moment MomentOf(std::uint64_t ticks) {
  const auto moment = kFirstFileTick + FileTicks(static_cast<std::int64_t>(ticks));
  const auto second = std::chrono::floor<std::chrono::seconds>(moment);
  const auto rest = std::chrono::floor<std::chrono::milliseconds>(moment - second);
  return {second, static_cast<int>(rest.count())};
}

inline std::uint64_t TicksOf(const Moment& moment) {
  const FileTicks ticks = moment.second - kFirstFileTick + std::chrono::milliseconds(moment.millisecond);
  return static_cast<std::uint64_t>(ticks.count());
}

}  // namespace vorlent::os
