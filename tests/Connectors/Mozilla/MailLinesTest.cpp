#include "Connectors/Mozilla/MailLines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "Platform/Failure.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

class MailLinesTest : public testing::Test {
 protected:
  void Open(std::string_view bytes) { lines_.Open(folder_.Write("Inbox", bytes), os::File::Mode::Read); }

  // The lines to the end.
  std::vector<std::string> Rest() {
    std::vector<std::string> rest;
    while (!lines_.AtEnd())
      rest.emplace_back(lines_.Read());
    return rest;
  }

  TemporaryFolder folder_;
  MailLines lines_;
};

// --- Reading

TEST_F(MailLinesTest, LinesComeInOrderEachFromItsPosition) {
  Open("a\r\n\r\nbc\rd\r\nlast");
  std::vector<std::uint64_t> positions;
  std::vector<std::string> texts;
  while (!lines_.AtEnd()) {
    positions.push_back(lines_.Position());
    texts.emplace_back(lines_.Read());
  }
  EXPECT_THAT(texts, ElementsAre("a", "", "bc", "d", "last"));
  EXPECT_THAT(positions, ElementsAre(1U, 4U, 6U, 9U, 12U));
  EXPECT_EQ(lines_.Position(), 16U);
}

TEST_F(MailLinesTest, LineAheadIsSeenAndStillComes) {
  Open("a\r\nb\rc");
  EXPECT_EQ(lines_.Read(), "a");
  EXPECT_EQ(lines_.Peek(), "b");
  EXPECT_EQ(lines_.Peek(), "b");
  EXPECT_EQ(lines_.Hold(), "a");
  EXPECT_EQ(lines_.Position(), 4U);
  lines_.PutBack();
  EXPECT_EQ(lines_.Position(), 1U);
  EXPECT_THAT(Rest(), ElementsAre("a", "b", "c"));
  EXPECT_EQ(lines_.Peek(), std::nullopt);
  EXPECT_EQ(lines_.Hold(), "c");
}

TEST_F(MailLinesTest, AtTheEndAndWithoutAFileThereIsNoLine) {
  EXPECT_TRUE(lines_.AtEnd());
  EXPECT_TRUE(lines_.AtFileEnd());
  EXPECT_EQ(lines_.Length(), 0U);
  Open("");
  EXPECT_TRUE(lines_.AtEnd());
  EXPECT_EQ(lines_.Read(), "");
  EXPECT_EQ(lines_.Position(), 1U);
}

TEST_F(MailLinesTest, LineIsValidThoughTheEndIsLookedFor) {
  Open("a\r\nlast");
  lines_.Read();
  const std::string_view last = lines_.Read();
  EXPECT_TRUE(lines_.AtEnd());
  EXPECT_EQ(last, "last");
}

// --- Putting back

TEST_F(MailLinesTest, LinePutBackComesAgainFromItsPosition) {
  Open("a\r\n\r\nb\r\nc\r\n");
  for (const auto& [text, position] :
       std::vector<std::pair<std::string, std::uint64_t>>{{"a", 1}, {"", 4}, {"b", 6}, {"c", 9}}) {
    EXPECT_EQ(lines_.Position(), position);
    EXPECT_EQ(lines_.Read(), text);
    // As often as is wanted.
    for (int i = 0; i < 3; ++i) {
      const std::uint64_t behind = lines_.Position();
      lines_.PutBack();
      EXPECT_EQ(lines_.Position(), position);
      EXPECT_EQ(lines_.Read(), text);
      EXPECT_EQ(lines_.Position(), behind);
    }
  }
  EXPECT_TRUE(lines_.AtEnd());
}

TEST_F(MailLinesTest, LastLineWithoutALineEndCanBePutBackAtTheEndOfTheFile) {
  const ScopedRules rules(Rules::Today());
  Open("a\nlast");
  lines_.Read();
  EXPECT_EQ(lines_.LineEnd(), "\n");
  lines_.Read();
  EXPECT_EQ(lines_.LineEnd(), "");
  EXPECT_TRUE(lines_.AtEnd());
  lines_.PutBack();
  EXPECT_FALSE(lines_.AtEnd());
  EXPECT_TRUE(lines_.AtFileEnd());
  EXPECT_EQ(lines_.Position(), 3U);
  EXPECT_EQ(lines_.Read(), "last");
  EXPECT_EQ(lines_.LineEnd(), "");
  EXPECT_TRUE(lines_.AtEnd());
  EXPECT_EQ(lines_.Position(), 7U);
}

TEST_F(MailLinesTest, LinePutBackComesThoughTheFileWasClosed) {
  Open("a\r\nb\r\nc\r\n");
  lines_.Read();
  lines_.Read();
  lines_.PutBack();
  lines_.Close();
  EXPECT_FALSE(lines_.IsOpen());
  EXPECT_EQ(lines_.Position(), 4U);
  EXPECT_THAT(Rest(), ElementsAre("b"));
  EXPECT_EQ(lines_.LineEnd(), "\r\n");
}

TEST_F(MailLinesTest, SeekAndOpenGiveUpWhatWasPutBack) {
  Open("a\r\nb\r\nc\r\n");
  lines_.Read();
  lines_.PutBack();
  lines_.Seek(4);
  EXPECT_EQ(lines_.Position(), 4U);
  EXPECT_THAT(Rest(), ElementsAre("b", "c"));
  lines_.PutBack();
  Open("d\r\n");
  EXPECT_THAT(Rest(), ElementsAre("d"));
}

TEST_F(MailLinesTest, FileThatCannotBeOpenedLeavesNothingOpenAndNothingPutBack) {
  Open("a\r\nb\r\n");
  lines_.Read();
  lines_.PutBack();
  EXPECT_THROW(lines_.Open(folder_.Path("none"), os::File::Mode::Read), Failure);
  EXPECT_FALSE(lines_.IsOpen());
  EXPECT_TRUE(lines_.AtEnd());
}

// --- Reading ahead

TEST_F(MailLinesTest, LineThatIsHeldStaysValidAndThoseThatWereKeptComeAgain) {
  Open("held\r\nb\r\n\r\nd\r\n\r\nf");
  lines_.Read();
  const std::string_view held = lines_.Hold();
  for (const bool keeps : {true, true, true, false}) {
    lines_.Read();
    if (keeps) lines_.Keep();
  }
  lines_.PutBackKept();
  EXPECT_EQ(held, "held");
  std::vector<std::uint64_t> positions;
  std::vector<std::string> texts;
  while (!lines_.AtEnd()) {
    positions.push_back(lines_.Position());
    texts.emplace_back(lines_.Read());
  }
  EXPECT_THAT(texts, ElementsAre("b", "", "d", "f"));
  EXPECT_THAT(positions, ElementsAre(7U, 10U, 12U, 17U));
}

TEST_F(MailLinesTest, LineEndsOfLinesThatComeAgainCountForWhatTheyAre) {
  const ScopedRules rules(Rules::Today());
  Open("a\r\nb\nc\rd");
  std::vector<std::string> ends;
  while (!lines_.AtEnd()) {
    lines_.Read();
    lines_.Keep();
  }
  lines_.PutBackKept();
  while (!lines_.AtEnd()) {
    lines_.Read();
    ends.emplace_back(lines_.LineEnd());
  }
  EXPECT_THAT(ends, ElementsAre("\r\n", "\n", "\r", ""));
}

TEST_F(MailLinesTest, LinePutBackComesBeforeThoseThatWerePutBackEarlier) {
  Open("a\r\nb\r\nc\r\nd\r\n");
  for (int i = 0; i < 3; ++i) {
    lines_.Read();
    lines_.Keep();
  }
  lines_.PutBackKept();
  lines_.Read();
  lines_.PutBack();
  EXPECT_EQ(lines_.Position(), 1U);
  EXPECT_THAT(Rest(), ElementsAre("a", "b", "c", "d"));
}

TEST_F(MailLinesTest, LinesThatComeAgainCanBeKeptAgain) {
  Open("a\r\nb\r\nc\r\nd\r\n");
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(lines_.Position(), 1U);
    for (int i = 0; i < 3; ++i) {
      lines_.Read();
      lines_.Keep();
    }
    lines_.PutBackKept();
  }
  EXPECT_THAT(Rest(), ElementsAre("a", "b", "c", "d"));
}

TEST_F(MailLinesTest, WhatWasKeptAndDroppedDoesNotComeAgain) {
  Open("a\r\nb\r\nc\r\n");
  lines_.Read();
  lines_.Keep();
  lines_.DropKept();
  lines_.Read();
  lines_.Keep();
  lines_.PutBackKept();
  EXPECT_THAT(Rest(), ElementsAre("b", "c"));
}

TEST_F(MailLinesTest, LineFeedEndsALineInTextThatWasReadAheadOnly) {
  Open("a\nb\n\nc\r\nd\r\n");
  lines_.Read();
  lines_.PutBack();
  EXPECT_EQ(lines_.Read(), "a\nb\n\nc");
  lines_.PutBackAsText();
  std::vector<std::uint64_t> positions;
  std::vector<std::string> texts;
  while (!lines_.AtEnd()) {
    positions.push_back(lines_.Position());
    texts.emplace_back(lines_.Read());
  }
  EXPECT_THAT(texts, ElementsAre("a", "b", "", "c", "d"));
  EXPECT_THAT(positions, ElementsAre(1U, 3U, 5U, 6U, 9U));
  Open("e\n\r\nf\r\n");
  lines_.Read();
  lines_.Keep();
  lines_.PutBackKept();
  EXPECT_THAT(Rest(), ElementsAre("e", "", "f"));
}

// --- Long lines

TEST_F(MailLinesTest, LinesLongerThanAnyBufferAreHeldAndComeAgain) {
  for (const std::size_t size : {16U * 1024 - 1, 64U * 1024 - 2, 64U * 1024, 64U * 1024 + 1, 300U * 1024}) {
    const std::string first(size, 'a'), second(size + 7, 'b');
    Open(first + "\r\n" + second + "\r\n\r\n" + first);
    lines_.Read();
    const std::string_view held = lines_.Hold();
    lines_.Read();
    lines_.Keep();
    EXPECT_EQ(lines_.Read(), "");
    lines_.Keep();
    lines_.PutBackKept();
    EXPECT_EQ(held, first);
    EXPECT_EQ(lines_.Position(), size + 3);
    EXPECT_EQ(lines_.Read(), second);
    EXPECT_EQ(lines_.Read(), "");
    EXPECT_EQ(lines_.Position(), 2 * size + 14);
    lines_.Read();
    lines_.PutBack();
    EXPECT_EQ(lines_.Position(), 2 * size + 14);
    EXPECT_EQ(lines_.Read(), first);
    EXPECT_TRUE(lines_.AtEnd());
  }
}

TEST_F(MailLinesTest, EachLineUsesTheMemoryOfTheOnesBefore) {
  std::string text;
  for (int i = 0; i < 1000; ++i)
    text += "a line of some length, longer than what a text holds in itself\r\n";
  Open(text);
  lines_.Read();
  const char* const held = lines_.Hold().data();
  lines_.PutBack();
  std::set<const char*> again;
  while (!lines_.AtEnd()) {
    lines_.Read();
    EXPECT_EQ(lines_.Hold().data(), held);
    lines_.PutBack();
    again.insert(lines_.Read().data());
  }
  EXPECT_LE(again.size(), 2U);
}

// --- A disk that refuses

TEST_F(MailLinesTest, FailedReadLeavesThePositionWhereItWas) {
  std::string text = "a\r\n";
  while (text.size() < 300'000)
    text += "a line of the body\r\n";
  Open(text);
  lines_.Read();
  const DiskFault fault({.calls = DiskCall::Read, .trouble = DiskTrouble::FromHere, .pathEnd = "/Inbox"});
  std::uint64_t position = 0;
  EXPECT_THROW(
      while (true) {
        position = lines_.Position();
        lines_.Read();
      },
      Failure);
  EXPECT_TRUE(fault.WasReached());
  EXPECT_EQ(lines_.Position(), position);
}

}  // namespace
}  // namespace vorlent
