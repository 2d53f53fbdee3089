// When bookmarks were made, as browsers keep it and as people read it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlent {

// Display text of seconds since 1970: in UTC by the rules of old, and today in the system's time zone, as
// browsers show it.
std::string ShownBookmarkTime(std::int64_t seconds);

// The seconds since 1970 of such a text. Of a local time that comes twice they are those of the first one.
std::int64_t SecondsOfShownTime(std::string_view display);

}  // namespace vorlent
