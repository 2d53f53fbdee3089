#include "Connectors/Mozilla/ReadMails.h"

#include <gtest/gtest.h>

#include "Common/LineFile.h"
#include "Support/MailboxBuilder.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

TEST(ReadMailsTest, MailsAreFoundByTheirOffsets) {
  ReadMails mails;
  EXPECT_FALSE(mails.HashAt(0));
  for (std::int32_t i = 0; i < 1000; ++i)
    mails.Add(i * 10, 0x123456789ABCDEF0 + static_cast<std::uint64_t>(i));
  for (std::int32_t i = 0; i < 1000; ++i) {
    EXPECT_EQ(mails.HashAt(i * 10), 0x123456789ABCDEF0 + static_cast<std::uint64_t>(i));
    EXPECT_FALSE(mails.HashAt(i * 10 + 1));
  }
  EXPECT_FALSE(mails.HashAt(-10));
}

TEST(ReadMailsTest, LaterHashOfAnOffsetCountsAndOrderDoesNotMatter) {
  ReadMails mails;
  for (const std::int32_t offset : {50, 10, 30, 70, 10, 20})
    mails.Add(offset, static_cast<std::uint64_t>(offset));
  mails.Add(30, 31);
  for (const std::int32_t offset : {10, 20, 50, 70})
    EXPECT_EQ(mails.HashAt(offset), static_cast<std::uint64_t>(offset));
  EXPECT_EQ(mails.HashAt(30), 31U);
}

std::uint64_t HashOf(std::initializer_list<std::string_view> lines, bool isWhole = true) {
  HeaderBlockHash hash;
  for (const std::string_view line : lines)
    hash.Add(line);
  return hash.End(isWhole);
}

TEST(HeaderBlockHashTest, LinesAreToldApart) {
  EXPECT_EQ(HashOf({"From - x", "A: 1"}), HashOf({"From - x", "A: 1"}));
  EXPECT_NE(HashOf({"From - x", "A: 1"}), HashOf({"From - x", "A: 2"}));
  EXPECT_NE(HashOf({"From - x", "A: 1"}), HashOf({"From - x", "A:", " 1"}));
  EXPECT_NE(HashOf({"From - x", "A: 1"}), HashOf({"From - x"}));
  EXPECT_NE(HashOf({"From - x", "A: 1", "B: 2"}), HashOf({"From - x", "B: 2", "A: 1"}));
  EXPECT_NE(HashOf({"From - x"}), HashOf({"From - x"}, false));
}

// --- Whether a mail still stands

class StandingMailTest : public testing::Test {
 protected:
  // Whether the mail that was read at 0, with this header block, stands in a mailbox.
  bool StandsIn(std::string_view mailbox) {
    LineFile file(folder_.Write("Inbox", Crlf(mailbox)), os::File::Mode::Read);
    return mails_.StillStands(file, 0);
  }

  TemporaryFolder folder_;
  ReadMails mails_;
};

TEST_F(StandingMailTest, MailStandsByItsHeaderBlockButForWhatTheMailClientChanges) {
  mails_.Add(0, HashOf({"From - x", "X-Mozilla-Status: 0001", "A: 1"}));
  EXPECT_TRUE(StandsIn("From - x\nX-Mozilla-Status: 0009\nA: 1\n\nany body\n"));
  EXPECT_FALSE(StandsIn("From - x\nX-Mozilla-Status: 0001\nA: 2\n\n"));
  EXPECT_FALSE(StandsIn("From - x\nX-Mozilla-Status: 0001\nA: 1\n"));
  EXPECT_FALSE(StandsIn(""));
}

TEST_F(StandingMailTest, LastMailThatHasGrownIsAnother) {
  mails_.Add(0, HashOf({"From - x"}));
  const std::string read = "From - x\n\nbody\n";
  for (const bool endsWithEmptyLine : {false, true}) {
    const std::string end = endsWithEmptyLine ? "\n" : "";
    mails_.NoteLast({0, Crlf("body\n" + end).size(), endsWithEmptyLine});
    EXPECT_TRUE(StandsIn(read + end));
    EXPECT_TRUE(StandsIn(read + end + "\n"));
    EXPECT_TRUE(StandsIn(read + end + (endsWithEmptyLine ? "" : "\n") + "From - y\n\nnext\n"));
    EXPECT_FALSE(StandsIn(read + end + "more\n"));
    EXPECT_FALSE(StandsIn(read + end + "\nmore\n"));
    // Without an empty line before it that is a line of the body.
    EXPECT_EQ(StandsIn(read + end + "From - y\n"), endsWithEmptyLine);
  }
  // Read anew, it is the last one no more.
  mails_.Add(0, HashOf({"From - x"}));
  EXPECT_TRUE(StandsIn(read + "more\n"));
}

}  // namespace
}  // namespace vorlent
