// The host's database connection over SQLite.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "Host/HostDatabase.h"
#include "Standalone/LightningDatabase.h"
#include "Standalone/Sqlite.h"

namespace vorlent {

// Every failure raised here carries SQLite's primary result code as its number: 1 for a statement that isn't
// valid, 5 for a lock that outlasted the time-out, 11 and 26 for a damaged file, 21 for a call on a
// connection that isn't open.
//
// A calendar-data\local.sqlite of Thunderbird is shown in the tables of old (LightningDatabase.h).
class StandaloneDatabase final : public HostDatabase {
 public:
  // Databases of one shelf read one state of what another program has in use.
  explicit StandaloneDatabase(std::shared_ptr<SnapshotShelf> shelf = std::make_shared<SnapshotShelf>())
      : shelf_(std::move(shelf)) {}
  ~StandaloneDatabase() override;

  // The kind is "ODBC". Of the connection text count "Database", a Windows path, and "Timeout", the longest
  // wait for a lock in milliseconds, 2000 if it isn't given; in any order, letter case and blanks around them
  // of no matter, a value that holds ";" in braces. False if there is no such file: none is ever created.
  // What the file holds is first looked at by a statement.
  bool Open(std::string_view kind, std::string_view connection) override;

  // A forward walk over the rows of one SELECT. Rows are read as the walk reaches them, so a failure may also
  // rise from the recordset; only a recordset that is asked for its count takes them all into memory. Any
  // number of recordsets may be open at once. `value` is not looked at.
  HostRecordsetPtr Query(std::string_view sql, std::int32_t value) override;

  // Runs exactly one statement, whole or not at all. Text after it, be it a comment, is refused before
  // anything has run.
  bool Execute(std::string_view sql) override;

  // Ends the recordsets too: whatever is still asked of them raises. A change of Thunderbird's calendars
  // becomes durable here.
  void Close() override;

 private:
  const std::shared_ptr<SqliteDatabase>& Opened() const;

  std::shared_ptr<SnapshotShelf> shelf_;
  std::unique_ptr<LightningDatabase> lightning_;  // null for any other database
  std::shared_ptr<SqliteDatabase> connection_;
};

}  // namespace vorlent
