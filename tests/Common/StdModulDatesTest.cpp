#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedTimeZone.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

// The result and what became of the argument, as "result[argument]".
std::string Displayed(std::string s) {
  const std::string display = StampToDisplay(s);
  return display + "[" + s + "]";
}

TEST(Now, IsTheLocalTimeOfThePlatform) {
  const ScopedRecordingPlatform platform;
  platform->now = {2010, 5, 9, 4, 3, 2, 250};
  EXPECT_EQ(NowStamp(), "20100509040302");
  EXPECT_EQ(NowTimeText(), "04:03:02");
  EXPECT_DOUBLE_EQ(SecondsSinceMidnight(), 4 * 3600 + 3 * 60 + 2 + 0.25);
}

TEST(StampToDisplay, ReadsStamps) {
  EXPECT_EQ(Displayed("20100509143005"), "09.05.2010 14:30:05[20100509143005]");
  EXPECT_EQ(Displayed("20100509-143005"), "09.05.2010 14:30:05[20100509-143005]");
  EXPECT_EQ(Displayed(""), "[]");
  EXPECT_EQ(Displayed("yyyymmddhhnnss"), "dd.mm.yyyy hh:nn:ss[yyyymmddhhnnss]") << "digits are not checked";
  EXPECT_EQ(Displayed("20100509"), "09.05.2010 ::[20100509]");
  EXPECT_EQ(Displayed("2010"), "..2010 ::[2010]");
  EXPECT_EQ(Displayed("201005091430059"), "09.05.2010 14:30:05[201005091430059]");
}

TEST(StampToDisplay, TakesADateOnlyStampForMidnight) {
  EXPECT_EQ(Displayed("20100509::"), "09.05.2010 00:00:00[20100509000000]") << "the caller sees the change";
  EXPECT_EQ(Displayed("::"), ".00.0000 ::[000000]");
}

TEST(StampToDisplay, CompletesTheYearOfDisplayText) {
  EXPECT_EQ(Displayed("09.05.2010 14:30:05"), "09.05.2010 14:30:05[09.05.2010 14:30:05]");
  EXPECT_EQ(Displayed("09.05.10 14:30:05"), "09.05.2010 14:30:05[09.05.2010 14:30:05]");
  EXPECT_EQ(Displayed("09.05.75 14:30:05"), "09.05.1975 14:30:05[09.05.1975 14:30:05]");
  EXPECT_EQ(Displayed("09.05.69 14:30:05"), "09.05.2069 14:30:05[09.05.2069 14:30:05]");
  EXPECT_EQ(Displayed("09.05.70 14:30:05"), "09.05.1970 14:30:05[09.05.1970 14:30:05]");
  EXPECT_EQ(Displayed("09.05.10"), "09.05.10[09.05.10]") << "only a blank after the year tells its length";
  EXPECT_EQ(Displayed("14:30"), "14:30[14:30]");
  EXPECT_EQ(Displayed("09.05.2010 ::"), "09.05.2010 000000[09.05.2010 000000]");
}

TEST(DisplayToStamp, ReadsEveryForm) {
  EXPECT_EQ(DisplayToStamp("09.05.2010 14:30:05"), "20100509143005");
  EXPECT_EQ(DisplayToStamp("9.5.2010 4:3:2"), "20100509040302");
  EXPECT_EQ(DisplayToStamp("20100509-143005"), "20100509143005");
  EXPECT_EQ(DisplayToStamp("20100509143005"), "20100509143005");
  EXPECT_EQ(DisplayToStamp("20100509-"), "20100509");
  EXPECT_EQ(DisplayToStamp(""), "");
  EXPECT_EQ(DisplayToStamp("anything"), "anything");
  EXPECT_EQ(DisplayToStamp("09.05.2010"), "20100509000000");
  EXPECT_EQ(DisplayToStamp("09.05.2010 14:30"), "20100509143000");
}

TEST(DisplayToStamp, PutsTwoDigitYearsBetween1930And2029) {
  EXPECT_EQ(DisplayToStamp("01.02.29 00:00:00"), "20290201000000");
  EXPECT_EQ(DisplayToStamp("01.02.30 00:00:00"), "19300201000000");
  EXPECT_EQ(DisplayToStamp("01.02.99 00:00:00"), "19990201000000");
  EXPECT_EQ(DisplayToStamp("01.02.1 00:00:00"), "20010201000000");
  EXPECT_EQ(DisplayToStamp("01.02.00 00:00:00"), "00000201000000") << "the year 0 stays";
  EXPECT_EQ(DisplayToStamp("01.02.100 00:00:00"), "01000201000000");
}

TEST(DisplayToStamp, NeverFails) {
  EXPECT_EQ(DisplayToStamp("12/31/2009 10:00:00"), "00000012000000") << "slashes separate nothing";
  EXPECT_EQ(DisplayToStamp("x.y.z a:b:c"), "00000000000000");
  EXPECT_EQ(DisplayToStamp("."), "00000000000000");
  EXPECT_EQ(DisplayToStamp("09.05.40000 14:30:05"), "00000509143005") << "no 16-bit number, so no number";
  EXPECT_EQ(DisplayToStamp("1e99.05.2010 14:30:05"), "20100500143005");
}

TEST(DisplayToStamp, UndoesStampToDisplay) {
  std::string stamp = "20381231235959";
  EXPECT_EQ(DisplayToStamp(StampToDisplay(stamp)), stamp);
}

// --- File dates ---

TEST(GetFileDate, GivesBackWhatSetFileDateSet) {
  const ScopedTimeZone zone("Europe/Berlin");
  const TemporaryFolder folder;
  const std::string path = folder.Write("a.txt", "x");
  SetFileDate(path, "09.05.2010 14:30:05");
  EXPECT_EQ(GetFileDate(path), "09.05.2010 14:30:05");
  SetFileDate(path, "24.12.98 08:00:00");
  EXPECT_EQ(GetFileDate(path), "24.12.1998 08:00:00");
  SetFileDate(path, "1.2.3 4:5:6");
  EXPECT_EQ(GetFileDate(path), "01.02.2003 04:05:06");
  SetFileDate(path, "01.02.2004");
  EXPECT_EQ(GetFileDate(path), "01.02.2004 00:00:00");
}

TEST(GetFileDate, TellsTheTimeOfTheZone) {
  const TemporaryFolder folder;
  const std::string path = folder.Write("a.txt", "x");
  {
    const ScopedTimeZone zone("Europe/Berlin");
    SetFileDate(path, "09.05.2010 14:30:05");
  }
  const ScopedTimeZone zone("Asia/Kolkata");
  EXPECT_EQ(GetFileDate(path), "09.05.2010 18:00:05");
}

TEST(SetFileDate, WorksOnFolders) {
  const ScopedTimeZone zone("UTC");
  const TemporaryFolder folder;
  const std::string path = folder.MakeFolder("sub");
  SetFileDate(path, "09.05.2010 14:30:05");
  EXPECT_EQ(GetFileDate(path), "09.05.2010 14:30:05");
}

TEST(SetFileDate, KeepsTheTimesWhenTheTextIsNoDate) {
  const ScopedTimeZone zone("UTC");
  const TemporaryFolder folder;
  const std::string path = folder.Write("a.txt", "x");
  SetFileDate(path, "09.05.2010 14:30:05");
  for (const char* text : {"", "tomorrow", "31.02.2010 10:00:00", "01.13.2010 10:00:00",
                           "01.01.2010 25:00:00", "20110509143005"}) {
    SetFileDate(path, text);
    EXPECT_EQ(GetFileDate(path), "09.05.2010 14:30:05") << "'" << text << "'";
  }
}

TEST(FileDates, AreSilentAboutWhatIsNotThere) {
  const TemporaryFolder folder;
  EXPECT_EQ(GetFileDate(folder.Path("missing.txt")), "");
  EXPECT_EQ(GetFileDate(""), "");
  SetFileDate(folder.Path("missing.txt"), "09.05.2010 14:30:05");
  EXPECT_FALSE(folder.Exists("missing.txt"));
}

}  // namespace
}  // namespace vorlent
