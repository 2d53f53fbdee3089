#include "Platform/Time.h"

#include "Platform/Calendar.h"
#include "Platform/EpochTime.h"
#include "Platform/Failure.h"

namespace vorlent::os {

namespace {

using std::chrono::sys_seconds;

constexpr std::chrono::days kDay{1};

void RequireValid(const DateTime& t) {
  const auto isIn = [](int value, int low, int high) { return value >= low && value <= high; };
  const bool valid = isIn(t.year, 1, 9999) && isIn(t.month, 1, 12) && isIn(t.day, 1, 31) && DateOf(t).ok() &&
                     isIn(t.hour, 0, 23) && isIn(t.minute, 0, 59) && isIn(t.second, 0, 59) &&
                     isIn(t.millisecond, 0, 999);
  if (!valid) throw Failure(ErrorNumber::InvalidCall, "no such date or time");
}

}  // namespace

DateTime EpochToLocal(sys_seconds moment, int millisecond) {
  return FieldsOf(moment + LocalOffsetAt(moment), millisecond);
}

sys_seconds LocalToEpoch(const DateTime& local) {
  RequireValid(local);
  const sys_seconds count = SecondsOf(local);
  // Offsets are below a day, so these are the offsets in force before and after a change around that time.
  // The earlier reading goes first: of a repeated time it is the first occurrence, of a skipped one the
  // offset before.
  const sys_seconds before = count - LocalOffsetAt(count - kDay);
  if (before + LocalOffsetAt(before) == count) return before;
  const sys_seconds after = count - LocalOffsetAt(count + kDay);
  return after + LocalOffsetAt(after) == count ? after : before;
}

DateTime UtcToLocal(const DateTime& utc) {
  RequireValid(utc);
  return EpochToLocal(SecondsOf(utc), utc.millisecond);
}

DateTime LocalToUtc(const DateTime& local) {
  return FieldsOf(LocalToEpoch(local), local.millisecond);
}

DateTime LocalNow() {
  const auto now = std::chrono::system_clock::now();
  const auto second = std::chrono::floor<std::chrono::seconds>(now);
  const auto rest = std::chrono::floor<std::chrono::milliseconds>(now - second);
  return EpochToLocal(second, static_cast<int>(rest.count()));
}

}  // namespace vorlent::os
