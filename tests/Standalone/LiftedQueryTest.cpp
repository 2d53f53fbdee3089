#include "Standalone/LiftedQuery.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlent {
namespace {

// The query and its values in one line: "SELECT a FROM t WHERE b=? [x]".
std::string Lifted(std::string_view sql) {
  const LiftedQuery query = LiftLiterals(sql);
  std::string text = query.sql;
  for (const std::string& value : query.values)
    text += " [" + value + "]";
  return text;
}

TEST(LiftedQuery, ComparedLiteralsBecomeParameters) {
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b='x'"), "SELECT a FROM t WHERE b=? [x]");
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b='x' AND c='y'"), "SELECT a FROM t WHERE b=? AND c=? [x] [y]");
  EXPECT_EQ(Lifted("select a from t where b = 'x' order by a"), "select a from t where b = ? order by a [x]");
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b<='x' OR c=1 AND d!='y'"),
            "SELECT a FROM t WHERE b<=? OR c=1 AND d!=? [x] [y]");
}

TEST(LiftedQuery, DoubledQuotesStandForOne) {
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b='it''s'"), "SELECT a FROM t WHERE b=? [it's]");
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b=''"), "SELECT a FROM t WHERE b=? []");
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b=''''"), "SELECT a FROM t WHERE b=? [']");
}

TEST(LiftedQuery, SignsInsideLiteralsAreOfNoMeaning) {
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b='(x); -- [\"?' AND c='/*'"),
            "SELECT a FROM t WHERE b=? AND c=? [(x); -- [\"?] [/*]");
}

TEST(LiftedQuery, QueryWithoutLiteralsStaysAsItIs) {
  EXPECT_EQ(Lifted("SELECT a FROM t WHERE b=1"), "SELECT a FROM t WHERE b=1");
}

TEST(LiftedQuery, EverythingElseStaysAsItIs) {
  using namespace std::string_literals;
  const std::string queries[] = {
      "",
      "'",
      "SELECT 'x' AS a FROM t WHERE b='y'",               // a column's name or value
      "SELECT a='x' FROM t",                              // a column named after its literal
      "SELECT a FROM t WHERE b LIKE 'x'",                 // not a comparison
      "SELECT a FROM t WHERE b='x'||'y'",                 // part of a longer operand
      "SELECT a FROM t WHERE b='x' 'y'",                  // an error that must stay one
      "SELECT a FROM t WHERE b='x",                       // not closed
      "SELECT a FROM t WHERE b=x'00'",                    // a blob
      "SELECT a FROM t WHERE (b='x')",                    // parentheses
      "SELECT max(a) FROM t WHERE b='x'",                 // the same in front of WHERE
      "SELECT a FROM t WHERE b='x' AND c IN (SELECT 1)",  // and after the literals
      "SELECT \"a\" FROM t WHERE b='x'",                  // quoted names
      "SELECT a FROM t WHERE [b]='x'",
      "SELECT a FROM t WHERE `b`='x'",
      "SELECT a FROM t WHERE b=? AND c='x'",  // parameters
      "SELECT a FROM t WHERE b=:p AND c='x'",
      "SELECT a FROM t WHERE b='x' -- c='y'",  // comments
      "SELECT a FROM t WHERE b='x' /* c */",
      "SELECT a FROM t WHERE b='x';",  // the end of the statement
      "SELECT a FROM t WHERE b='x'; DELETE FROM t",
      "UPDATE t SET a='x' WHERE b='y'",  // no SELECT
      "SELECT a FROM t WHERE b='x\0y'"s,
  };
  for (const std::string& query : queries)
    EXPECT_EQ(Lifted(query), query);
}

}  // namespace
}  // namespace vorlent
