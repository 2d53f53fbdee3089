// Where the calendars of a profile lie, and how addresses and times of calendars are written.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

// The databases that a profile folder may have calendars in; the first that has one of a name counts.
std::vector<std::string> CalendarFilesOf(std::string_view profileFolder);

// Whether a database is laid out by today's Thunderbird.
bool IsThunderbirdCalendarFile(std::string_view file);

// The profile folder of such a database.
std::string ProfileOfCalendarFile(std::string_view file);

// Whether texts go into statements and records in a form in which no text ends its place.
bool EscapesCalendarTexts();

// Whether an address is taken as it stands from its preparation on, whatever its scheme, and whatever names
// are in it.
bool TakesCalendarAddressesWhole();

// The segment of an address that names a calendar, and the name that a segment stands for.
std::string CalendarSegment(std::string_view name);
std::string CalendarOfSegment(std::string_view segment);

// A calendar's name or an item's ID as the value of a record's field.
std::string CalendarFieldValue(const std::string& text);

// Local time, date and time parted by a blank, of seconds since 1970 in UTC. Raises for a time that can't be
// shown.
std::string CalendarTimeText(std::int64_t seconds);
// As above, of their decimal text. Half a second more says that they are already those of the local clock,
// whether that shows them or skips them at a change to summer time. Raises TypeMismatch for text that is
// none.
std::string CalendarTimeText(std::string_view seconds);

// Seconds since 1970 in UTC of a local date text, 0 for what is none. Raises for a time that calendars
// can't keep.
std::int64_t CalendarSeconds(std::string_view date);

}  // namespace vorlent
