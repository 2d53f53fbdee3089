#include "Standalone/StandaloneDatabase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Support/ForeignLock.h"
#include "Support/SqliteFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using testing::ElementsAre;

// SQLite's result codes, as its documentation numbers them.
constexpr int kError = 1;
constexpr int kBusy = 5;
constexpr int kReadOnly = 8;
constexpr int kCorrupt = 11;
constexpr int kConstraint = 19;
constexpr int kMisuse = 21;
constexpr int kRange = 25;
constexpr int kNotADatabase = 26;

milliseconds Elapsed(steady_clock::time_point since) {
  return std::chrono::duration_cast<milliseconds>(steady_clock::now() - since);
}

class StandaloneDatabaseTest : public testing::Test {
 protected:
  StandaloneDatabaseTest() {
    SqliteFile(file_).Run(
        "CREATE TABLE t (id INTEGER PRIMARY KEY, name TEXT, value);"
        "INSERT INTO t VALUES (1, 'one', 'eins'), (2, 'two', NULL), (3, 'it''s', 3);");
  }

  std::string Connection(int timeout = 2000) const {
    return "Driver={SQLite3 ODBC Driver};Database=" + path_ + ";Timeout=" + std::to_string(timeout);
  }

  void Open(int timeout = 2000) { ASSERT_TRUE(database_.Open("ODBC", Connection(timeout))); }

  // All values of a column in the order of the walk.
  std::vector<std::string> Walk(std::string_view sql, std::string_view column) {
    std::vector<std::string> values;
    const HostRecordsetPtr rows = database_.Query(sql, 2);
    for (rows->MoveFirst(); !rows->EndOfRows(); rows->MoveNext())
      values.push_back(rows->Field(column));
    return values;
  }

  // Number of the failure of a statement, 0 for none.
  int ExecuteNumber(std::string_view sql) {
    return SwallowedNumber([&] { database_.Execute(sql); });
  }

  std::vector<std::string> Names() const { return SqliteFile(file_).Rows("SELECT name FROM t ORDER BY id"); }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_.Native("t.sdb");
  std::string path_ = folder_.Path("t.sdb");
  StandaloneDatabase database_;
};

// --- Opening

TEST_F(StandaloneDatabaseTest, ConnectionTextIsReadInAnyOrderAndCase) {
  const struct {
    std::string text;
    bool opens;
  } cases[] = {
      {"Driver={SQLite3 ODBC Driver};Database=" + path_ + ";Timeout=2000", true},
      {"Timeout=2000;Database=" + path_, true},
      {"database=" + path_, true},
      {"DATABASE = " + path_ + " ; TIMEOUT = 5 ;", true},
      {"Database={" + path_ + "};Timeout=1", true},
      {"Driver={a;Database=nothing;b}};c};Database=" + path_, true},
      {"DSN;Database=" + path_, true},
      {"", false},
      {";;=;", false},
      {"Timeout=2000", false},
      {"Database=", false},
      {"Database={" + path_, true},
      {"Database=" + path_ + ";Timeout=long", false},
      {"Database=" + path_ + ";Timeout=-1", false},
      {"Database=" + path_ + "x", false},
      {"Database=" + folder_.Path(), false},
      {"Database=:memory:", false},
  };
  for (const auto& c : cases)
    EXPECT_EQ(database_.Open("ODBC", c.text), c.opens) << c.text;
}

TEST_F(StandaloneDatabaseTest, OtherKindsAreRefused) {
  EXPECT_FALSE(database_.Open("", Connection()));
  EXPECT_FALSE(database_.Open("ADO", Connection()));
  EXPECT_TRUE(database_.Open("odbc", Connection()));
}

TEST_F(StandaloneDatabaseTest, MissingFileIsNotCreated) {
  EXPECT_FALSE(database_.Open("ODBC", "Database=" + folder_.Path("new.sdb")));
  EXPECT_FALSE(folder_.Exists("new.sdb"));
}

TEST_F(StandaloneDatabaseTest, PathInTheCodePageIsFound) {
  const std::string path = folder_.Write("K\xE4se; Br\xF6t\\t.sdb", "");
  EXPECT_TRUE(database_.Open("ODBC", "Database={" + path + "};Timeout=1"));
  EXPECT_TRUE(database_.Execute("CREATE TABLE u (a)"));
  database_.Close();
  EXPECT_GT(folder_.Read("K\xE4se; Br\xF6t\\t.sdb").size(), 0u);
}

TEST_F(StandaloneDatabaseTest, UnopenedConnectionRaisesMisuse) {
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("SELECT 1", 2); }), kMisuse);
  EXPECT_EQ(ExecuteNumber("DELETE FROM t"), kMisuse);
  database_.Close();
  Open();
  database_.Close();
  EXPECT_EQ(ExecuteNumber("DELETE FROM t"), kMisuse);
}

TEST_F(StandaloneDatabaseTest, FailedOpenLeavesNothingOpen) {
  Open();
  EXPECT_FALSE(database_.Open("ODBC", "Database=" + folder_.Path("new.sdb")));
  EXPECT_EQ(ExecuteNumber("DELETE FROM t"), kMisuse);
}

// --- Walking

TEST_F(StandaloneDatabaseTest, FieldsAreFoundByNameRegardlessOfCase) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id, name As Title FROM t", 2);
  rows->MoveFirst();
  EXPECT_EQ(rows->Field("title"), "one");
  EXPECT_EQ(rows->Field("TITLE"), "one");
  EXPECT_EQ(rows->Field("ID"), "1");
}

TEST_F(StandaloneDatabaseTest, OfTwoColumnsOfOneNameTheFirstCounts) {
  Open();
  EXPECT_THAT(Walk("SELECT 1 AS a, 2 AS A", "a"), ElementsAre("1"));
}

TEST_F(StandaloneDatabaseTest, EveryKindOfValueHasItsText) {
  Open();
  const struct {
    std::string value;
    std::string text;
  } cases[] = {
      {"NULL", ""},
      {"''", ""},
      {"'a|b'||char(10)||'c'", "a|b\nc"},
      {"0", "0"},
      {"-9223372036854775808", "-9223372036854775808"},
      {"1269737999", "1269737999"},
      {"2.0", "2"},
      {"0.5", "0.5"},
      {"x''", ""},
      {"x'6100FF62'", std::string("a\0\xFF"
                                  "b",
                                  4)},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(Walk("SELECT " + c.value + " AS v", "v"), ElementsAre(c.text)) << c.value;
    const HostRecordsetPtr counted = database_.Query("SELECT " + c.value + " AS v", 2);
    EXPECT_EQ(counted->RecordCount(), 1);
    counted->MoveFirst();
    EXPECT_EQ(counted->Field("v"), c.text) << c.value;
    EXPECT_EQ(counted->FieldDate("v"), c.text) << c.value;
  }
}

TEST_F(StandaloneDatabaseTest, TextOfOtherEncodingsComesAsItIs) {
  SqliteFile(file_).Run("INSERT INTO t VALUES (4, 'M\xC3\xBCller', 'M\xFCller')");
  Open();
  EXPECT_THAT(Walk("SELECT name FROM t WHERE id=4", "name"), ElementsAre("M\xC3\xBCller"));
  EXPECT_THAT(Walk("SELECT value FROM t WHERE id=4", "value"), ElementsAre("M\xFCller"));
}

TEST_F(StandaloneDatabaseTest, TimeFieldIsTheTextOfItsNumber) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT 1269737999999999/1000000 AS start, NULL AS ende", 2);
  rows->MoveFirst();
  EXPECT_EQ(rows->FieldDate("START"), "1269737999");
  EXPECT_EQ(rows->FieldDate("ende"), "");
}

TEST_F(StandaloneDatabaseTest, MissingColumnRaises) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t", 2);
  rows->MoveFirst();
  EXPECT_EQ(SwallowedNumber([&] { rows->Field("name"); }), kRange);
  EXPECT_EQ(SwallowedNumber([&] { rows->FieldDate(""); }), kRange);
}

TEST_F(StandaloneDatabaseTest, FieldRaisesBeforeTheFirstAndBehindTheLastRow) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t WHERE id=1", 2);
  EXPECT_EQ(SwallowedNumber([&] { rows->Field("id"); }), kRange);
  rows->MoveFirst();
  EXPECT_EQ(rows->Field("id"), "1");
  rows->MoveNext();
  EXPECT_TRUE(rows->EndOfRows());
  EXPECT_EQ(SwallowedNumber([&] { rows->Field("id"); }), kRange);
}

TEST_F(StandaloneDatabaseTest, MovingOnBehindTheLastRowStaysThere) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t WHERE id=1", 2);
  rows->MoveFirst();
  for (int i = 0; i < 3; ++i) {
    rows->MoveNext();
    EXPECT_TRUE(rows->EndOfRows());
  }
}

TEST_F(StandaloneDatabaseTest, MoveNextFromTheStartReachesTheFirstRow) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t", 2);
  EXPECT_FALSE(rows->EndOfRows());
  rows->MoveNext();
  EXPECT_EQ(rows->Field("id"), "1");
}

TEST_F(StandaloneDatabaseTest, MoveFirstStartsOver) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t", 2);
  for (int walk = 0; walk < 2; ++walk) {
    int count = 0;
    for (rows->MoveFirst(); !rows->EndOfRows(); rows->MoveNext())
      EXPECT_EQ(rows->Field("id"), std::to_string(++count));
    EXPECT_EQ(count, 3);
  }
}

TEST_F(StandaloneDatabaseTest, EmptyResultHasNoRows) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t WHERE id=9", 2);
  EXPECT_EQ(rows->RecordCount(), 0);
  rows->MoveFirst();
  EXPECT_TRUE(rows->EndOfRows());
  const HostRecordsetPtr uncounted = database_.Query("SELECT id FROM t WHERE id=9", 2);
  uncounted->MoveFirst();
  EXPECT_TRUE(uncounted->EndOfRows());
}

TEST_F(StandaloneDatabaseTest, CountingLeavesTheWalkWhereItStands) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t", 2);
  EXPECT_EQ(rows->RecordCount(), 3);
  EXPECT_EQ(SwallowedNumber([&] { rows->Field("id"); }), kRange);
  for (int counted = 1; counted <= 4; ++counted) {
    const HostRecordsetPtr walked = database_.Query("SELECT id FROM t", 2);
    walked->MoveFirst();
    for (int i = 1; i < counted; ++i)
      walked->MoveNext();
    EXPECT_EQ(walked->RecordCount(), 3);
    if (counted == 4) {
      EXPECT_TRUE(walked->EndOfRows());
      walked->MoveFirst();
      EXPECT_EQ(walked->Field("id"), "1");
    } else {
      EXPECT_EQ(walked->Field("id"), std::to_string(counted));
    }
    walked->MoveNext();
    EXPECT_EQ(walked->EndOfRows(), counted == 3);
    EXPECT_EQ(walked->RecordCount(), 3);
  }
}

TEST_F(StandaloneDatabaseTest, SeveralRecordsetsAreOpenOnOneConnection) {
  Open();
  std::vector<std::string> pairs;
  const HostRecordsetPtr outer = database_.Query("SELECT id, name FROM t WHERE name>='one' AND id<3", 2);
  for (outer->MoveFirst(); !outer->EndOfRows(); outer->MoveNext()) {
    // The same text is open twice.
    const HostRecordsetPtr inner = database_.Query("SELECT id, name FROM t WHERE name>='one' AND id<3", 2);
    for (inner->MoveFirst(); !inner->EndOfRows(); inner->MoveNext()) {
      pairs.push_back(outer->Field("name") + "-" + inner->Field("name"));
    }
  }
  EXPECT_THAT(pairs, ElementsAre("one-one", "one-two", "two-one", "two-two"));
}

TEST_F(StandaloneDatabaseTest, ClosingEndsTheRecordsets) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t WHERE name>='a'", 2);
  rows->MoveFirst();
  database_.Close();
  EXPECT_EQ(SwallowedNumber([&] { rows->Field("id"); }), kMisuse);
  EXPECT_EQ(SwallowedNumber([&] { rows->MoveNext(); }), kMisuse);
  EXPECT_EQ(SwallowedNumber([&] { rows->MoveFirst(); }), kMisuse);
  EXPECT_EQ(SwallowedNumber([&] { rows->RecordCount(); }), kMisuse);
  const ForeignLock lock(file_);  // nothing of the walk holds the file any more
}

// --- Values within queries

TEST_F(StandaloneDatabaseTest, TextInQuotesIsAValueWhateverItHolds) {
  SqliteFile(file_).Run(
      "CREATE TABLE p (item_id TEXT, key TEXT, number INTEGER, value BLOB);"
      "INSERT INTO p VALUES ('a', 'K', 1, 'first'), ('it''s', 'K', 2, 'second'), ('', 'K', 3, 'third'),"
      "('a''; DELETE FROM p; --', 'K', 4, 'fourth'), ('a', 'L', 5, 'fifth'), ('A', 'K', 6, 'sixth');");
  Open();
  const struct {
    std::string condition;
    std::vector<std::string> values;
  } cases[] = {
      {"item_id='a' AND key='K'", {"first"}},
      {"item_id='it''s' AND key='K'", {"second"}},
      {"item_id='' AND key='K'", {"third"}},
      {"item_id='a''; DELETE FROM p; --' AND key='K'", {"fourth"}},
      {"item_id='a' AND key='L'", {"fifth"}},
      {"item_id='b' AND key='K'", {}},
      {"item_id='a' AND key='K'", {"first"}},
      {"number='2'", {"second"}},
      {"item_id='a' COLLATE NOCASE AND key='K'", {"first", "sixth"}},
      {"item_id = 'a' OR item_id == 'it''s'", {"first", "second", "fifth"}},
      {"item_id LIKE 'A' AND key='L'", {"fifth"}},
      {"item_id='i'||'t''s'", {"second"}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Walk("SELECT value FROM p WHERE " + c.condition, "value"), c.values) << c.condition;
  }
}

TEST_F(StandaloneDatabaseTest, RepeatedQuerySeesWhatHasChanged) {
  Open();
  const std::string query = "SELECT * FROM t WHERE name='one'";
  EXPECT_THAT(Walk(query, "value"), ElementsAre("eins"));
  EXPECT_TRUE(database_.Execute("UPDATE t SET value='uno' WHERE name='one'"));
  EXPECT_THAT(Walk(query, "value"), ElementsAre("uno"));
  EXPECT_TRUE(database_.Execute("ALTER TABLE t ADD COLUMN further DEFAULT 'more'"));
  EXPECT_THAT(Walk(query, "further"), ElementsAre("more"));
}

// --- Statements

TEST_F(StandaloneDatabaseTest, ExecuteRunsOneStatement) {
  Open();
  EXPECT_TRUE(database_.Execute("UPDATE t SET name='uno' WHERE id='1';"));
  EXPECT_TRUE(database_.Execute("  DELETE FROM t WHERE id=2 ; \r\n\t"));
  EXPECT_TRUE(database_.Execute("SELECT * FROM t"));
  EXPECT_THAT(Names(), ElementsAre("uno", "it's"));
}

TEST_F(StandaloneDatabaseTest, TextBehindAStatementKeepsItFromRunning) {
  using namespace std::string_literals;
  Open();
  const std::string statements[] = {
      "DELETE FROM t; DELETE FROM t",
      "DELETE FROM t;DROP TABLE t;",
      "DELETE FROM t; -- behind",
      "DELETE FROM t; /* behind */",
      "DELETE FROM t;;",
      "DELETE FROM t; x",
      "DELETE FROM t;\0"s,
      "DELETE FROM t;\0 DROP TABLE t"s,
      "UPDATE t SET name='x' WHERE id='1'; DROP TABLE t; --' WHERE id='1';",
  };
  for (const std::string& sql : statements) {
    EXPECT_EQ(ExecuteNumber(sql), kError) << sql;
    EXPECT_EQ(SwallowedNumber([&] { database_.Query(sql, 2); }), kError) << sql;
  }
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("SELECT id FROM t WHERE name='a'; DROP TABLE t", 2); }),
            kError);
  EXPECT_THAT(Names(), ElementsAre("one", "two", "it's"));
}

TEST_F(StandaloneDatabaseTest, FailedStatementsRaiseTheNumberOfTheDatabase) {
  Open();
  EXPECT_EQ(ExecuteNumber("UPDATE t SET name='it's' WHERE id='1'"), kError);
  EXPECT_EQ(ExecuteNumber("UPDATE missing SET a=1"), kError);
  EXPECT_EQ(ExecuteNumber("nonsense"), kError);
  EXPECT_EQ(ExecuteNumber(""), kError);
  EXPECT_EQ(ExecuteNumber(" -- nothing"), kError);
  EXPECT_EQ(ExecuteNumber("INSERT INTO t VALUES (1, 'again', 1)"), kConstraint);
  EXPECT_TRUE(database_.Execute("PRAGMA query_only=1"));
  EXPECT_EQ(ExecuteNumber("DELETE FROM t"), kReadOnly);
  EXPECT_THAT(Names(), ElementsAre("one", "two", "it's"));
}

TEST_F(StandaloneDatabaseTest, FailureNamesTheFile) {
  Open();
  try {
    database_.Execute("UPDATE missing SET a=1");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), (path_ + ": no such table: missing").c_str());
  }
}

TEST_F(StandaloneDatabaseTest, FailedStatementLeavesNoHalf) {
  Open();
  // The first row would do, the second is there already.
  EXPECT_EQ(ExecuteNumber("INSERT INTO t SELECT CASE id WHEN 1 THEN 4 ELSE 1 END, 'new', 0 FROM t"),
            kConstraint);
  EXPECT_THAT(Names(), ElementsAre("one", "two", "it's"));
}

TEST_F(StandaloneDatabaseTest, FailedQueryRaises) {
  Open();
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("SELECT a FROM missing WHERE b='x'", 2); }), kError);
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("SELECT id FROM t WHERE name='it's'", 2); }), kError);
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("", 2); }), kError);
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("DELETE FROM t", 2); }), kError);
  EXPECT_THAT(Names(), ElementsAre("one", "two", "it's"));
}

// --- Locks

TEST_F(StandaloneDatabaseTest, LockedFileIsWaitedForUntilTheTimeout) {
  const ForeignLock lock(file_);
  Open(150);
  for (const bool query : {false, true}) {
    const auto start = steady_clock::now();
    EXPECT_EQ(SwallowedNumber([&] {
                if (query) {
                  database_.Query("SELECT id FROM t", 2)->MoveFirst();
                } else {
                  database_.Execute("DELETE FROM t");
                }
              }),
              kBusy);
    EXPECT_GE(Elapsed(start), milliseconds(140));
    EXPECT_LT(Elapsed(start), milliseconds(1500));
  }
}

TEST_F(StandaloneDatabaseTest, LockThatComesBetweenTwoStatementsIsWaitedForToo) {
  Open(100);
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t", 2);
  EXPECT_TRUE(database_.Execute("UPDATE t SET value=1"));
  const ForeignLock lock(file_);
  EXPECT_EQ(SwallowedNumber([&] { rows->MoveFirst(); }), kBusy);
  EXPECT_TRUE(rows->EndOfRows());
  EXPECT_EQ(SwallowedNumber([&] { rows->RecordCount(); }), kBusy);
  EXPECT_EQ(ExecuteNumber("DELETE FROM t"), kBusy);
}

TEST_F(StandaloneDatabaseTest, StatementRunsOnceTheLockIsReleased) {
  Open(5000);
  {
    const ForeignLock lock(file_, 200);
    EXPECT_TRUE(database_.Execute("DELETE FROM t WHERE id=2"));
  }
  EXPECT_THAT(Names(), ElementsAre("one", "it's"));
}

TEST_F(StandaloneDatabaseTest, ZeroTimeoutDoesNotWait) {
  const ForeignLock lock(file_);
  Open(0);
  const auto start = steady_clock::now();
  EXPECT_EQ(ExecuteNumber("DELETE FROM t"), kBusy);
  EXPECT_LT(Elapsed(start), milliseconds(500));
}

TEST_F(StandaloneDatabaseTest, WalkToTheEndReleasesTheFile) {
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT id FROM t", 2);
  for (rows->MoveFirst(); !rows->EndOfRows(); rows->MoveNext()) {
  }
  const ForeignLock lock(file_);
}

// --- Damaged files

TEST_F(StandaloneDatabaseTest, FileThatIsNoDatabaseFailsInItsFirstStatement) {
  const std::string bytes(4096, 'x');
  folder_.Write("t.sdb", bytes);
  Open();
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("SELECT id FROM t", 2); }), kNotADatabase);
  EXPECT_EQ(ExecuteNumber("DELETE FROM t"), kNotADatabase);
  database_.Close();
  EXPECT_EQ(folder_.Read("t.sdb"), bytes);
}

TEST_F(StandaloneDatabaseTest, DamagedPageFailsWhereItIsMet) {
  SqliteFile(file_).Run("PRAGMA page_size=1024; VACUUM");
  std::string bytes = folder_.Read("t.sdb");
  bytes.replace(1024, bytes.size() - 1024, bytes.size() - 1024, 'x');
  folder_.Write("t.sdb", bytes);
  Open();
  const HostRecordsetPtr rows = database_.Query("SELECT value FROM t", 2);
  EXPECT_EQ(SwallowedNumber([&] { rows->MoveFirst(); }), kCorrupt);
  EXPECT_TRUE(rows->EndOfRows());
}

TEST_F(StandaloneDatabaseTest, EmptyFileIsADatabaseWithoutTables) {
  folder_.Write("t.sdb", "");
  Open();
  EXPECT_EQ(SwallowedNumber([&] { database_.Query("SELECT id FROM t", 2); }), kError);
}

}  // namespace
}  // namespace vorlent
