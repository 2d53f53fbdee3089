#include "Connectors/Mozilla/CalendarFiles.h"

#include <charconv>
#include <chrono>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Common/Width.h"
#include "Platform/Calendar.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr std::string_view kOldCalendarFile = "storage.sdb";
constexpr std::string_view kThunderbirdCalendarFile = "calendar-data\\local.sqlite";

bool AreTimesOf32Bits() {
  return CurrentRules().calendarTimes == CalendarTimes::Of32Bits;
}

DateTime CalendarFieldsOf(std::int64_t seconds) {
  const std::chrono::sys_seconds moment{std::chrono::seconds(seconds)};
  if (!HasFields(moment)) throw Failure(ErrorNumber::Overflow, "Zeit nach dem Jahr 9999 oder vor dem Jahr 1");
  return FieldsOf(moment);
}

}  // namespace

std::vector<std::string> CalendarFilesOf(std::string_view profileFolder) {
  const std::string folder = AddPathSep(profileFolder);
  std::vector<std::string> files = {folder + std::string(kOldCalendarFile)};
  if (CurrentRules().calendarFiles == CalendarFiles::OfThunderbird)
    files.insert(files.begin(), folder + std::string(kThunderbirdCalendarFile));
  return files;
}

bool IsThunderbirdCalendarFile(std::string_view file) {
  constexpr std::size_t kLength = kThunderbirdCalendarFile.size();
  return file.size() > kLength && file[file.size() - kLength - 1] == '\\' &&
         EqualNoCase(file.substr(file.size() - kLength), kThunderbirdCalendarFile);
}

std::string ProfileOfCalendarFile(std::string_view file) {
  return std::string(file.substr(0, file.size() - kThunderbirdCalendarFile.size()));
}

bool EscapesCalendarTexts() {
  return CurrentRules().calendarTexts == CalendarTexts::Escaped;
}

bool TakesCalendarAddressesWhole() {
  return CurrentRules().calendarAddresses == CalendarAddresses::Whole;
}

std::string CalendarSegment(std::string_view name) {
  std::string segment(name);
  if (!TakesCalendarAddressesWhole()) return segment;
  ReplaceText(segment, "%", "%25");
  ReplaceText(segment, "/", "%2F");
  return segment;
}

std::string CalendarOfSegment(std::string_view segment) {
  std::string name(segment);
  if (!TakesCalendarAddressesWhole()) return name;
  ReplaceText(name, "%2F", "/");
  ReplaceText(name, "%25", "%");
  return name;
}

std::string CalendarFieldValue(const std::string& text) {
  return EscapesCalendarTexts() ? EscapeValue(text) : text;
}

std::string CalendarTimeText(std::int64_t seconds) {
  if (AreTimesOf32Bits()) {
    std::string stamp = EpochToStamp(ToInt32(seconds));
    return Trim(UtcToLocalText(ParseDate(StampToDisplay(stamp))));
  }
  return Trim(UtcToLocalText(CalendarFieldsOf(seconds)));
}

std::string CalendarTimeText(std::string_view seconds) {
  if (AreTimesOf32Bits()) return CalendarTimeText(std::int64_t{ParseInt32(seconds)});
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(seconds.data(), seconds.data() + seconds.size(), value);
  const std::string_view part = seconds.substr(static_cast<std::size_t>(end - seconds.data()));
  const bool isOfLocalClock = part == NumberText(0.5).substr(1);
  if (error != std::errc() || !(part.empty() || isOfLocalClock))
    throw Failure(ErrorNumber::TypeMismatch, "keine Zeit: '" + std::string(seconds) + "'");
  if (!isOfLocalClock) return CalendarTimeText(value);
  return FormatDisplay(CalendarFieldsOf(seconds.front() == '-' ? value - 1 : value));
}

std::int64_t CalendarSeconds(std::string_view date) {
  const std::string utc = LocalToUtcText(date);
  if (AreTimesOf32Bits()) return StampToEpoch(DisplayToStamp(utc));
  if (utc.empty()) return 0;
  return SecondsOf(ParseDate(utc)).time_since_epoch().count();
}

}  // namespace vorlent
