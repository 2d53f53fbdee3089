#include "Standalone/ConnectionText.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace vorlent {
namespace {

TEST(ConnectionTextTest, ATimeoutIsAWholeNumberThatIsNotNegative) {
  struct Row {
    std::string text;
    std::optional<int> timeout;
  };
  for (const Row& row :
       {Row{"", 2000}, Row{"Database=x", 2000}, Row{"Timeout=0", 0}, Row{"Timeout=1", 1},
        Row{"Database=x;Timeout=60000", 60000}, Row{" timeOut = 7 ;Database=x", 7}, Row{"Timeout={500}", 500},
        Row{"Timeout=-1", std::nullopt}, Row{"Timeout=", std::nullopt}, Row{"Timeout=long", std::nullopt},
        Row{"Timeout=5s", std::nullopt}, Row{"Timeout=1.5", std::nullopt},
        Row{"Timeout=99999999999", std::nullopt}, Row{"Timeout=5;Timeout=6", 6},
        Row{"Timeout;Database=x", 2000}, Row{"Timeouts=5", 2000}})
    EXPECT_EQ(ParseConnectionText(row.text).timeout, row.timeout) << row.text;
}

TEST(ConnectionTextTest, ADatabaseMayStandInBraces) {
  EXPECT_EQ(ParseConnectionText("Database={a;b}}c};Timeout=3").database, "a;b}c");
  EXPECT_EQ(ParseConnectionText("Database={a;b}}c};Timeout=3").timeout, 3);
  EXPECT_EQ(ParseConnectionText("Driver=x; database = C:\\a.sdb ").database, "C:\\a.sdb");
  EXPECT_EQ(ParseConnectionText("Driver=x").database, "");
}

}  // namespace
}  // namespace vorlent
