// Thunderbird's calendars in the tables of old.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Common/DatabaseSnapshot.h"
#include "Standalone/LightningNames.h"
#include "Standalone/Sqlite.h"

namespace vorlent {

// What connections that are made one after the other have in common: the last snapshot of a database that was
// in use, taken again only if the database has changed, so that all read the same state; and the names of the
// items of each file.
class SnapshotShelf {
 public:
  // The snapshot to read in place of a database, null if the database itself can be read.
  std::shared_ptr<const DatabaseSnapshot> For(std::string_view file);

  LightningNames& NamesOf(std::string_view file) { return names_[std::string(file)]; }

 private:
  std::string file_;
  std::shared_ptr<const DatabaseSnapshot> snapshot_;
  std::map<std::string, LightningNames> names_;
};

// A connection to a calendar-data\local.sqlite, which shows it in the tables of Sunbird's storage.sdb. Each
// calendar has a number, always the same; events and tasks whose ID another has, too, are told apart by "~2"
// (LightningNames.h). Of repeated events only the event itself is shown, and changed, not its changed
// occurrences.
// The connection has views and triggers of its own for that; the file's schema stays as it is.
//
// Nothing changes in the file until the first statement of a change. From then to Finish all is one
// transaction, which a failed statement takes back. What fails is told to the host with the file's name.
class LightningDatabase {
 public:
  // Connects to the file, or to a snapshot of it if that can't be read as it lies there. Raises for what
  // can't be read. The shelf must outlive it.
  LightningDatabase(std::string_view file, int timeout, SnapshotShelf& shelf);

  // Valid until the first statement of a change.
  const std::shared_ptr<SqliteDatabase>& Connection() const { return connection_; }

  // Runs a statement of a change. A database in use is waited for, and its user is told.
  void Execute(std::string_view sql);

  // Makes the change durable.
  void Finish();

 private:
  void Connect(std::string_view copy);
  void BeginChange();
  void ConnectToChange();

  std::string file_;
  int timeout_;
  LightningNames& names_;
  std::shared_ptr<const DatabaseSnapshot> snapshot_;
  std::shared_ptr<SqliteDatabase> connection_;
  std::unique_ptr<SqliteTransaction> change_;
  bool hasFailed_ = false;
};

}  // namespace vorlent
