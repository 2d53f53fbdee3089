// The calendar connector's second half: the host's changes, repeated in the database.
#include <algorithm>
#include <array>
#include <utility>

#include "Common/StdTime.h"
#include "Connectors/Mozilla/CalendarFiles.h"
#include "Connectors/Mozilla/CalendarSql.h"
#include "Connectors/Mozilla/Location_Sunbird.h"
#include "Host/RecordKeys.h"

namespace vorlent {

namespace {

using Form = CalendarSql::Form;

// The numbers that the host's action names have here; those of all other actions are the host's own matter.
constexpr std::int32_t kInsertAction = 37;
constexpr std::int32_t kRemoveAction = 38;

// Microseconds since 1970 in UTC of a local date text, as decimal text.
std::string StoredTime(std::string_view date) {
  return std::to_string(CalendarSeconds(date)) + "000000";
}

std::string TableOf(const Item& item) {
  return item.Type() == "termin" ? "cal_events" : "cal_todos";
}

CalendarSql ItemDeletion(const std::string& table, const Item& item) {
  return CalendarSql::Of<Form::DeleteItem>({table, item.ID()});
}

CalendarSql PropertiesDeletion(const Item& item) {
  return CalendarSql::Of<Form::DeleteProperties>({item.ID()});
}

CalendarSql LocationInsertion(const Item& item, const std::string& location) {
  return CalendarSql::Of<Form::InsertLocation>({item.ID(), location});
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
    ExecuteSql(*db, ItemDeletion(TableOf(*item), *item));
    ExecuteSql(*db, PropertiesDeletion(*item));
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
    ExecuteSql(db, CalendarSql::Of<Form::ChangeTitle>(
                       {TableOf(item), item.Text(), StoredTime(item.DateModified()), item.ID()}));
  });
}

void Location_Sunbird::ItemRemove(HostDatabase& db, vorlent::Item& item, std::string_view) {
  Swallow([&] { ExecuteSql(db, PropertiesDeletion(item)); });
  Swallow([&] { ExecuteSql(db, ItemDeletion(TableOf(item), item)); });
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
  Swallow([&] { end = StoredTime(item.DataText(data_key::kDateEnd)); });
  Swallow([&] { modified = StoredTime(item.DateModified()); });
  ConvertCreation(item);
  Swallow([&] { ExecuteSql(db, ItemDeletion("cal_events", item)); });
  Swallow([&] { ExecuteSql(db, PropertiesDeletion(item)); });
  Swallow([&] {
    ExecuteSql(db, CalendarSql::Of<Form::InsertEvent>(
                       {item.ID(), InsertedCalendarId(), item.Text(), start, end, modified, modified}));
  });
  Swallow([&] {
    const std::string location = item.DataText(data_key::kLocation);
    if (!location.empty()) ExecuteSql(db, LocationInsertion(item, location));
  });
}

void Location_Sunbird::InsertTask(HostDatabase& db, vorlent::Item& item) {
  std::string modified;
  ConvertCreation(item);
  Swallow([&] { modified = StoredTime(item.DateModified()); });
  Swallow([&] { ExecuteSql(db, ItemDeletion("cal_todos", item)); });
  Swallow([&] { ExecuteSql(db, PropertiesDeletion(item)); });
  Swallow([&] {
    ExecuteSql(db, CalendarSql::Of<Form::InsertTask>(
                       {item.ID(), InsertedCalendarId(), item.Text(), modified, modified}));
  });
}

// What calendar 1 is read with besides its own rows.
std::string Location_Sunbird::InsertedCalendarId() const {
  return calendarId_ == "1" ? "0" : calendarId_;
}

void Location_Sunbird::Date(HostDatabase& db, vorlent::Item& item, std::string_view) {
  Swallow([&] {
    if (item.Type() != "termin") return;
    ExecuteSql(db, CalendarSql::Of<Form::ChangeStart>(
                       {StoredTime(item.Date()), StoredTime(item.DateModified()), item.ID()}));
  });
}

// A changed location is added after the old one, which stays: the deletion names the new value.
void Location_Sunbird::DataSet(HostDatabase& db, vorlent::Item& item, std::string_view value) {
  const std::string key = PeekToken(value, "=");
  bool isEvent = false;
  Swallow([&] { isEvent = item.Type() == "termin"; });
  if (!isEvent) return;
  Swallow([&] {
    if (key == data_key::kDateEnd) {
      ExecuteSql(db, CalendarSql::Of<Form::ChangeEnd>({StoredTime(item.DataText(data_key::kDateEnd)),
                                                       StoredTime(item.DateModified()), item.ID()}));
    } else {
      ExecuteSql(db, CalendarSql::Of<Form::ChangeTime>({StoredTime(item.DateModified()), item.ID()}));
    }
  });
  if (key != data_key::kLocation) return;
  Swallow([&] {
    ExecuteSql(db, CalendarSql::Of<Form::DeleteLocation>({item.ID(), item.DataText(data_key::kLocation)}));
  });
  Swallow([&] { ExecuteSql(db, LocationInsertion(item, item.DataText(data_key::kLocation))); });
}

}  // namespace vorlent
