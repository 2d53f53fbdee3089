#include "Standalone/LightningTables.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/StdModul.h"
#include "Common/TextHash.h"
#include "Standalone/LightningTimes.h"

namespace vorlent {

namespace {

// A trigger in the way of a view can't name the table of the same name behind it, so it notes what is to be
// done. `shown` has the items that are shown; a row of it without a name is an item without an ID. Items of
// one calendar and ID have their properties in common, but for those that Thunderbird's flag denies them to:
// `properties` tells whether an item has its own, shared ones or none. `common` names the shared ones, of
// each kind the first.
constexpr char kNotes[] = R"sql(
PRAGMA temp_store=MEMORY;
CREATE TEMP TABLE calendars(number INTEGER PRIMARY KEY, place INTEGER, uuid TEXT UNIQUE, name TEXT,
  zone TEXT, readonly INTEGER);
CREATE TEMP TABLE shown(number INTEGER, task INTEGER, row INTEGER, uuid TEXT, id, name TEXT, flagged INTEGER,
  properties TEXT DEFAULT 'own', PRIMARY KEY(number, task, row)) WITHOUT ROWID;
CREATE TEMP TABLE common(name TEXT, row INTEGER);
CREATE TEMP TABLE notes(what TEXT, row INTEGER, uuid TEXT, id, name TEXT, title TEXT, time INTEGER,
  until INTEGER, changed INTEGER, made INTEGER, zone TEXT, key TEXT, value);
CREATE TEMP TRIGGER only_reading BEFORE INSERT ON notes
WHEN EXISTS (SELECT 1 FROM calendars WHERE uuid=NEW.uuid AND readonly)
BEGIN SELECT raise(ABORT, 'the calendar is set to be read only'); END;
)sql";

constexpr char kCalendarsOfRows[] = R"sql(
SELECT DISTINCT cal_id FROM main.cal_events UNION SELECT DISTINCT cal_id FROM main.cal_todos ORDER BY 1
)sql";

// In the order in which earlier ones have the first choice of names.
constexpr char kItems[] = R"sql(
SELECT c.number, i.task, i.row, i.uuid, i.id
FROM (SELECT 0 AS task, rowid AS row, cal_id AS uuid, id FROM main.cal_events
      WHERE recurrence_id IS NULL AND ifnull(offline_journal, 0)<>4
      UNION ALL SELECT 1, rowid, cal_id, id FROM main.cal_todos
      WHERE recurrence_id IS NULL AND ifnull(offline_journal, 0)<>4) i
JOIN calendars c ON c.uuid=i.uuid
ORDER BY c.place, i.task, i.row
)sql";

// What was never told of an item's making and change is told by what was. Rows that have become another
// item's since they were named aren't shown.
constexpr char kEvents[] = R"sql(
CREATE INDEX temp.shown_names ON shown(name);

CREATE TEMP VIEW cal_calendars_prefs AS
SELECT number AS calendar, 'name' AS name, name AS value FROM calendars ORDER BY place;

CREATE TEMP VIEW cal_events AS
SELECT s.number AS cal_id, s.name AS id,
  coalesce(shown_time(e.time_created), shown_time(e.last_modified), shown_time(e.event_stamp), 0)
    AS time_created,
  coalesce(shown_time(e.last_modified), shown_time(e.time_created), shown_time(e.event_stamp), 0)
    AS last_modified,
  e.title, e.flags,
  shown_start(e.event_start, e.event_start_tz, e.flags) AS event_start,
  shown_end(e.event_start, e.event_start_tz, e.event_end, e.event_end_tz, e.flags) AS event_end,
  e.event_start_tz, e.event_end_tz, s.row AS row, s.uuid AS uuid, s.id AS own_id
FROM shown s CROSS JOIN main.cal_events e ON e.rowid=s.row AND e.cal_id=s.uuid AND e.id IS s.id
WHERE s.task=0 AND e.recurrence_id IS NULL;

CREATE TEMP TRIGGER event_title INSTEAD OF UPDATE OF title ON cal_events BEGIN
  INSERT INTO notes(what, row, uuid, title) VALUES('event title', OLD.row, OLD.uuid, NEW.title);
END;
CREATE TEMP TRIGGER event_changed INSTEAD OF UPDATE OF last_modified ON cal_events BEGIN
  INSERT INTO notes(what, row, uuid, changed) VALUES('event changed', OLD.row, OLD.uuid, NEW.last_modified);
END;
CREATE TEMP TRIGGER event_start INSTEAD OF UPDATE OF event_start ON cal_events BEGIN
  SELECT raise(ABORT, 'a repeated event with changed or left out occurrences stays where it is')
  WHERE NEW.event_start IS NOT OLD.event_start AND ((OLD.flags & 32)<>0 OR EXISTS
    (SELECT 1 FROM main.cal_recurrence
     WHERE cal_id=OLD.uuid AND item_id=OLD.own_id AND icalString NOT LIKE 'RRULE%'));
  SELECT raise(ABORT, 'an event of whole days has no time of day')
  WHERE (OLD.flags & 8)<>0 AND NOT begins_day(NEW.event_start);
  INSERT INTO notes(what, row, uuid, id, time)
  VALUES('event start', OLD.row, OLD.uuid, OLD.own_id, NEW.event_start);
END;
CREATE TEMP TRIGGER event_end INSTEAD OF UPDATE OF event_end ON cal_events BEGIN
  SELECT raise(ABORT, 'an event of whole days has no time of day')
  WHERE (OLD.flags & 8)<>0 AND NOT begins_day(NEW.event_end);
  INSERT INTO notes(what, row, uuid, id, until)
  VALUES('event end', OLD.row, OLD.uuid, OLD.own_id, NEW.event_end);
END;
CREATE TEMP TRIGGER event_gone INSTEAD OF DELETE ON cal_events BEGIN
  INSERT INTO notes(what, row, uuid, id) VALUES('event gone', OLD.row, OLD.uuid, OLD.own_id);
END;
CREATE TEMP TRIGGER new_event INSTEAD OF INSERT ON cal_events BEGIN
  SELECT raise(ABORT, 'no such calendar') WHERE NEW.cal_id NOT IN (SELECT number FROM calendars);
  SELECT raise(ABORT, 'another item of the profile has this ID')
  WHERE EXISTS (SELECT 1 FROM shown WHERE name=NEW.id AND (number<>NEW.cal_id OR task<>0));
  INSERT INTO notes(what, uuid, id, name, title, time, until, changed, made, zone)
  SELECT 'new event', uuid, ifnull((SELECT id FROM shown WHERE name=NEW.id), NEW.id), NEW.id, NEW.title,
    NEW.event_start, NEW.event_end, NEW.last_modified, NEW.time_created, zone
  FROM calendars WHERE number=NEW.cal_id;
END;
)sql";

constexpr char kTodos[] = R"sql(
CREATE TEMP VIEW cal_todos AS
SELECT s.number AS cal_id, s.name AS id,
  coalesce(shown_time(t.time_created), shown_time(t.last_modified), shown_time(t.todo_stamp), 0)
    AS time_created,
  coalesce(shown_time(t.last_modified), shown_time(t.time_created), shown_time(t.todo_stamp), 0)
    AS last_modified,
  t.title, t.flags, s.row AS row, s.uuid AS uuid, s.id AS own_id
FROM shown s CROSS JOIN main.cal_todos t ON t.rowid=s.row AND t.cal_id=s.uuid AND t.id IS s.id
WHERE s.task=1 AND t.recurrence_id IS NULL;

CREATE TEMP TRIGGER todo_title INSTEAD OF UPDATE OF title ON cal_todos BEGIN
  INSERT INTO notes(what, row, uuid, title) VALUES('todo title', OLD.row, OLD.uuid, NEW.title);
END;
CREATE TEMP TRIGGER todo_changed INSTEAD OF UPDATE OF last_modified ON cal_todos BEGIN
  INSERT INTO notes(what, row, uuid, changed) VALUES('todo changed', OLD.row, OLD.uuid, NEW.last_modified);
END;
CREATE TEMP TRIGGER todo_gone INSTEAD OF DELETE ON cal_todos BEGIN
  INSERT INTO notes(what, row, uuid, id) VALUES('todo gone', OLD.row, OLD.uuid, OLD.own_id);
END;
CREATE TEMP TRIGGER new_todo INSTEAD OF INSERT ON cal_todos BEGIN
  SELECT raise(ABORT, 'no such calendar') WHERE NEW.cal_id NOT IN (SELECT number FROM calendars);
  SELECT raise(ABORT, 'another item of the profile has this ID')
  WHERE EXISTS (SELECT 1 FROM shown WHERE name=NEW.id AND (number<>NEW.cal_id OR task<>1));
  INSERT INTO notes(what, uuid, id, name, title, changed, made)
  SELECT 'new todo', uuid, ifnull((SELECT id FROM shown WHERE name=NEW.id), NEW.id), NEW.id, NEW.title,
    NEW.last_modified, NEW.time_created
  FROM calendars WHERE number=NEW.cal_id;
END;
)sql";

// Only one look at the properties of an ID: thousands of items may share them.
constexpr char kCommon[] = R"sql(
CREATE TEMP TABLE relatives AS
SELECT uuid, id, sum(flagged) AS owners FROM shown WHERE name IS NOT NULL GROUP BY uuid, id HAVING count(*)>1;

UPDATE shown SET properties=CASE WHEN r.owners>0 AND NOT shown.flagged THEN 'none'
                                 WHEN r.owners=1 THEN 'own' ELSE 'shared' END
FROM relatives r WHERE r.uuid=shown.uuid AND r.id=shown.id;

WITH firsts AS MATERIALIZED (
  SELECT p.cal_id AS uuid, p.item_id AS id, min(p.rowid) AS row
  FROM relatives r CROSS JOIN main.cal_properties p ON p.cal_id=r.uuid AND p.item_id=r.id
  WHERE p.recurrence_id IS NULL GROUP BY p.cal_id, p.item_id, p.key)
INSERT INTO common SELECT s.name, f.row FROM shown s JOIN firsts f ON f.uuid=s.uuid AND f.id=s.id
WHERE s.properties='shared';
CREATE INDEX temp.common_names ON common(name);
)sql";

constexpr char kOwnProperties[] = R"sql(
CREATE TEMP VIEW cal_properties AS
SELECT s.name AS item_id, p.key AS key, p.value AS value, p.rowid AS row, s.uuid AS uuid, 0 AS shared
FROM shown s CROSS JOIN main.cal_properties p ON p.cal_id=s.uuid AND p.item_id=s.id
WHERE s.properties='own' AND p.recurrence_id IS NULL
)sql";

// Follows that where there are some: each of thousands of queries takes its time to prepare.
constexpr char kAndSharedProperties[] = R"sql(
UNION ALL
SELECT c.name, p.key, p.value, p.rowid, p.cal_id, 1
FROM common c CROSS JOIN main.cal_properties p ON p.rowid=c.row
)sql";

// What is shared stays when one of the items goes.
constexpr char kPropertyTriggers[] = R"sql(
CREATE TEMP TRIGGER property_gone INSTEAD OF DELETE ON cal_properties BEGIN
  INSERT INTO notes(what, row, uuid) SELECT 'property gone', OLD.row, OLD.uuid WHERE NOT OLD.shared;
END;
CREATE TEMP TRIGGER new_property INSTEAD OF INSERT ON cal_properties BEGIN
  SELECT raise(ABORT, 'another item of this ID has the properties')
  FROM shown WHERE name=NEW.item_id AND properties='none';
  INSERT INTO notes(what, row, uuid, id, key, value)
  SELECT iif(task, 'new property of todo', 'new property of event'), row, uuid, id, NEW.key, NEW.value
  FROM shown WHERE name=NEW.item_id;
END;
)sql";

// What follows from each kind of note. A flag tells Thunderbird that an item has properties.
constexpr std::array kFollowing = {
    "UPDATE main.cal_events AS e SET title=n.title FROM notes n WHERE n.what='event title' AND e.rowid=n.row",
    "UPDATE main.cal_todos AS t SET title=n.title FROM notes n WHERE n.what='todo title' AND t.rowid=n.row",
    "UPDATE main.cal_events AS e SET last_modified=n.changed, event_stamp=n.changed FROM notes n "
    "WHERE n.what='event changed' AND e.rowid=n.row",
    "UPDATE main.cal_todos AS t SET last_modified=n.changed, todo_stamp=n.changed FROM notes n "
    "WHERE n.what='todo changed' AND t.rowid=n.row",
    "UPDATE main.cal_events AS e SET event_start=kept_start(n.time, e.event_start_tz, e.flags), "
    "event_start_tz=iif((e.flags & 8)<>0, 'floating', e.event_start_tz) FROM notes n "
    "WHERE n.what='event start' AND e.rowid=n.row",
    "UPDATE main.cal_events AS e SET event_end=kept_end(n.until, ifnull(e.event_end_tz, e.event_start_tz), "
    "e.flags), event_end_tz=iif((e.flags & 8)<>0, 'floating', ifnull(e.event_end_tz, e.event_start_tz)) "
    "FROM notes n WHERE n.what='event end' AND e.rowid=n.row",
    // A length that was told beside the times would hold no more.
    "DELETE FROM main.cal_properties WHERE key='DURATION' AND recurrence_id IS NULL AND (cal_id, item_id) IN "
    "(SELECT uuid, id FROM notes WHERE what IN ('event start', 'event end'))",
    "INSERT INTO main.cal_events(cal_id, id, title, event_start, event_end, last_modified, time_created, "
    "event_stamp, flags, event_start_tz, event_end_tz) "
    "SELECT uuid, id, title, time, until, changed, made, changed, 4, zone, zone FROM notes "
    "WHERE what='new event'",
    "INSERT INTO main.cal_todos(cal_id, id, title, last_modified, time_created, todo_stamp, flags) "
    "SELECT uuid, id, title, changed, made, changed, 4 FROM notes WHERE what='new todo'",
    "DELETE FROM shown WHERE name IN (SELECT name FROM notes WHERE what IN ('new event', 'new todo'))",
    "INSERT OR REPLACE INTO shown(number, task, row, uuid, id, name) "
    "SELECT c.number, 0, max(e.rowid), n.uuid, n.id, n.name "
    "FROM notes n JOIN calendars c ON c.uuid=n.uuid JOIN main.cal_events e ON e.id=n.id AND e.cal_id=n.uuid "
    "WHERE n.what='new event' AND e.recurrence_id IS NULL GROUP BY n.rowid",
    "INSERT OR REPLACE INTO shown(number, task, row, uuid, id, name) "
    "SELECT c.number, 1, max(t.rowid), n.uuid, n.id, n.name "
    "FROM notes n JOIN calendars c ON c.uuid=n.uuid JOIN main.cal_todos t ON t.id=n.id AND t.cal_id=n.uuid "
    "WHERE n.what='new todo' AND t.recurrence_id IS NULL GROUP BY n.rowid",
    "DELETE FROM main.cal_properties WHERE rowid IN (SELECT row FROM notes WHERE what='property gone')",
    // An item has one value of each property.
    "DELETE FROM main.cal_properties WHERE recurrence_id IS NULL AND (cal_id, item_id, key) IN "
    "(SELECT uuid, id, key FROM notes WHERE what LIKE 'new property%')",
    "INSERT INTO main.cal_properties(cal_id, item_id, key, value) SELECT uuid, id, key, value FROM notes "
    "WHERE what LIKE 'new property%' AND value<>''",
    "UPDATE main.cal_events SET flags=ifnull(flags, 0) | 4 "
    "WHERE rowid IN (SELECT row FROM notes WHERE what='new property of event')",
    "UPDATE main.cal_todos SET flags=ifnull(flags, 0) | 4 "
    "WHERE rowid IN (SELECT row FROM notes WHERE what='new property of todo')",
    "DELETE FROM main.cal_events WHERE rowid IN (SELECT row FROM notes WHERE what='event gone')",
    "DELETE FROM main.cal_todos WHERE rowid IN (SELECT row FROM notes WHERE what='todo gone')",
    // What another item of the same calendar and ID needs stays.
    "DELETE FROM notes WHERE what='event gone' AND EXISTS (SELECT 1 FROM main.cal_events e "
    "WHERE e.id=notes.id AND e.cal_id=notes.uuid AND e.recurrence_id IS NULL)",
    "DELETE FROM notes WHERE what='todo gone' AND EXISTS (SELECT 1 FROM main.cal_todos t "
    "WHERE t.id=notes.id AND t.cal_id=notes.uuid AND t.recurrence_id IS NULL)",
    "DELETE FROM main.cal_events WHERE (id, cal_id) IN (SELECT id, uuid FROM notes WHERE what='event gone')",
    "DELETE FROM main.cal_todos WHERE (id, cal_id) IN (SELECT id, uuid FROM notes WHERE what='todo gone')",
    "DELETE FROM notes WHERE what='event gone' AND EXISTS (SELECT 1 FROM main.cal_todos t "
    "WHERE t.id=notes.id AND t.cal_id=notes.uuid)",
    "DELETE FROM notes WHERE what='todo gone' AND EXISTS (SELECT 1 FROM main.cal_events e "
    "WHERE e.id=notes.id AND e.cal_id=notes.uuid)",
};

// What else tells of an item, and goes with it.
constexpr std::array kTablesBeside = {"cal_properties", "cal_parameters", "cal_recurrence",  "cal_attendees",
                                      "cal_alarms",     "cal_relations",  "cal_attachments", "cal_metadata"};

// Numbers beyond those that calendars of old have, and few enough for any reader of numbers.
std::int64_t NumberOf(std::string_view id) {
  constexpr int kSpared = 12;
  constexpr std::int64_t kFirst = 1000;
  TextHash hash;
  hash.Add(id);
  return kFirst + static_cast<std::int64_t>(hash.Value() >> kSpared);
}

// The name to tell a calendar by: its own, if that can stand in a list and an address, and no other has it.
std::string TellingName(const LightningCalendar& calendar, std::set<std::string>& taken) {
  std::string name = calendar.name;
  for (const char* lineEnd : {"\r", "\n"})
    ReplaceText(name, lineEnd, " ");
  if (name.empty() || name == "*") name = calendar.id;
  const std::string stem = name;
  for (int nth = 2; !taken.insert(name).second; ++nth)
    name = stem + '~' + std::to_string(nth);
  return name;
}

LightningRegistry CalendarsOfRows(SqliteDatabase& database, std::string zone) {
  LightningRegistry registry{.calendars = {}, .zone = std::move(zone)};
  SqliteStatement rows(database, kCalendarsOfRows);
  while (rows.Step())
    registry.calendars.push_back({.id = std::string(rows.Text(0)), .name = {}});
  return registry;
}

void AddCalendars(SqliteDatabase& database, const LightningRegistry& registry) {
  const std::string zone = registry.zone.empty() ? "UTC" : registry.zone;
  std::set<std::string> taken;
  std::int64_t place = 0;
  SqliteStatement add(database, "INSERT OR IGNORE INTO calendars VALUES(?, ?, ?, ?, ?, ?)");
  for (const LightningCalendar& calendar : registry.calendars) {
    const std::string name = TellingName(calendar, taken);
    add.Bind(1, NumberOf(calendar.id)).Bind(2, place++).Bind(3, calendar.id).Bind(4, name).Bind(5, zone);
    add.Bind(6, std::int64_t{calendar.isReadOnly}).Run();
  }
}

std::vector<LightningItem> ReadItems(SqliteDatabase& database) {
  std::vector<LightningItem> items;
  SqliteStatement rows(database, kItems);
  while (rows.Step()) {
    items.push_back({.calendarNumber = rows.Number(0),
                     .isTask = rows.Number(1) != 0,
                     .row = rows.Number(2),
                     .calendar = std::string(rows.Text(3)),
                     .id = std::string(rows.Text(4))});
  }
  return items;
}

void NameItems(SqliteDatabase& database, LightningNames& names) {
  std::vector<LightningItem> items = ReadItems(database);
  names.GiveNames(items);
  SqliteStatement event(database,
                        "INSERT INTO shown(number, task, row, uuid, id, name, flagged) "
                        "SELECT ?, 0, rowid, cal_id, id, nullif(?, ''), (ifnull(flags, 0) & 4)<>0 "
                        "FROM main.cal_events WHERE rowid=?");
  SqliteStatement task(database,
                       "INSERT INTO shown(number, task, row, uuid, id, name, flagged) "
                       "SELECT ?, 1, rowid, cal_id, id, nullif(?, ''), (ifnull(flags, 0) & 4)<>0 "
                       "FROM main.cal_todos WHERE rowid=?");
  for (const LightningItem& item : items) {
    SqliteStatement& add = item.isTask ? task : event;
    add.Bind(1, item.calendarNumber).Bind(2, item.name).Bind(3, item.row).Run();
  }
}

void AddProperties(SqliteDatabase& database) {
  database.Execute(kCommon);
  const bool areShared = SqliteStatement(database, "SELECT count(*) FROM common").RunForNumber() > 0;
  database.Execute(std::string(kOwnProperties) + (areShared ? kAndSharedProperties : ""));
  database.Execute(kPropertyTriggers);
}

bool HasTable(SqliteDatabase& database, std::string_view name) {
  SqliteStatement rows(database, "SELECT count(*) FROM main.sqlite_master WHERE type='table' AND name=?");
  rows.Bind(1, name);
  return rows.RunForNumber() > 0;
}

}  // namespace

void AddTablesOfOld(SqliteDatabase& database, const LightningRegistry& registry, LightningNames& names) {
  AddLightningTimes(database);
  database.Execute(kNotes);
  AddCalendars(database, registry.calendars.empty() ? CalendarsOfRows(database, registry.zone) : registry);
  NameItems(database, names);
  for (const char* statements : {kEvents, kTodos})
    database.Execute(statements);
  AddProperties(database);
}

void ApplyToThunderbirdsTables(SqliteDatabase& database) {
  for (const char* statement : kFollowing)
    SqliteStatement(database, statement).Run();
  for (const std::string table : kTablesBeside) {
    if (!HasTable(database, table)) continue;
    SqliteStatement(database, "DELETE FROM main." + table +
                                  " WHERE (cal_id, item_id) IN (SELECT uuid, id FROM "
                                  "notes WHERE what IN ('event gone', 'todo gone'))")
        .Run();
  }
  SqliteStatement(database, "DELETE FROM notes").Run();
}

}  // namespace vorlent
