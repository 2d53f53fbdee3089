#include <stdlib.h>

#include <algorithm>
#include <charconv>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>

#include "Platform/Windows/Zone.h"
#include "Support/ScopedEnvironment.h"
#include "Support/ScopedTemporaryPlace.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {

namespace {

// A zone by its rules is a name, the hours behind UTC, and for a zone with summer time the name of that, the
// change to it and the change back, each as month, week and weekday, with the hour where it isn't 2.

struct ZoneOfDatabase {
  std::string_view name;
  std::string_view rules;
};

// Those that tests name, with the rules of today.
constexpr ZoneOfDatabase kZones[] = {
    {"UTC", "UTC0"},
    {"Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3"},
    {"Europe/London", "GMT0BST,M3.5.0/1,M10.5.0"},
    {"America/New_York", "EST5EDT,M3.2.0,M11.1.0"},
    {"Asia/Kolkata", "IST-5:30"},
    {"Pacific/Kiritimati", "LINT-14"},
};

class RuleReader {
 public:
  explicit RuleReader(std::string_view rules) : left_(rules) {}

  os::Zone Read() {
    os::Zone zone;
    SkipName();
    zone.bias = ReadMinutes();
    if (left_.empty()) return zone;
    SkipName();
    zone.summerBias = -60;
    zone.toSummer = ReadChange();
    zone.toWinter = ReadChange();
    if (!left_.empty()) throw std::runtime_error("no rules of a zone");
    return zone;
  }

 private:
  void SkipName() { left_.remove_prefix(std::min(left_.find_first_of("+-0123456789,"), left_.size())); }

  bool Skip(char c) {
    if (!left_.starts_with(c)) return false;
    left_.remove_prefix(1);
    return true;
  }

  int ReadNumber() {
    int number = 0;
    const auto [end, error] = std::from_chars(left_.data(), left_.data() + left_.size(), number);
    if (error != std::errc()) throw std::runtime_error("no number in the rules of a zone");
    left_.remove_prefix(static_cast<std::size_t>(end - left_.data()));
    return number;
  }

  int ReadMinutes() {
    const int sign = Skip('-') ? -1 : 1;
    const int hours = ReadNumber();
    return sign * (hours * 60 + (Skip(':') ? ReadNumber() : 0));
  }

  os::ZoneChange ReadChange() {
    os::ZoneChange change = {};
    if (!Skip(',') || !Skip('M')) throw std::runtime_error("no change in the rules of a zone");
    change.month = ReadNumber();
    Skip('.');
    change.week = ReadNumber();
    Skip('.');
    change.weekday = ReadNumber();
    change.hour = Skip('/') ? ReadNumber() : 2;
    return change;
  }

  std::string_view left_;
};

std::string_view RulesOf(std::string_view name) {
  for (const ZoneOfDatabase& zone : kZones) {
    if (zone.name == name) return zone.rules;
  }
  return name;
}

std::optional<os::Zone> zoneInForce;

class ZoneScope {
 public:
  explicit ZoneScope(const os::Zone& zone) : before_(zoneInForce) { Use(zone); }
  ~ZoneScope() { Use(before_); }
  ZoneScope(const ZoneScope&) = delete;
  ZoneScope& operator=(const ZoneScope&) = delete;

 private:
  static void Use(const std::optional<os::Zone>& zone) {
    zoneInForce = zone;
    os::UseZone(zone);
  }

  std::optional<os::Zone> before_;
};

}  // namespace

const char* const kTemporaryPlaceVariable = "TMP";

// An empty value takes a variable away.
void SetVariable(const std::string& name, const char* value) {
  _putenv_s(name.c_str(), value == nullptr ? "" : value);
}

std::shared_ptr<void> PutZoneInForce(const std::string& name) {
  return std::make_shared<ZoneScope>(RuleReader(RulesOf(name)).Read());
}

}  // namespace vorlent
