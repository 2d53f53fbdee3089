#include "Common/TextWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>

#include "Platform/Failure.h"
#include "Support/DiskOperations.h"
#include "Support/ScopedSizeLimit.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using Mode = os::File::Mode;

class TextWriterTest : public testing::Test {
 protected:
  TextWriter Open(Mode mode = Mode::Create) { return TextWriter(folder_.Path("file"), mode); }
  std::string Written() { return folder_.Read("file"); }

  TemporaryFolder folder_;
};

TEST_F(TextWriterTest, LinesEndInCarriageReturnAndLineFeed) {
  TextWriter writer = Open();
  writer.WriteLine("a");
  writer.Write("b");
  writer.WriteLine("");
  writer.Write("");
  writer.Write("c");
  writer.Close();
  EXPECT_EQ(Written(), "a\r\nb\r\nc");
}

TEST_F(TextWriterTest, NothingReachesTheFileBeforeItHasTo) {
  TextWriter writer = Open();
  writer.WriteLine("a");
  EXPECT_EQ(Written(), "");
  writer.Close();
  EXPECT_EQ(Written(), "a\r\n");
}

TEST_F(TextWriterTest, DestructorWritesWhatIsBuffered) {
  { Open().WriteLine("a"); }
  EXPECT_EQ(Written(), "a\r\n");
}

TEST_F(TextWriterTest, CreateEmptiesAndAppendAdds) {
  folder_.Write("file", "old\r\n");
  {
    TextWriter writer = Open(Mode::Append);
    writer.WriteLine("new");
  }
  EXPECT_EQ(Written(), "old\r\nnew\r\n");
  { TextWriter writer = Open(Mode::Create); }
  EXPECT_EQ(Written(), "");
}

TEST_F(TextWriterTest, TextsOfEverySizeArriveWholeAndInOrder) {
  std::mt19937 random(7);
  std::string expected;
  {
    TextWriter writer = Open();
    for (int i = 0; i < 3000; ++i) {
      const std::size_t size = random() % 200 == 0 ? random() % 200'000 : random() % 300;
      const std::string text(size, static_cast<char>('a' + i % 26));
      if (i % 2 == 0) {
        writer.WriteLine(text);
        expected += text + "\r\n";
      } else {
        writer.Write(text);
        expected += text;
      }
    }
  }
  EXPECT_TRUE(Written() == expected);
}

TEST_F(TextWriterTest, TextMadeInPlaceStandsBetweenTheOthers) {
  std::string expected;
  {
    TextWriter writer = Open();
    for (const std::size_t most : {std::size_t{0}, std::size_t{5}, TextWriter::kMostMade, std::size_t{300}}) {
      for (const std::size_t made : {std::size_t{0}, most / 2, most}) {
        writer.Write("before");
        writer.WriteMade([&](char* out) { return std::fill_n(out, made, 'm'); });
        writer.WriteLine("behind");
        expected += "before" + std::string(made, 'm') + "behind\r\n";
      }
    }
  }
  EXPECT_EQ(Written(), expected);
}

TEST_F(TextWriterTest, TextsOfTheBuffersOwnSizeFit) {
  constexpr std::size_t kBuffer = 32 * 1024;
  for (std::size_t size = kBuffer - 3; size <= kBuffer + 1; ++size) {
    std::string expected;
    {
      TextWriter writer = Open();
      for (int i = 0; i < 3; ++i)
        writer.WriteLine(std::string(size, 'x'));
    }
    for (int i = 0; i < 3; ++i)
      expected += std::string(size, 'x') + "\r\n";
    EXPECT_TRUE(Written() == expected) << size;
  }
}

TEST_F(TextWriterTest, MovedWriterGoesOnWhereItStood) {
  TextWriter first = Open();
  first.WriteLine("a");
  TextWriter second(std::move(first));
  EXPECT_FALSE(first.IsOpen());  // NOLINT(bugprone-use-after-move)
  EXPECT_EQ(second.Path(), folder_.Path("file"));
  second.WriteLine("b");
  first = std::move(second);
  first.WriteLine("c");
  first.Close();
  EXPECT_EQ(Written(), "a\r\nb\r\nc\r\n");
}

TEST_F(TextWriterTest, AssignmentClosesTheFileBefore) {
  TextWriter writer = Open();
  writer.WriteLine("a");
  writer = TextWriter(folder_.Path("other"), Mode::Create);
  EXPECT_EQ(Written(), "a\r\n");
}

TEST_F(TextWriterTest, ClosedWriterRaisesAndMayBeClosedAgain) {
  TextWriter writer;
  EXPECT_FALSE(writer.IsOpen());
  writer.Close();
  const int badFileNumber = static_cast<int>(ErrorNumber::BadFileNumber);
  EXPECT_EQ(SwallowedNumber([&] { writer.Write(""); }), badFileNumber);
  EXPECT_EQ(SwallowedNumber([&] { writer.WriteLine("a"); }), badFileNumber);
  EXPECT_EQ(SwallowedNumber([&] { writer.WriteMade([](char* out) { return out; }); }), badFileNumber);
  EXPECT_EQ(SwallowedNumber([&] { writer.Write(std::string(100'000, 'x')); }), badFileNumber);
}

TEST_F(TextWriterTest, FolderThatIsMissingRaises) {
  EXPECT_THROW(TextWriter(folder_.Path("no\\file"), Mode::Create), Failure);
}

// A device that takes nothing: the failure of Close is the writer's last chance to tell.
TEST_F(TextWriterTest, FullDiskRaisesFromCloseAndFromALargeWrite) {
  TextWriter small("\\dev\\full", Mode::Append);
  small.WriteLine("a");
  EXPECT_EQ(SwallowedNumber([&] { small.Close(); }), static_cast<int>(ErrorNumber::DiskFull));
  EXPECT_FALSE(small.IsOpen());
  TextWriter large("\\dev\\full", Mode::Append);
  EXPECT_EQ(SwallowedNumber([&] { large.Write(std::string(100'000, 'x')); }),
            static_cast<int>(ErrorNumber::DiskFull));
}

TEST_F(TextWriterTest, FailedWriteIsRemembered) {
  const std::string text(100'000, 'a');
  TextWriter whole = Open();
  whole.Write(text);
  whole.Close();
  EXPECT_FALSE(whole.HasFailed());
  // The limits are met in the middle of the text and at its end.
  for (const std::size_t limit : {std::size_t{1000}, text.size() - 1}) {
    const ScopedSizeLimit full(limit);
    TextWriter torn = Open();
    Swallow([&] { torn.Write(text); });
    Swallow([&] { torn.Close(); });
    EXPECT_TRUE(torn.HasFailed());
    torn = Open();
    EXPECT_FALSE(torn.HasFailed());
  }
}

TEST_F(TextWriterTest, WriterThatCannotBeClosedTakesAnotherFileNevertheless) {
  TextWriter writer = Open();
  writer.WriteLine("lost");
  {
    const DiskFault full({.calls = DiskCall::Write, .error = ENOSPC, .pathEnd = "/file"});
    writer = TextWriter(folder_.Path("other"), Mode::Create);
    EXPECT_TRUE(full.WasReached());
  }
  EXPECT_FALSE(writer.HasFailed());
  writer.WriteLine("kept");
  writer.Close();
  EXPECT_EQ(Written(), "");
  EXPECT_EQ(folder_.Read("other"), "kept\r\n");
}

}  // namespace
}  // namespace vorlent
