// The walks over the bookmarks: items and tree of what is read, and the folders that are listed.

#include <cstdint>
#include <regex>
#include <utility>

#include "Connectors/Mozilla/FireFoxFixture.h"
#include "Platform/CodePage.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string Url(const std::string& text, const std::string& url, const std::string& keywords,
                const std::string& date = "09.05.2010 14:30:05") {
  return "ID={}|Type=url|Text=" + text + "|Date=" + date + "|DataUrl=" + url + "|Keywords=" + keywords +
         "|Owner=tester";
}

std::string Listed(const std::string& text, const std::string& address) {
  return "ID={}|Type=location|Text=" + text + "|DataLocation=" + address + "*";
}

// root (id 1)
//   Menu            a, Sub (b), c
//   Symbolleiste    d
class LocationFireFoxReadingTest : public FireFoxTest {
 protected:
  void AddMenu() {
    menu_ = Places().AddFolder(1, "Menu");
    Places().AddBookmark(menu_, "a", "http://a/");
    sub_ = Places().AddFolder(menu_, "Sub");
    Places().AddBookmark(sub_, "b", "http://b/");
    Places().AddBookmark(menu_, "c", "http://c/");
    toolbar_ = Places().AddFolder(1, "Symbolleiste");
    Places().AddBookmark(toolbar_, "d", "http://d/");
  }

  static int Number(const std::function<void()>& step) { return SwallowedNumber(step); }

  std::int64_t menu_ = 0;
  std::int64_t sub_ = 0;
  std::int64_t toolbar_ = 0;
};

// --- Reading

TEST_F(LocationFireFoxReadingTest, WholeProfileBecomesItemsAndTree) {
  AddMenu();
  const auto connector = Open("firefox://x/");
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(Records(), ElementsAre(Url("a", "http://a/", "Menu"), Url("b", "http://b/", "Menu,Sub"),
                                     Url("c", "http://c/", "Menu"), Url("d", "http://d/", "Symbolleiste")));
  EXPECT_EQ(TreeText(),
            " []\n"
            "  Menu [Menu]\n"
            "    Sub [Sub]\n"
            "  Symbolleiste [Symbolleiste]\n");
  EXPECT_THAT(Texts(*connector), ElementsAre("a", "b", "c", "d"));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_F(LocationFireFoxReadingTest, HostIsCalledInTheOrderOfTheWalk) {
  const std::int64_t menu = Places().AddFolder(1, "Menu");
  Places().AddBookmark(menu, "a", "http://a/");
  Open("firefox://x/");
  EXPECT_THAT(WithoutGuids(host_.Log.Lines()),
              ElementsAre("tree.Clear", "tree.AddChild(\"\",\"\")", "tree/.AddChild(\"Menu\",\"Menu\")",
                          "item1.SetLocation(connector)", "Location(\"firefox://x/\").SetItemCounter(1)",
                          "Location(\"firefox://x/\").SetLastItemTimer(52205)",
                          "item1.ImportRecord(\"" + Url("a", "http://a/", "Menu") + "\")",
                          "item1.SetConnected(true)"));
}

TEST_F(LocationFireFoxReadingTest, OrderIsThatOfThePositionsNotOfTheRows) {
  AddMenu();
  Places().Run("UPDATE moz_bookmarks SET position=10-position");
  EXPECT_THAT(Texts(*Open("firefox://x/")), ElementsAre("d", "c", "b", "a"));
}

TEST_F(LocationFireFoxReadingTest, SecondReadReplacesTheFirstUnderNewIDs) {
  AddMenu();
  const auto connector = Open("firefox://x/");
  const std::string first = connector->Item(1)->ID();
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  EXPECT_THAT(Texts(*connector), ElementsAre("a", "b", "c", "d"));
  EXPECT_NE(connector->Item(1)->ID(), first);
  EXPECT_FALSE(connector->HasID(first));
  EXPECT_EQ(host_.Trees.size(), 1U);
  EXPECT_EQ(host_.Trees[0]->ChildCount(), 1);
}

TEST_F(LocationFireFoxReadingTest, IDsAreBracedGuids) {
  AddMenu();
  const std::regex guid("\\{[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}\\}");
  EXPECT_TRUE(std::regex_match(Open("firefox://x/")->Item(1)->ID(), guid));
}

TEST_F(LocationFireFoxReadingTest, OwnerIsWrittenUnescaped) {
  Places().AddBookmark(1, "a", "http://a/");
  host_.Global.User = "DOMAIN\\user";
  Open("firefox://x/");
  EXPECT_THAT(Records()[0], testing::EndsWith("|Owner=DOMAIN\\user"));
}

TEST_F(LocationFireFoxReadingTest, RowsOfOtherTypesArePassedOver) {
  for (const int type : {3, 0, 4, -1, 32767})
    Places().AddRow(type, 1, "no bookmark");
  Places().AddBookmark(1, "a", "http://a/");
  Places().Run("UPDATE moz_bookmarks SET type=NULL WHERE type=4");
  EXPECT_THAT(Texts(*Open("firefox://x/")), ElementsAre("a"));
  EXPECT_EQ(TreeText(), " []\n");
}

TEST_F(LocationFireFoxReadingTest, BookmarksBesideTheRootAreNone) {
  Places().AddBookmark(0, "beside", "http://a/");
  Places().AddBookmark(1, "below", "http://b/");
  EXPECT_THAT(Texts(*Open("firefox://x/")), ElementsAre("below"));
}

TEST_F(LocationFireFoxReadingTest, EachRowBesideTheRootIsATopNode) {
  const std::int64_t second = Places().AddFolder(0, "second");
  Places().AddBookmark(1, "a", "http://a/");
  Places().AddBookmark(second, "b", "http://b/");
  Open("firefox://x/");
  EXPECT_EQ(TreeText(), " []\nsecond [second]\n");
  EXPECT_THAT(Records(), ElementsAre(Url("a", "http://a/", ""), Url("b", "http://b/", "second")));
}

struct TitleCase {
  const char* name;
  PlacesFile::Text title;
  PlacesFile::Text url;
  std::string record;  // "" for none
};

class TitlesAndUrls : public LocationFireFoxReadingTest, public testing::WithParamInterface<TitleCase> {};

TEST_P(TitlesAndUrls, Become) {
  Places().AddBookmark(1, GetParam().title, GetParam().url);
  Open("firefox://x/");
  if (GetParam().record.empty()) {
    EXPECT_THAT(Records(), IsEmpty());
  } else {
    EXPECT_THAT(Records(), ElementsAre(GetParam().record));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Of, TitlesAndUrls,
    testing::Values(
        TitleCase{"EmptyTitle", "", "http://a/", Url("http://a/", "http://a/", "")},
        TitleCase{"NoTitle", std::nullopt, "http://a/", Url("http://a/", "http://a/", "")},
        TitleCase{"NoUrl", "a", std::nullopt, Url("a", "", "")},
        TitleCase{"EmptyUrl", "a", "", Url("a", "", "")}, TitleCase{"Neither", "", "", ""},
        TitleCase{"NeitherIsNull", std::nullopt, std::nullopt, ""},
        TitleCase{"Umlauts", "Größe", "http://a/", Url(std::string("Größe"_cp), "http://a/", "")},
        TitleCase{"Euro", "5 €", "http://a/", Url("5 \x80", "http://a/", "")},
        TitleCase{"BeyondThePage", "Ω 😀 a", "http://a/", Url("? ? a", "http://a/", "")},
        // The url stays as the database has it.
        TitleCase{"UmlautsInTheUrl", "a", "http://größe/€", Url("a", "http://größe/€", "")},
        TitleCase{"Separators", "a|b\\c", "http://a/?x|y\\z", Url("a\\|b\\\\c", "http://a/?x\\|y\\\\z", "")},
        TitleCase{"QuotesAndCommas", "\"a\", 'b'", "http://a/", Url("\"a\", 'b'", "http://a/", "")},
        TitleCase{"Markup", "<b> & co", "http://a/?b&c", Url("<b> & co", "http://a/?b&c", "")},
        // A row is a text of lines: what stands after the title moves by one.
        TitleCase{"LineFeedInTheTitle", "a\nb", "http://a/", Url("a", "b", "", "01.01.1970 00:00:00")},
        TitleCase{"CarriageReturnInTheTitle", "a\rb", "http://a/", Url("ab", "http://a/", "")}),
    [](const auto& each) { return each.param.name; });

TEST_F(LocationFireFoxReadingTest, LineBreaksAreOfTheTitleToday) {
  Places().AddBookmark(Places().AddFolder(1, "two\nlines"), "a\nb\r\n|c\\", "http://a/");
  const ScopedRules today({.bookmarkTitles = BookmarkTitles::Whole});
  const auto connector = Open("firefox://x/");
  EXPECT_THAT(Texts(*connector), ElementsAre("a\nb\r\n|c\\"));
  EXPECT_EQ(connector->Item(1)->DataText("Url"), "http://a/");
  EXPECT_EQ(connector->Item(1)->Date(), "09.05.2010 14:30:05");
  EXPECT_EQ(TreeText(), " []\n  two\nlines [two\nlines]\n");
  EXPECT_EQ(std::dynamic_pointer_cast<RecordingItem>(connector->Item(1))->Keywords, "two\nlines");
}

TEST_F(LocationFireFoxReadingTest, TitlesWithoutLineBreaksReadAlikeByAllRules) {
  Places().AddBookmark(Places().AddFolder(1, "A, B | C"), "x|y\\z & <\"€\">", "http://größe/?a|b\\c");
  Places().AddBookmark(1, std::nullopt, "http://b/");
  Open("firefox://x/");
  const auto records = Records();
  const std::string tree = TreeText();
  host_.Items.clear();
  const ScopedRules today({.bookmarkTitles = BookmarkTitles::Whole});
  Open("firefox://x/");
  EXPECT_EQ(Records(), records);
  EXPECT_EQ(TreeText(), tree);
}

TEST_F(LocationFireFoxReadingTest, TitlesOfEveryScriptAreReadAndFound) {
  const ScopedRules today(Rules::Today());
  const std::int64_t folder = Places().AddFolder(1, "Ελλάδα 👩‍👩‍👧");
  Places().AddBookmark(folder, "Ω 😀 你好 مرحبا é e\u0301", "http://größe/€");
  Open("firefox://x/");
  EXPECT_THAT(Records(), ElementsAre(Url("Ω 😀 你好 مرحبا é e\u0301", "http://größe/€",
                                         "Ελλάδα 👩‍👩‍👧")));
  EXPECT_THAT(Texts(*Open("firefox://x/Ελλάδα 👩‍👩‍👧/")),
              ElementsAre("Ω 😀 你好 مرحبا é e\u0301"));
}

struct DateCase {
  const char* name;
  const char* dateAdded;     // SQL
  const char* lastModified;  // SQL
  const char* date;
};

class Dates : public LocationFireFoxReadingTest, public testing::WithParamInterface<DateCase> {};

TEST_P(Dates, Become) {
  Places().AddBookmark(1, "a", "http://a/");
  Places().Run(std::string("UPDATE moz_bookmarks SET dateAdded=") + GetParam().dateAdded +
               ", lastModified=" + GetParam().lastModified + " WHERE type=1");
  Open("firefox://x/");
  EXPECT_THAT(Records(), ElementsAre(Url("a", "http://a/", "", GetParam().date)));
}

INSTANTIATE_TEST_SUITE_P(
    Of, Dates,
    testing::Values(DateCase{"LastModified", "1262304000123456", "1273415405654321", "09.05.2010 14:30:05"},
                    DateCase{"NeverModified", "1262304000123456", "0", "01.01.2010 00:00:00"},
                    DateCase{"ModifiedIsNull", "1262304000123456", "NULL", "01.01.2010 00:00:00"},
                    DateCase{"OneDigitCountsAsNever", "1262304000123456", "9", "01.01.2010 00:00:00"},
                    DateCase{"TwoDigitsAreLessThanASecond", "1262304000123456", "10", "01.01.1970 00:00:00"},
                    DateCase{"MicrosecondsAreCutOff", "0", "1999999", "01.01.1970 00:00:01"},
                    DateCase{"NoDateAtAll", "NULL", "0", "01.01.1970 00:00:00"},
                    DateCase{"LastSecondOfThirtyTwoBits", "0", "2147483647999999", "19.01.2038 03:14:07"},
                    // No time zone is applied, in summer or in winter.
                    DateCase{"Winter", "0", "1767225600000000", "01.01.2026 00:00:00"}),
    [](const auto& each) { return each.param.name; });

TEST_F(LocationFireFoxReadingTest, DateBeyondThirtyTwoBitsIsAnOverflowOfTheWholeRead) {
  Places().AddBookmark(1, "a", "http://a/");
  Places().AddBookmark(1, "b", "http://b/", 0, 2147483648000000);
  Places().AddBookmark(1, "c", "http://c/");
  const auto connector = Connect("firefox://x/");
  EXPECT_EQ(Number([&] { connector->OpenLocation(""); }), static_cast<int>(ErrorNumber::Overflow));
  EXPECT_THAT(Texts(*connector), ElementsAre("a"));
}

TEST_F(LocationFireFoxReadingTest, TimesAreInTheReadersZoneToday) {
  const ScopedTimeZone berlin("Europe/Berlin");
  for (const std::int64_t date : {1700000000000000, 1750000000000000, 253402300799000000})
    Places().AddBookmark(1, "a", "http://a/", 0, date);
  {
    const ScopedRules ample({.widths = Widths::Ample});
    Open("firefox://x/");
    EXPECT_THAT(Records(), ElementsAre(Url("a", "http://a/", "", "14.11.2023 22:13:20"),
                                       Url("a", "http://a/", "", "15.06.2025 15:06:40"),
                                       Url("a", "http://a/", "", "31.12.9999 23:59:59")));
  }
  host_.Items.clear();
  const ScopedRules today(Rules::Today());
  Open("firefox://x/");
  EXPECT_THAT(Records(), ElementsAre(Url("a", "http://a/", "", "14.11.2023 23:13:20"),
                                     Url("a", "http://a/", "", "15.06.2025 17:06:40"),
                                     Url("a", "http://a/", "", "31.12.9999 23:59:59")));
}

TEST_F(LocationFireFoxReadingTest, DatesOutsideOfThirtyTwoBitsAreShownToday) {
  const ScopedTimeZone utc("UTC");
  const ScopedRules today(Rules::Today());
  for (const std::int64_t date : {2147483648000000, 253402300799000000, 900000000000000000, -86400000000})
    Places().AddBookmark(1, "a", "http://a/", 0, date);
  Open("firefox://x/");
  EXPECT_THAT(Records(), ElementsAre(Url("a", "http://a/", "", "19.01.2038 03:14:08"),
                                     Url("a", "http://a/", "", "31.12.9999 23:59:59"),
                                     Url("a", "http://a/", "", "31.12.9999 23:59:59"),
                                     Url("a", "http://a/", "", "31.12.1969 00:00:00")));
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_F(LocationFireFoxReadingTest, BookmarkThatCannotBeReadIsNamedAndTheNextOneComes) {
  AddMenu();
  const std::int64_t broken = Places().AddRow(32768, menu_, "so|so");
  Places().AddBookmark(menu_, "e", "http://e/");
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  // Refused by the host, as the row above is by the reader.
  host_.Log.FailOn("item2.ImportRecord");
  const auto connector = Connect("firefox://x/");
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  EXPECT_THAT(Texts(*connector), ElementsAre("a", "", "c", "e", "d"));
  ASSERT_EQ(Reports().size(), 2U);
  EXPECT_THAT(Reports()[0], HasSubstr("places.sqlite: Lesezeichen "));
  EXPECT_THAT(Reports()[0], HasSubstr("'b': "));
  EXPECT_THAT(Reports()[1], HasSubstr("Lesezeichen " + std::to_string(broken) + " 'so|so': overflow"));
}

TEST_F(LocationFireFoxReadingTest, FolderWithinItselfIsNamedAndTheNextOneComes) {
  AddMenu();
  Places().Run("INSERT INTO moz_bookmarks(id, type, parent, position, title) VALUES(0, 2, " +
               std::to_string(sub_) + ", 0, 'circle')");
  const ScopedRules rules({.brokenItems = BrokenItems::AreNamed});
  EXPECT_THAT(Texts(*Open("firefox://x/")), ElementsAre("a", "b", "c", "d"));
  ASSERT_EQ(Reports().size(), 1U);
  EXPECT_THAT(Reports()[0], HasSubstr("Lesezeichen 0 'circle': moz_bookmarks: folder 0 lies within itself"));
}

TEST_F(LocationFireFoxReadingTest, FolderOfManyRowsIsReadToday) {
  AddMenu();
  Places().Run(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<40000) "
      "INSERT INTO moz_bookmarks(type, parent, position, title) SELECT 1, " +
      std::to_string(sub_) + ", i, 't' FROM n");
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(Open("firefox://x/")->Count(), 40004);
}

TEST_F(LocationFireFoxReadingTest, TypeBeyondSixteenBitsIsAnOverflow) {
  Places().AddRow(32768, 1, "a");
  const auto connector = Connect("firefox://x/");
  EXPECT_EQ(Number([&] { connector->OpenLocation(""); }), static_cast<int>(ErrorNumber::Overflow));
}

TEST_F(LocationFireFoxReadingTest, FolderIDBeyondThirtyTwoBitsIsAnOverflow) {
  AddMenu();
  Places().Run("INSERT INTO moz_bookmarks(id, type, parent, position, title) VALUES(2147483648, 2, " +
               std::to_string(toolbar_) + ", 0, 'a')");
  const auto connector = Connect("firefox://x/");
  EXPECT_EQ(Number([&] { connector->OpenLocation(""); }), static_cast<int>(ErrorNumber::Overflow));
  const auto listing = Connect("firefox://x/Menu/Sub/*");
  EXPECT_EQ(Number([&] { listing->OpenLocation(""); }), static_cast<int>(ErrorNumber::Overflow));
}

TEST_F(LocationFireFoxReadingTest, KeywordsAreTheTitlesFromTheTop) {
  const std::int64_t unnamed = Places().AddFolder(1, "");
  Places().AddBookmark(Places().AddFolder(unnamed, "below unnamed"), "a", "http://a/");
  const std::int64_t menu = Places().AddFolder(1, "Menu");
  const std::int64_t inner = Places().AddFolder(menu, std::nullopt);
  Places().AddBookmark(inner, "b", "http://b/");
  Places().AddBookmark(Places().AddFolder(inner, "c,d"), "c", "http://c/");
  Places().AddBookmark(Places().AddFolder(menu, "Grö|ße"), "d", "http://d/");
  Open("firefox://x/");
  EXPECT_THAT(Records(), ElementsAre(Url("a", "http://a/", "below unnamed"), Url("b", "http://b/", "Menu,"),
                                     Url("c", "http://c/", "Menu,,c,d"),
                                     Url("d", "http://d/", "Menu," + std::string("Grö\\|ße"_cp))));
}

TEST_F(LocationFireFoxReadingTest, FoldersWithoutBookmarksAreNodesToo) {
  Places().AddFolder(Places().AddFolder(1, "a"), "b");
  Places().AddFolder(1, "a");
  EXPECT_EQ(Open("firefox://x/")->Count(), 0);
  EXPECT_EQ(TreeText(), " []\n  a [a]\n    b [b]\n  a [a]\n");
}

// --- Reading below a folder

struct PathCase {
  const char* name;
  std::string address;
  std::string tree;
  std::vector<std::string> texts;
};

class Paths : public LocationFireFoxReadingTest, public testing::WithParamInterface<PathCase> {};

TEST_P(Paths, SelectWhatIsRead) {
  AddMenu();
  const auto connector = Open(GetParam().address);
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_EQ(TreeText(), GetParam().tree);
  EXPECT_EQ(Texts(*connector), GetParam().texts);
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Reports(), IsEmpty());
}

constexpr char kWholeTree[] = " []\n  Menu [Menu]\n    Sub [Sub]\n  Symbolleiste [Symbolleiste]\n";
constexpr char kMenuTree[] = " []\n  Menu [Menu]\n    Sub [Sub]\n";

INSTANTIATE_TEST_SUITE_P(
    Of, Paths,
    testing::Values(
        PathCase{"ProfileWithoutSlash", "firefox://x", kWholeTree, {"a", "b", "c", "d"}},
        PathCase{"ProfileWithoutSubfolders", "firefox://x/-", kWholeTree, {"a", "b", "c", "d"}},
        PathCase{"Folder", "firefox://x/Menu/", kMenuTree, {"a", "b", "c"}},
        PathCase{"FolderWithoutSlash", "firefox://x/Menu", kMenuTree, {"a", "b", "c"}},
        PathCase{"FolderWithTheMark", "firefox://x/Menu/-", kMenuTree, {"a", "b", "c"}},
        PathCase{"FolderOfAFolder", "firefox://x/Menu/Sub/", kMenuTree, {"b"}},
        PathCase{"OtherFolder", "firefox://x/Symbolleiste/", " []\n  Symbolleiste [Symbolleiste]\n", {"d"}},
        PathCase{"NoSuchFolder", "firefox://x/Nope/", " []\n", {}},
        PathCase{"NoSuchFolderFurtherDown", "firefox://x/Menu/Nope/", " []\n  Menu [Menu]\n", {}},
        PathCase{"OtherLetterCase", "firefox://x/menu/", " []\n", {}},
        // An empty step counts as the end of the path on its level alone.
        PathCase{"EmptyStep",
                 "firefox://x//Sub/",
                 " []\n  Menu [Menu]\n    Sub [Sub]\n  Symbolleiste "
                 "[Symbolleiste]\n",
                 {"b"}},
        PathCase{"StarInside", "firefox://x/*/", " []\n", {}}),
    [](const auto& each) { return each.param.name; });

TEST_F(LocationFireFoxReadingTest, PathIsComparedWithTheDecodedTitle) {
  Places().AddBookmark(Places().AddFolder(1, "Größe"), "a", "http://a/");
  EXPECT_THAT(Texts(*Open("firefox://x/" + std::string("Größe"_cp) + "/")), ElementsAre("a"));
  EXPECT_THAT(Texts(*Open("firefox://x/Größe/")), IsEmpty());
}

TEST_F(LocationFireFoxReadingTest, AllFoldersOfAStepsTitleAreFollowed) {
  Places().AddBookmark(Places().AddFolder(1, "Menu"), "a", "http://a/");
  Places().AddBookmark(Places().AddFolder(1, "Menu"), "b", "http://b/");
  EXPECT_THAT(Texts(*Open("firefox://x/Menu/")), ElementsAre("a", "b"));
}

// --- Failures while reading

TEST_F(LocationFireFoxReadingTest, FailureInTheMiddleKeepsWhatWasRead) {
  AddMenu();
  const auto connector = Connect("firefox://x/");
  host_.Log.OnCall = [&](const std::string& line) {
    if (line.starts_with("item1.ImportRecord")) SqliteFile(PlacesPath()).Run("DROP TABLE moz_places");
  };
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  // The folder that was being read goes on no further either.
  EXPECT_THAT(Texts(*connector), ElementsAre("a"));
  EXPECT_EQ(TreeText(), " []\n  Menu [Menu]\n    Sub [Sub]\n");
  EXPECT_THAT(Boxes(), ElementsAre(ConnectBox("no such table: moz_places")));
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_F(LocationFireFoxReadingTest, DatabaseIsLetGoBehindAFailureOfTheHost) {
  AddMenu();
  const auto connector = Connect("firefox://x/");
  places_.reset();
  host_.Log.FailOn("tree/.AddChild", 1);
  EXPECT_EQ(Number([&] { connector->OpenLocation(""); }), 440);
  EXPECT_THAT(Boxes(), IsEmpty());
  SqliteFile(PlacesPath()).Run("PRAGMA locking_mode=EXCLUSIVE; DELETE FROM moz_bookmarks");
}

TEST_F(LocationFireFoxReadingTest, ItemThatCanNotBePastedIsPassedOver) {
  AddMenu();
  const auto connector = Connect("firefox://x/");
  host_.Log.FailOn("item2.ImportRecord", 1);
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  // The second item stays in the store as it was born.
  EXPECT_THAT(Texts(*connector), ElementsAre("a", "", "c", "d"));
}

TEST_F(LocationFireFoxReadingTest, FolderWithinItselfIsAFailure) {
  AddMenu();
  // The row of id 0 lies below the folder whose content is asked for as that of parent 0.
  Places().Run("INSERT INTO moz_bookmarks(id, type, parent, position, title) VALUES(0, 2, " +
               std::to_string(toolbar_) + ", 5, 'circle')");
  for (const char* address : {"firefox://x/", "firefox://x/Menu/Sub/*"}) {
    SCOPED_TRACE(address);
    const auto connector = Connect(address);
    try {
      connector->OpenLocation("");
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Number(), 28);
      EXPECT_STREQ(failure.what(), "moz_bookmarks: folder 0 lies within itself");
    }
  }
}

TEST_F(LocationFireFoxReadingTest, CircleOfFoldersFurtherDownIsAFailure) {
  WriteProfiles({"x"});
  // Only a table without its key can hold two rows of one id.
  SqliteFile(PlacesPath())
      .Run(
          "CREATE TABLE moz_places(id, url);"
          "CREATE TABLE moz_bookmarks(id, type, fk, parent, position, title, dateAdded, lastModified);"
          "INSERT INTO moz_bookmarks(id, type, parent, title) "
          "VALUES(1,2,0,''),(2,2,1,'a'),(3,2,2,'b'),(2,2,3,'a')");
  const auto connector = Connect("firefox://x/");
  EXPECT_EQ(Number([&] { connector->OpenLocation(""); }), 28);
  // The same folder twice, but not within itself, is none.
  SqliteFile(PlacesPath()).Run("UPDATE moz_bookmarks SET parent=1 WHERE id=2");
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  EXPECT_EQ(TreeText(), " []\n  a [a]\n    b [b]\n  a [a]\n    b [b]\n");
}

TEST_F(LocationFireFoxReadingTest, CircleThatNoWayLeadsToDoesNotMatter) {
  AddMenu();
  Places().Run(
      "INSERT INTO moz_bookmarks(id, type, parent, title) "
      "VALUES(100,2,101,'a'),(101,2,100,'b'),(102,2,102,'c')");
  EXPECT_EQ(Open("firefox://x/")->Count(), 4);
}

TEST_F(LocationFireFoxReadingTest, FolderOfTooManyRowsIsAnOverflow) {
  AddMenu();
  Places().Run(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<40000) "
      "INSERT INTO moz_bookmarks(type, parent, position, title) SELECT 1, " +
      std::to_string(sub_) + ", i, 't' FROM n");
  const auto connector = Connect("firefox://x/");
  try {
    connector->OpenLocation("");
    ADD_FAILURE() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::Overflow));
    EXPECT_THAT(failure.what(), HasSubstr("40001 rows"));
  }
  EXPECT_THAT(Texts(*connector), ElementsAre("a"));
}

// A tree that only counts its nodes, so that its own depth costs nothing.
class CountingTree : public Tree {
 public:
  explicit CountingTree(int& nodes) : nodes_(nodes) {}
  std::string Text() const override { return "node"; }
  KeyedList<ItemPtr> Items() const override { return {}; }
  std::string Description() const override { return {}; }
  KeyedList<TreePtr> Children() const override { return {}; }
  void Clear() override {}
  TreePtr AddChild(std::string_view, std::string_view) override {
    ++nodes_;
    return std::make_shared<CountingTree>(nodes_);
  }
  void ClearItems() override {}
  void AddItem(const ItemPtr&) override {}
  std::int32_t ItemCount() const override { return 0; }
  std::int32_t ChildCount() const override { return 0; }
  void AddKeywordPath(std::string_view) override {}

 private:
  int& nodes_;
};

class DeepFolders : public LocationFireFoxReadingTest {
 protected:
  // A chain of folders below the root, which is the first of them, and a bookmark at the bottom.
  void AddChain(int levels) {
    Places().Run(
        "WITH RECURSIVE n(i) AS (SELECT 2 UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(levels) +
        ") INSERT INTO moz_bookmarks(id, type, parent, position, title) SELECT i, 2, i-1, 0, 'f' FROM n;"
        "INSERT INTO moz_bookmarks(type, parent, position, title) VALUES(1, " +
        std::to_string(levels) + ", 0, 'bottom')");
  }
};

TEST_F(DeepFolders, TenThousandLevelsAreRead) {
  AddChain(10000);
  const auto connector = Connect("firefox://x/");
  int nodes = 0;
  connector->SetTree(std::make_shared<CountingTree>(nodes));
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  EXPECT_EQ(nodes, 10000);
  EXPECT_THAT(Texts(*connector), ElementsAre("bottom"));
}

TEST_F(DeepFolders, TenThousandLevelsAreListed) {
  AddChain(10000);
  EXPECT_EQ(Open("firefox://x/f/f/*")->Count(), 1);
  EXPECT_EQ(Open("firefox://x/g/*")->Count(), 0);
  EXPECT_EQ(state_, LocationState::Unreadable);
}

TEST_F(DeepFolders, LevelsAreCountedInSixteenBits) {
  AddChain(32768);
  const auto connector = Connect("firefox://x/");
  int nodes = 0;
  connector->SetTree(std::make_shared<CountingTree>(nodes));
  EXPECT_EQ(Number([&] { connector->OpenLocation(""); }), static_cast<int>(ErrorNumber::Overflow));
  EXPECT_EQ(nodes, 32768);
}

// --- Listing

class Listing : public LocationFireFoxReadingTest {};

TEST_F(Listing, FoldersOfTheProfile) {
  AddMenu();
  const auto connector = Open("firefox://x/*");
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(Records(), ElementsAre(Listed("Menu", "firefox://x/Menu/"),
                                     Listed("Symbolleiste", "firefox://x/Symbolleiste/")));
  EXPECT_EQ(TreeText(), "");
  EXPECT_THAT(Boxes(), IsEmpty());
}

TEST_F(Listing, AddressOfAnEntryListsItsFolders) {
  AddMenu();
  const auto connector = Open("firefox://*");
  for (const char* next : {"firefox://x/*", "firefox://x/Menu/*", "firefox://x/Menu/Sub/*"}) {
    EXPECT_EQ(connector->Item(1)->DataText("Location"), next);
    location_->Address = next;
    EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  }
  EXPECT_EQ(connector->Count(), 0);
}

TEST_F(Listing, UnnamedFolderIsADashWithAnEmptyStep) {
  AddMenu();
  const std::int64_t unnamed = Places().AddFolder(1, "");
  Places().AddFolder(unnamed, "below");
  Open("firefox://x/*");
  EXPECT_THAT(Records(),
              ElementsAre(Listed("Menu", "firefox://x/Menu/"),
                          Listed("Symbolleiste", "firefox://x/Symbolleiste/"), Listed("-", "firefox://x//")));
  host_.Items.clear();
  Open("firefox://x//*");
  EXPECT_THAT(Records(), ElementsAre(Listed("below", "firefox://x//below/")));
}

TEST_F(Listing, TitlesAreDecodedAndEscaped) {
  Places().AddFolder(Places().AddFolder(1, "Größe"), "a|b");
  Open("firefox://x/" + std::string("Größe"_cp) + "/*");
  EXPECT_THAT(Records(), ElementsAre(Listed("a\\|b", "firefox://x/" + std::string("Größe"_cp) + "/a\\|b/")));
}

TEST_F(Listing, OrderIsThatOfThePositions) {
  AddMenu();
  Places().Run("UPDATE moz_bookmarks SET position=10-position");
  EXPECT_THAT(Texts(*Open("firefox://x/*")), ElementsAre("Symbolleiste", "Menu"));
}

TEST_F(Listing, EachStarListsWhereTheWalkStands) {
  AddMenu();
  EXPECT_THAT(Texts(*Open("firefox://x/*/Menu/*")), ElementsAre("Menu", "Symbolleiste", "Sub"));
}

TEST_F(Listing, FoldersOfSeveralRootsAreListedTogether) {
  AddMenu();
  Places().AddFolder(Places().AddFolder(0, "second"), "More");
  EXPECT_THAT(Texts(*Open("firefox://x/*")), ElementsAre("Menu", "Symbolleiste", "More"));
}

struct NotFoundCase {
  const char* name;
  const char* address;
  const char* told;  // in front of " nicht gefunden!"
};

class NotFound : public LocationFireFoxReadingTest, public testing::WithParamInterface<NotFoundCase> {};

TEST_P(NotFound, IsToldInABoxAndReported) {
  AddMenu();
  Places().AddFolder(Places().AddFolder(menu_, "Twice"), "below");
  Places().AddFolder(menu_, "Twice");
  const auto connector = Open(GetParam().address);
  EXPECT_EQ(state_, LocationState::Unreadable);
  EXPECT_EQ(connector->Count(), 0);
  const std::string text = std::string(GetParam().told) + " nicht gefunden!";
  EXPECT_THAT(Boxes(), ElementsAre(CriticalBox(text, "error")));
  EXPECT_THAT(Reports(), ElementsAre("Global.Report(27,\"" + text + "\",nothing)"));
}

INSTANTIATE_TEST_SUITE_P(
    Of, NotFound,
    testing::Values(NotFoundCase{"Profile", "firefox://y/*", "firefox://y"},
                    NotFoundCase{"ProfileInOtherCase", "firefox://X/*", "firefox://X"},
                    NotFoundCase{"EmptyProfile", "firefox:///*", "firefox://"},
                    NotFoundCase{"Folder", "firefox://x/Nope/*", "firefox://x/Nope"},
                    NotFoundCase{"FolderInOtherCase", "firefox://x/menu/*", "firefox://x/menu"},
                    NotFoundCase{"FolderFurtherDown", "firefox://x/Menu/Nope/Sub/*", "firefox://x/Menu/Nope"},
                    NotFoundCase{"EmptyStep", "firefox://x//*", "firefox://x/"},
                    NotFoundCase{"TwoOfOneTitle", "firefox://x/Menu/Twice/*", "firefox://x/Menu/Twice"},
                    NotFoundCase{"Bookmark", "firefox://x/Menu/a/*", "firefox://x/Menu/a"}),
    [](const auto& each) { return each.param.name; });

TEST_F(Listing, BrokenWalkIsToldAndWhatIsMissingIsNotFound) {
  AddMenu();
  Places().Run("ALTER TABLE moz_bookmarks DROP COLUMN title");
  EXPECT_EQ(Open("firefox://x/*")->Count(), 0);
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_THAT(Boxes(), ElementsAre(ConnectBox("no such column: title")));
}

TEST_F(Listing, EntriesAreCountedInSixteenBits) {
  const std::int64_t second = Places().AddFolder(0, "");
  Places().Run(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<32768) "
      "INSERT INTO moz_bookmarks(type, parent, position, title) SELECT 2, CASE WHEN i%2 THEN 1 ELSE " +
      std::to_string(second) + " END, i, 'f' FROM n");
  const auto connector = Connect("firefox://x/*");
  // What can't be pasted is passed over, so that little more than the counting is left.
  host_.Log.FailOn("Host.NewItem", 1, true);
  EXPECT_EQ(Number([&] { connector->OpenLocation(""); }), static_cast<int>(ErrorNumber::Overflow));
}

// --- Keywords

class SubKeywords : public LocationFireFoxReadingTest {
 protected:
  SubKeywords() : connector_(Connect("firefox://x/")), expression_(std::make_shared<TextExpression>("Menu")) {
    host_.OnSubKeywords = [](std::string_view keyword) {
      auto list = std::make_shared<KeyedList<std::string>>();
      list->Add("below " + std::string(keyword));
      return list;
    };
  }

  std::shared_ptr<Location_FireFox> connector_;
  ExpressionPtr expression_;
};

TEST_F(SubKeywords, AreThoseOfTheHostsEnumeration) {
  const auto keywords = connector_->GetSubKeywords(expression_);
  ASSERT_NE(keywords, nullptr);
  ASSERT_EQ(keywords->Count(), 1);
  EXPECT_EQ(keywords->Item(1), "below Menu");
  EXPECT_THAT(host_.Log.Lines(),
              ElementsAre("Enum.Init(Location(\"firefox://x/\"),\"Menu\")", "Enum.SubKeywords(\"Menu\")"));
}

TEST_F(SubKeywords, ReplacedExpressionIsTheOneAsked) {
  const auto other = host_.MakeLocation("firefox://y/");
  host_.OnEnumInit = [&](LocationPtr& location, ExpressionPtr& expression) {
    location = other;
    expression = std::make_shared<TextExpression>("Other");
  };
  EXPECT_EQ(connector_->GetSubKeywords(expression_)->Item(1), "below Other");
  EXPECT_EQ(expression_->Text(), "Other");
  EXPECT_EQ(connector_->LocObject(), other);
}

TEST_F(SubKeywords, FailedInitIsPassedOver) {
  host_.Log.FailOn("Enum.Init");
  EXPECT_EQ(connector_->GetSubKeywords(expression_)->Item(1), "below Menu");
}

TEST_F(SubKeywords, HostWithoutEnumerationsGivesNothing) {
  host_.Log.FailOn("Host.NewEnum");
  EXPECT_EQ(connector_->GetSubKeywords(expression_), nullptr);
}

TEST_F(SubKeywords, FailedQuestionGivesNothing) {
  host_.Log.FailOn("Enum.SubKeywords");
  EXPECT_EQ(connector_->GetSubKeywords(expression_), nullptr);
}

TEST_F(SubKeywords, NoExpressionIsAskedAsAnEmptyOne) {
  expression_ = nullptr;
  EXPECT_EQ(connector_->GetSubKeywords(expression_)->Item(1), "below ");
}

}  // namespace
}  // namespace vorlent::test
