// Thunderbird's calendars by the preferences of a profile.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

struct LightningCalendar {
  std::string id;    // under which the calendar's rows stand
  std::string name;  // "" for one that has none
  bool isReadOnly = false;
};

struct LightningRegistry {
  // Those that the profile keeps itself, in the order in which Thunderbird shows them.
  std::vector<LightningCalendar> calendars;
  // The name of the time zone that Thunderbird shows times in, "" if the profile doesn't tell.
  std::string zone;
};

// A profile without preferences has no calendars; preferences that can't be read raise.
LightningRegistry ReadLightningRegistry(std::string_view profileFolder);

}  // namespace vorlent
