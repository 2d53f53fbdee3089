// What the archive says to its database: the schema and every statement.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "Host/RecordKeys.h"

namespace vorlent::archive_sql {

// Counts with every change of the schema.
inline constexpr std::int64_t kFormat = 2;
inline constexpr const char* kSetFormat = "PRAGMA user_version = ";  // and the number
inline constexpr std::string_view kFormatOf = "PRAGMA user_version";
inline constexpr std::string_view kTableCount = "SELECT count(*) FROM sqlite_schema";

// Before the first read, so that SQLite needs no memory shared with other programs: some file systems have
// none.
inline constexpr const char* kOwn = "PRAGMA locking_mode = EXCLUSIVE";
// The log grows to about 16 MB, and as much is held of the database: an import writes the same pages again
// and again.
inline constexpr const char* kSettings =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = FULL;"
    "PRAGMA journal_size_limit = 16777216;"
    "PRAGMA wal_autocheckpoint = 4000;"
    "PRAGMA cache_size = -16384;";
// Gives 0 if all that stands in the log could be written to the database.
inline constexpr std::string_view kWriteLog = "PRAGMA wal_checkpoint(FULL)";
inline constexpr const char* kEmptyLog = "PRAGMA wal_checkpoint(TRUNCATE)";

inline constexpr const char* kSchema =
    "CREATE TABLE IF NOT EXISTS items (number INTEGER PRIMARY KEY AUTOINCREMENT, fingerprint INTEGER NOT "
    "NULL,"
    " id TEXT NOT NULL, type TEXT, text TEXT, keywords TEXT, date TEXT, owner TEXT, log TEXT,"
    " fields TEXT NOT NULL);"
    "CREATE INDEX IF NOT EXISTS items_by_id ON items (id);"
    "CREATE TABLE IF NOT EXISTS files (item INTEGER NOT NULL, key TEXT NOT NULL, name TEXT NOT NULL,"
    " missing INTEGER NOT NULL, PRIMARY KEY (item, key)) WITHOUT ROWID;"
    "CREATE INDEX IF NOT EXISTS files_missing ON files (item) WHERE missing;"
    // Today's fingerprints of the items that came in with others.
    "CREATE TABLE IF NOT EXISTS renewed (item INTEGER PRIMARY KEY, fingerprint INTEGER NOT NULL);"
    "CREATE INDEX IF NOT EXISTS renewed_by_fingerprint ON renewed (fingerprint);"
    "CREATE TABLE IF NOT EXISTS settings (key TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS state (key TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;"
    // Words of what an item shows, and of the text of its mail, which never changes and so isn't kept here.
    "CREATE VIRTUAL TABLE IF NOT EXISTS search USING fts5 (text, keywords, data, files, columnsize = 0,"
    " tokenize = 'unicode61 remove_diacritics 2');"
    "CREATE VIRTUAL TABLE IF NOT EXISTS bodies USING fts5 (body, content = '', columnsize = 0,"
    " tokenize = 'unicode61 remove_diacritics 2');";

// The fields of a record that have a column of their own, in the order in which the next three name those.
// The last column, `fields`, holds all others, a line for each.
inline constexpr std::array<std::string_view, 7> kColumnKeys = {
    record_key::kId,   record_key::kType,  record_key::kText, record_key::kKeywords,
    record_key::kDate, record_key::kOwner, record_key::kLog};
inline constexpr std::string_view kInsertItem =
    "INSERT INTO items (fingerprint, id, type, text, keywords, date, owner, log, fields)"
    " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)";
inline constexpr std::string_view kUpdateItem =
    "UPDATE items SET id = ?, type = ?, text = ?, keywords = ?, date = ?, owner = ?, log = ?, fields = ?"
    " WHERE number = ?";
inline constexpr std::string_view kSelectItem =
    "SELECT id, type, text, keywords, date, owner, log, fields FROM items WHERE number = ?";
inline constexpr std::string_view kRemoveItem = "DELETE FROM items WHERE number = ?";
inline constexpr std::string_view kNumbersOfId = "SELECT number FROM items WHERE id = ? ORDER BY number";
inline constexpr std::string_view kHasId = "SELECT 1 FROM items WHERE id = ? LIMIT 1";
inline constexpr std::string_view kNumbersOfTwins =
    "SELECT number FROM items WHERE id = ? AND fingerprint = ? ORDER BY number";
inline constexpr std::string_view kNumbersOfRenewed =
    "SELECT item FROM renewed JOIN items ON number = item WHERE id = ? AND renewed.fingerprint = ?"
    " ORDER BY item";
inline constexpr std::string_view kRenew = "INSERT INTO renewed (item, fingerprint) VALUES (?, ?)";
// For an archive that is only looked at, in memory.
inline constexpr const char* kRenewedInMemory =
    "PRAGMA temp_store = MEMORY;"
    "CREATE TEMP TABLE renewed (item INTEGER PRIMARY KEY, fingerprint INTEGER NOT NULL);"
    "CREATE INDEX temp.renewed_by_fingerprint ON renewed (fingerprint);";
inline constexpr std::string_view kAllNumbers = "SELECT number FROM items ORDER BY number";
inline constexpr std::string_view kHighestNumber = "SELECT max(number) FROM items";

inline constexpr std::string_view kPutFile =
    "INSERT INTO files (item, key, name, missing) VALUES (?, ?, ?, ?)"
    " ON CONFLICT (item, key) DO UPDATE SET name = excluded.name, missing = excluded.missing";
inline constexpr std::string_view kRemoveFiles = "DELETE FROM files WHERE item = ?";
inline constexpr std::string_view kFilesOfRange =
    "SELECT item, key, name, missing FROM files WHERE item BETWEEN ? AND ?";
inline constexpr std::string_view kMarkFile = "UPDATE files SET missing = ? WHERE item = ? AND key = ?";
inline constexpr std::string_view kIncompleteNumbers =
    "SELECT DISTINCT item FROM files WHERE missing ORDER BY item";

inline constexpr std::string_view kSetting = "SELECT value FROM settings WHERE key = ?";
inline constexpr std::string_view kPutSetting = "INSERT OR REPLACE INTO settings (key, value) VALUES (?, ?)";
inline constexpr std::string_view kState = "SELECT value FROM state WHERE key = ?";
inline constexpr std::string_view kPutState = "INSERT OR REPLACE INTO state (key, value) VALUES (?, ?)";

inline constexpr std::string_view kInsertHead =
    "INSERT INTO search (rowid, text, keywords, data, files) VALUES (?, ?, ?, ?, ?)";
inline constexpr std::string_view kReplaceHead =
    "REPLACE INTO search (rowid, text, keywords, data, files) VALUES (?, ?, ?, ?, ?)";
inline constexpr std::string_view kRemoveHead = "DELETE FROM search WHERE rowid = ?";
inline constexpr std::string_view kInsertBody = "INSERT INTO bodies (rowid, body) VALUES (?, ?)";
// A search is the first of these, the second for each word with its number in the places of "#", and the
// third.
inline constexpr std::string_view kFind = "SELECT number FROM items WHERE true";
inline constexpr std::string_view kFindWord =
    " AND number IN (SELECT rowid FROM search WHERE search MATCH ?#"
    " UNION SELECT rowid FROM bodies WHERE bodies MATCH ?#)";
inline constexpr std::string_view kFindInOrder = " ORDER BY number";

}  // namespace vorlent::archive_sql
