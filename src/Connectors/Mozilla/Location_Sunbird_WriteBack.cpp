// The calendar connector's second half: the host's changes, repeated in the database.
#include <algorithm>
#include <array>
#include <utility>

#include "Common/StdTime.h"
#include "Connectors/Mozilla/Location_Sunbird.h"

namespace vorlent {

namespace {

// The numbers that the host's action names have here; those of all other actions are the host's own matter.
constexpr std::int32_t kInsertAction = 37;
constexpr std::int32_t kRemoveAction = 38;

// The time zone that every inserted event gets, whatever the machine's zone.
constexpr std::string_view kTimeZoneId = "/mozilla.org/20050126_1/Europe/Berlin";

// Microseconds since 1970 in UTC of a local date text, as decimal text.
std::string StoredTime(std::string_view date) {
  return std::to_string(StampToEpoch(DisplayToStamp(LocalToUtcText(date)))) + "000000";
}

std::string TableOf(const Item& item) {
  return item.Type() == "termin" ? "cal_events" : "cal_todos";
}

std::string RowDeletion(const std::string& table, const std::string& id) {
  return "DELETE FROM " + table + " WHERE id='" + id + "';";
}

std::string PropertiesDeletion(const std::string& id) {
  return "DELETE FROM cal_properties WHERE item_id='" + id + "';";
}

std::string LocationInsertion(const std::string& id, const std::string& location) {
  return "INSERT INTO cal_properties (item_id,key,value) VALUES ('" + id + "','LOCATION','" + location +
         "');";
}

// The host has always been asked for the creation, too, although no column gets it.
void ConvertCreation(const Item& item) {
  Swallow([&] { static_cast<void>(StoredTime(item.DateCreated())); });
}

}  // namespace

void Location_Sunbird::Pasted(const ItemPtr& item, std::string_view import) {
  RedoAction(item, NowStamp(), kInsertAction, import);
}

bool Location_Sunbird::Withdraw(const ItemPtr& item) {
  RedoAction(item, NowStamp(), kRemoveAction);
  const HostDatabasePtr db = HostObjects::Current().NewDatabase();
  const bool connected = ConnectDatabase(*db);
  if (connected) {
    ExecuteSql(*db, RowDeletion(TableOf(*item), item->ID()));
    ExecuteSql(*db, PropertiesDeletion(item->ID()));
    db->Close();
  }
  ItemStore().Remove(item->ID());
  return connected;
}

void Location_Sunbird::RedoAction(const ItemPtr& itm, std::string_view zeit, std::int32_t msg,
                                  std::string_view Value) {
  std::string id;
  Swallow([&] { id = Require(itm).ID(); });
  if (IsNothing(itm) || id == "parameter") return;
  HostGlobal& global = HostObjects::Current().Global();
  std::string name;
  Swallow([&] { name = global.ActionName(msg); });
  Swallow([&] {
    const std::string value = Value.empty() ? std::string() : "=" + std::string(Value);
    global.Report(report::kDatabaseLog,
                  "RedoAction: " + std::string(zeit) + ' ' + id + ' ' + name + value + ": " + itm->FullText(),
                  nullptr);
  });
  const Action action = FindAction(name);
  if (action == nullptr) return;
  HostDatabasePtr db;
  bool connected = false;
  Swallow([&] { db = HostObjects::Current().NewDatabase(); });
  Swallow([&] { connected = HasObject(db) && ConnectDatabase(*db); });
  if (!connected) return;
  (this->*action)(*db, *itm, Value);
  Swallow([&] { db->Close(); });
}

Location_Sunbird::Action Location_Sunbird::FindAction(std::string_view name) {
  static constexpr std::array<std::pair<std::string_view, Action>, 5> kActions = {{
      {"ChangeText", &Location_Sunbird::ChangeText},
      {"ItemInsert", &Location_Sunbird::ItemInsert},
      {"ItemRemove", &Location_Sunbird::ItemRemove},
      {"Date", &Location_Sunbird::Date},
      {"DataSet", &Location_Sunbird::DataSet},
  }};
  const auto found =
      std::find_if(kActions.begin(), kActions.end(), [&](const auto& known) { return known.first == name; });
  return found == kActions.end() ? nullptr : found->second;
}

void Location_Sunbird::ChangeText(HostDatabase& db, vorlent::Item& item, std::string_view) {
  Swallow([&] {
    ExecuteSql(db, "UPDATE " + TableOf(item) + " SET title='" + item.Text() + "', last_modified=" +
                       StoredTime(item.DateModified()) + " WHERE id='" + item.ID() + "';");
  });
}

void Location_Sunbird::ItemRemove(HostDatabase& db, vorlent::Item& item, std::string_view) {
  Swallow([&] { ExecuteSql(db, PropertiesDeletion(item.ID())); });
  Swallow([&] { ExecuteSql(db, RowDeletion(TableOf(item), item.ID())); });
}

void Location_Sunbird::ItemInsert(HostDatabase& db, vorlent::Item& item, std::string_view) {
  std::string type;
  Swallow([&] { type = item.Type(); });
  if (type == "termin") InsertEvent(db, item);
  if (type == "task") InsertTask(db, item);
}

// An insert is a replacement. A time that can't be worked out leaves a gap that spoils the last statement:
// the old row is gone then, and the log tells.
void Location_Sunbird::InsertEvent(HostDatabase& db, vorlent::Item& item) {
  std::string start;
  std::string end;
  std::string modified;
  Swallow([&] { start = StoredTime(item.Date()); });
  Swallow([&] { end = StoredTime(item.DataText("DateEnd")); });
  Swallow([&] { modified = StoredTime(item.DateModified()); });
  ConvertCreation(item);
  Swallow([&] { ExecuteSql(db, RowDeletion("cal_events", item.ID())); });
  Swallow([&] { ExecuteSql(db, PropertiesDeletion(item.ID())); });
  Swallow([&] {
    const std::string zone = "'" + std::string(kTimeZoneId) + "'";
    ExecuteSql(db,
               "INSERT INTO cal_events (id, cal_id, title, event_start, event_end, last_modified, "
               "time_created, flags, event_start_tz, event_end_tz) VALUES ('" +
                   item.ID() + "', " + InsertedCalendarId() + ", '" + item.Text() + "', " + start + ", " +
                   end + ", " + modified + ", " + modified + ", 4, " + zone + ", " + zone + ");");
  });
  Swallow([&] {
    const std::string location = item.DataText("Location");
    if (!location.empty()) ExecuteSql(db, LocationInsertion(item.ID(), location));
  });
}

void Location_Sunbird::InsertTask(HostDatabase& db, vorlent::Item& item) {
  std::string modified;
  ConvertCreation(item);
  Swallow([&] { modified = StoredTime(item.DateModified()); });
  Swallow([&] { ExecuteSql(db, RowDeletion("cal_todos", item.ID())); });
  Swallow([&] { ExecuteSql(db, PropertiesDeletion(item.ID())); });
  Swallow([&] {
    ExecuteSql(db, "INSERT INTO cal_todos (id, cal_id, title, last_modified, time_created, flags) VALUES ('" +
                       item.ID() + "', " + InsertedCalendarId() + ", '" + item.Text() + "', " + modified +
                       ", " + modified + ", 4);");
  });
}

// What calendar 1 is read with besides its own rows.
std::string Location_Sunbird::InsertedCalendarId() const {
  return calendarId_ == "1" ? "0" : calendarId_;
}

void Location_Sunbird::Date(HostDatabase& db, vorlent::Item& item, std::string_view) {
  Swallow([&] {
    if (item.Type() != "termin") return;
    ExecuteSql(db, "UPDATE cal_events SET event_start=" + StoredTime(item.Date()) + ", last_modified=" +
                       StoredTime(item.DateModified()) + " WHERE id='" + item.ID() + "';");
  });
}

// A changed location is added behind the old one, which stays: the deletion names the new value.
void Location_Sunbird::DataSet(HostDatabase& db, vorlent::Item& item, std::string_view value) {
  const std::string key = PeekToken(value, "=");
  bool isEvent = false;
  Swallow([&] { isEvent = item.Type() == "termin"; });
  if (!isEvent) return;
  Swallow([&] {
    const std::string part =
        key == "DateEnd" ? "event_end=" + StoredTime(item.DataText("DateEnd")) + ", " : std::string();
    ExecuteSql(db, "UPDATE cal_events SET " + part + "last_modified=" + StoredTime(item.DateModified()) +
                       " WHERE id='" + item.ID() + "';");
  });
  if (key != "Location") return;
  Swallow([&] {
    ExecuteSql(db, "DELETE FROM cal_properties WHERE item_id='" + item.ID() +
                       "' AND key='LOCATION' AND value='" + item.DataText("Location") + "';");
  });
  Swallow([&] { ExecuteSql(db, LocationInsertion(item.ID(), item.DataText("Location"))); });
}

}  // namespace vorlent
