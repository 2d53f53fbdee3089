#include "Connectors/Mozilla/Location_Sunbird.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "Common/StdTime.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/CalendarFiles.h"
#include "Connectors/Mozilla/LocationRecord.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Host/RecordKeys.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// The host's query argument.
constexpr std::int32_t kQuery = 2;

// Kinds of the error report: it tells of database calls that went well, too.
constexpr std::int32_t kDone = 1;
constexpr std::int32_t kFailed = 2;

// The number that a database gives a statement that isn't valid.
constexpr int kInvalidStatement = 1;

void LogDatabase(std::string_view line) {
  HostObjects::Current().Global().Report(report::kDatabaseLog, line, nullptr);
}

// Local time of a time field.
std::string LocalText(HostRecordset& row, std::string_view field) {
  return CalendarTimeText(row.FieldDate(field));
}

// As LocalText, to the minute.
std::string LocalMinute(HostRecordset& row, std::string_view field) {
  std::string time = LocalText(row, field);
  const std::string date = CutTrimmedToken(time, " ");
  return date + ' ' + time.substr(0, 5);
}

// When the row was made and last changed.
std::string LogValue(HostRecordset& row) {
  const std::string created = DisplayToStamp(LocalText(row, "created"));
  const std::string modified = DisplayToStamp(LocalText(row, "modified"));
  return created + ',' + modified + "*1";
}

std::string TaskRecord(HostRecordset& row, const std::string& calendar) {
  const std::string log = LogValue(row);
  std::string record;
  AppendField(record, record_key::kId, CalendarFieldValue(row.Field("id")));
  AppendField(record, record_key::kType, "task");
  AppendField(record, record_key::kText, EscapeValue(row.Field("title")));
  AppendDataField(record, data_key::kCalendar, CalendarFieldValue(calendar));
  AppendField(record, record_key::kLog, log);
  return record;
}

// Whether a text leaves the literal that it stands in open to the end of the statement.
bool LeavesLiteralOpen(std::string_view text) {
  return std::count(text.begin(), text.end(), '\'') % 2 == 1;
}

// The first of an event's locations: a changed one leaves the old row in place. An ID that spoils the query
// fails as the query would; but where its quotes come in pairs the query would run, and ask for whatever
// stands between them. Then there is no location.
std::string ReadLocation(HostDatabase& db, const std::string& id) {
  const CalendarSql query = CalendarSql::Of<CalendarSql::Form::ReadLocation>({id});
  if (query.IsSpoiled()) {
    if (LeavesLiteralOpen(id) || id.find('\0') != std::string::npos)
      throw Failure(kInvalidStatement, "quote in an ID: " + query.Text());
    return {};
  }
  const HostRecordsetPtr rows = db.Query(query.Text(), kQuery);
  if (rows->RecordCount() == 0) return {};
  rows->MoveFirst();
  return rows->Field("value");
}

}  // namespace

ParameterSettings Location_Sunbird::Parameters() const {
  return {.condition = "$type=termin|$type=task", .flags = ""};
}

bool Location_Sunbird::PrepareAddress(std::string_view file) {
  Tree()->Clear();
  std::string rest(file);
  if (CutScheme(rest).empty() || file.ends_with('*')) return true;
  // By the rules of old the shorter scheme's length serves both. After the longer one two slashes stay, which
  // name no profile, so that here a "lightning" address always stands for all of them.
  if (!TakesCalendarAddressesWhole()) rest = file.substr(std::min(kSunbirdScheme.prefix.size(), file.size()));
  return ReadAddress(std::move(rest));
}

// An address of the scheme's name alone counts as one of that scheme.
std::string Location_Sunbird::CutScheme(std::string& address) {
  scheme_ = SchemeOf(CutToken(address, "://") + "://");
  if (scheme_ != nullptr && scheme_->progId != kProgId) scheme_ = nullptr;
  return scheme_ == nullptr ? std::string() : std::string(scheme_->prefix);
}

bool Location_Sunbird::ReadAddress(std::string path) {
  const std::string profile = CutToken(path, "/");
  return profile.empty() ? ReadAllProfiles() : ReadProfile(profile, path, Tree());
}

KeyedList<std::string> Location_Sunbird::Discover(const BrowsePoint& point, std::string_view segment) {
  if (point.level == 1) return Profiles(point.prefix, segment);
  if (point.level == 2) return GetCalendars(point.prefix, CalendarOfSegment(segment), point.profilePath);
  return GetMailFolders(point.prefix, segment, point.folderPath);
}

KeyedList<std::string> Location_Sunbird::GetCalendars(std::string_view prefolder, std::string_view fld,
                                                      std::string_view path) {
  KeyedList<std::string> calendars;
  std::vector<std::string> namesOfEarlierFiles;
  for (const std::string& file : CalendarFilesOf(path)) {
    databaseFile_ = file;
    if (!FileExists(file)) continue;
    // What is there and can't be read hides what an earlier program left: that is to be neither shown nor
    // changed in its place.
    const auto found = FindCalendars(fld);
    if (!found) break;
    for (const auto& [name, id] : *found) {
      if (fld != "*") {
        calendars.Add(id);
        return calendars;
      }
      if (std::ranges::find(namesOfEarlierFiles, name) != namesOfEarlierFiles.end()) continue;
      const std::string address = std::string(prefolder) + CalendarSegment(name) + '/';
      calendars.Add(JoinDiscoveryEntry({name, address, id}));
    }
    std::ranges::transform(*found, std::back_inserter(namesOfEarlierFiles), &NamedCalendar::name);
  }
  return calendars;
}

std::optional<std::vector<Location_Sunbird::NamedCalendar>> Location_Sunbird::FindCalendars(
    std::string_view wanted) {
  const HostDatabasePtr db = HostObjects::Current().NewDatabase();
  if (!ConnectDatabase(*db)) return std::nullopt;
  std::vector<NamedCalendar> calendars;
  const HostRecordsetPtr rows =
      db->Query("SELECT calendar, value FROM cal_calendars_prefs WHERE name='name'", kQuery);
  for (rows->MoveFirst(); !rows->EndOfRows(); rows->MoveNext()) {
    const std::string name = rows->Field("value");
    if (wanted != "*" && wanted != name) continue;
    calendars.push_back({name, rows->Field("calendar")});
    if (wanted != "*") break;
  }
  db->Close();
  return calendars;
}

// The disks stand last among all profiles, and alone for their own name.
KeyedList<std::string> Location_Sunbird::Profiles(std::string_view prefix, std::string_view filter) const {
  KeyedList<std::string> profiles = GetMozillaProfiles(prefix, filter, scheme_->appFolder);
  if (CurrentRules().disksProfile == DisksProfile::Everywhere) return profiles;
  const bool endsWithDisks = filter == "*" || (filter == kDisks && profiles.Item(1) == kDisks);
  if (endsWithDisks) profiles.Remove(profiles.Count());
  return profiles;
}

bool Location_Sunbird::ReadAllProfiles() {
  for (const std::string& entry : Profiles("", "*")) {
    if (!ReadProfile(NameOfDiscoveryEntry(entry), "", Tree())) return false;
  }
  return true;
}

bool Location_Sunbird::ReadProfile(std::string_view profile, std::string path, TreePtr tree) {
  const KeyedList<std::string> profiles = Profiles("", profile);
  if (profiles.IsEmpty()) {
    TellMissingProfile(profile);
    return false;
  }
  const std::string& folder = profiles.Item(1);
  const std::string name = CalendarOfSegment(CutToken(path, "/"));
  if (!name.empty() && name != "*") return ReadShownCalendar(folder, name, *tree);
  for (const std::string& entry : GetCalendars("", "*", folder)) {
    if (!ReadShownCalendar(folder, SplitDiscoveryEntry(entry).text, *tree)) return false;
  }
  return true;
}

// A calendar's node selects by the data field that each of its items carries.
bool Location_Sunbird::ReadShownCalendar(std::string_view folder, const std::string& name,
                                         vorlent::Tree& tree) {
  tree.AddChild("Calendar '" + name + "'", "Calendar=" + name);
  return ReadCalendar(folder, name);
}

bool Location_Sunbird::ReadCalendar(std::string_view folder, const std::string& name) {
  const KeyedList<std::string> ids = GetCalendars("", name, folder);
  if (ids.IsEmpty()) return false;
  calendarId_ = ids.Item(1);
  const HostDatabasePtr db = HostObjects::Current().NewDatabase();
  if (!ConnectDatabase(*db)) return true;
  ReadEvents(*db, name);
  ReadTasks(*db, name);
  db->Close();
  return true;
}

void Location_Sunbird::ReadEvents(HostDatabase& db, const std::string& name) {
  const HostRecordsetPtr rows = db.Query(
      "SELECT time_created/1000000 As created, last_modified/1000000 As modified, title, "
      "event_start/1000000 AS start, event_end/1000000 As ende, id FROM cal_events WHERE cal_id=" +
          CalendarCondition(),
      kQuery);
  for (rows->MoveFirst(); !rows->EndOfRows(); rows->MoveNext())
    PasteRow(*rows, name, [&] { return EventRecord(db, *rows, name); });
}

void Location_Sunbird::ReadTasks(HostDatabase& db, const std::string& name) {
  const HostRecordsetPtr rows = db.Query(
      "SELECT time_created/1000000 As created, last_modified/1000000 As modified, title, id FROM cal_todos "
      "WHERE cal_id=" +
          CalendarCondition(),
      kQuery);
  for (rows->MoveFirst(); !rows->EndOfRows(); rows->MoveNext())
    PasteRow(*rows, name, [&] { return TaskRecord(*rows, name); });
}

std::string Location_Sunbird::EventRecord(HostDatabase& db, HostRecordset& row, const std::string& calendar) {
  const std::string id = row.Field("id");
  const std::string location = ReadLocation(db, id);
  const std::string start = LocalMinute(row, "start");
  const std::string end = EventEnd(row, calendar, start);
  const std::string log = LogValue(row);
  std::string record;
  AppendField(record, record_key::kId, CalendarFieldValue(id));
  AppendField(record, record_key::kType, "termin");
  AppendField(record, record_key::kText, EscapeValue(row.Field("title")));
  AppendField(record, record_key::kDate, start);
  AppendDataField(record, data_key::kDateEnd, end);
  AppendDataField(record, data_key::kLocation, EscapeValue(location));
  AppendDataField(record, data_key::kCalendar, CalendarFieldValue(calendar));
  AppendField(record, record_key::kLog, log);
  return record;
}

// An end that can't be shown hides no event: it is told, and the event ends as it begins.
std::string Location_Sunbird::EventEnd(HostRecordset& row, const std::string& name,
                                       const std::string& start) {
  try {
    return LocalMinute(row, "ende");
  } catch (const Failure& failure) {
    if (!BrokenItemsAreNamed()) throw;
    TellUnreadable(row, name, failure, "Ende: ");
    return start;
  }
}

// One that can't be shown is told by its calendar and its ID, or title, and hides none of the others.
template <class MakeRecord>
void Location_Sunbird::PasteRow(HostRecordset& row, const std::string& name, MakeRecord makeRecord) {
  std::string record;
  try {
    if (BrokenItemsAreNamed() && row.Field("id").empty())
      throw Failure(ErrorNumber::TypeMismatch, "keine ID");
    record = makeRecord();
  } catch (const Failure& failure) {
    if (!BrokenItemsAreNamed()) throw;
    TellUnreadable(row, name, failure);
    return;
  }
  PasteItem(record, false);
}

void Location_Sunbird::TellUnreadable(HostRecordset& row, const std::string& name, const Failure& failure,
                                      std::string_view what) const {
  const std::string id = row.Field("id");
  const std::string item = id.empty() ? "'" + row.Field("title") + "'" : "ID " + id;
  const std::string reason = std::string(what) + failure.Reason();
  frame::ReportUnreadable(
      {databaseFile_, "Kalender '" + name + "', " + item + ": " + reason, failure.Why().hint});
}

// Calendar 1 also shows the rows of calendar 0, under which its own are written.
std::string Location_Sunbird::CalendarCondition() const {
  return calendarId_ == "1" ? calendarId_ + " OR cal_id=0" : calendarId_;
}

bool Location_Sunbird::ConnectDatabase(HostDatabase& db) {
  const std::string connection = "Driver={SQLite3 ODBC Driver};Database=" + databaseFile_ + ";Timeout=2000";
  const bool connected = db.Open("ODBC", connection);
  LogDatabase(std::string("DBConnect: ") + (connected ? "True" : "False") + " (" + connection + ")");
  HostLocation().ErrorFactory()->Error()->Raise(connected ? kDone : kFailed, kProgId, connected, connection);
  return connected;
}

void Location_Sunbird::ExecuteSql(HostDatabase& db, const CalendarSql& sql) {
  bool done = false;
  const std::string number = std::to_string(SwallowedNumber([&] {
    if (sql.IsSpoiled()) throw Failure(kInvalidStatement, "a value ends its place: " + sql.Text());
    done = db.Execute(sql.Text());
  }));
  Swallow([&] { LogDatabase(number + "<-" + sql.Text()); });
  Swallow([&] {
    HostLocation().ErrorFactory()->Error()->Raise(kDone, kProgId, done, sql.Text() + " -> " + number);
  });
}

}  // namespace vorlent
