// The schemes of addresses, one for each application whose data are read.
#pragma once

#include <array>
#include <string_view>

namespace vorlent {

struct Scheme {
  std::string_view prefix;     // what an address begins with
  std::string_view progId;     // the connector that reads it
  std::string_view appFolder;  // holds the application's profiles.ini, below the application-data folder

  // The prefix without its "://".
  constexpr std::string_view Name() const { return prefix.substr(0, prefix.size() - 3); }
};

inline constexpr Scheme kThunderbirdScheme = {"thunderbird://", "VorlentMozilla.Location_Thunderbird",
                                              "Thunderbird"};
inline constexpr Scheme kFireFoxScheme = {"firefox://", "VorlentMozilla.Location_FireFox",
                                          "Mozilla\\FireFox"};
inline constexpr Scheme kSunbirdScheme = {"sunbird://", "VorlentMozilla.Location_Sunbird",
                                          "Mozilla\\Sunbird"};
// Lightning keeps its calendars in Thunderbird's profiles.
inline constexpr Scheme kLightningScheme = {"lightning://", kSunbirdScheme.progId,
                                            kThunderbirdScheme.appFolder};

inline constexpr std::array<const Scheme*, 4> kSchemes = {&kThunderbirdScheme, &kFireFoxScheme,
                                                          &kSunbirdScheme, &kLightningScheme};

// The scheme of an address, null if it has none of these.
constexpr const Scheme* SchemeOf(std::string_view address) {
  for (const Scheme* scheme : kSchemes) {
    if (address.starts_with(scheme->prefix)) return scheme;
  }
  return nullptr;
}

}  // namespace vorlent
