#include "Common/StdIni.h"

#include <gtest/gtest.h>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Support/ErrorNumbers.h"
#include "Support/OddEntries.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr std::int32_t kMaxSections = 200;

StdIni Parsed(std::string_view text) {
  StdIni ini;
  ini.LoadString(text);
  return ini;
}

// A document of that many sections, named S1 and so on.
std::string Sections(int count) {
  std::string text;
  for (int i = 1; i <= count; ++i)
    text += "[S" + std::to_string(i) + "]\r\nNr=" + std::to_string(i) + "\r\n";
  return text;
}

class StdIniFileTest : public testing::Test {
 protected:
  // What Save writes of a document that came from `text`.
  std::string SavedForm(std::string_view text) {
    StdIni ini = Parsed(text);
    if (ini.Count() > 0) ini.SetSection(1, ini.GetSection(1));  // nothing changes but the mark
    std::string file = folder_.Path("out.ini");
    ini.Save(file);
    return folder_.Exists("out.ini") ? folder_.Read("out.ini") : "";
  }

  TemporaryFolder folder_;
};

// --- Reading ---------------------------------------------------------------------------------------------

TEST(StdIniTest, NewDocumentIsEmptyAndClean) {
  const StdIni ini;
  EXPECT_EQ(ini.Count(), 0);
  EXPECT_EQ(ini.FileName(), "");
  EXPECT_FALSE(ini.isDirty());
}

TEST(StdIniTest, SectionsAndKeysAreFoundInAnyCase) {
  const StdIni ini = Parsed("[Profile0]\r\nName=default\r\nPath=Profiles/abc.default\r\n");
  EXPECT_EQ(ini.GetString("profile0", "NAME"), "default");
  EXPECT_EQ(ini.GetString("PROFILE0", "path"), "Profiles/abc.default");
  EXPECT_EQ(Parsed("[\xC4]\n\xD6=x").GetString("\xE4", "\xF6"), "x");
}

TEST(StdIniTest, EntriesAreTakenAsWritten) {
  struct Row {
    std::string_view line, key, value;
  };
  const Row rows[] = {
      {"Path = x", "Path ", " x"},
      {"Path = x", "Path", ""},
      {"a=b=c", "a", "b=c"},
      {"'Name=x", "Name", ""},
      {"'Name=x", "'Name", ""},
      {" 'Name=x", " 'Name", "x"},
      {"=x", "", "x"},
      {"Name", "Name", ""},
      {"Name=", "Name", ""},
      {";Name=x", ";Name", "x"},
      {"a=x\r", "a", "x"},
      {"a=x\r\r", "a", "x"},
      {"a=x ", "a", "x"},
  };
  // Characters of code below 33 at the very end of a section go away, so the carriage returns and the blank
  // too.
  for (const Row& row : rows) {
    EXPECT_EQ(Parsed("[s]\nfirst=1\n" + std::string(row.line)).GetString("s", row.key), row.value)
        << row.line;
  }
}

TEST(StdIniTest, OneCarriageReturnInFrontOfALineFeedIsDropped) {
  const StdIni ini = Parsed("[s]\r\na=1\r\r\nb=2\nc=3");
  EXPECT_EQ(ini.GetSectionValue("s"), "a=1\r\r\nb=2\r\nc=3\r\n");
  EXPECT_EQ(ini.GetString("s", "a"), "1\r");
}

TEST(StdIniTest, HeadersStandAloneInTheirLine) {
  struct Row {
    std::string_view line;
    int count;
    std::string_view name;
  };
  const Row rows[] = {
      {"[Profile0]", 1, "Profile0"}, {"[ a b ]", 1, "a b"}, {"[]", 1, ""},   {"[[x]]", 1, "[x]"},
      {"[a]=[b]", 1, "a]=[b"},       {"[\tx]", 1, "\tx"},   {"[  ]", 1, ""},
  };
  for (const Row& row : rows) {
    const StdIni ini = Parsed(row.line);
    EXPECT_EQ(ini.Count(), row.count) << row.line;
    EXPECT_EQ(ini.GetSection(1), row.name) << row.line;
    EXPECT_EQ(ini.GetSectionValue(row.name), "") << row.line;
  }
}

TEST(StdIniTest, LineThatIsNoHeaderBelongsToTheSectionBeforeIt) {
  for (const std::string line : {" [Profile0]", "[Profile0] ", "[Profile0", "[", "]"}) {
    const StdIni alone = Parsed("\r\n" + line + "x=\r\na=1\r\n");
    EXPECT_EQ(alone.Count(), 1) << line;
    EXPECT_EQ(alone.GetSection(1), "") << line;
    EXPECT_EQ(alone.GetString("", "a"), "1") << line;
    const StdIni below = Parsed("[General]\r\nb=1\r\n" + line + "\r\na=1\r\n");
    EXPECT_EQ(below.Count(), 1) << line;
    EXPECT_EQ(below.GetSectionValue("General"), "b=1\r\n" + line + "\r\na=1\r\n") << line;
  }
}

TEST(StdIniTest, BlankLinesInFrontOpenNoSection) {
  EXPECT_EQ(Parsed("").Count(), 0);
  EXPECT_EQ(Parsed("\r\n   \r\n\n").Count(), 0);
  EXPECT_EQ(Parsed("\r\n  \r\n[a]\r\n").GetSection(1), "a");
  // Blanks only are trimmed here: a tab opens the nameless section, and goes when the body is trimmed.
  const StdIni tab = Parsed("\t\r\n[a]\r\n");
  EXPECT_EQ(tab.Count(), 2);
  EXPECT_EQ(tab.GetSectionValue(""), "");
}

TEST(StdIniTest, BodiesLoseBlankLinesAtTheirEndsOnly) {
  const StdIni ini = Parsed("[a]\r\n\r\n  x=1\r\n\r\n' note\r\ny=2\r\n\r\n\t\r\n[b]\r\n \r\n[c]\r\nz=3");
  EXPECT_EQ(ini.GetSectionValue("a"), "x=1\r\n\r\n' note\r\ny=2\r\n");
  EXPECT_EQ(ini.GetSectionValue("b"), "");
  EXPECT_EQ(ini.GetSectionValue("c"), "z=3\r\n");
}

TEST(StdIniTest, OfTwoSectionsOfOneNameTheFirstIsFound) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n[A]\r\nx=2\r\ny=2\r\n");
  EXPECT_EQ(ini.Count(), 2);
  EXPECT_EQ(ini.GetSectionNr("A"), 1);
  EXPECT_EQ(ini.GetString("A", "x"), "1");
  EXPECT_EQ(ini.GetString("A", "y"), "");
  ini.DeleteSection("a");
  EXPECT_EQ(ini.GetString("a", "y"), "2");
}

TEST(StdIniTest, AllValuesOfAKeyComeAsLines) {
  const StdIni ini = Parsed("[s]\r\nk=1\r\n'k=2\r\nK=3\r\nother=4\r\nk=\r\n");
  EXPECT_EQ(ini.GetStringMulti("S", "k"), "1\r\n3\r\n\r\n");
  EXPECT_EQ(ini.GetStringMulti("s", "other"), "4\r\n");
  EXPECT_EQ(ini.GetStringMulti("s", "none"), "");
  EXPECT_EQ(ini.GetStringMulti("none", "k"), "");
  EXPECT_EQ(ini.GetString("s", "k"), "1");
}

TEST(StdIniTest, MissingSectionOrKeyIsNoFailure) {
  const StdIni ini = Parsed("[s]\r\nk=1\r\n");
  EXPECT_EQ(ini.GetSectionValue("none"), "");
  EXPECT_EQ(ini.GetString("none", "k"), "");
  EXPECT_EQ(ini.GetString("s", "none"), "");
  EXPECT_EQ(ini.GetSectionNr("none"), 0);
  EXPECT_FALSE(ini.ExistSection("none"));
  EXPECT_TRUE(ini.ExistSection("S"));
}

TEST(StdIniTest, LoadingLeavesTheDocumentClean) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n");
  EXPECT_FALSE(ini.isDirty());
  ini.SetString("a", "x", "2");
  EXPECT_TRUE(ini.isDirty());
  ini.LoadString("[b]\r\n");
  EXPECT_FALSE(ini.isDirty());
  EXPECT_EQ(ini.Count(), 1);
  EXPECT_EQ(ini.GetSection(1), "b");
}

// --- Changing --------------------------------------------------------------------------------------------

TEST(StdIniTest, SetStringChangesTheFirstEntryOfExactlyThatKey) {
  StdIni ini = Parsed("[s]\r\n'k=0\r\nK=1\r\nk=2\r\n\r\ntext\r\nk=3\r\n");
  ini.SetString("S", "k", "new");
  EXPECT_EQ(ini.GetSectionValue("s"), "'k=0\r\nK=1\r\nk=new\r\n\r\ntext\r\nk=3\r\n");
  EXPECT_TRUE(ini.isDirty());
  EXPECT_EQ(ini.Count(), 1);
}

TEST(StdIniTest, KeyInAnotherCaseIsAppended) {
  StdIni ini = Parsed("[s]\r\nName=x\r\n");
  ini.SetString("s", "NAME", "y");
  EXPECT_EQ(ini.GetSectionValue("s"), "Name=x\r\nNAME=y\r\n");
  EXPECT_EQ(ini.GetString("s", "NAME"), "x");
  EXPECT_EQ(ini.GetString("s", "Name"), "x");
}

TEST(StdIniTest, SetStringCreatesAMissingSectionAtTheEnd) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n");
  ini.SetString(" New ", "k", "v=w");
  EXPECT_EQ(ini.Count(), 2);
  EXPECT_EQ(ini.GetSection(2), " New ");
  EXPECT_EQ(ini.GetSectionValue(" new "), "k=v=w\r\n");
}

TEST(StdIniTest, SetStringCutsAtWholeLineEndsOnly) {
  StdIni ini;
  ini.SetSectionValue("s", "a=1\nk=2\r\nb=3");
  ini.SetString("s", "k", "new");
  // "k=2" stands in the value of "a" here, and the last line gets its end.
  EXPECT_EQ(ini.GetSectionValue("s"), "a=1\nk=2\r\nb=3\r\nk=new\r\n");
  ini.SetString("s", "a", "4");
  EXPECT_EQ(ini.GetSectionValue("s"), "a=4\r\nb=3\r\nk=new\r\n");
}

TEST(StdIniTest, RemainderBehindTheChangedEntryStaysByteForByte) {
  StdIni ini;
  ini.SetSectionValue("s", "k=1\r\n\n \r\rlast without end");
  ini.SetString("s", "k", "2");
  EXPECT_EQ(ini.GetSectionValue("s"), "k=2\r\n\n \r\rlast without end");
}

TEST(StdIniTest, SetSectionValueReplacesTheBody) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n");
  ini.SetSectionValue("A", "anything");
  EXPECT_EQ(ini.GetSection(1), "a");
  EXPECT_EQ(ini.GetSectionValue("a"), "anything");
  ini.SetSectionValue("B", "");
  EXPECT_EQ(ini.Count(), 2);
  EXPECT_EQ(ini.GetSection(2), "B");
  EXPECT_TRUE(ini.isDirty());
}

TEST(StdIniTest, DeleteSectionMovesTheLaterOnesDown) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n[b]\r\nx=2\r\n[c]\r\nx=3\r\n");
  ini.DeleteSection("none");
  EXPECT_FALSE(ini.isDirty());
  ini.DeleteSection("B");
  EXPECT_TRUE(ini.isDirty());
  EXPECT_EQ(ini.Count(), 2);
  EXPECT_EQ(ini.GetSection(2), "c");
  EXPECT_EQ(ini.GetString("c", "x"), "3");
  EXPECT_EQ(ini.GetSection(3), "c");  // the old top record stays in the table
}

TEST(StdIniTest, SetSectionNamesAPositionAndMayRaiseTheCount) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n");
  ini.SetSection(1, "renamed");
  EXPECT_EQ(ini.GetString("renamed", "x"), "1");
  EXPECT_EQ(ini.Count(), 1);
  EXPECT_TRUE(ini.isDirty());
  ini.SetSection(5, "far");
  EXPECT_EQ(ini.Count(), 5);
  EXPECT_EQ(ini.GetSectionNr("far"), 5);
  EXPECT_EQ(ini.GetSectionNr(""), 2);
  ini.SetSection(kMaxSections, "last");
  EXPECT_EQ(ini.Count(), kMaxSections);
}

TEST(StdIniTest, ClearKeepsOldRecordsAndTheFileName) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n");
  ini.SetString("a", "x", "2");
  ini.Clear();
  EXPECT_EQ(ini.Count(), 0);
  EXPECT_FALSE(ini.isDirty());
  EXPECT_EQ(ini.GetSectionNr("a"), 0);
  EXPECT_EQ(ini.GetSection(1), "a");
  ini.SetSection(1, "b");  // the body that stands there is that of the old record
  EXPECT_EQ(ini.GetString("b", "x"), "2");
}

TEST(StdIniTest, NewSectionBeginsWithAnEmptyBody) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n");
  ini.LoadString("[b]\r\n");
  EXPECT_EQ(ini.GetSectionValue("b"), "");
  ini.Clear();
  ini.LoadString("text");
  EXPECT_EQ(ini.GetSection(1), "");
  EXPECT_EQ(ini.GetSectionValue(""), "text\r\n");
}

// --- The size of the table -------------------------------------------------------------------------------

TEST(StdIniTest, TwoHundredSectionsLoadAndTheNextFails) {
  StdIni ini = Parsed(Sections(kMaxSections));
  EXPECT_EQ(ini.Count(), kMaxSections);
  EXPECT_EQ(ini.GetString("s200", "nr"), "200");
  EXPECT_EQ(SwallowedNumber([&] { ini.LoadString(Sections(kMaxSections + 1)); }), kSubscriptOutOfRange);
  EXPECT_EQ(ini.Count(), kMaxSections + 1);
  EXPECT_EQ(ini.GetString("s200", "nr"), "200");  // found before the search gets there
  EXPECT_EQ(SwallowedNumber([&] { ini.GetSectionNr("none"); }), kSubscriptOutOfRange);
}

TEST(StdIniTest, NewSectionBehindTheLastFails) {
  StdIni ini = Parsed(Sections(kMaxSections));
  EXPECT_EQ(SwallowedNumber([&] { ini.SetSectionValue("new", "x"); }), kSubscriptOutOfRange);
  EXPECT_EQ(ini.Count(), kMaxSections + 1);
  EXPECT_TRUE(ini.isDirty());
  ini = Parsed(Sections(kMaxSections));
  EXPECT_EQ(SwallowedNumber([&] { ini.SetString("new", "k", "v"); }), kSubscriptOutOfRange);
  EXPECT_NO_THROW(ini.SetString("s200", "k", "v"));
}

TEST(StdIniTest, PositionsOutsideTheTableFail) {
  StdIni ini = Parsed("[a]\r\n");
  for (const std::int32_t pos : {0, -1, kMaxSections + 1, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(SwallowedNumber([&] { ini.GetSection(pos); }), kSubscriptOutOfRange) << pos;
    EXPECT_EQ(SwallowedNumber([&] { ini.SetSection(pos, "x"); }), kSubscriptOutOfRange) << pos;
  }
  EXPECT_EQ(ini.Count(), 1);
  EXPECT_EQ(ini.GetSection(kMaxSections), "");
}

// --- Files -----------------------------------------------------------------------------------------------

TEST_F(StdIniFileTest, LoadReadsTheFileInCodePageBytes) {
  StdIni ini;
  ini.Load(folder_.Write("profiles.ini", "[Profile0]\nName=M\xFCller\n"));
  EXPECT_EQ(ini.FileName(), folder_.Path("profiles.ini"));
  EXPECT_EQ(ini.GetString("Profile0", "Name"), "Müller"_cp);
  EXPECT_FALSE(ini.isDirty());
}

TEST_F(StdIniFileTest, LoadOfAMissingFileIsAnEmptyDocument) {
  StdIni ini = Parsed("[a]\r\nx=1\r\n");
  ini.SetString("a", "x", "2");
  ini.Load(folder_.Path("none.ini"));
  EXPECT_EQ(ini.FileName(), folder_.Path("none.ini"));
  EXPECT_EQ(ini.Count(), 0);
  EXPECT_FALSE(ini.isDirty());
  ini.Load("");
  EXPECT_EQ(ini.FileName(), "");
}

TEST_F(StdIniFileTest, LoadOfAnUnreadableFileRaises) {
  MAKE_OR_SKIP(MakePipe(folder_.Native("pipe.ini")));
  StdIni ini;
  EXPECT_EQ(SwallowedNumber([&] { ini.Load(folder_.Path("pipe.ini")); }), 75);
  EXPECT_EQ(ini.FileName(), folder_.Path("pipe.ini"));
  EXPECT_EQ(ini.Count(), 0);
}

TEST_F(StdIniFileTest, SaveEndsEverySectionWithABlankLine) {
  EXPECT_EQ(SavedForm("[a]\nx=1\n\n\n[b]\n'note\ny = 2\n\nz\n\n[c]"),
            "[a]\r\nx=1\r\n\r\n[b]\r\n'note\r\ny = 2\r\n\r\nz\r\n\r\n[c]\r\n\r\n");
}

TEST_F(StdIniFileTest, SaveWritesNoHeaderWithoutAName) {
  EXPECT_EQ(SavedForm("x=1\r\n[a]\r\ny=2\r\n"), "x=1\r\n\r\n[a]\r\ny=2\r\n\r\n");
  EXPECT_EQ(SavedForm("[a]\r\ny=2\r\n[]\r\nx=1\r\n"), "[a]\r\ny=2\r\n\r\nx=1\r\n\r\n");
}

TEST_F(StdIniFileTest, UnchangedDocumentIsNotWritten) {
  const std::string text = "[a]\nx=1\n";
  StdIni ini;
  ini.Load(folder_.Write("a.ini", text));
  std::string file;
  ini.Save(file);
  EXPECT_EQ(file, folder_.Path("a.ini"));
  EXPECT_EQ(folder_.Read("a.ini"), text);
  std::string other = folder_.Path("b.ini");
  ini.Save(other);
  EXPECT_FALSE(folder_.Exists("b.ini"));
}

TEST_F(StdIniFileTest, EmptyNameIsThatOfTheLastLoad) {
  StdIni ini;
  ini.Load(folder_.Write("a.ini", "[a]\nx=1\n"));
  ini.SetString("a", "x", "2");
  std::string file;
  ini.Save(file);
  EXPECT_EQ(file, folder_.Path("a.ini"));
  EXPECT_EQ(folder_.Read("a.ini"), "[a]\r\nx=2\r\n\r\n");
  EXPECT_TRUE(ini.isDirty());
}

TEST_F(StdIniFileTest, WithoutAnyNameNothingIsWritten) {
  StdIni ini;
  ini.SetString("a", "x", "1");
  std::string file;
  EXPECT_NO_THROW(ini.Save(file));
  EXPECT_EQ(file, "");
}

TEST_F(StdIniFileTest, SaveReplacesALongerFile) {
  folder_.Write("a.ini", std::string(5000, 'x'));
  StdIni ini;
  ini.SetString("a", "x", "1");
  std::string file = folder_.Path("a.ini");
  ini.Save(file);
  EXPECT_EQ(folder_.Read("a.ini"), "[a]\r\nx=1\r\n\r\n");
}

TEST_F(StdIniFileTest, SaveThatCannotWriteRaises) {
  StdIni ini;
  ini.SetString("a", "x", "1");
  std::string file = folder_.Path("none\\a.ini");
  EXPECT_EQ(SwallowedNumber([&] { ini.Save(file); }), 76);
  EXPECT_TRUE(ini.isDirty());
}

TEST_F(StdIniFileTest, SavedDocumentIsSavedAsTheSameAgain) {
  const std::string saved =
      SavedForm("x=1\n[Profile0]\nName=default\n\n'n\nIsRelative=1\n[General]\nStart=1\n");
  EXPECT_EQ(saved,
            "x=1\r\n\r\n[Profile0]\r\nName=default\r\n\r\n'n\r\nIsRelative=1\r\n\r\n"
            "[General]\r\nStart=1\r\n\r\n");
  EXPECT_EQ(SavedForm(saved), saved);
}

}  // namespace
}  // namespace vorlent
