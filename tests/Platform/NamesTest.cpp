#include "Platform/Names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

TEST(NamesTest, CodePageNamesBecomeUtf8AndBack) {
  struct Row {
    std::string windows, native;
  };
  const Row rows[] = {
      {"Inbox", "Inbox"},
      {std::string("Entwürfe"_cp), "Entwürfe"},
      {std::string("5 €"_cp), "5 €"},
      {std::string("„Œuvre“ – Ÿ"_cp), "„Œuvre“ – Ÿ"},
      {"Черновики", "Черновики"},  // not in the page: its UTF-8 bytes
      {"Ärger mit Ж", "Ärger mit Ж"},
      {"Ã¼", "Ã¼"},  // its code-page bytes would read as "ü"
  };
  for (const Row& row : rows) {
    EXPECT_EQ(os::ToNativeName(row.windows), row.native);
    EXPECT_EQ(os::ToWindowsName(row.native), row.windows);
  }
}

TEST(NamesTest, Utf8NameGivenAsSuchPasses) {
  EXPECT_EQ(os::ToNativeName("Entwürfe"), "Entwürfe");
}

// --- Patterns and order ----------------------------------------------------------------------------------

TEST(NameMatchesTest, StarsAndQuestionMarks) {
  struct Row {
    std::string_view name, pattern;
    bool matches;
  };
  const Row rows[] = {
      {"Inbox", "*.*", true},
      {"Inbox.msf", "*.*", true},
      {"Inbox", "*", true},
      {"", "*", true},
      {"Inbox.msf", "*.msf", true},
      {"Inbox.MSF", "*.msf", true},
      {"Inbox", "*.msf", false},
      {"msf", "*.msf", false},
      {"a1b", "a?b", true},
      {"ab", "a?b", false},
      {"abb", "a?b", true},
      {"Inbox", "inbox", true},
      {"Inbox", "inbo", false},
      {"Inbox", "nbox", false},
      {"aXbXc", "a*x*c", true},
      {"abcabd", "*abd", true},
      {"abcabd", "*abc", false},
      {"x", "", false},
      {"", "", true},
      {"x", "**?**", true},
      {"", "?", false},
      {"att1", "att*", true},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(os::NameMatches(row.name, row.pattern), row.matches) << row.name << " " << row.pattern;
  }
  EXPECT_TRUE(os::NameMatches("Entwürfe"_cp, "ENTWÜRFE*"_cp));
}

TEST(NameMatchesTest, OfUnicodeWholeCharactersMatchInEitherCase) {
  const ScopedRules today(Rules::Today());
  EXPECT_TRUE(os::NameMatches("Черновики", "чер?ОВИКИ"));
  EXPECT_TRUE(os::NameMatches("😀.txt", "?.TXT"));
  EXPECT_FALSE(os::NameMatches("😀.txt", "??.txt"));
  EXPECT_TRUE(os::NameMatches("Entw\xFCrfe", "ENTWÜRFE*")) << "a name that isn't UTF-8";
}

TEST(NameMatchesTest, ManyStarsTakeNoTime) {
  const std::string name(2000, 'a');
  std::string pattern;
  for (int i = 0; i < 500; ++i)
    pattern += "a*";
  EXPECT_FALSE(os::NameMatches(name, pattern + "b"));
  EXPECT_TRUE(os::NameMatches(name, pattern));
}

TEST(NameKeyTest, OrderIsThatOfUpperCaseCharacters) {
  // "_" stands after the capitals and in front of the small letters.
  std::vector<std::string> names = {"_x", "b", "A", "a1", "B2", std::string("ä"_cp), std::string("€"_cp),
                                    "z",  "Ж", "1"};
  std::sort(names.begin(), names.end(),
            [](const auto& a, const auto& b) { return os::NameKey(a) < os::NameKey(b); });
  EXPECT_THAT(names, ElementsAre("1", "A", "a1", "b", "B2", "z", "_x", std::string("ä"_cp), "Ж",
                                 std::string("€"_cp)));
}

TEST(NameKeyTest, OrderIsTheSameByAllRules) {
  // In the code page, and in UTF-8.
  std::vector<std::pair<std::string, std::string>> names;
  for (int code = 1; code < 256; ++code) {
    const std::string page = "n" + std::string(1, static_cast<char>(code));
    names.emplace_back(page, codepage::ToUtf8(page));
  }
  const auto byKey = [](auto member) {
    return [=](const auto& a, const auto& b) { return os::NameKey(a.*member) < os::NameKey(b.*member); };
  };
  std::stable_sort(names.begin(), names.end(), byKey(&std::pair<std::string, std::string>::first));
  const auto sorted = names;
  const ScopedRules today(Rules::Today());
  std::stable_sort(names.begin(), names.end(), byKey(&std::pair<std::string, std::string>::second));
  EXPECT_EQ(names, sorted);
}

TEST(NameKeyTest, NamesOfUnicodeThatDifferInCaseHaveOneKey) {
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(os::NameKey("Черновики ŠÿΏ"), os::NameKey("ЧЕРНОВИКИ šŸώ"));
  EXPECT_NE(os::NameKey("К"), os::NameKey("Њ"));
  EXPECT_NE(os::NameKey("é"), os::NameKey("e\u0301")) << "two names on the disk";
  EXPECT_EQ(os::NameKey("R\xFC\x63k"), os::NameKey("RÜCK")) << "a name that isn't UTF-8";
}

TEST(NameKeyTest, NamesThatDifferInCaseHaveOneKey) {
  EXPECT_EQ(os::NameKey("ÄÖÜ šœžÿ"_cp), os::NameKey("äöü ŠŒŽŸ"_cp));
  EXPECT_EQ(os::NameKey("abcЖ"), os::NameKey("ABCЖ"));
  EXPECT_NE(os::NameKey("К"), os::NameKey("Њ"));  // bytes that differ as small and capital letters do
  EXPECT_NE(os::NameKey("ß"_cp), os::NameKey("ÿ"_cp));
}

}  // namespace
}  // namespace vorlent
