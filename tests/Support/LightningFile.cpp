#include "Support/LightningFile.h"

namespace vorlent {

namespace {

constexpr char kLightningSchema[] = R"(
PRAGMA journal_mode=WAL;
PRAGMA synchronous=OFF;
CREATE TABLE IF NOT EXISTS cal_calendar_schema_version (
  version INTEGER);
CREATE TABLE IF NOT EXISTS cal_attendees (
  item_id TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT, cal_id TEXT, icalString TEXT);
CREATE TABLE IF NOT EXISTS cal_recurrence (
  item_id TEXT, cal_id TEXT, icalString TEXT);
CREATE TABLE IF NOT EXISTS cal_properties (
  item_id TEXT, key TEXT, value BLOB, recurrence_id INTEGER, recurrence_id_tz TEXT, cal_id TEXT);
CREATE TABLE IF NOT EXISTS cal_events (
  cal_id TEXT, id TEXT, time_created INTEGER, last_modified INTEGER, title TEXT, priority INTEGER,
  privacy TEXT, ical_status TEXT, flags INTEGER, event_start INTEGER, event_end INTEGER, event_stamp
  INTEGER, event_start_tz TEXT, event_end_tz TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT,
  alarm_last_ack INTEGER, offline_journal INTEGER);
CREATE TABLE IF NOT EXISTS cal_todos (
  cal_id TEXT, id TEXT, time_created INTEGER, last_modified INTEGER, title TEXT, priority INTEGER,
  privacy TEXT, ical_status TEXT, flags INTEGER, todo_entry INTEGER, todo_due INTEGER, todo_completed
  INTEGER, todo_complete INTEGER, todo_entry_tz TEXT, todo_due_tz TEXT, todo_completed_tz TEXT,
  recurrence_id INTEGER, recurrence_id_tz TEXT, alarm_last_ack INTEGER, todo_stamp INTEGER,
  offline_journal INTEGER);
CREATE TABLE IF NOT EXISTS cal_tz_version (
  version TEXT);
CREATE TABLE IF NOT EXISTS cal_metadata (
  cal_id TEXT, item_id TEXT, value BLOB);
CREATE TABLE IF NOT EXISTS cal_alarms (
  cal_id TEXT, item_id TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT, icalString TEXT);
CREATE TABLE IF NOT EXISTS cal_relations (
  cal_id TEXT, item_id TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT, icalString TEXT);
CREATE TABLE IF NOT EXISTS cal_attachments (
  item_id TEXT, cal_id TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT, icalString TEXT);
CREATE INDEX IF NOT EXISTS idx_cal_alarms_cal_id_item_id_recurrence_id_recurrence_id_tz 
  ON cal_alarms(cal_id,item_id,recurrence_id,recurrence_id_tz);
CREATE INDEX IF NOT EXISTS idx_cal_attachments_cal_id_item_id_recurrence_id_recurrence_id_tz 
  ON cal_attachments(cal_id,item_id,recurrence_id,recurrence_id_tz);
CREATE INDEX IF NOT EXISTS idx_cal_attendees_cal_id_item_id_recurrence_id_recurrence_id_tz 
  ON cal_attendees(cal_id,item_id,recurrence_id,recurrence_id_tz);
CREATE INDEX IF NOT EXISTS idx_cal_relations_cal_id_item_id_recurrence_id_recurrence_id_tz 
  ON cal_relations(cal_id,item_id,recurrence_id,recurrence_id_tz);
CREATE INDEX IF NOT EXISTS idx_cal_events_flags_cal_id_recurrence_id 
  ON cal_events(flags,cal_id,recurrence_id);
CREATE INDEX IF NOT EXISTS idx_cal_events_id_cal_id_recurrence_id 
  ON cal_events(id,cal_id,recurrence_id);
CREATE INDEX IF NOT EXISTS idx_cal_todos_flags_cal_id_recurrence_id 
  ON cal_todos(flags,cal_id,recurrence_id);
CREATE INDEX IF NOT EXISTS idx_cal_todos_id_cal_id_recurrence_id 
  ON cal_todos(id,cal_id,recurrence_id);
CREATE INDEX IF NOT EXISTS idx_cal_metadata_cal_id_item_id 
  ON cal_metadata(cal_id,item_id);
CREATE INDEX IF NOT EXISTS idx_cal_properties_cal_id_item_id_recurrence_id_recurrence_id_tz 
  ON cal_properties(cal_id,item_id,recurrence_id,recurrence_id_tz);
CREATE INDEX IF NOT EXISTS idx_cal_recurrence_cal_id_item_id 
  ON cal_recurrence(cal_id,item_id);
CREATE TABLE IF NOT EXISTS cal_parameters (
  cal_id TEXT, item_id TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT, key1 TEXT, key2 TEXT, value
  BLOB);
CREATE INDEX IF NOT EXISTS idx_cal_parameters_cal_id_item_id_recurrence_id_recurrence_id_tz 
  ON cal_parameters(cal_id,item_id,recurrence_id,recurrence_id_tz);
)";

constexpr const char* kMade = "1795364577000000";

}  // namespace

LightningFile::LightningFile(const std::filesystem::path& native) : SqliteFile(native) {
  Run(kLightningSchema);
}

void LightningFile::Add(std::string_view table, std::string_view columns, std::string_view values) {
  Run("INSERT INTO " + std::string(table) + "(" + std::string(columns) + ") VALUES(" + std::string(values) +
      ")");
}

void LightningFile::AddEvent(const std::string& calendar, const std::string& id, const std::string& title,
                             const std::string& start, const std::string& end, const std::string& zone,
                             int flags) {
  const auto quoted = [](const std::string& text) { return "'" + text + "'"; };
  Add("cal_events",
      "cal_id, id, title, time_created, last_modified, event_stamp, event_start, event_end, event_start_tz, "
      "event_end_tz, flags",
      quoted(calendar) + "," + quoted(id) + "," + quoted(title) + "," + kMade + "," + kMade + "," + kMade +
          "," + start + "," + end + "," + quoted(zone) + "," + quoted(zone) + "," + std::to_string(flags));
}

std::vector<std::string> LightningFile::AllRows() {
  std::vector<std::string> all;
  for (const std::string& table : Rows("SELECT name FROM sqlite_master WHERE type='table' ORDER BY name")) {
    for (const std::string& row : Rows("SELECT rowid, * FROM " + table + " ORDER BY rowid"))
      all.push_back(table + "|" + row);
  }
  return all;
}

std::vector<std::string> LightningFile::Schema() {
  return Rows("SELECT type, name, tbl_name, sql FROM sqlite_master ORDER BY name");
}

std::string LightningPreferences(std::string_view first, std::string_view second, std::string_view zone) {
  std::string text = "// Mozilla User Preferences\n";
  const auto add = [&](const std::string& name, const std::string& value) {
    text += "user_pref(\"" + name + "\", " + value + ");\n";
  };
  const auto addText = [&](const std::string& name, std::string_view value) {
    add(name, "\"" + std::string(value) + "\"");
  };
  addText("calendar.list.sortOrder", std::string(LightningFile::kFirst) + " " + LightningFile::kSecond);
  for (const auto& [id, name] : {std::pair{LightningFile::kSecond, second}, {LightningFile::kFirst, first}}) {
    const std::string registered = "calendar.registry." + std::string(id);
    add(registered + ".calendar-main-in-composite", "true");
    addText(registered + ".name", name);
    addText(registered + ".type", "storage");
    addText(registered + ".uri", "moz-storage-calendar://");
  }
  addText("calendar.timezone.local", zone);
  return text;
}

}  // namespace vorlent
