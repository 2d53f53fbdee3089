#include "Standalone/LightningTables.h"

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <string_view>

#include "Common/StdModul.h"
#include "Common/TextHash.h"
#include "Standalone/LightningTimes.h"

namespace vorlent {

namespace {

// A trigger in the way of a view can't name the table of the same name behind it, so it notes what is to be
// done.
constexpr char kNotes[] = R"sql(
PRAGMA temp_store=MEMORY;
CREATE TEMP TABLE calendars(number INTEGER PRIMARY KEY, place INTEGER, uuid TEXT UNIQUE, name TEXT,
  zone TEXT);
CREATE TEMP TABLE renamed(uuid TEXT, id TEXT, shown TEXT, PRIMARY KEY(uuid, id)) WITHOUT ROWID;
CREATE TEMP TABLE notes(what TEXT, row INTEGER, uuid TEXT, id TEXT, title TEXT, time INTEGER, until INTEGER,
  changed INTEGER, made INTEGER, zone TEXT, key TEXT, value);
)sql";

// Calendars of equal names are told apart, and so are items of equal IDs.
constexpr char kCalendarsOfRows[] = R"sql(
SELECT DISTINCT cal_id FROM main.cal_events UNION SELECT DISTINCT cal_id FROM main.cal_todos ORDER BY 1
)sql";

constexpr char kRenaming[] = R"sql(
INSERT INTO renamed
SELECT uuid, id, id || '~' || nth
FROM (SELECT c.uuid, i.id, row_number() OVER (PARTITION BY i.id ORDER BY c.place) AS nth
      FROM (SELECT cal_id, id FROM main.cal_events WHERE recurrence_id IS NULL
            UNION SELECT cal_id, id FROM main.cal_todos WHERE recurrence_id IS NULL) i
      JOIN calendars c ON c.uuid=i.cal_id)
WHERE nth > 1;
)sql";

// What was never told of an item's making and change is told by what was.
constexpr char kEvents[] = R"sql(
CREATE TEMP VIEW cal_calendars_prefs AS
SELECT number AS calendar, 'name' AS name, name AS value FROM calendars ORDER BY place;

CREATE TEMP VIEW cal_events AS
SELECT c.number AS cal_id,
  ifnull((SELECT shown FROM renamed r WHERE r.uuid=e.cal_id AND r.id=e.id), e.id) AS id,
  coalesce(e.time_created, e.last_modified, e.event_stamp, 0) AS time_created,
  coalesce(e.last_modified, e.time_created, e.event_stamp, 0) AS last_modified,
  e.title, e.flags,
  shown_start(e.event_start, e.event_start_tz, e.flags) AS event_start,
  shown_end(e.event_start, e.event_start_tz, e.event_end, e.event_end_tz, e.flags) AS event_end,
  e.event_start_tz, e.event_end_tz, e.rowid AS row, e.cal_id AS uuid, e.id AS own_id
FROM calendars c CROSS JOIN main.cal_events e NOT INDEXED ON e.cal_id=c.uuid
WHERE e.recurrence_id IS NULL AND ifnull(e.offline_journal, 0)<>4;

CREATE TEMP TRIGGER event_title INSTEAD OF UPDATE OF title ON cal_events BEGIN
  INSERT INTO notes(what, row, title) VALUES('event title', OLD.row, NEW.title);
END;
CREATE TEMP TRIGGER event_changed INSTEAD OF UPDATE OF last_modified ON cal_events BEGIN
  INSERT INTO notes(what, row, changed) VALUES('event changed', OLD.row, NEW.last_modified);
END;
CREATE TEMP TRIGGER event_start INSTEAD OF UPDATE OF event_start ON cal_events BEGIN
  SELECT raise(ABORT, 'a repeated event with changed or left out occurrences stays where it is')
  WHERE NEW.event_start IS NOT OLD.event_start AND ((OLD.flags & 32)<>0 OR EXISTS
    (SELECT 1 FROM main.cal_recurrence
     WHERE cal_id=OLD.uuid AND item_id=OLD.own_id AND icalString NOT LIKE 'RRULE%'));
  INSERT INTO notes(what, row, uuid, id, time)
  VALUES('event start', OLD.row, OLD.uuid, OLD.own_id, NEW.event_start);
END;
CREATE TEMP TRIGGER event_end INSTEAD OF UPDATE OF event_end ON cal_events BEGIN
  INSERT INTO notes(what, row, uuid, id, until)
  VALUES('event end', OLD.row, OLD.uuid, OLD.own_id, NEW.event_end);
END;
CREATE TEMP TRIGGER event_gone INSTEAD OF DELETE ON cal_events BEGIN
  INSERT INTO notes(what, uuid, id) VALUES('event gone', OLD.uuid, OLD.own_id);
END;
CREATE TEMP TRIGGER new_event INSTEAD OF INSERT ON cal_events BEGIN
  SELECT raise(ABORT, 'no such calendar') WHERE NEW.cal_id NOT IN (SELECT number FROM calendars);
  INSERT INTO notes(what, uuid, id, title, time, until, changed, made, zone)
  SELECT 'new event', uuid, NEW.id, NEW.title, NEW.event_start, NEW.event_end, NEW.last_modified,
    NEW.time_created, zone FROM calendars WHERE number=NEW.cal_id;
END;
)sql";

constexpr char kTodos[] = R"sql(
CREATE TEMP VIEW cal_todos AS
SELECT c.number AS cal_id,
  ifnull((SELECT shown FROM renamed r WHERE r.uuid=t.cal_id AND r.id=t.id), t.id) AS id,
  coalesce(t.time_created, t.last_modified, t.todo_stamp, 0) AS time_created,
  coalesce(t.last_modified, t.time_created, t.todo_stamp, 0) AS last_modified,
  t.title, t.flags, t.rowid AS row, t.cal_id AS uuid, t.id AS own_id
FROM calendars c CROSS JOIN main.cal_todos t NOT INDEXED ON t.cal_id=c.uuid
WHERE t.recurrence_id IS NULL AND ifnull(t.offline_journal, 0)<>4;

CREATE TEMP TRIGGER todo_title INSTEAD OF UPDATE OF title ON cal_todos BEGIN
  INSERT INTO notes(what, row, title) VALUES('todo title', OLD.row, NEW.title);
END;
CREATE TEMP TRIGGER todo_changed INSTEAD OF UPDATE OF last_modified ON cal_todos BEGIN
  INSERT INTO notes(what, row, changed) VALUES('todo changed', OLD.row, NEW.last_modified);
END;
CREATE TEMP TRIGGER todo_gone INSTEAD OF DELETE ON cal_todos BEGIN
  INSERT INTO notes(what, uuid, id) VALUES('todo gone', OLD.uuid, OLD.own_id);
END;
CREATE TEMP TRIGGER new_todo INSTEAD OF INSERT ON cal_todos BEGIN
  SELECT raise(ABORT, 'no such calendar') WHERE NEW.cal_id NOT IN (SELECT number FROM calendars);
  INSERT INTO notes(what, uuid, id, title, changed, made)
  SELECT 'new todo', uuid, NEW.id, NEW.title, NEW.last_modified, NEW.time_created
  FROM calendars WHERE number=NEW.cal_id;
END;
)sql";

// Each half finds the properties of one item by the file's index.
constexpr char kProperties[] = R"sql(
CREATE TEMP VIEW cal_properties AS
SELECT p.item_id AS item_id, p.key AS key, p.value AS value, p.rowid AS row
FROM calendars c CROSS JOIN main.cal_properties p ON p.cal_id=c.uuid
WHERE p.recurrence_id IS NULL
  AND NOT EXISTS (SELECT 1 FROM renamed r WHERE r.uuid=p.cal_id AND r.id=p.item_id)
UNION ALL
SELECT r.shown, p.key, p.value, p.rowid
FROM renamed r CROSS JOIN main.cal_properties p ON p.cal_id=r.uuid AND p.item_id=r.id
WHERE p.recurrence_id IS NULL;

CREATE TEMP TRIGGER property_gone INSTEAD OF DELETE ON cal_properties BEGIN
  INSERT INTO notes(what, row) VALUES('property gone', OLD.row);
END;
CREATE TEMP TRIGGER new_property INSTEAD OF INSERT ON cal_properties BEGIN
  INSERT INTO notes(what, uuid, id, key, value)
  SELECT 'new property', uuid, own_id, NEW.key, NEW.value FROM cal_events WHERE id=NEW.item_id
  UNION SELECT 'new property', uuid, own_id, NEW.key, NEW.value FROM cal_todos WHERE id=NEW.item_id;
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
    "DELETE FROM main.cal_properties WHERE rowid IN (SELECT row FROM notes WHERE what='property gone')",
    // An item has one value of each property.
    "DELETE FROM main.cal_properties WHERE recurrence_id IS NULL AND (cal_id, item_id, key) IN "
    "(SELECT uuid, id, key FROM notes WHERE what='new property')",
    "INSERT INTO main.cal_properties(cal_id, item_id, key, value) SELECT uuid, id, key, value FROM notes "
    "WHERE what='new property' AND value<>''",
    "UPDATE main.cal_events AS e SET flags=ifnull(e.flags, 0) | 4 FROM notes n "
    "WHERE n.what='new property' AND e.cal_id=n.uuid AND e.id=n.id AND e.recurrence_id IS NULL",
    "UPDATE main.cal_todos AS t SET flags=ifnull(t.flags, 0) | 4 FROM notes n "
    "WHERE n.what='new property' AND t.cal_id=n.uuid AND t.id=n.id AND t.recurrence_id IS NULL",
    "DELETE FROM main.cal_events WHERE (cal_id, id) IN (SELECT uuid, id FROM notes WHERE what='event gone')",
    "DELETE FROM main.cal_todos WHERE (cal_id, id) IN (SELECT uuid, id FROM notes WHERE what='todo gone')",
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
    registry.calendars.push_back({std::string(rows.Text(0)), {}});
  return registry;
}

void AddCalendars(SqliteDatabase& database, const LightningRegistry& registry) {
  const std::string zone = registry.zone.empty() ? "UTC" : registry.zone;
  std::set<std::string> taken;
  std::int64_t place = 0;
  SqliteStatement add(database, "INSERT OR IGNORE INTO calendars VALUES(?, ?, ?, ?, ?)");
  for (const LightningCalendar& calendar : registry.calendars) {
    const std::string name = TellingName(calendar, taken);
    add.Bind(1, NumberOf(calendar.id)).Bind(2, place++).Bind(3, calendar.id).Bind(4, name).Bind(5, zone);
    add.Run();
  }
}

bool HasTable(SqliteDatabase& database, std::string_view name) {
  SqliteStatement rows(database, "SELECT count(*) FROM main.sqlite_master WHERE type='table' AND name=?");
  rows.Bind(1, name);
  return rows.RunForNumber() > 0;
}

}  // namespace

void AddTablesOfOld(SqliteDatabase& database, const LightningRegistry& registry) {
  AddLightningTimes(database);
  database.Execute(kNotes);
  AddCalendars(database, registry.calendars.empty() ? CalendarsOfRows(database, registry.zone) : registry);
  for (const char* statements : {kRenaming, kEvents, kTodos, kProperties})
    database.Execute(statements);
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
