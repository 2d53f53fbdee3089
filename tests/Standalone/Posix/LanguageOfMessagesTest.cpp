#include <gtest/gtest.h>

#include "Standalone/Phrases.h"
#include "Support/ScopedEnvironment.h"

namespace vorlent {
namespace {

TEST(LanguageOfMessagesTest, LanguageIsThatOfTheMessages) {
  const ScopedEnvironment none("LC_ALL", nullptr), noMessages("LC_MESSAGES", nullptr),
      noLang("LANG", nullptr);
  EXPECT_EQ(ProgramLanguage(), Language::English);
  const ScopedEnvironment lang("LANG", "de_AT.UTF-8");
  EXPECT_EQ(ProgramLanguage(), Language::German);
  const ScopedEnvironment messages("LC_MESSAGES", "fr_FR");
  EXPECT_EQ(ProgramLanguage(), Language::English);
  const ScopedEnvironment all("LC_ALL", "de");
  EXPECT_EQ(ProgramLanguage(), Language::German);
}

}  // namespace
}  // namespace vorlent
