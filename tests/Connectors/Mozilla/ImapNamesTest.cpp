#include "Connectors/Mozilla/ImapNames.h"

#include <gtest/gtest.h>

namespace vorlent {
namespace {

TEST(ImapNamesTest, NamesOfTheStandard) {
  EXPECT_EQ(FromImapName("INBOX"), "INBOX");
  EXPECT_EQ(FromImapName("Entw&APw-rfe"), "Entwürfe");
  EXPECT_EQ(FromImapName("peter/mail/&U,BTFw-/&ZeVnLIqe-"), "peter/mail/台北/日本語");
  EXPECT_EQ(FromImapName("A&-B"), "A&B");
  EXPECT_EQ(FromImapName("&2D3eAA-"), "😀");
  EXPECT_EQ(FromImapName(""), "");
}

TEST(ImapNamesTest, WhatIsNoneGivesNothing) {
  for (const char* name : {"a & b", "R&D", "x&APw", "&AP?-", "&A-", "&2D0-", "&3gA-", "gr\xC3\xBC&-"})
    EXPECT_EQ(FromImapName(name), std::nullopt) << name;
}

}  // namespace
}  // namespace vorlent
