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

// The preferences about calendars that are texts. They are written as JSON has texts.
std::map<std::string, std::string> ReadCalendarPreferences(const std::string& file) {
  std::map<std::string, std::string> preferences;
  LineFile lines(file, os::File::Mode::Read, LineRule::Native);
  while (!lines.AtEnd()) {
    std::string_view line = lines.ReadLine();
    if (!line.starts_with(kPreferenceLead)) continue;
    line.remove_prefix(kPreferenceLead.size());
    const std::size_t end = line.find("\",");
    if (end == std::string_view::npos || !line.starts_with("calendar.")) continue;
    if (const auto text = JsonReader(TrimView(line.substr(end + 2))).TakeText())
      preferences.insert_or_assign(std::string(line.substr(0, end)), *text);
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
    registry.calendars.push_back({id, PreferenceOf(preferences, std::string(kRegistered) + id + ".name")});
  }
  // IDs that the order doesn't name come last.
  const std::string order = " " + PreferenceOf(preferences, "calendar.list.sortOrder") + " ";
  std::ranges::stable_sort(registry.calendars, {}, [&](const LightningCalendar& calendar) {
    return std::min(order.find(" " + calendar.id + " "), order.size());
  });
  return registry;
}

}  // namespace vorlent
