// bookmarks.html, and how the store of items changes.

#include <cstdint>
#include <filesystem>

#include "Connectors/Mozilla/FireFoxFixture.h"
#include "Platform/CodePage.h"
#include "Support/AsOrdinaryUser.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The present time of the tests, 2010-05-09 14:30:05, stands in it.
constexpr char kHeader[] =
    "<!DOCTYPE NETSCAPE-Bookmark-file-1>\r\n"
    "<!-- This is an automatically generated file.\r\n"
    "     It will be read and overwritten.\r\n"
    "     DO NOT EDIT! -->\r\n"
    "<META HTTP-EQUIV=\"Content-Type\" CONTENT=\"text/html; charset=UTF-8\">\r\n"
    "<TITLE>Bookmarks</TITLE>\r\n"
    "<H1 LAST_MODIFIED=\"1273415405\">Bookmarks</H1>\r\n"
    "\r\n";

class LocationFireFoxExportTest : public FireFoxTest {
 protected:
  static std::string ExportName() { return ProfileFolder() + "\\bookmarks.html"; }

  // The file that was written, without its header, and its IDs as they come new with every read.
  std::string Exported() const {
    const std::string text = folder_.Read(ExportName());
    EXPECT_TRUE(text.starts_with(kHeader)) << text;
    return WithoutGuids(text.substr(std::min(text.size(), sizeof kHeader - 1)));
  }

  // A connector on an empty profile, opened: its tree has the unnamed top node and no items.
  std::shared_ptr<Location_FireFox> OpenEmpty() {
    Places();
    return Open("firefox://x/");
  }

  RecordingTree& TopNode() { return *host_.Trees[0]->Nodes[0]; }

  // An item as it comes into the store, with a record of text and url.
  std::shared_ptr<RecordingItem> Paste(Location_FireFox& connector, const std::string& record) {
    connector.PasteItem(record, false);
    return host_.Items.back();
  }
};

// --- The file

TEST_F(LocationFireFoxExportTest, EmptyLocationIsAHeaderAndAnEmptyList) {
  WriteProfiles({"x"});
  Open("firefox://x/")->Save();
  EXPECT_EQ(folder_.Read(ExportName()), std::string(kHeader) + "<DL><p>\r\n</DL><p>\r\n");
}

TEST_F(LocationFireFoxExportTest, OneBookmarkInOneFolder) {
  Places().AddBookmark(Places().AddFolder(1, "Menu"), "a", "http://a/");
  Open("firefox://x/")->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3>Menu</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://a/\" ID=\"rdf:{}\">a</A>\r\n"
            "        </DL><p>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(LocationFireFoxExportTest, TextOfEveryScriptIsWritten) {
  const ScopedRules today(Rules::Today());
  Places().AddBookmark(Places().AddFolder(1, "Ж 😀"), "你好 – 5 €", "http://a/");
  Open("firefox://x/")->Save();
  EXPECT_THAT(Exported(), testing::HasSubstr("<DT><H3>Ж 😀</H3>\r\n"));
  EXPECT_THAT(Exported(), testing::HasSubstr("ID=\"rdf:{}\">你好 – 5 €</A>\r\n"));
}

TEST_F(LocationFireFoxExportTest, FoldersComeBeforeTheBookmarksBesideThem) {
  Places().AddBookmark(1, "a", "http://a/");
  const std::int64_t menu = Places().AddFolder(1, "Menu");
  Places().AddBookmark(menu, "b", "http://b/");
  Places().AddBookmark(Places().AddFolder(menu, "Sub"), "c", "http://c/");
  Places().AddBookmark(menu, "d", "http://d/");
  Places().AddFolder(1, "Empty");
  Open("firefox://x/")->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3>Menu</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><H3>Sub</H3>\r\n"
            "            <DL><p>\r\n"
            "                <DT><A HREF=\"http://c/\" ID=\"rdf:{}\">c</A>\r\n"
            "            </DL><p>\r\n"
            "            <DT><A HREF=\"http://b/\" ID=\"rdf:{}\">b</A>\r\n"
            "            <DT><A HREF=\"http://d/\" ID=\"rdf:{}\">d</A>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>Empty</H3>\r\n"
            "        <DL><p>\r\n"
            "        </DL><p>\r\n"
            "        <DT><A HREF=\"http://a/\" ID=\"rdf:{}\">a</A>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(LocationFireFoxExportTest, UnnamedFolderHasAListWithoutAHeading) {
  const auto connector = OpenEmpty();
  TopNode().Nodes.push_back(std::make_shared<RecordingTree>(host_.Log, "unnamed"));
  TopNode().Nodes.back()->DescriptionText = "PERSONAL_TOOLBAR_FOLDER=\"true\"\r\nnever shown";
  connector->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DL><p>\r\n"
            "        </DL><p>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

struct FolderCase {
  const char* name;
  const char* description;
  const char* lines;
};

class Folders : public LocationFireFoxExportTest, public testing::WithParamInterface<FolderCase> {};

TEST_P(Folders, AreWrittenWithTheirDescription) {
  const auto connector = OpenEmpty();
  TopNode().AddChild("F", "F");
  TopNode().Nodes[0]->DescriptionText = GetParam().description;
  connector->Save();
  EXPECT_EQ(Exported(),
            std::string("<DL><p>\r\n    <DL><p>\r\n") + GetParam().lines + "    </DL><p>\r\n</DL><p>\r\n");
}

INSTANTIATE_TEST_SUITE_P(
    Of, Folders,
    testing::Values(
        FolderCase{"Nothing", "", "        <DT><H3>F</H3>\r\n        <DL><p>\r\n        </DL><p>\r\n"},
        FolderCase{"Attributes", "ADD_DATE=\"1\" ID=\"rdf:#$x\"",
                   "        <DT><H3 ADD_DATE=\"1\" ID=\"rdf:#$x\">F</H3>\r\n"
                   "        <DL><p>\r\n        </DL><p>\r\n"},
        FolderCase{"AttributesAndText", "A=\"\xE4\"\r\nText \xE4\nmore",
                   "        <DT><H3 A=\"\xE4\">F</H3>\r\n<DD>Text \xC3\xA4\nmore\r\n"
                   "        <DL><p>\r\n        </DL><p>\r\n"},
        FolderCase{"TextAlone", "\r\nText",
                   "        <DT><H3>F</H3>\r\n<DD>Text\r\n        <DL><p>\r\n        </DL><p>\r\n"},
        FolderCase{"Toolbar", "PERSONAL_TOOLBAR_FOLDER=\"true\"",
                   "        <DT><H3 PERSONAL_TOOLBAR_FOLDER=\"true\">F</H3>\r\n"
                   "        <DL><p>\r\n        </DL><p>\r\n        <HR>\r\n"},
        FolderCase{"ToolbarInOtherCase", "personal_toolbar_folder=\"true\"",
                   "        <DT><H3 personal_toolbar_folder=\"true\">F</H3>\r\n"
                   "        <DL><p>\r\n        </DL><p>\r\n"},
        FolderCase{"ToolbarInTheText", "\r\nPERSONAL_TOOLBAR_FOLDER",
                   "        <DT><H3>F</H3>\r\n<DD>PERSONAL_TOOLBAR_FOLDER\r\n"
                   "        <DL><p>\r\n        </DL><p>\r\n"}),
    [](const auto& each) { return each.param.name; });

struct BookmarkCase {
  const char* name;
  std::function<void(RecordingItem&)> prepare;
  std::string line;  // after the indentation, up to the line end
};

class Bookmarks : public LocationFireFoxExportTest, public testing::WithParamInterface<BookmarkCase> {};

TEST_P(Bookmarks, AreWrittenWithWhatTheyHold) {
  const auto connector = OpenEmpty();
  GetParam().prepare(*Paste(*connector, "ID=1|Type=url|Text=t|DataUrl=u"));
  connector->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n    <DL><p>\r\n        " + GetParam().line + "\r\n    </DL><p>\r\n</DL><p>\r\n");
}

INSTANTIATE_TEST_SUITE_P(
    Of, Bookmarks,
    testing::Values(
        BookmarkCase{"NothingMore", [](RecordingItem&) {}, "<DT><A HREF=\"u\" ID=\"rdf:1\">t</A>"},
        BookmarkCase{"NoUrl", [](RecordingItem& item) { item.Data.clear(); },
                     "<DT><A HREF=\"\" ID=\"rdf:1\">t</A>"},
        BookmarkCase{"DateAdded", [](RecordingItem& item) { item.Created = "01.01.1970 00:00:00"; },
                     "<DT><A HREF=\"u\" ADD_DATE=\"0\" ID=\"rdf:1\">t</A>"},
        BookmarkCase{"AllDates",
                     [](RecordingItem& item) {
                       item.Created = "01.01.2010 00:00:00";
                       item.Visited = "09.05.2010 14:30:05";
                       item.Modified = "19.01.2038 03:14:07";
                     },
                     "<DT><A HREF=\"u\" ADD_DATE=\"1262304000\" LAST_VISIT=\"1273415405\" "
                     "LAST_MODIFIED=\"2147483647\" ID=\"rdf:1\">t</A>"},
        BookmarkCase{"DatesAsStamps", [](RecordingItem& item) { item.Visited = "20100509-143005"; },
                     "<DT><A HREF=\"u\" LAST_VISIT=\"1273415405\" ID=\"rdf:1\">t</A>"},
        BookmarkCase{"AllAttributes",
                     [](RecordingItem& item) {
                       item.Data.emplace_back("ShortcutUrl", "k\xE4");
                       item.Data.emplace_back("LastCharset", "UTF-8");
                       item.Data.emplace_back("Icon", "data:image/png;base64,AAAA");
                       item.Modified = "01.01.1970 00:00:01";
                     },
                     "<DT><A HREF=\"u\" LAST_MODIFIED=\"1\" ICON=\"data:image/png;base64,AAAA\" "
                     "LAST_CHARSET=\"UTF-8\" SHORTCUTURL=\"k\xE4\" ID=\"rdf:1\">t</A>"},
        BookmarkCase{"EncodedID", [](RecordingItem& item) { item.IdText = "rdfSGVsbG8="; },
                     "<DT><A HREF=\"u\" ID=\"rdf:#$Hello\">t</A>"},
        BookmarkCase{"EncodedIDOfNothing", [](RecordingItem& item) { item.IdText = "rdf"; },
                     "<DT><A HREF=\"u\" ID=\"rdf:#$\">t</A>"},
        BookmarkCase{"IDInOtherCase", [](RecordingItem& item) { item.IdText = "RDFSGVsbG8="; },
                     "<DT><A HREF=\"u\" ID=\"rdf:RDFSGVsbG8=\">t</A>"},
        BookmarkCase{"Markup", [](RecordingItem& item) { item.DisplayText = "<b> & \"co\""; },
                     "<DT><A HREF=\"u\" ID=\"rdf:1\"><b> & \"co\"</A>"},
        BookmarkCase{"UmlautsAndEuro", [](RecordingItem& item) { item.DisplayText = "\xE4\xDF \x80"; },
                     "<DT><A HREF=\"u\" ID=\"rdf:1\">\xC3\xA4\xC3\x9F \xE2\x82\xAC</A>"},
        // The url goes out as it came in.
        BookmarkCase{"UmlautsInTheUrl",
                     [](RecordingItem& item) { item.Data[0].second = "http://\xC3\xA4/\xE4?a&b"; },
                     "<DT><A HREF=\"http://\xC3\xA4/\xE4?a&b\" ID=\"rdf:1\">t</A>"},
        BookmarkCase{"Text",
                     [](RecordingItem& item) { item.Data.emplace_back("Text", "one \xE4\r\ntwo\rthree\n"); },
                     "<DT><A HREF=\"u\" ID=\"rdf:1\">t</A>\r\n<DD>one \xC3\xA4\ntwothree\n"}),
    [](const auto& each) { return each.param.name; });

// --- The file by today's rules

constexpr char kHardTitle[] = "a < b & \"c\" > 'd'\nsecond\r\nline &lt; \xF0\x9F\xA6\x8A \xCE\xA9";
constexpr char kHardTitleAsMarkup[] =
    "a &lt; b &amp; &quot;c&quot; &gt; 'd'\rsecond&#13;\rline &amp;lt; \xF0\x9F\xA6\x8A \xCE\xA9";

class TodaysExport : public LocationFireFoxExportTest {
  ScopedRules today_{{.bookmarkTitles = BookmarkTitles::Whole,
                      .bookmarkMarkup = BookmarkMarkup::Escaped,
                      .bookmarkOrder = BookmarkOrder::OfBrowser}};
};

TEST_F(LocationFireFoxExportTest, NothingIsEscaped) {
  Places().AddBookmark(Places().AddFolder(1, "<F>"), "a < b & \"c\"", "http://a/?b&\"c\"");
  Open("firefox://x/")->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3><F></H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://a/?b&\"c\"\" ID=\"rdf:{}\">a < b & \"c\"</A>\r\n"
            "        </DL><p>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(TodaysExport, EmptyLocationIsAHeaderAndAnEmptyList) {
  WriteProfiles({"x"});
  Open("firefox://x/")->Save();
  EXPECT_EQ(folder_.Read(ExportName()), std::string(kHeader) + "<DL><p>\r\n</DL><p>\r\n");
}

TEST_F(TodaysExport, TextsAreEscapedInUtf8) {
  Places().AddBookmark(Places().AddFolder(1, "<F> & \"Größe\""), kHardTitle, "http://größe/?a&b=\"<c>\"");
  Open("firefox://x/")->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3>&lt;F&gt; &amp; &quot;Größe&quot;</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://größe/?a&amp;b=&quot;&lt;c&gt;&quot;\" ID=\"rdf:{}\">" +
                std::string(kHardTitleAsMarkup) +
                "</A>\r\n"
                "        </DL><p>\r\n"
                "    </DL><p>\r\n"
                "</DL><p>\r\n");
}

TEST_F(TodaysExport, DescriptionsAndAttributesAreEscapedToo) {
  const auto connector = OpenEmpty();
  Paste(*connector, "ID=<1>|Text=t|DataUrl=u|DataIcon=\"i\"|DataText=<d>\\nsecond & last");
  connector->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><A HREF=\"u\" ICON=\"&quot;i&quot;\" ID=\"rdf:&lt;1&gt;\">t</A>\r\n"
            "<DD>&lt;d&gt;\rsecond &amp; last\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(TodaysExport, BytesThatAreNoUtf8AreTakenForTheCodePage) {
  Places().AddBookmark(1,
                       "Gr\xF6\xDF"
                       "e",
                       "http://a/\xE9");
  Open("firefox://x/")->Save();
  EXPECT_THAT(Exported(), testing::HasSubstr("<A HREF=\"http://a/é\" ID=\"rdf:{}\">Größe</A>"));
}

TEST_F(TodaysExport, TimesAreThoseOfTheBrowserToTheSecond) {
  const ScopedTimeZone berlin("Europe/Berlin");
  const ScopedRules today(Rules::Today());
  // The last two are an hour apart, at which the clock shows the same.
  for (const std::int64_t seconds : {1700000000, 1792888200, 1792891800})
    Places().AddBookmark(1, "a", "http://a/", 0, seconds * 1000000);
  const auto connector = Open("firefox://x/");
  for (const auto& item : host_.Items) {
    item->Created = item->Date();
    item->Modified = "14.11.2023 23:13:21";
  }
  EXPECT_EQ(connector->Item(2)->Date(), connector->Item(3)->Date());
  connector->Save();
  const std::string file = folder_.Read(ExportName());
  for (const char* seconds : {"1700000000", "1792888200", "1792891800"})
    EXPECT_THAT(file,
                testing::HasSubstr("ADD_DATE=\"" + std::string(seconds) + "\" LAST_MODIFIED=\"1700000001\""));
  EXPECT_THAT(file, testing::HasSubstr("<H1 LAST_MODIFIED=\"1273408205\">")) << "12:30:05 in UTC";
}

TEST_F(TodaysExport, EverythingComesAsTheBrowserHasIt) {
  Places().AddBookmark(1, "first", "http://1/");
  Places().AddRow(3, 1, std::nullopt);
  const std::int64_t one = Places().AddFolder(1, "Twice");
  Places().AddBookmark(one, "", "http://2/");
  Places().AddFolder(one, "");
  Places().AddRow(3, one, "");
  Places().AddRow(3, one, "");
  const std::int64_t two = Places().AddFolder(1, "Twice");
  Places().AddBookmark(two, std::nullopt, "http://3/");
  Places().AddBookmark(Places().AddFolder(1, "a, b"), "http://4/", "http://4/");
  Places().AddBookmark(1, "last", "http://5/");
  Open("firefox://x/")->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><A HREF=\"http://1/\" ID=\"rdf:{}\">first</A>\r\n"
            "        <HR>\r\n"
            "        <DT><H3>Twice</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://2/\" ID=\"rdf:{}\"></A>\r\n"
            "            <DT><H3></H3>\r\n"
            "            <DL><p>\r\n"
            "            </DL><p>\r\n"
            "            <HR>\r\n"
            "            <HR>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>Twice</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://3/\" ID=\"rdf:{}\"></A>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>a, b</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://4/\" ID=\"rdf:{}\">http://4/</A>\r\n"
            "        </DL><p>\r\n"
            "        <DT><A HREF=\"http://5/\" ID=\"rdf:{}\">last</A>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(TodaysExport, OnlyWhatWasReadOfAFolderIsInTheFile) {
  Places().AddBookmark(1, "beside", "http://1/");
  Places().AddRow(3, 1, std::nullopt);
  Places().AddBookmark(Places().AddFolder(1, "Menu"), "below", "http://2/");
  Open("firefox://x/Menu/")->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3>Menu</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://2/\" ID=\"rdf:{}\">below</A>\r\n"
            "        </DL><p>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(TodaysExport, WhatTheHostHasChangedSinceIsInTheFile) {
  const std::int64_t menu = Places().AddFolder(1, "Menu");
  Places().AddBookmark(menu, "renamed", "http://1/");
  Places().AddBookmark(menu, "deleted", "http://2/");
  Places().AddBookmark(menu, "stays", "http://3/");
  const auto connector = Open("firefox://x/");
  connector->Item(1)->SetText("<new>");
  connector->DeleteItem(connector->Item(2));
  Paste(*connector, "ID=p|Text=pasted|Keywords=Menu|DataUrl=http://4/");
  Paste(*connector, "ID=q|Text=elsewhere|Keywords=New|DataUrl=http://5/");
  connector->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3>Menu</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://1/\" ID=\"rdf:{}\">&lt;new&gt;</A>\r\n"
            "            <DT><A HREF=\"http://3/\" ID=\"rdf:{}\">stays</A>\r\n"
            "            <DT><A HREF=\"http://4/\" ID=\"rdf:p\">pasted</A>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>New</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"http://5/\" ID=\"rdf:q\">elsewhere</A>\r\n"
            "        </DL><p>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(TodaysExport, SavingTwiceWritesTheSame) {
  Places().AddBookmark(Places().AddFolder(1, "Menu"), "a", "http://1/");
  const auto connector = Open("firefox://x/");
  connector->Save();
  const std::string first = folder_.Read(ExportName());
  connector->Save();
  EXPECT_EQ(folder_.Read(ExportName()), first);
}

TEST_F(TodaysExport, NestedFoldersAreWrittenAtAnyDepth) {
  std::int64_t folder = 1;
  for (int depth = 0; depth < 3000; ++depth)
    folder = Places().AddFolder(folder, "");
  Places().AddBookmark(folder, "deep", "http://a/");
  Open("firefox://x/")->Save();
  EXPECT_THAT(Exported(), testing::HasSubstr(std::string(4 * 3002, ' ') + "<DT><A HREF=\"http://a/\""));
}

TEST_F(LocationFireFoxExportTest, TreeIsFilledFromTheStoreBeforeTheFileIsWritten) {
  Places().AddBookmark(Places().AddFolder(1, "Menu"), "a", "http://a/");
  Places().AddBookmark(1, "b", "http://b/");
  const auto connector = Open("firefox://x/");
  host_.Log.Clear();
  connector->Save();
  connector->Save();
  EXPECT_THAT(host_.Log.Lines(),
              ElementsAre("tree.ClearItems", "tree.AddItem(item1)", "tree.AddItem(item2)", "tree.ClearItems",
                          "tree.AddItem(item1)", "tree.AddItem(item2)"));
  EXPECT_EQ(TopNode().ItemCount(), 1);
}

TEST_F(LocationFireFoxExportTest, BookmarkOfAnotherKeywordGetsItsFolder) {
  const auto connector = OpenEmpty();
  Paste(*connector, "ID=1|Text=t|DataUrl=u|Keywords=New,Sub");
  connector->Save();
  EXPECT_EQ(Exported(),
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3>New</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><H3>Sub</H3>\r\n"
            "            <DL><p>\r\n"
            "                <DT><A HREF=\"u\" ID=\"rdf:1\">t</A>\r\n"
            "            </DL><p>\r\n"
            "        </DL><p>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

TEST_F(LocationFireFoxExportTest, LongerFileIsReplaced) {
  WriteProfiles({"x"});
  folder_.Write(ExportName(), std::string(100000, 'x'));
  Open("firefox://x/")->Save();
  EXPECT_EQ(folder_.Read(ExportName()), std::string(kHeader) + "<DL><p>\r\n</DL><p>\r\n");
}

TEST_F(LocationFireFoxExportTest, NestedFoldersAreWrittenAtAnyDepth) {
  constexpr int kLevels = 400;
  std::int64_t folder = 1;
  for (int level = 1; level <= kLevels; ++level)
    folder = Places().AddFolder(folder, "f");
  Places().AddBookmark(folder, "a", "http://a/");
  Open("firefox://x/")->Save();
  EXPECT_THAT(Exported(), testing::HasSubstr("\r\n" + std::string(4 * (kLevels + 2), ' ') +
                                             "<DT><A HREF=\"http://a/\" ID=\"rdf:{}\">a</A>\r\n"));
}

TEST_F(LocationFireFoxExportTest, WithoutAProfileTheFileGoesIntoTheCurrentFolder) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Native());
  const auto connector = Connect("firefox://x/");
  const int number = SwallowedNumber([&] { connector->Save(); });
  std::filesystem::current_path(before);
  EXPECT_EQ(number, 0);
  EXPECT_EQ(folder_.Read("bookmarks.html"), std::string(kHeader) + "<DL><p>\r\n</DL><p>\r\n");
}

TEST_F(LocationFireFoxExportTest, FileGoesToTheProfileFoundLast) {
  WriteProfiles({"x", "y"});
  const auto connector = Open("firefox://y/");
  for (const char* address : {"firefox://z/", "firefox://x/*", "nonsense"}) {
    location_->Address = address;
    connector->OpenLocation("");
  }
  connector->Save();
  EXPECT_TRUE(folder_.Exists(ProfileFolder("y") + "\\bookmarks.html"));
  EXPECT_FALSE(folder_.Exists(ExportName()));
}

// --- Files that can't be written

TEST_F(LocationFireFoxExportTest, ReadOnlyFileRaisesAndStays) {
  const auto connector = OpenEmpty();
  folder_.Write(ExportName(), "old");
  os::WriteAttributes(folder_.Path(ExportName()), os::kReadOnly);
  EXPECT_EQ(SwallowedNumber([&] { connector->Save(); }), static_cast<int>(ErrorNumber::PathAccess));
  EXPECT_EQ(SwallowedNumber([&] { connector->Reload(); }), static_cast<int>(ErrorNumber::PathAccess));
  EXPECT_EQ(folder_.Read(ExportName()), "old");
}

TEST_F(LocationFireFoxExportTest, ReadOnlyFolderRaisesWithItsReason) {
  Places().AddBookmark(1, "a", "http://a/");
  Places().Commit();
  const std::filesystem::path profile = PlacesPath().parent_path();
  const auto readOnly = std::filesystem::perms(0555);
  std::filesystem::permissions(profile, readOnly);
  std::filesystem::permissions(folder_.Native(), readOnly);
  const auto before = FolderContent(profile);
  const auto connector = Open("firefox://x/");
  EXPECT_EQ(state_, LocationState::Read);
  {
    const AsOrdinaryUser user;
    try {
      connector->Save();
      ADD_FAILURE() << "no failure";
    } catch (const Failure& failure) {
      EXPECT_TRUE(failure.Is(ErrorNumber::PathAccess));
      EXPECT_EQ(failure.what(), folder_.Path(ExportName()) + ": Permission denied");
    }
  }
  EXPECT_EQ(FolderContent(profile), before);
}

TEST_F(LocationFireFoxExportTest, MissingProfileFolderRaises) {
  WriteProfilesIni("[General]\r\n[Profile0]\r\nName=x\r\nPath=Profiles/gone\r\n");
  const auto connector = Open("firefox://x/");
  EXPECT_EQ(state_, LocationState::Read);
  EXPECT_EQ(SwallowedNumber([&] { connector->Save(); }), static_cast<int>(ErrorNumber::PathNotFound));
}

TEST_F(LocationFireFoxExportTest, FailureOfTheHostRisesAndLeavesAPartOfTheFile) {
  Places().AddBookmark(1, "a", "http://a/");
  const auto connector = Open("firefox://x/");
  host_.Log.FailOn("item1.DataText(\"Icon\")");
  EXPECT_EQ(SwallowedNumber([&] { connector->Save(); }), 440);
  EXPECT_EQ(Exported(), "<DL><p>\r\n    <DL><p>\r\n        <DT><A HREF=\"http://a/\"");
}

TEST_F(LocationFireFoxExportTest, DateBeyondThirtyTwoBitsIsAnOverflow) {
  const auto connector = OpenEmpty();
  Paste(*connector, "ID=1|Text=t|DataUrl=u")->Created = "19.01.2038 03:14:08";
  EXPECT_EQ(SwallowedNumber([&] { connector->Save(); }), static_cast<int>(ErrorNumber::Overflow));
}

// --- Reload

TEST_F(LocationFireFoxExportTest, ReloadReadsAndSavesWithoutTouchingTheTopics) {
  Places().AddBookmark(1, "a", "http://a/");
  const auto connector = Open("firefox://x/");
  host_.AddTopics();
  host_.Log.Clear();
  connector->Reload();
  EXPECT_THAT(
      host_.Log.Only({"tree", "Topics", "Global"}),
      ElementsAre("tree.Clear", "tree.AddChild(\"\",\"\")", "tree.ClearItems", "tree.AddItem(item2)"));
  EXPECT_THAT(Exported(), testing::HasSubstr("http://a/"));
}

TEST_F(LocationFireFoxExportTest, ReloadSavesBehindAFailedReadToo) {
  WriteProfiles({"x"});
  const auto connector = Open("firefox://x/");
  location_->Address = "nonsense";
  connector->Reload();
  EXPECT_EQ(Exported(), "<DL><p>\r\n</DL><p>\r\n");
}

TEST_F(LocationFireFoxExportTest, ReloadThatRaisesSavesNothing) {
  Places().AddRow(32768, 1, "type too large");
  const auto connector = Connect("firefox://x/");
  EXPECT_EQ(SwallowedNumber([&] { connector->Reload(); }), static_cast<int>(ErrorNumber::Overflow));
  EXPECT_FALSE(folder_.Exists(ExportName()));
}

// --- PasteItem and DeleteItem

TEST_F(LocationFireFoxExportTest, ConnectedPasteIsReported) {
  const auto connector = OpenEmpty();
  host_.Log.Clear();
  const ItemPtr item = connector->PasteItem("ID=1|Text=t", true);
  EXPECT_EQ(item->ID(), "1");
  EXPECT_THAT(
      host_.Log.Lines(),
      ElementsAre("item1.SetLocation(connector)", "item1.SetConnected(true)",
                  "Location(\"firefox://x/\").SetItemCounter(1)",
                  "Location(\"firefox://x/\").SetLastItemTimer(52205)", "item1.ImportRecord(\"ID=1|Text=t\")",
                  "Global.Report(37,\"ID=1|Text=t\",item1)", "item1.SetConnected(true)"));
}

TEST_F(LocationFireFoxExportTest, UnconnectedPasteIsNotReported) {
  const auto connector = OpenEmpty();
  connector->PasteItem("ID=1|Text=t", false);
  EXPECT_THAT(Reports(), IsEmpty());
  EXPECT_TRUE(host_.Items[0]->Connected);
}

TEST_F(LocationFireFoxExportTest, FailedStepsOfAPasteArePassedOver) {
  const auto connector = OpenEmpty();
  for (const char* step : {"item1.ImportRecord", "Global.Report(37"})
    host_.Log.FailOn(step);
  EXPECT_NE(connector->PasteItem("ID=1|Text=t", true), nullptr);
  EXPECT_TRUE(host_.Items[0]->Connected);
  EXPECT_EQ(connector->Count(), 1);
}

TEST_F(LocationFireFoxExportTest, PastedIDReplacesTheItemOfThatID) {
  const auto connector = OpenEmpty();
  for (const char* record : {"ID=1|Text=a", "ID=2|Text=b", "ID=1|Text=c"})
    connector->PasteItem(record, false);
  EXPECT_THAT(Texts(*connector), ElementsAre("b", "c"));
}

TEST_F(LocationFireFoxExportTest, DeletedItemIsGoneUntilTheNextRead) {
  Places().AddBookmark(1, "a", "http://a/");
  Places().AddBookmark(1, "b", "http://b/");
  const auto connector = Open("firefox://x/");
  host_.Log.Clear();
  EXPECT_TRUE(connector->DeleteItem(connector->Item(1)));
  EXPECT_THAT(host_.Log.Lines(),
              ElementsAre("Global.Report(38,\"\",item1)", "Location(\"firefox://x/\").SetChanged(true)"));
  EXPECT_THAT(Texts(*connector), ElementsAre("b"));
  connector->Save();
  EXPECT_THAT(Exported(), testing::Not(testing::HasSubstr("http://a/")));
  connector->Reload();
  EXPECT_THAT(Texts(*connector), ElementsAre("a", "b"));
}

TEST_F(LocationFireFoxExportTest, ForeignItemIsReportedAsDeletedAllTheSame) {
  Places().AddBookmark(1, "a", "http://a/");
  const auto connector = Open("firefox://x/");
  const auto foreign = host_.MakeItem();
  foreign->IdText = connector->Item(1)->ID();
  host_.Log.Clear();
  EXPECT_FALSE(connector->DeleteItem(foreign));
  EXPECT_THAT(host_.Log.Lines(),
              ElementsAre("Global.Report(38,\"\",item2)", "Location(\"firefox://x/\").SetChanged(true)"));
  EXPECT_EQ(connector->Count(), 1);
}

TEST_F(LocationFireFoxExportTest, NothingIsNotDeleted) {
  const auto connector = OpenEmpty();
  host_.Log.Clear();
  EXPECT_FALSE(connector->DeleteItem(nullptr));
  EXPECT_THAT(host_.Log.Lines(), IsEmpty());
}

TEST_F(LocationFireFoxExportTest, FailedReportOfADeletionRises) {
  Places().AddBookmark(1, "a", "http://a/");
  const auto connector = Open("firefox://x/");
  host_.Log.FailOn("Global.Report(38");
  EXPECT_EQ(SwallowedNumber([&] { connector->DeleteItem(connector->Item(1)); }), 440);
  EXPECT_EQ(connector->Count(), 0);
}

}  // namespace
}  // namespace vorlent::test
