#include "Standalone/ShownPaths.h"

#include <gtest/gtest.h>

#include "Platform/Settings.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

class ShownPathsTest : public testing::Test {
 protected:
  ShownPathsTest() { os::SetDrive('S', "/srv/mail"); }
  ~ShownPathsTest() override { os::ResetSettings(); }
};

TEST_F(ShownPathsTest, ListsShowPathsAsTheRulesSay) {
  for (const auto& [held, native] : {std::pair("C:\\", "/"), std::pair("C:\\a\\|S:\\b\\", "/a/|/srv/mail/b/"),
                                     std::pair("8: C:\\a b\\c", "8: /a b/c"), std::pair("Inbox", "Inbox")}) {
    EXPECT_EQ(WithShownPaths(held), held);
    const ScopedRules today(Rules::Today());
    EXPECT_EQ(WithShownPaths(held), native);
  }
}

// The profiles of this system name native folders, to which the component adds its own separators.
TEST_F(ShownPathsTest, PathsFromTheRootHaveOneKindOfSeparator) {
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(WithShownPaths("/home/anna/Local Folders\\Inbox.sbd\\A"), "/home/anna/Local Folders/Inbox.sbd/A");
  EXPECT_EQ(WithShownPaths("no '/a b\\c'"), "no '/a b/c'");
  EXPECT_EQ(WithShownPaths("/a/b"), "/a/b");
  EXPECT_EQ(WithShownPaths("1/2 \\ 3, thunderbird://p/a\\b"), "1/2 \\ 3, thunderbird://p/a\\b");
}

TEST_F(ShownPathsTest, OnlyWhatIsShownNativeIsTakenNative) {
  EXPECT_FALSE(TakesPathsAsAddresses());
  const ScopedRules today(Rules::Today());
  EXPECT_TRUE(TakesPathsAsAddresses());
}

}  // namespace
}  // namespace vorlent
