#include "Standalone/LightningRegistry.h"

#include <algorithm>
#include <map>

#include "Common/JsonReader.h"
#include "Common/LineFile.h"
#include "Common/StdModul.h"

namespace vorlent {

namespace {

constexpr std::string_view kPreferenceLead = "user_pref(\"";
constexpr std::string_view kRegistered = "calendar.registry.";
constexpr std::string_view kStorage = "storage";
constexpr std::string_view kTrue = "true";

// The preferences about calendars that are texts, which are written as JSON has texts, or "true".
std::map<std::string, std::string> ReadCalendarPreferences(const std::string& file) {
  std::map<std::string, std::string> preferences;
  LineFile lines(file, os::File::Mode::Read, LineRule::Native);
  while (!lines.AtEnd()) {
    std::string_view line = lines.ReadLine();
    if (!line.starts_with(kPreferenceLead)) continue;
    line.remove_prefix(kPreferenceLead.size());
    const std::size_t end = line.find("\",");
    if (end == std::string_view::npos || !line.starts_with("calendar.")) continue;
    const std::string_view value = TrimView(line.substr(end + 2));
    if (const auto text = JsonReader(value).TakeText()) {
      preferences.insert_or_assign(std::string(line.substr(0, end)), *text);
    } else if (value.starts_with(kTrue)) {
      preferences.insert_or_assign(std::string(line.substr(0, end)), std::string(kTrue));
    }
  }
  return preferences;
}

std::string PreferenceOf(const std::map<std::string, std::string>& preferences, const std::string& name) {
  const auto found = preferences.find(name);
  return found == preferences.end() ? std::string() : found->second;
}

}  // namespace

LightningRegistry ReadLightningRegistry(std::string_view profileFolder) {
  LightningRegistry registry;
  const std::string file = AddPathSep(profileFolder) + "prefs.js";
  if (!FileExists(file)) return registry;
  const auto preferences = ReadCalendarPreferences(file);
  registry.zone = PreferenceOf(preferences, "calendar.timezone.local");
  for (const auto& [key, value] : preferences) {
    if (!key.starts_with(kRegistered) || !key.ends_with(".type") || value != kStorage) continue;
    const std::string id = key.substr(kRegistered.size(), key.rfind('.') - kRegistered.size());
    const auto own = [&](std::string_view what) {
      return PreferenceOf(preferences, std::string(kRegistered).append(id).append(what));
    };
    registry.calendars.push_back({.id = id, .name = own(".name"), .isReadOnly = own(".readOnly") == kTrue});
  }
  // IDs that the order doesn't name come last.
  const std::string order = " " + PreferenceOf(preferences, "calendar.list.sortOrder") + " ";
  std::ranges::stable_sort(registry.calendars, {}, [&](const LightningCalendar& calendar) {
    return std::min(order.find(" " + calendar.id + " "), order.size());
  });
  return registry;
}

}  // namespace vorlent
