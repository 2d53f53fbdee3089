#include "Common/LineFile.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "Platform/Failure.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using Mode = os::File::Mode;

struct Line {
  std::string text;
  std::uint64_t position;  // of its first byte, from 1
  std::uint32_t endLength;

  bool operator==(const Line&) const = default;
};

void PrintTo(const Line& line, std::ostream* out) {
  *out << line.text.size() << " bytes at " << line.position << ", end " << line.endLength;
  if (line.text.size() < 40) *out << ": " << line.text;
}

// The rule, byte by byte.
std::vector<Line> SplitByRule(const std::string& bytes, LineRule rule) {
  std::vector<Line> lines;
  std::size_t at = 0;
  while (at < bytes.size()) {
    std::size_t end = at;
    while (end < bytes.size() && bytes[end] != '\r' && !(rule == LineRule::Native && bytes[end] == '\n'))
      ++end;
    std::uint32_t endLength = end < bytes.size() ? 1 : 0;
    if (end + 1 < bytes.size() && bytes[end] == '\r' && bytes[end + 1] == '\n') endLength = 2;
    lines.push_back({bytes.substr(at, end - at), at + 1, rule == LineRule::Windows ? 2 : endLength});
    at = end + endLength;
  }
  return lines;
}

std::vector<Line> ReadAll(LineFile& file) {
  std::vector<Line> lines;
  while (!file.AtEnd()) {
    const std::uint64_t position = file.Position();
    const std::string text(file.ReadLine());
    lines.push_back({text, position, static_cast<std::uint32_t>(file.LineEnd().size())});
  }
  return lines;
}

class LineFileTest : public testing::Test {
 protected:
  LineFile Open(const std::string& bytes, LineRule rule = LineRule::Windows, Mode mode = Mode::Read) {
    return LineFile(folder_.Write("file", bytes), mode, rule);
  }

  std::vector<Line> Lines(const std::string& bytes, LineRule rule) {
    LineFile file = Open(bytes, rule);
    return ReadAll(file);
  }

  TemporaryFolder folder_;
};

TEST_F(LineFileTest, WindowsRuleEndsLinesAtCarriageReturnAlone) {
  EXPECT_EQ(Lines("a\rb\r\nc\nd\r\n", LineRule::Windows),
            (std::vector<Line>{{"a", 1, 2}, {"b", 3, 2}, {"c\nd", 6, 2}}));
}

TEST_F(LineFileTest, NativeRuleEndsLinesAtEachKindAndCountsItsTrueLength) {
  EXPECT_EQ(Lines("a\rb\r\nc\nd", LineRule::Native),
            (std::vector<Line>{{"a", 1, 1}, {"b", 3, 2}, {"c", 6, 1}, {"d", 8, 0}}));
}

TEST_F(LineFileTest, NativeRuleTellsWhichEndALineHas) {
  for (const std::size_t border : {std::size_t{1}, std::size_t{16} * 1024 - 2, std::size_t{16} * 1024 - 1}) {
    for (const std::string end : {"\r", "\n", "\r\n"}) {
      const std::string text(border, 'a');
      LineFile file = Open(text + end + "b", LineRule::Native);
      EXPECT_EQ(file.ReadLine(), text);
      EXPECT_EQ(file.LineEnd(), end) << border;
      EXPECT_EQ(file.ReadLine(), "b");
      EXPECT_EQ(file.LineEnd(), "");
    }
  }
}

TEST_F(LineFileTest, LineFeedBeforeCarriageReturnIsALineOfItsOwnByNativeRule) {
  EXPECT_EQ(Lines("a\n\rb", LineRule::Native), (std::vector<Line>{{"a", 1, 1}, {"", 3, 1}, {"b", 4, 0}}));
}

TEST_F(LineFileTest, WindowsRuleCountsTwoBytesForALineThatTheFileEnds) {
  EXPECT_EQ(Lines("abc", LineRule::Windows), (std::vector<Line>{{"abc", 1, 2}}));
}

TEST_F(LineFileTest, CarriageReturnAsLastByteEndsTheLastLine) {
  EXPECT_EQ(Lines("abc\r", LineRule::Windows), (std::vector<Line>{{"abc", 1, 2}}));
  EXPECT_EQ(Lines("abc\r", LineRule::Native), (std::vector<Line>{{"abc", 1, 1}}));
}

TEST_F(LineFileTest, EmptyFileIsAtItsEndAndGivesEmptyLines) {
  for (const LineRule rule : {LineRule::Windows, LineRule::Native}) {
    LineFile file = Open("", rule);
    EXPECT_TRUE(file.AtEnd());
    EXPECT_EQ(file.ReadLine(), "");
    EXPECT_EQ(file.Position(), 1u);
    EXPECT_EQ(file.Length(), 0u);
  }
}

TEST_F(LineFileTest, ZeroBytesAreText) {
  EXPECT_EQ(Lines(std::string("a\0b\r\n", 5), LineRule::Windows),
            (std::vector<Line>{{std::string("a\0b", 3), 1, 2}}));
}

TEST_F(LineFileTest, LineEndMayFallOnEveryBlockBorder) {
  for (const std::size_t border : {16u * 1024, 48u * 1024, 256u * 1024}) {
    for (std::size_t size = border - 3; size <= border + 2; ++size) {
      for (const char* end : {"\r\n", "\r", "\n", "\r\r\n", "\n\r"}) {
        const std::string bytes = "x\r\n" + std::string(size - 3, 'a') + end + "behind\r\n";
        for (const LineRule rule : {LineRule::Windows, LineRule::Native}) {
          ASSERT_EQ(Lines(bytes, rule), SplitByRule(bytes, rule)) << size;
        }
      }
    }
  }
}

TEST_F(LineFileTest, RandomFilesAreSplitAsTheRuleSays) {
  std::mt19937 random(20100509);
  for (int round = 0; round < 60; ++round) {
    std::string bytes;
    const int lines = static_cast<int>(random() % 300);
    for (int i = 0; i < lines; ++i) {
      const std::size_t longest = random() % 8 == 0 ? 30000 : 90;
      bytes += std::string(random() % longest, static_cast<char>('a' + random() % 26));
      bytes += std::vector<std::string>{"\r\n", "\r\n", "\r\n", "\n", "\r", ""}[random() % 6];
    }
    for (const LineRule rule : {LineRule::Windows, LineRule::Native}) {
      ASSERT_EQ(Lines(bytes, rule), SplitByRule(bytes, rule)) << "round " << round;
    }
  }
}

TEST_F(LineFileTest, LongLineGrowsTheBufferAndReadingGoesOnBehindIt) {
  const std::string longLine(20'000'000, 'x');
  for (const LineRule rule : {LineRule::Windows, LineRule::Native}) {
    LineFile file = Open("a\r\n" + longLine + "\r\nb\r\nc", rule);
    EXPECT_EQ(file.ReadLine(), "a");
    EXPECT_TRUE(file.ReadLine() == longLine);
    EXPECT_EQ(file.Position(), 20'000'006u);
    EXPECT_EQ(file.ReadLine(), "b");
    EXPECT_EQ(file.ReadLine(), "c");
    EXPECT_TRUE(file.AtEnd());
  }
}

TEST_F(LineFileTest, LineOfAnyLengthComesInPiecesByNativeRule) {
  constexpr std::size_t kPiece = LineFile::kLongestPiece;
  const std::string bytes = std::string(2 * kPiece, 'a') + "\n" + std::string(kPiece + 1, 'b') + "\r\nc";
  {
    LineFile file = Open(bytes, LineRule::Native);
    std::vector<std::string> pieces;
    for (const Line& line : ReadAll(file))
      pieces.push_back(std::to_string(line.text.size()) + line.text.back() + std::to_string(line.endLength));
    const std::string most = std::to_string(kPiece);
    EXPECT_EQ(pieces, (std::vector<std::string>{most + "a0", most + "a1", most + "b0", "1b2", "1c0"}));
  }
  LineFile file = Open(bytes, LineRule::Windows);
  EXPECT_EQ(file.ReadLine().size(), bytes.size() - 3);
}

// Looking for the next LF again after each CR would take minutes here.
TEST_F(LineFileTest, LinesOfCarriageReturnsOnlyAreReadInLinearTime) {
  LineFile file = Open(std::string(3'000'000, '\r'), LineRule::Native);
  std::size_t count = 0;
  for (; !file.AtEnd(); ++count)
    ASSERT_EQ(file.ReadLine(), "");
  EXPECT_EQ(count, 3'000'000u);
}

TEST_F(LineFileTest, SeekGoesBackAndForthInsideTheBufferAndOutside) {
  std::string bytes;
  for (int i = 0; i < 100'000; ++i)
    bytes += std::to_string(1'000'000 + i) + "\r\n";
  LineFile file = Open(bytes);
  for (const int line : {0, 1, 99'999, 50'000, 50'001, 49'999, 3}) {
    file.Seek(1 + 9 * static_cast<std::uint64_t>(line));
    EXPECT_EQ(file.ReadLine(), std::to_string(1'000'000 + line));
    EXPECT_EQ(file.Position(), 1 + 9 * static_cast<std::uint64_t>(line + 1));
  }
}

TEST_F(LineFileTest, SeekForgetsTheLineFeedFoundBefore) {
  LineFile file = Open("a\r\nbb\r\ncc\n", LineRule::Native);
  file.Seek(8);
  EXPECT_EQ(file.ReadLine(), "cc");
  file.Seek(1);
  EXPECT_EQ(file.ReadLine(), "a");
  EXPECT_EQ(file.ReadLine(), "bb");
}

TEST_F(LineFileTest, PositionBehindTheEndIsTheEnd) {
  LineFile file = Open("abc\r\n");
  file.Seek(1000);
  EXPECT_TRUE(file.AtEnd());
  EXPECT_EQ(file.ReadLine(), "");
  file.Seek(1);
  EXPECT_EQ(file.ReadLine(), "abc");
}

TEST_F(LineFileTest, PositionZeroIsRefused) {
  LineFile file = Open("abc\r\n");
  EXPECT_EQ(SwallowedNumber([&] { file.Seek(0); }), static_cast<int>(ErrorNumber::InvalidCall));
  EXPECT_EQ(file.ReadLine(), "abc");
}

TEST_F(LineFileTest, WrittenByteReplacesOneAndReadingGoesOnBehindIt) {
  LineFile file = Open("Status: 0001\r\nnext\r\n", LineRule::Windows, Mode::ReadWrite);
  EXPECT_EQ(file.ReadLine(), "Status: 0001");
  file.Seek(file.Position() - 3);
  file.WriteByte('9');
  EXPECT_EQ(file.Position(), 13u);
  EXPECT_EQ(file.ReadLine(), "");
  EXPECT_EQ(file.ReadLine(), "next");
  file.Seek(1);
  EXPECT_EQ(file.ReadLine(), "Status: 0009");
  file.Close();
  EXPECT_EQ(folder_.Read("file"), "Status: 0009\r\nnext\r\n");
}

TEST_F(LineFileTest, ByteWrittenAtTheEndMakesTheFileLonger) {
  LineFile file = Open("ab", LineRule::Windows, Mode::ReadWrite);
  file.Seek(3);
  file.WriteByte('c');
  EXPECT_EQ(file.Length(), 3u);
  file.Close();
  EXPECT_EQ(folder_.Read("file"), "abc");
}

TEST_F(LineFileTest, ClosedFileStillTellsTheLineEndReadLast) {
  LineFile file = Open("line\n", LineRule::Native);
  file.ReadLine();
  file.Close();
  EXPECT_EQ(file.LineEnd(), "\n");
}

TEST_F(LineFileTest, ClosedFileRaisesWhenAskedForBytes) {
  LineFile file = Open("abc\r\n");
  file.Close();
  file.Close();
  EXPECT_FALSE(file.IsOpen());
  const int badFileNumber = static_cast<int>(ErrorNumber::BadFileNumber);
  EXPECT_EQ(SwallowedNumber([&] { file.AtEnd(); }), badFileNumber);
  EXPECT_EQ(SwallowedNumber([&] { file.ReadLine(); }), badFileNumber);
}

TEST_F(LineFileTest, MissingFileRaisesAndNamesThePath) {
  try {
    LineFile file(folder_.Path("missing"), Mode::Read);
    FAIL() << "opened";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::FileNotFound));
    EXPECT_NE(std::string(failure.what()).find("missing"), std::string::npos);
  }
}

TEST_F(LineFileTest, DefaultRuleIsThatOfWindowsUntilTheHostChooses) {
  EXPECT_EQ(CurrentRules().lines, LineRule::Windows);
  const std::string path = folder_.Write("file", "a\nb");
  EXPECT_EQ(LineFile(path, Mode::Read).ReadLine(), "a\nb");
  const ScopedRules native({.lines = LineRule::Native});
  EXPECT_EQ(LineFile(path, Mode::Read).ReadLine(), "a");
}

TEST_F(LineFileTest, AskingForTheEndLeavesTheLineInPlace) {
  for (const std::size_t size : {3u, 16u * 1024 - 2, 16u * 1024, 100'000u}) {
    const std::string expected(size, 'x');
    for (const std::string behind : {"", "\r", "\r\n", "\r\ny"}) {
      LineFile file = Open(expected + behind);
      const std::string_view line = file.ReadLine();
      EXPECT_EQ(file.AtEnd(), behind != "\r\ny");
      EXPECT_TRUE(line == expected) << size;
    }
  }
}

// What is read from a file that shrank meanwhile ends where the file now ends.
TEST_F(LineFileTest, FileCutShortMeanwhileEndsEarly) {
  LineFile file = Open(std::string(400'000, 'a') + "\r\n" + std::string(400'000, 'b') + "\r\n");
  EXPECT_EQ(file.ReadLine().size(), 400'000u);
  folder_.Write("file", "");
  while (!file.AtEnd())
    file.ReadLine();
  EXPECT_LE(file.Position(), 800'005u);
}

}  // namespace
}  // namespace vorlent
