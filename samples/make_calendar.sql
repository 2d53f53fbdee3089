-- A storage.sdb as Sunbird and Lightning keep it, with two calendars. Times are microseconds since 1970 in UTC.
PRAGMA encoding = 'UTF-8';
PRAGMA page_size = 1024;
BEGIN;

CREATE TABLE cal_calendar_schema_version (version INTEGER);
CREATE TABLE cal_calendars (id INTEGER PRIMARY KEY, type TEXT, uri TEXT);
CREATE TABLE cal_calendars_prefs (id INTEGER PRIMARY KEY, calendar INTEGER, name TEXT, value TEXT);
CREATE TABLE cal_events (
  cal_id INTEGER, id TEXT, time_created INTEGER, last_modified INTEGER, title TEXT, priority INTEGER, privacy TEXT,
  ical_status TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT, flags INTEGER, event_start INTEGER,
  event_start_tz TEXT, event_end INTEGER, event_end_tz TEXT, event_stamp INTEGER, alarm_time INTEGER,
  alarm_time_tz TEXT, alarm_offset INTEGER, alarm_related INTEGER, alarm_last_ack INTEGER);
CREATE TABLE cal_todos (
  cal_id INTEGER, id TEXT, time_created INTEGER, last_modified INTEGER, title TEXT, priority INTEGER, privacy TEXT,
  ical_status TEXT, recurrence_id INTEGER, recurrence_id_tz TEXT, flags INTEGER, todo_entry INTEGER,
  todo_entry_tz TEXT, todo_due INTEGER, todo_due_tz TEXT, todo_completed INTEGER, todo_completed_tz TEXT,
  todo_complete INTEGER, todo_stamp INTEGER, alarm_time INTEGER, alarm_time_tz TEXT, alarm_offset INTEGER,
  alarm_related INTEGER, alarm_last_ack INTEGER);
CREATE TABLE cal_properties (
  item_id TEXT, key TEXT, value BLOB, recurrence_id INTEGER, recurrence_id_tz TEXT);
CREATE INDEX idx_cal_properies_item_id ON cal_properties(item_id);

INSERT INTO cal_calendar_schema_version VALUES (9);
INSERT INTO cal_calendars VALUES
  (1, 'storage', 'moz-profile-calendar://'),
  (2, 'storage', 'moz-profile-calendar://?id=2');
INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES
  (1, 'name', 'Privat'), (1, 'color', '#A8C2E1'),
  (2, 'color', '#F9F4A7'), (2, 'name', 'Arbeit');

-- Calendar 1 keeps its rows under 0; the second event is one that an older version left under 1.
INSERT INTO cal_events (cal_id, id, time_created, last_modified, title, flags, event_start, event_start_tz,
                        event_end, event_end_tz, event_stamp) VALUES
  -- begins in winter time and ends in summer time
  (0, '5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f01', 1271052330000000, 1271052330000000, 'Nacht der Zeitumstellung', 4,
   1269729000000000, '/mozilla.org/20050126_1/Europe/Berlin', 1269739800000000,
   '/mozilla.org/20050126_1/Europe/Berlin', 1271052330000000),
  (1, '5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f02', 1271052330000000, 1271173510000000, 'Frühstück | Brunch', 4,
   1273408200000000, '/mozilla.org/20050126_1/Europe/Berlin', 1273413600000000,
   '/mozilla.org/20050126_1/Europe/Berlin', 1271173510000000),
  -- lasts for the hour that comes twice
  (0, '5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f03', 1271052330000000, 1271052330000000, 'Die doppelte Stunde', 4,
   1288485000000000, 'UTC', 1288488600000000, 'UTC', 1271052330000000),
  (0, '5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f04', 1271052330000000, 1271052330000000,
   'Heiligabend' || char(13, 10) || 'bei den Großeltern' || char(10) || 'C:\Geschenke', 4,
   1293210000000000, 'floating', 1293231540000000, 'floating', 1271052330000000),
  (2, '5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f05', 1271052330000000, 1271173510000000, 'Besprechung', 4,
   1276498800000000, '/mozilla.org/20050126_1/Europe/Berlin', 1276499745000000,
   '/mozilla.org/20050126_1/Europe/Berlin', 1271173510000000);

INSERT INTO cal_todos (cal_id, id, time_created, last_modified, title, flags, todo_due, todo_due_tz,
                       todo_complete) VALUES
  (0, '77ab1c90-65f4-4f6b-8f0d-3d1f8b2a4c01', 1271052330000000, 1271052330000000, 'Geschenke kaufen', 4,
   1293177600000000, 'UTC', 0),
  (1, '77ab1c90-65f4-4f6b-8f0d-3d1f8b2a4c02', 1271052330000000, 1271173510000000, 'Fahrrad | Keller', 4, NULL, NULL,
   50),
  (2, '77ab1c90-65f4-4f6b-8f0d-3d1f8b2a4c03', 1271052330000000, 1271173510000000, 'Protokoll schreiben', 4, NULL,
   NULL, 100);

-- The last event has moved: the new location stands behind the old one.
INSERT INTO cal_properties (item_id, key, value) VALUES
  ('5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f02', 'CATEGORIES', 'Familie'),
  ('5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f02', 'LOCATION', 'Café Müller | Terrasse'),
  ('5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f04', 'LOCATION', 'Dorfstraße 1' || char(10) || '2. Stock'),
  ('5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f05', 'LOCATION', 'Raum 5'),
  ('5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f05', 'LOCATION', 'Raum 6');

COMMIT;
