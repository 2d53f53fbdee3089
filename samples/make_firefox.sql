-- The tables of a places.sqlite that hold bookmarks, with the columns and roots of today's Firefox.
PRAGMA page_size = 1024;
PRAGMA journal_mode = delete;
PRAGMA user_version = 78;

CREATE TABLE moz_origins (id INTEGER PRIMARY KEY, prefix TEXT NOT NULL, host TEXT NOT NULL,
  frecency INTEGER NOT NULL, recalc_frecency INTEGER NOT NULL DEFAULT 0, alt_frecency INTEGER,
  recalc_alt_frecency INTEGER NOT NULL DEFAULT 0, UNIQUE (prefix, host));
CREATE TABLE moz_places (id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR, rev_host LONGVARCHAR,
  visit_count INTEGER DEFAULT 0, hidden INTEGER DEFAULT 0 NOT NULL, typed INTEGER DEFAULT 0 NOT NULL,
  frecency INTEGER DEFAULT -1 NOT NULL, last_visit_date INTEGER, guid TEXT, foreign_count INTEGER DEFAULT 0 NOT NULL,
  url_hash INTEGER DEFAULT 0 NOT NULL, description TEXT, preview_image_url TEXT, site_name TEXT,
  origin_id INTEGER REFERENCES moz_origins(id), recalc_frecency INTEGER NOT NULL DEFAULT 0, alt_frecency INTEGER,
  recalc_alt_frecency INTEGER NOT NULL DEFAULT 0);
CREATE TABLE moz_bookmarks (id INTEGER PRIMARY KEY, type INTEGER, fk INTEGER DEFAULT NULL, parent INTEGER,
  position INTEGER, title LONGVARCHAR, keyword_id INTEGER, folder_type TEXT, dateAdded INTEGER, lastModified INTEGER,
  guid TEXT, syncStatus INTEGER NOT NULL DEFAULT 0, syncChangeCounter INTEGER NOT NULL DEFAULT 1);
CREATE INDEX moz_places_url_hashindex ON moz_places (url_hash);
CREATE UNIQUE INDEX moz_places_guid_uniqueindex ON moz_places (guid);
CREATE INDEX moz_bookmarks_itemindex ON moz_bookmarks (fk, type);
CREATE INDEX moz_bookmarks_parentindex ON moz_bookmarks (parent, position);
CREATE INDEX moz_bookmarks_itemlastmodifiedindex ON moz_bookmarks (fk, lastModified);
CREATE UNIQUE INDEX moz_bookmarks_guid_uniqueindex ON moz_bookmarks (guid);

BEGIN;

INSERT INTO moz_bookmarks (id, type, parent, position, title, dateAdded, lastModified, guid) VALUES
  (1, 2, 0, 0, '',        1768381200000000, 1768381200000000, 'root________'),
  (2, 2, 1, 0, 'menu',    1768381200000000, 1768381200000000, 'menu________'),
  (3, 2, 1, 1, 'toolbar', 1768381200000000, 1768381200000000, 'toolbar_____'),
  (4, 2, 1, 2, 'tags',    1768381200000000, 1768381200000000, 'tags________'),
  (5, 2, 1, 3, 'unfiled', 1768381200000000, 1768381200000000, 'unfiled_____'),
  (6, 2, 1, 4, 'mobile',  1768381200000000, 1768381200000000, 'mobile______');
