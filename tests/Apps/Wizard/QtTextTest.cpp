#include "Apps/Wizard/QtText.h"

#include <gtest/gtest.h>

#include "Platform/Settings.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::wizard {
namespace {

class NativePathsTest : public testing::Test {
 protected:
  NativePathsTest() {
    os::SetDrive('S', "/srv/mail");
    os::SetHomeFolder("/home/anna");
  }
  ~NativePathsTest() override { os::ResetSettings(); }

  static std::string Shown(std::string_view text) { return QtWithNativePaths(text).toStdString(); }
};

TEST_F(NativePathsTest, PathsAreWrittenAsThisSystemHasThem) {
  EXPECT_EQ(Shown("C:\\home\\anna\\Inbox"), "/home/anna/Inbox");
  EXPECT_EQ(Shown("s:\\x\\"), "/srv/mail/x/");
  EXPECT_EQ(Shown("C:\\"), "/");
  EXPECT_EQ(Shown("C:\\home\\anna\\AppData\\Thunderbird\\profiles.ini"),
            "/home/anna/.thunderbird/profiles.ini");
  EXPECT_EQ(Shown("C:\\B\xFCro\\\xC3\x9C"), "/Büro/Ü") << "each name for itself";
}

TEST_F(NativePathsTest, PathsAreFoundInAText) {
  EXPECT_EQ(Shown(" 12:00:00: C:\\a b\\c"), " 12:00:00: /a b/c");
  EXPECT_EQ(Shown("C:\\a -> S:\\b"), "/a -> /srv/mail/b");
  EXPECT_EQ(Shown("Account 'x' (C:\\a\\)\r\nC:\\b\r\nx\\y"), "Account 'x' (/a/)\n/b\nx\\y");
}

TEST_F(NativePathsTest, ACauseIsItsPathAndItsReasonAsTheyAre) {
  const auto shown = [](const Cause& why) { return ShownCause(why).toStdString(); };
  EXPECT_EQ(shown({"C:\\a: b\\c", "locked by x\\y: C:\\d"}), "/a: b/c: locked by x\\y: C:\\d");
  EXPECT_EQ(shown({"C:\\B\xFCro", "K\xF6nnte fehlen"}), "/Büro: Könnte fehlen");
  EXPECT_EQ(shown({.reason = "C:\\a is no reason: x"}), "C:\\a is no reason: x");
}

TEST_F(NativePathsTest, WhatAPersonCanDoStandsBelowTheCause) {
  EXPECT_EQ(ShownWithHint({"C:\\a", "full", Hint::MakeRoom}).toStdString(),
            "/a: full\n\nBitte auf diesem Datenträger Platz schaffen und es noch einmal versuchen.");
  EXPECT_EQ(ShownWithHint({"C:\\a", "torn"}).toStdString(), "/a: torn");
}

TEST_F(NativePathsTest, WhatIsNoPathStays) {
  for (const char* text :
       {"", "thunderbird://p/*", "C:", "C:x", "x\\y", "abC:\\x", "Q:\\nowhere\\x", ":\\", "1:\\x"})
    EXPECT_EQ(Shown(text), text);
}

TEST_F(NativePathsTest, ManyPathsOfOneFolderAndOfOthers) {
  NativePaths paths;
  EXPECT_EQ(paths.Of("S:\\a\\1"), "/srv/mail/a/1");
  EXPECT_EQ(paths.Of("S:\\a\\2"), "/srv/mail/a/2");
  EXPECT_EQ(paths.Of("Q:\\a\\2"), "Q:\\a\\2");
  EXPECT_EQ(paths.Of("Q:\\a\\3"), "Q:\\a\\3");
  EXPECT_EQ(paths.Of("Inbox"), "Inbox");
  EXPECT_EQ(paths.Of("S:\\a\\1"), "/srv/mail/a/1");
}

}  // namespace
}  // namespace vorlent::wizard
