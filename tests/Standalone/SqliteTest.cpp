#include "Standalone/Sqlite.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Platform/Failure.h"
#include "Standalone/MemoryFolder.h"

namespace vorlent {
namespace {

class SqliteTest : public ::testing::Test {
 protected:
  SqliteTest() { database_.Execute("CREATE TABLE t (number INTEGER, text TEXT UNIQUE)"); }

  std::int64_t Count() { return SqliteStatement(database_, "SELECT count(*) FROM t").RunForNumber(); }

  MemoryFolder folder_;
  SqliteDatabase database_{folder_.Path("t.sqlite"), 0};
};

TEST_F(SqliteTest, AStatementRunsAnyNumberOfTimes) {
  SqliteStatement insert(database_, "INSERT INTO t VALUES (?, ?)");
  for (std::int64_t i = 1; i <= 3; ++i) {
    const std::string text = "text " + std::to_string(i);
    insert.Bind(1, i).Bind(2, text).Run();
    EXPECT_EQ(database_.LastRow(), i);
  }
  SqliteStatement select(database_, "SELECT number, text FROM t WHERE number >= ? ORDER BY number");
  for (int round = 0; round < 2; ++round) {
    select.Bind(1, std::int64_t{2});
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(select.Number(0), 2);
    EXPECT_EQ(select.Text(1), "text 2");
    ASSERT_TRUE(select.Step());
    EXPECT_FALSE(select.Step());
  }
}

TEST_F(SqliteTest, TextKeepsZeroCharactersAndMayBeEmpty) {
  const std::string odd("a\0b", 3);
  SqliteStatement insert(database_, "INSERT INTO t VALUES (1, ?)");
  insert.Bind(1, odd).Run();
  insert.Bind(1, std::string_view()).Run();
  SqliteStatement select(database_, "SELECT text, text IS NULL FROM t ORDER BY rowid");
  ASSERT_TRUE(select.Step());
  EXPECT_EQ(select.Text(0), odd);
  ASSERT_TRUE(select.Step());
  EXPECT_EQ(select.Text(0), "");
  EXPECT_EQ(select.Number(1), 0);
}

TEST_F(SqliteTest, AFailedStatementNamesTheFileAndCanBeRunAgain) {
  SqliteStatement insert(database_, "INSERT INTO t VALUES (1, ?)");
  insert.Bind(1, "same").Run();
  try {
    insert.Bind(1, "same").Run();
    FAIL() << "was inserted twice";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::DeviceIo));
    EXPECT_THAT(failure.what(), ::testing::HasSubstr("t.sqlite: UNIQUE constraint failed"));
  }
  insert.Bind(1, "other").Run();
  EXPECT_EQ(Count(), 2);
  EXPECT_THROW(SqliteStatement(database_, "SELECT nothing FROM nowhere"), Failure);
  EXPECT_THROW(database_.Execute("nonsense"), Failure);
}

TEST_F(SqliteTest, AWalkThatEndsEarlyLeavesItsStatementReady) {
  database_.Execute("INSERT INTO t VALUES (1, 'a'), (2, 'b')");
  SqliteStatement select(database_, "SELECT number FROM t WHERE number >= ?");
  try {
    SqliteWalk row(select.Bind(1, std::int64_t{1}));
    ASSERT_TRUE(row.Step());
    throw Failure(ErrorNumber::DeviceIo, "something else");
  } catch (const Failure&) {
  }
  SqliteWalk row(select.Bind(1, std::int64_t{2}));
  ASSERT_TRUE(row.Step());
  EXPECT_EQ(row.Number(0), 2);
  EXPECT_FALSE(row.Step());
}

TEST_F(SqliteTest, ANumberIsThatOfTheFirstRow) {
  SqliteStatement select(database_, "SELECT number FROM t ORDER BY number");
  EXPECT_EQ(select.RunForNumber(), 0);
  database_.Execute("INSERT INTO t VALUES (7, 'a'), (8, 'b')");
  EXPECT_EQ(select.RunForNumber(), 7);
  EXPECT_EQ(select.RunForNumber(), 7);
}

TEST_F(SqliteTest, AStatementIsExactlyOne) {
  using namespace std::string_literals;
  for (const std::string& sql :
       {""s, " -- nothing"s, "DELETE FROM t; DELETE FROM t"s, "DELETE FROM t\0"s, "DELETE FROM t; --"s})
    EXPECT_THROW(SqliteStatement(database_, sql), Failure) << sql;
  EXPECT_NO_THROW(SqliteStatement(database_, "DELETE FROM t ; \r\n"));
}

TEST_F(SqliteTest, StatementsThatAreStillHeldLoseTheirLocksWithTheDatabase) {
  database_.Execute("INSERT INTO t VALUES (1, 'a'), (2, 'b')");
  auto other = std::make_unique<SqliteDatabase>(folder_.Path("t.sqlite"), 0);
  SqliteStatement select(*other, "SELECT number FROM t");
  ASSERT_TRUE(select.Step());
  EXPECT_THROW(database_.Execute("DROP TABLE t"), Failure);
  other.reset();
  database_.Execute("DROP TABLE t");
}

TEST_F(SqliteTest, ADatabaseThatMustBeThereIsNotMadeAndItsNumbersCanBeSqlites) {
  using Numbers = SqliteDatabase::Numbers;
  constexpr int kError = 1;
  constexpr int kCantOpen = 14;
  const std::string missing = folder_.Path("new.sqlite");
  EXPECT_EQ(SwallowedNumber([&] { SqliteDatabase::OpenExisting(missing, 0, Numbers::OfSqlite); }), kCantOpen);
  EXPECT_FALSE(folder_.Exists("new.sqlite"));
  SqliteDatabase other = SqliteDatabase::OpenExisting(folder_.Path("t.sqlite"), 0, Numbers::OfSqlite);
  EXPECT_EQ(SwallowedNumber([&] { other.Execute("nonsense"); }), kError);
  EXPECT_EQ(SwallowedNumber([&] { SqliteStatement(other, "nonsense"); }), kError);
  EXPECT_EQ(SwallowedNumber([&] { SqliteStatement(other, ""); }), kError);
}

TEST_F(SqliteTest, ATransactionGoesBackUnlessItIsCommitted) {
  {
    SqliteTransaction transaction(database_);
    database_.Execute("INSERT INTO t VALUES (1, 'a')");
  }
  EXPECT_EQ(Count(), 0);
  {
    SqliteTransaction transaction(database_);
    database_.Execute("INSERT INTO t VALUES (1, 'a')");
    transaction.Commit();
  }
  EXPECT_EQ(Count(), 1);
  EXPECT_FALSE(database_.InTransaction());
}

TEST_F(SqliteTest, APartOfATransactionGoesBackByItself) {
  SqliteTransaction whole(database_);
  database_.Execute("INSERT INTO t VALUES (1, 'a')");
  {
    SqliteTransaction part(database_);
    database_.Execute("INSERT INTO t VALUES (2, 'b')");
  }
  {
    SqliteTransaction part(database_);
    database_.Execute("INSERT INTO t VALUES (3, 'c')");
    part.Commit();
  }
  EXPECT_TRUE(database_.InTransaction());
  whole.Commit();
  EXPECT_EQ(Count(), 2);
}

TEST_F(SqliteTest, ALockedDatabaseIsPermissionDenied) {
  SqliteDatabase other(folder_.Path("t.sqlite"), 0);
  SqliteTransaction transaction(database_);
  try {
    SqliteTransaction refused(other);
    FAIL() << "was let in";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::PermissionDenied));
  }
}

TEST_F(SqliteTest, ADatabaseThatCantBeOpenedIsPathAccess) {
  try {
    SqliteDatabase nowhere(folder_.Path("no\\such\\folder.sqlite"), 0);
    FAIL() << "was opened";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::PathAccess));
    EXPECT_THAT(failure.what(), ::testing::HasSubstr("folder.sqlite"));
  }
}

}  // namespace
}  // namespace vorlent
