// Databases that another program has in use, read by today's rules.
#include "Common/DatabaseSnapshot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "Common/StdTime.h"
#include "Common/qzelSQLite.h"
#include "Platform/Failure.h"
#include "Support/DiskOperations.h"
#include "Support/ForeignProgram.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTemporaryPlace.h"
#include "Support/SqliteFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kSource[] = "source.sqlite";
constexpr char kMoment[] = "09.05.2010 14:30:05";

class DatabaseSnapshotTest : public testing::Test {
 protected:
  DatabaseSnapshotTest() {
    SqliteFile(Native()).Run("CREATE TABLE people(name); INSERT INTO people VALUES('Anna'),('Bert')");
  }

  std::filesystem::path Native() const { return folder_.Native(kSource); }

  // The names in the table as a reader gets them, or the error.
  std::vector<std::string> Names() {
    qzelSQLite database;
    database.file = folder_.Path(kSource);
    database.openFile();
    std::vector<std::string> names;
    if (database.execute("SELECT name FROM people ORDER BY name")) {
      for (const SqliteRow& row : *database.Rows())
        names.emplace_back(row.Item(1));
    } else {
      names.push_back(database.LastError());
    }
    const std::optional<DateTime> moment = database.SnapshotMoment();
    asOf_ = moment ? FormatDisplay(*moment) : "";
    database.closeFile();
    return names;
  }

  bool LeavesTemporaryFiles() const { return !std::filesystem::is_empty(temporary_.Native()); }

  TemporaryFolder folder_;
  TemporaryFolder temporary_;
  ScopedTemporaryPlace place_{temporary_.Native()};
  ScopedRecordingPlatform platform_;
  ScopedRules today_{{.databaseInUse = DatabaseInUse::Copied}};
  std::string asOf_;  // of the last Names
};

TEST_F(DatabaseSnapshotTest, FileThatNobodyHoldsIsReadItself) {
  EXPECT_THAT(Names(), ElementsAre("Anna", "Bert"));
  EXPECT_EQ(asOf_, "");
}

TEST_F(DatabaseSnapshotTest, FileThatIsMerelyOpenElsewhereIsReadItself) {
  const ForeignProgram other(Native());
  other.Run("PRAGMA journal_mode=WAL; INSERT INTO people VALUES('Cleo')");
  EXPECT_THAT(Names(), ElementsAre("Anna", "Bert", "Cleo"));
  EXPECT_EQ(asOf_, "");
}

// How another program may hold the database, and what was committed by then.
struct Held {
  const char* name;
  const char* statements;
  std::vector<std::string> names;
};

class LockedFile : public DatabaseSnapshotTest, public testing::WithParamInterface<Held> {};

TEST_P(LockedFile, IsReadAsItStoodAndStaysAsItIs) {
  const ForeignProgram other(Native());
  other.Run(GetParam().statements);
  const auto before = FolderContent(folder_.Native());
  EXPECT_EQ(Names(), GetParam().names);
  EXPECT_EQ(asOf_, kMoment);
  EXPECT_EQ(FolderContent(folder_.Native()), before);
  EXPECT_FALSE(LeavesTemporaryFiles());

  const ScopedRules windows(Rules::Windows());
  EXPECT_THAT(Names(), ElementsAre("database is locked"));
  EXPECT_EQ(FolderContent(folder_.Native()), before);
}

INSTANTIATE_TEST_SUITE_P(
    By, LockedFile,
    testing::Values(
        Held{"Transaction", "BEGIN EXCLUSIVE", {"Anna", "Bert"}},
        // Pages of the open transaction are in the file by now, and what they were in the journal.
        Held{
            "TransactionHalfWritten",
            "PRAGMA cache_size=1; BEGIN; DELETE FROM people;"
            "CREATE TABLE filler AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<500)"
            "SELECT hex(randomblob(200)) AS h FROM n",
            {"Anna", "Bert"}},
        Held{"RunningProgram",
             "PRAGMA locking_mode=EXCLUSIVE; INSERT INTO people VALUES('Cleo')",
             {"Anna", "Bert", "Cleo"}},
        Held{"RunningProgramWithALogOfItsOwn",
             "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; INSERT INTO people VALUES('Cleo')",
             {"Anna", "Bert", "Cleo"}},
        Held{
            "RunningProgramInTheMiddleOfALoggedTransaction",
            "PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; PRAGMA cache_size=1;"
            "INSERT INTO people VALUES('Cleo'); BEGIN; DELETE FROM people;"
            "CREATE TABLE filler AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<500)"
            "SELECT hex(randomblob(200)) AS h FROM n",
            {"Anna", "Bert", "Cleo"}}),
    [](const auto& each) { return each.param.name; });

TEST_F(DatabaseSnapshotTest, LockedFileIsReadAsOfAMoment) {
  const ForeignProgram other(Native());
  other.Run("PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; INSERT INTO people VALUES('Cleo')");
  const DatabaseSnapshot snapshot(folder_.Path(kSource));
  EXPECT_EQ(FormatDisplay(snapshot.Moment()), kMoment);
  EXPECT_EQ(ReadBytes(snapshot.File()), folder_.Read(kSource));
  EXPECT_EQ(ReadBytes(snapshot.File() + "-wal"), folder_.Read(std::string(kSource) + "-wal"));
}

TEST_F(DatabaseSnapshotTest, LockedFileIsAnErrorByTheOtherRules) {
  const ForeignProgram other(Native());
  other.Run("BEGIN EXCLUSIVE");
  const ScopedRules windows(Rules::Windows());
  EXPECT_EQ(SnapshotIfKeptFrom(folder_.Path(kSource)), nullptr);
  EXPECT_THAT(Names(), ElementsAre("database is locked"));
}

TEST_F(DatabaseSnapshotTest, ProgramThatDiedInTheMiddleOfAChangeLeavesWhatWasBefore) {
  {
    const ForeignProgram other(Native());
    other.Run(
        "PRAGMA cache_size=1; BEGIN; DELETE FROM people;"
        "CREATE TABLE filler AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<500)"
        "SELECT hex(randomblob(200)) AS h FROM n");
  }
  const auto before = FolderContent(folder_.Native());
  EXPECT_THAT(Names(), ElementsAre("Anna", "Bert"));
  EXPECT_EQ(asOf_, kMoment);
  EXPECT_EQ(FolderContent(folder_.Native()), before);
}

// --- A source that moves

class MovingDatabase : public DatabaseSnapshotTest {
 protected:
  MovingDatabase() {
    other_.Run("PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; INSERT INTO people VALUES('Cleo')");
  }

  // Runs statements in the other program whenever a reader comes to open the log.
  void MoveBeforeTheLog(std::size_t times, const std::string& statements) {
    watch_ = std::make_unique<DiskWatch>(DiskCall::Open, [=, this](DiskCall, const std::string& path) {
      if (!path.ends_with("source.sqlite-wal") || moves_ == times) return;
      other_.Run(statements);
      ++moves_;
    });
  }

  ForeignProgram other_{Native()};
  std::size_t moves_ = 0;
  std::unique_ptr<DiskWatch> watch_;
};

// The file was copied without what the log held, and by the time that the log is copied it holds nothing.
TEST_F(MovingDatabase, LogThatGoesIntoTheFileBetweenTheirCopiesLosesNothing) {
  MoveBeforeTheLog(1, "PRAGMA wal_checkpoint(TRUNCATE)");
  EXPECT_THAT(Names(), ElementsAre("Anna", "Bert", "Cleo"));
  EXPECT_EQ(moves_, 1u);
  EXPECT_EQ(asOf_, kMoment);
}

TEST_F(MovingDatabase, WhatIsWrittenWhileItIsComparedIsInTheNextCopy) {
  MoveBeforeTheLog(3, "INSERT INTO people VALUES('Dora'||(SELECT count(*) FROM people))");
  EXPECT_THAT(Names(), ElementsAre("Anna", "Bert", "Cleo", "Dora3", "Dora4", "Dora5"));
}

TEST_F(MovingDatabase, OneThatNeverRestsIsLocked) {
  MoveBeforeTheLog(1000, "INSERT INTO people VALUES('x')");
  EXPECT_THAT(Names(), ElementsAre("database is locked"));
  EXPECT_EQ(asOf_, "");
  EXPECT_FALSE(LeavesTemporaryFiles());
  try {
    const DatabaseSnapshot snapshot(folder_.Path(kSource));
    FAIL() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::PermissionDenied));
    EXPECT_EQ(failure.what(), folder_.Path(kSource) + ": another program writes to it without a rest");
  }
}

TEST_F(MovingDatabase, CopyThatFindsNoRoomLeavesTheFileLocked) {
  const DiskFault fault({.calls = DiskCall::Write,
                         .trouble = DiskTrouble::FromHere,
                         .error = ENOSPC,
                         .pathEnd = "copy.sqlite"});
  EXPECT_THAT(Names(), ElementsAre("database is locked"));
  EXPECT_TRUE(fault.WasReached());
  EXPECT_FALSE(LeavesTemporaryFiles());
}

}  // namespace
}  // namespace vorlent
