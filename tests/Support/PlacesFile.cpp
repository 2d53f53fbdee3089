#include "Support/PlacesFile.h"

namespace vorlent {

namespace {

constexpr char kSchema[] = R"(
PRAGMA synchronous=OFF;
CREATE TABLE moz_places(id INTEGER PRIMARY KEY, url LONGVARCHAR, title LONGVARCHAR, rev_host LONGVARCHAR,
  visit_count INTEGER DEFAULT 0, hidden INTEGER DEFAULT 0 NOT NULL, typed INTEGER DEFAULT 0 NOT NULL,
  frecency INTEGER DEFAULT -1 NOT NULL, last_visit_date INTEGER, guid TEXT,
  foreign_count INTEGER DEFAULT 0 NOT NULL, url_hash INTEGER DEFAULT 0 NOT NULL, description TEXT,
  preview_image_url TEXT, site_name TEXT, origin_id INTEGER, recalc_frecency INTEGER NOT NULL DEFAULT 0,
  alt_frecency INTEGER, recalc_alt_frecency INTEGER NOT NULL DEFAULT 0);
CREATE TABLE moz_bookmarks(id INTEGER PRIMARY KEY, type INTEGER, fk INTEGER DEFAULT NULL, parent INTEGER,
  position INTEGER, title LONGVARCHAR, keyword_id INTEGER, folder_type TEXT, dateAdded INTEGER,
  lastModified INTEGER, guid TEXT, syncStatus INTEGER NOT NULL DEFAULT 0,
  syncChangeCounter INTEGER NOT NULL DEFAULT 1);
CREATE INDEX moz_bookmarks_itemindex ON moz_bookmarks(fk, type);
CREATE INDEX moz_bookmarks_parentindex ON moz_bookmarks(parent, position);
BEGIN;
)";

std::string Literal(const PlacesFile::Text& text) {
  if (!text) return "NULL";
  std::string literal = "'";
  for (const char c : *text)
    literal += c == '\'' ? std::string("''") : std::string(1, c);
  return literal + "'";
}

}  // namespace

PlacesFile::PlacesFile(const std::filesystem::path& native) : SqliteFile(native) {
  Run(kSchema);
}

PlacesFile::~PlacesFile() {  // NOLINT(bugprone-exception-escape): ends the test
  Commit();
}

void PlacesFile::Commit() {
  if (!committed_) Run("COMMIT");
  committed_ = true;
}

std::int64_t PlacesFile::AddFolder(std::int64_t parent, const Text& title) {
  return Insert(2, "NULL", parent, title, kAdded, kChanged);
}

std::int64_t PlacesFile::AddBookmark(std::int64_t parent, const Text& title, const Text& url,
                                     std::int64_t dateAdded, std::int64_t lastModified) {
  const std::string place = std::to_string(++places_);
  Run("INSERT INTO moz_places(id, url) VALUES(" + place + "," + Literal(url) + ")");
  return Insert(1, place, parent, title, dateAdded, lastModified);
}

std::int64_t PlacesFile::AddRow(int type, std::int64_t parent, const Text& title) {
  return Insert(type, "NULL", parent, title, kAdded, kChanged);
}

std::int64_t PlacesFile::Insert(int type, const std::string& fk, std::int64_t parent, const Text& title,
                                std::int64_t dateAdded, std::int64_t lastModified) {
  Run("INSERT INTO moz_bookmarks(id, type, fk, parent, position, title, dateAdded, lastModified) VALUES(" +
      std::to_string(++rows_) + "," + std::to_string(type) + "," + fk + "," + std::to_string(parent) + "," +
      std::to_string(positions_[parent]++) + "," + Literal(title) + "," + std::to_string(dateAdded) + "," +
      std::to_string(lastModified) + ")");
  return rows_;
}

}  // namespace vorlent
