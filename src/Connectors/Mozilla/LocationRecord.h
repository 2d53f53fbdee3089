// The record of a place to browse, made of a discovery entry.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vorlent {

// A discovery entry: what a discovery procedure found at one level, three lines joined by a line feed.
struct DiscoveryEntry {
  std::string text;      // what the host shows
  std::string location;  // the address to use when the user picks it
  std::string path;      // the place in the file system
};

// The three lines of an entry; a missing line is "", a carriage return at a line's end is dropped.
DiscoveryEntry SplitDiscoveryEntry(std::string entry);

// The entry as text.
std::string JoinDiscoveryEntry(const DiscoveryEntry& entry);

// The name that an entry of the form "<text>\n<name>/..." addresses when it was listed without a scheme.
std::string NameOfDiscoveryEntry(std::string entry);

// The location record of an entry found at `level` of an address: 1 for profiles, 2 for accounts or
// calendars, 3 and more for folders. Each call gives the record a new ID.
std::string LocationRecord(std::string_view entry, std::int32_t level);

}  // namespace vorlent
