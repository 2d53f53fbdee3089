#include "Platform/Locale.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Support/ScopedEnvironment.h"
#include "Support/TemporaryFolder.h"

// The C library keeps a copy of LOCPATH for each locale it loads from there; the leak checker is told that
// this is so.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:argz_add_sep";
}

namespace vorlent {
namespace {

// The system may hold no locale but its plain one, so the test compiles one with a decimal comma.
class LocaleTest : public testing::Test {
 protected:
  void SetUp() override {
    folder_.Write("source",
                  "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\nEND LC_NUMERIC\n");
    // The compiler warns of each category that isn't there and says so by its result.
    const std::string command = "cd '" + folder_.Native().string() +
                                "' && localedef -c -i ./source -f ANSI_X3.4-1968 ./comma >/dev/null 2>&1";
    (void)!std::system(command.c_str());
    ASSERT_TRUE(folder_.Exists("comma/LC_NUMERIC"));
  }

  TemporaryFolder folder_;
  ScopedEnvironment path_{"LOCPATH", folder_.Native().c_str()};
  ScopedEnvironment all_{"LC_ALL", nullptr};
  ScopedEnvironment numeric_{"LC_NUMERIC", nullptr};
  ScopedEnvironment lang_{"LANG", nullptr};
};

TEST_F(LocaleTest, DecimalSignIsThatOfTheUsersLocale) {
  EXPECT_EQ(os::DecimalSign(), '.');
  {
    const ScopedEnvironment lang("LANG", "comma");
    EXPECT_EQ(os::DecimalSign(), ',');
    const ScopedEnvironment numeric("LC_NUMERIC", "C");
    EXPECT_EQ(os::DecimalSign(), '.');
    const ScopedEnvironment all("LC_ALL", "comma");
    EXPECT_EQ(os::DecimalSign(), ',');
  }
  EXPECT_EQ(os::DecimalSign(), '.');
}

TEST_F(LocaleTest, MessagesHaveALocaleOfTheirOwn) {
  const ScopedEnvironment messages("LC_MESSAGES", nullptr);
  EXPECT_EQ(os::MessageLocale(), "C");
  const ScopedEnvironment lang("LANG", "xx_YY");
  EXPECT_EQ(os::MessageLocale(), "xx_YY");
  const ScopedEnvironment numeric("LC_NUMERIC", "de_DE");
  EXPECT_EQ(os::MessageLocale(), "xx_YY");
  const ScopedEnvironment german("LC_MESSAGES", "de_DE");
  EXPECT_EQ(os::MessageLocale(), "de_DE");
  const ScopedEnvironment all("LC_ALL", "en_US");
  EXPECT_EQ(os::MessageLocale(), "en_US");
}

TEST_F(LocaleTest, UnknownLocaleHasAPoint) {
  const ScopedEnvironment all("LC_ALL", "xx_YY.no-such");
  EXPECT_EQ(os::DecimalSign(), '.');
}

TEST_F(LocaleTest, LocaleOfTheProcessStays) {
  const ScopedEnvironment all("LC_ALL", "comma");
  EXPECT_EQ(os::DecimalSign(), ',');
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  EXPECT_STREQ(text, "1.5");
}

}  // namespace
}  // namespace vorlent
