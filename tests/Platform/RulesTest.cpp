#include "Platform/Rules.h"

#include <gtest/gtest.h>

#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

TEST(RulesTest, ThoseOfWindowsAreInForceUntilTheHostChooses) {
  EXPECT_EQ(CurrentRules(), Rules::Windows());
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(CurrentRules(), Rules::Today());
}

TEST(RulesTest, EachRuleIsADifference) {
  const Rules windows = Rules::Windows();
  const Rules today = Rules::Today();
#define RULE(Type, name, onWindows, onToday) EXPECT_NE(windows.name, today.name) << #name;
#include "Platform/Rules.def"
#undef RULE
}

TEST(RulesTest, ScopeGivesBackWhatWasInForceBefore) {
  {
    const ScopedRules outer({.lines = LineRule::Native});
    { const ScopedRules inner(Rules::Today()); }
    EXPECT_EQ(CurrentRules(), (Rules{.lines = LineRule::Native}));
  }
  EXPECT_EQ(CurrentRules(), Rules::Windows());
}

}  // namespace
}  // namespace vorlent
