#include "Common/qzelSQLite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "Platform/CodePage.h"
#include "Support/SqliteFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr char kPeople[] =
    "CREATE TABLE people(name TEXT, age INTEGER, note TEXT);"
    "INSERT INTO people VALUES('Anna',31,NULL),('Bert',4,'x'),('Cleo',77,'');";

class qzelSQLiteTest : public testing::Test {
 protected:
  qzelSQLiteTest() { SqliteFile(folder_.Native("people.sqlite")).Run(kPeople); }
  ~qzelSQLiteTest() override { database_.closeFile(); }

  void Open(std::string_view name = "people.sqlite") {
    database_.file = folder_.Path(name);
    ASSERT_TRUE(database_.openFile());
  }

  // All rows, the values joined by commas and the rows closed by semicolons.
  static std::string Dump(qzelSQLite& database) {
    std::string text;
    for (std::int32_t pos = 1; pos <= database.RowsCount(); ++pos)
      text += database.RowString(pos, ",") + ";";
    return text;
  }

  TemporaryFolder folder_;
  qzelSQLite database_;
};

// --- Opening and closing

TEST_F(qzelSQLiteTest, OpeningWithoutFileNameIsRefused) {
  EXPECT_FALSE(database_.openFile());
  EXPECT_FALSE(database_.closeFile());
}

TEST_F(qzelSQLiteTest, StatementBeforeOpeningIsRefusedAndChangesNothing) {
  EXPECT_FALSE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.LastError(), "");
  EXPECT_EQ(database_.ColumnsCount(), 0);
  EXPECT_EQ(database_.RowsCount(), 0);
}

TEST_F(qzelSQLiteTest, RefusedOpeningLeavesTheEarlierErrorAndResult) {
  Open();
  ASSERT_FALSE(database_.execute("SELECT * FROM nobody"));
  database_.file = "";
  EXPECT_FALSE(database_.openFile());
  EXPECT_EQ(database_.LastError(), "no such table: nobody");
}

TEST_F(qzelSQLiteTest, FreshObjectHasEmptyLists) {
  EXPECT_EQ(database_.Columns()->Count(), 0);
  EXPECT_EQ(database_.Rows()->Count(), 0);
  EXPECT_EQ(database_.Columns(), database_.Columns());
  EXPECT_EQ(database_.Rows(), database_.Rows());
}

TEST_F(qzelSQLiteTest, MissingFileShowsInTheFirstStatementAndIsNotMade) {
  Open("missing.sqlite");
  EXPECT_FALSE(database_.execute("SELECT 1"));
  EXPECT_EQ(database_.LastError(), "unable to open database file");
  EXPECT_TRUE(database_.closeFile());
  EXPECT_FALSE(folder_.Exists("missing.sqlite"));
}

TEST_F(qzelSQLiteTest, FolderInPlaceOfAFileShowsInTheFirstStatement) {
  folder_.MakeFolder("folder.sqlite");
  Open("folder.sqlite");
  EXPECT_FALSE(database_.execute("SELECT 1"));
  EXPECT_EQ(database_.LastError(), "unable to open database file");
}

TEST_F(qzelSQLiteTest, EmptyFileIsADatabaseWithoutTables) {
  folder_.Write("empty.sqlite", "");
  Open("empty.sqlite");
  EXPECT_FALSE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.LastError(), "no such table: people");
  database_.closeFile();
  EXPECT_EQ(folder_.Read("empty.sqlite"), "");
}

TEST_F(qzelSQLiteTest, OtherFileIsNoDatabase) {
  folder_.Write("text.sqlite", std::string(5000, 'x'));
  Open("text.sqlite");
  EXPECT_FALSE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.LastError(), "file is not a database");
}

TEST_F(qzelSQLiteTest, DamagedDatabaseIsAnErrorOfTheStatement) {
  std::string bytes = folder_.Read("people.sqlite");
  bytes.replace(4096, 100, std::string(100, '\xFF'));
  folder_.Write("damaged.sqlite", bytes);
  Open("damaged.sqlite");
  EXPECT_FALSE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.LastError(), "database disk image is malformed");
}

TEST_F(qzelSQLiteTest, FileNamesAreCodePage) {
  const std::string name(R"(Übung für Jörg\größe.sqlite)"_cp);
  folder_.MakeFolder("Übung für Jörg"_cp);
  SqliteFile(folder_.Native(name)).Run(kPeople);
  Open(name);
  EXPECT_TRUE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.RowsCount(), 3);
}

TEST_F(qzelSQLiteTest, ClosingTellsWhetherItWasOpenedAndEndsTheConnection) {
  Open();
  EXPECT_TRUE(database_.closeFile());
  EXPECT_TRUE(database_.closeFile());
  EXPECT_FALSE(database_.execute("SELECT * FROM people"));
}

TEST_F(qzelSQLiteTest, VersionIsThatOfTheLibrary) {
  EXPECT_TRUE(std::regex_match(database_.Version(), std::regex("3\\.[0-9]+\\.[0-9.]+")));
}

// --- Results

TEST_F(qzelSQLiteTest, ResultIsHeldInTheOrderOfTheDatabase) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT name, age FROM people ORDER BY age"));
  EXPECT_EQ(database_.LastError(), "");
  EXPECT_EQ(database_.ColumnsString(","), "name,age");
  EXPECT_EQ(Dump(database_), "Bert,4;Anna,31;Cleo,77;");
  EXPECT_EQ(database_.RowsAffected(), 3);
}

TEST_F(qzelSQLiteTest, ResultWithoutRowsHasNoColumnsEither) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT * FROM people"));
  EXPECT_TRUE(database_.execute("SELECT * FROM people WHERE age>100"));
  EXPECT_EQ(database_.RowsCount(), 0);
  EXPECT_EQ(database_.ColumnsCount(), 0);
  EXPECT_EQ(database_.RowsAffected(), 0);
  EXPECT_EQ(database_.LastError(), "");
  EXPECT_EQ(database_.ColumnsString(","), "");
}

TEST_F(qzelSQLiteTest, PositionsCountFromOne) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT name, age FROM people WHERE name='Anna'"));
  EXPECT_EQ(database_.RowsCount(), 1);
  EXPECT_EQ(database_.RowsAffected(), 1);
  EXPECT_FALSE(database_.Row(0));
  EXPECT_TRUE(database_.Row(1));
  EXPECT_FALSE(database_.Row(2));
  EXPECT_EQ(database_.RowString(0, ","), "");
  EXPECT_EQ(database_.RowString(1, ","), "Anna,31");
  EXPECT_EQ(database_.RowString(2, ","), "");
  EXPECT_EQ(database_.Column(0), "");
  EXPECT_EQ(database_.Column(1), "name");
  EXPECT_EQ(database_.Column(2), "age");
  EXPECT_EQ(database_.Column(3), "");
}

TEST_F(qzelSQLiteTest, RowValuesGoByPositionAndByColumnNameWithoutCase) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT name, age FROM people WHERE name='Anna'"));
  const SqliteRow row = *database_.Row(1);
  EXPECT_EQ(row.Count(), 2);
  EXPECT_EQ(row.Item(2), "31");
  EXPECT_EQ(row.Item("NAME"), "Anna");
  EXPECT_EQ(row.Key(2), "age");
  EXPECT_TRUE(row.HasKey("Age"));
  EXPECT_FALSE(row.HasKey("note"));
  EXPECT_EQ(SwallowedNumber([&] { row.Item("note"); }), static_cast<int>(ErrorNumber::InvalidCall));
  EXPECT_EQ(SwallowedNumber([&] { row.Item(0); }), static_cast<int>(ErrorNumber::SubscriptOutOfRange));
  EXPECT_EQ(SwallowedNumber([&] { row.Item(3); }), static_cast<int>(ErrorNumber::SubscriptOutOfRange));
}

TEST_F(qzelSQLiteTest, EveryValueIsText) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT NULL AS a, 1262304000123456 AS b, 0.5 AS c, '' AS d, x'4142' AS e"));
  EXPECT_EQ(database_.RowString(1, "|"), "|1262304000123456|0.5||AB");
}

TEST_F(qzelSQLiteTest, TextComesAsTheBytesOfTheDatabase) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT 'M\xC3\xBCll \xF0\x9F\x98\x80' AS t"));
  EXPECT_EQ(database_.Row(1)->Item(1), "M\xC3\xBCll \xF0\x9F\x98\x80");
}

TEST_F(qzelSQLiteTest, SeparatorMayBeAnyValue) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT 'a' AS x, 'b' AS y, 'c' AS z"));
  EXPECT_EQ(database_.RowString(1, std::string(", ")), "a, b, c");
  EXPECT_EQ(database_.RowString(1, ""), "abc");
  EXPECT_EQ(database_.RowString(1, 0), "a0b0c");
  EXPECT_EQ(database_.ColumnsString(1.5), "x1.5y1.5z");
}

TEST_F(qzelSQLiteTest, CharacterSeparatesAsText) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT 'a' AS x, 'b' AS y, 'c' AS z"));
  EXPECT_EQ(database_.RowString(1, ','), "a,b,c");
  EXPECT_EQ(database_.ColumnsString('\t'), "x\ty\tz");
  const char separator = '0';
  EXPECT_EQ(database_.RowString(1, separator), "a0b0c");
}

// Whether RowString takes arguments of these types at all.
template <class Position, class Separator>
constexpr bool kTakesRowOf = requires(qzelSQLite database, Position pos, Separator separator) {
  database.RowString(pos, separator);
};

TEST_F(qzelSQLiteTest, CharacterIsNoPosition) {
  static_assert(kTakesRowOf<int, char> && kTakesRowOf<std::int16_t, const char*>);
  EXPECT_FALSE((kTakesRowOf<char, int>));
  EXPECT_FALSE((kTakesRowOf<char, const char*>));
}

TEST_F(qzelSQLiteTest, TwoColumnsOfOneNameRaise) {
  Open();
  EXPECT_EQ(SwallowedNumber([&] { database_.execute("SELECT name, age, note AS NAME FROM people"); }),
            static_cast<int>(ErrorNumber::KeyExists));
  EXPECT_EQ(database_.ColumnsString(","), "name,age,NAME");
  EXPECT_EQ(database_.RowsCount(), 0);
}

TEST_F(qzelSQLiteTest, TwoColumnsOfOneNameWithoutRowsDoNotMatter) {
  Open();
  EXPECT_TRUE(database_.execute("SELECT name, name FROM people WHERE age>100"));
}

TEST_F(qzelSQLiteTest, FailedStatementEmptiesTheEarlierResult) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT * FROM people"));
  EXPECT_FALSE(database_.execute("SELECT shoe FROM people"));
  EXPECT_EQ(database_.LastError(), "no such column: shoe");
  EXPECT_EQ(database_.RowsCount(), 0);
  EXPECT_EQ(database_.ColumnsCount(), 0);
  EXPECT_EQ(database_.RowsAffected(), 0);
  EXPECT_TRUE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.LastError(), "");
}

TEST_F(qzelSQLiteTest, ResultsOutliveFurtherStatementsAndTheConnection) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT name FROM people ORDER BY name"));
  const SqliteRow row = *database_.Row(2);
  const auto rows = database_.Rows();
  const auto columns = database_.Columns();
  ASSERT_TRUE(database_.execute("SELECT age FROM people WHERE age>100"));
  database_.closeFile();
  EXPECT_EQ(row.Item("name"), "Bert");
  EXPECT_EQ(rows->Count(), 3);
  EXPECT_EQ(rows->Item(3).Item(1), "Cleo");
  EXPECT_EQ(columns->Item(1), "name");
  EXPECT_EQ(database_.RowsCount(), 0);
}

TEST_F(qzelSQLiteTest, RowsAffectedSpeaksOfTheLatestStatementOfAnyConnection) {
  Open();
  ASSERT_TRUE(database_.execute("SELECT * FROM people"));
  qzelSQLite other;
  other.file = database_.file;
  ASSERT_TRUE(other.openFile());
  ASSERT_TRUE(other.execute("SELECT * FROM people WHERE age>50"));
  EXPECT_EQ(database_.RowsAffected(), 1);
  EXPECT_EQ(database_.RowsCount(), 3);
  ASSERT_TRUE(other.execute("CREATE TEMP TABLE t(a)"));
  EXPECT_EQ(database_.RowsAffected(), 0);
  other.closeFile();
}

struct RowLimitCase {
  int rows;
  int number;
  int held;
};

class RowLimit : public qzelSQLiteTest, public testing::WithParamInterface<RowLimitCase> {};

TEST_P(RowLimit, RowsAreCountedInSixteenBits) {
  Open();
  const std::string sql = "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" +
                          std::to_string(GetParam().rows) + ") SELECT i FROM n";
  EXPECT_EQ(SwallowedNumber([&] { database_.execute(sql); }), GetParam().number);
  EXPECT_EQ(database_.RowsCount(), GetParam().held);
  EXPECT_EQ(database_.RowString(GetParam().held, ""), std::to_string(GetParam().held));
}

INSTANTIATE_TEST_SUITE_P(AtTheBound, RowLimit,
                         testing::Values(RowLimitCase{32766, 0, 32766}, RowLimitCase{32767, 0, 32767},
                                         RowLimitCase{32768, 6, 32767}, RowLimitCase{40000, 6, 32767}),
                         [](const auto& each) { return std::to_string(each.param.rows) + "Rows"; });

TEST_F(qzelSQLiteTest, TooManyRowsTellHowMany) {
  Open();
  try {
    database_.execute(
        "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<40000) SELECT i FROM n");
    FAIL() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_STREQ(failure.what(), "overflow: the result has 40000 rows, at most 32767 fit");
  }
}

// --- Beside other programs

TEST_F(qzelSQLiteTest, LockedDatabaseIsAnErrorAtOnce) {
  SqliteFile other(folder_.Native("people.sqlite"));
  other.Run("BEGIN EXCLUSIVE");
  Open();
  EXPECT_FALSE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.LastError(), "database is locked");
  other.Run("COMMIT");
  EXPECT_TRUE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.RowsCount(), 3);
}

TEST_F(qzelSQLiteTest, LogHeldExclusivelyIsLocked) {
  SqliteFile other(folder_.Native("people.sqlite"));
  other.Run("PRAGMA locking_mode=EXCLUSIVE; PRAGMA journal_mode=WAL; DELETE FROM people");
  Open();
  EXPECT_FALSE(database_.execute("SELECT * FROM people"));
  EXPECT_EQ(database_.LastError(), "database is locked");
}

TEST_F(qzelSQLiteTest, WriterWithALogIsReadUpToItsLastCommit) {
  SqliteFile other(folder_.Native("people.sqlite"));
  other.Run(
      "PRAGMA journal_mode=WAL; INSERT INTO people VALUES('Dora',5,NULL);"
      "BEGIN IMMEDIATE; INSERT INTO people VALUES('Emil',6,NULL)");
  Open();
  ASSERT_TRUE(database_.execute("SELECT name FROM people"));
  EXPECT_EQ(Dump(database_), "Anna;Bert;Cleo;Dora;");
  EXPECT_TRUE(database_.closeFile());
  other.Run("COMMIT");
}

// A folder as another program may leave it, and what a reader sees in it.
struct LeftBehind {
  const char* name;
  const char* prepare;  // run on a database of three people
  bool keepLog;         // -wal or -journal, as it was before the program ended
  bool keepIndex;       // -shm
  const char* rows;     // "" if it can't be read
};

class ReadingChangesNothing : public qzelSQLiteTest, public testing::WithParamInterface<LeftBehind> {};

TEST_P(ReadingChangesNothing, WhateverWasLeftBehind) {
  const std::string source = "people.sqlite";
  folder_.MakeFolder("left");
  {
    SqliteFile other(folder_.Native(source));
    other.Run(GetParam().prepare);
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Native())) {
      const std::string name = entry.path().filename().string();
      const bool isIndex = name == source + "-shm";
      const bool isLog = name == source + "-wal" || name == source + "-journal";
      if (!entry.is_regular_file() || (isIndex && !GetParam().keepIndex) || (isLog && !GetParam().keepLog))
        continue;
      std::filesystem::copy(entry.path(), folder_.Native("left\\" + name));
    }
  }
  // The reader's marks in the index of a log aren't content.
  const auto contentWithoutIndex = [&] {
    auto content = FolderContent(folder_.Native("left"));
    if (const auto index = content.find(source + "-shm"); index != content.end()) index->second = "index";
    return content;
  };

  const auto before = contentWithoutIndex();
  Open("left\\people.sqlite");
  EXPECT_EQ(database_.execute("SELECT name FROM people"), GetParam().rows[0] != '\0');
  EXPECT_EQ(Dump(database_), GetParam().rows);
  EXPECT_TRUE(database_.closeFile());
  EXPECT_EQ(contentWithoutIndex(), before);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ReadingChangesNothing,
    testing::Values(
        LeftBehind{"PlainDatabase", "SELECT 1", false, false, "Anna;Bert;Cleo;"},
        LeftBehind{"LogClosedCleanly", "PRAGMA journal_mode=WAL", false, false, "Anna;Bert;Cleo;"},
        LeftBehind{"LogWithRows", "PRAGMA journal_mode=WAL; DELETE FROM people WHERE name='Anna'", true,
                   false, "Bert;Cleo;"},
        LeftBehind{"LogWithRowsAndIndex", "PRAGMA journal_mode=WAL; DELETE FROM people WHERE name='Anna'",
                   true, true, "Bert;Cleo;"},
        // Half a transaction is in the file; only a rollback would make it whole.
        LeftBehind{"TransactionCutShort",
                   "PRAGMA cache_size=1; BEGIN; DELETE FROM people;"
                   "CREATE TABLE filler AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n "
                   "WHERE i<500) "
                   "SELECT hex(randomblob(200)) AS h FROM n",
                   true, false, ""}),
    [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace vorlent
