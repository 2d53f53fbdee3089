#include "Connectors/Mozilla/ImportCommand.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/CodePage.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(ImportCommandTest, EmptyCommandAsksForNothing) {
  const ImportCommand command = ImportCommand::Parse("");
  EXPECT_EQ(command.target, "");
  EXPECT_FALSE(command.move);
  EXPECT_FALSE(command.tree);
  EXPECT_FALSE(command.subfolderKeywords);
  EXPECT_THAT(command.keywords, IsEmpty());
  EXPECT_THAT(command.mailboxes, IsEmpty());
}

TEST(ImportCommandTest, EveryWordSetsItsPart) {
  const ImportCommand command = ImportCommand::Parse(
      "target Mein Archiv\r\naction move\r\nkeyword #subpath\r\noption tree\r\nkeyword privat\r\n"
      "import C:\\Mail\\Inbox\r\n");
  EXPECT_EQ(command.target, "Mein Archiv");
  EXPECT_TRUE(command.move);
  EXPECT_TRUE(command.tree);
  EXPECT_TRUE(command.subfolderKeywords);
  EXPECT_THAT(command.keywords, ElementsAre("privat"));
  EXPECT_THAT(command.mailboxes, ElementsAre("C:\\Mail\\Inbox"));
}

TEST(ImportCommandTest, LinesEndWithLineFeedAndAnOptionalCarriageReturn) {
  for (const char* text : {"target A\naction move\n", "target A\r\naction move\r\n", "target A\naction move",
                           "target A\r\naction move\r"}) {
    const ImportCommand command = ImportCommand::Parse(text);
    EXPECT_EQ(command.target, "A") << text;
    EXPECT_TRUE(command.move) << text;
  }
}

TEST(ImportCommandTest, OnlyOneCarriageReturnBelongsToTheLineEnd) {
  EXPECT_EQ(ImportCommand::Parse("target A\r\r\n").target, "A\r");
}

TEST(ImportCommandTest, LoneCarriageReturnDoesNotEndALine) {
  EXPECT_EQ(ImportCommand::Parse("target A\raction move\n").target, "A\raction move");
}

TEST(ImportCommandTest, LaterTargetReplacesTheEarlier) {
  EXPECT_EQ(ImportCommand::Parse("target A\ntarget B\n").target, "B");
  EXPECT_EQ(ImportCommand::Parse("target A\ntarget\n").target, "");
}

TEST(ImportCommandTest, ArgumentIsAllBehindTheFirstBlank) {
  EXPECT_EQ(ImportCommand::Parse("target  A  b ").target, " A  b ");
  EXPECT_THAT(ImportCommand::Parse("import  C:\\x").mailboxes, ElementsAre(" C:\\x"));
  EXPECT_EQ(ImportCommand::Parse("target").target, "");
  EXPECT_EQ(ImportCommand::Parse("target ").target, "");
  EXPECT_EQ(ImportCommand::Parse("target\tA").target, "");
}

TEST(ImportCommandTest, OnlyExactlyMoveMovesAndTheLastLineWins) {
  const struct {
    const char* text;
    bool move;
  } rows[] = {
      {"action move", true},          {"action Move", false},  {"action MOVE", false},
      {"action copy", false},         {"action", false},       {"action move ", false},
      {"action  move", false},        {"action other", false}, {"action copy\naction move", true},
      {"Action move", false},         {" action move", false}, {"action move\naction copy", false},
      {"action move\naction", false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(ImportCommand::Parse(row.text).move, row.move) << row.text;
}

TEST(ImportCommandTest, OnlyExactlyTreeSetsTheTreeFlagAndTheLastLineWins) {
  const struct {
    const char* text;
    bool tree;
  } rows[] = {
      {"option tree", true}, {"option Tree", false},           {"option x\noption tree", true},
      {"option", false},     {"option tree\noption x", false}, {"option tree\noption", false},
  };
  for (const auto& row : rows)
    EXPECT_EQ(ImportCommand::Parse(row.text).tree, row.tree) << row.text;
}

TEST(ImportCommandTest, KeywordsAreJoinedByCommas) {
  const struct {
    const char* text;
    const char* keywords;
  } rows[] = {
      {"keyword a\nkeyword b\nkeyword #subpath\n", "a,b"},
      {"keyword #subpath\n", ""},
      {"keyword #subpath\nkeyword a\n", "a"},
      {"keyword a,b\nkeyword c d\n", "a,b,c d"},
      {"keyword #Subpath\n", "#Subpath"},
      {"keyword #subpath \n", "#subpath "},
      // An empty keyword is joined like any other, but a comma comes only after text.
      {"keyword\nkeyword a\n", "a"},
      {"keyword a\nkeyword\nkeyword b\n", "a,,b"},
      {"", ""},
  };
  for (const auto& row : rows)
    EXPECT_EQ(ImportCommand::Parse(row.text).KeywordText(), row.keywords) << row.text;
}

TEST(ImportCommandTest, MailboxesKeepTheirOrderAndMayRepeat) {
  EXPECT_THAT(ImportCommand::Parse("import b\nimport a\nimport b\n").mailboxes, ElementsAre("b", "a", "b"));
}

TEST(ImportCommandTest, OtherWordsAndEmptyLinesArePassedOver) {
  const ImportCommand command =
      ImportCommand::Parse("\n\r\n# comment\nTarget A\nimports b\nimport\tc\n\ntarget Z\n");
  EXPECT_EQ(command.target, "Z");
  EXPECT_THAT(command.mailboxes, IsEmpty());
}

TEST(ImportCommandTest, TextWritesTheLinesInTheWizardsOrder) {
  ImportCommand command;
  command.target = "Archiv 2010";
  command.move = true;
  command.subfolderKeywords = true;
  command.tree = true;
  command.keywords = {"Büro"_cp.data(), "privat"};
  command.mailboxes = {"C:\\Mail\\Inbox", "C:\\Mail\\Sent"};
  EXPECT_EQ(command.Text(),
            "target Archiv 2010\r\naction move\r\nkeyword #subpath\r\noption tree\r\nkeyword B\xFCro\r\n"
            "keyword privat\r\nimport C:\\Mail\\Inbox\r\nimport C:\\Mail\\Sent\r\n");
}

TEST(ImportCommandTest, TextOfAnEmptyCommandHasTargetAndAction) {
  EXPECT_EQ(ImportCommand().Text(), "target \r\naction copy\r\n");
}

TEST(ImportCommandTest, WhatIsWrittenReadsBackAlike) {
  ImportCommand command;
  command.target = " blanks  kept ";
  command.subfolderKeywords = true;
  command.keywords = {"a b", "c"};
  command.mailboxes = {"C:\\a b\\Inbox", "", " x"};
  const ImportCommand back = ImportCommand::Parse(command.Text());
  EXPECT_EQ(back.target, command.target);
  EXPECT_EQ(back.move, command.move);
  EXPECT_EQ(back.tree, command.tree);
  EXPECT_EQ(back.subfolderKeywords, command.subfolderKeywords);
  EXPECT_EQ(back.keywords, command.keywords);
  EXPECT_EQ(back.mailboxes, command.mailboxes);
  EXPECT_EQ(back.Text(), command.Text());
}

}  // namespace
}  // namespace vorlent
