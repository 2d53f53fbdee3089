// The sample profiles, read and exported as a whole.

#include <filesystem>

#include "Connectors/Mozilla/FireFoxFixture.h"
#include "Platform/CodePage.h"
#include "Support/SourceTree.h"

namespace vorlent::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LocationFireFoxSampleTest : public FireFoxTest {
 protected:
  LocationFireFoxSampleTest() {
    std::filesystem::copy(SourcePath("samples/AppData/Mozilla"), folder_.Native("Mozilla"),
                          std::filesystem::copy_options::recursive);
  }
};

TEST_F(LocationFireFoxSampleTest, HasTwoProfiles) {
  Open("firefox://*");
  EXPECT_THAT(Records(),
              ElementsAre("ID={}|Type=location|Text=Profil 'default'|DataLocation=firefox://default/*",
                          "ID={}|Type=location|Text=Profil 'Familie'|DataLocation=firefox://Familie/*"));
}

TEST_F(LocationFireFoxSampleTest, FoldersOfTheFirst) {
  EXPECT_THAT(Texts(*Open("firefox://default/*")),
              ElementsAre("menu", "toolbar", "tags", "unfiled", "mobile"));
  EXPECT_THAT(Texts(*Open("firefox://default/menu/*")),
              ElementsAre("Größen & Maße"_cp, "-", "Doppelt", "Doppelt"));
}

TEST_F(LocationFireFoxSampleTest, BookmarksOfTheFirst) {
  Open("firefox://");
  const auto record = [](std::string_view text, std::string_view date, std::string_view url,
                         std::string_view keywords) {
    return "ID={}|Type=url|Text=" + std::string(text) + "|Date=" + std::string(date) +
           "|DataUrl=" + std::string(url) + "|Keywords=" + std::string(keywords) + "|Owner=tester";
  };
  EXPECT_THAT(
      Records(),
      ElementsAre(
          record("Example", "15.01.2026 09:00:01", "https://www.example.org/", "menu"),
          record("Größe \"XL\", Übermaß"_cp, "14.01.2026 09:00:04",
                 "https://www.example.org/gr%C3%B6%C3%9Fe?a=1&b=2", "menu,Größen & Maße"_cp),
          record("Müller's Straße"_cp, "14.01.2026 09:00:06", "https://müller.example/straße",
                 "menu,Größen & Maße,Innen, außen"_cp),
          record("a\\|b\\\\c", "14.01.2026 09:00:08", "https://www.example.com/a\\|b\\\\c",
                 "menu,Größen & Maße,Innen, außen,Tief"_cp),
          record("https://www.example.net/untitled", "14.01.2026 09:00:09",
                 "https://www.example.net/untitled", "menu"),
          record("javascript:alert('100 %')", "14.01.2026 09:00:10", "javascript:alert('100 %')", "menu"),
          record("Quotes: \"x\" and 'y'", "14.01.2026 09:00:12", "https://www.example.net/quotes?q=\"x\"",
                 "menu,"),
          record("Erster", "14.01.2026 09:00:14", "https://www.example.org/first", "menu,Doppelt"),
          record("Zweiter", "14.01.2026 09:00:16", "https://www.example.org/second", "menu,Doppelt"),
          record("Fire ? & 5 €"_cp, "14.01.2026 09:00:18", "https://www.example.org/emoji", "toolbar"),
          record("Most Visited", "14.01.2026 09:00:17", "place:sort=8&maxResults=10", "toolbar"),
          record("https://www.example.org/", "14.01.2026 09:00:20", "https://www.example.org/",
                 "tags,wichtig"),
          record("https://www.example.org/gr%C3%B6%C3%9Fe?a=1&b=2", "14.01.2026 09:00:21",
                 "https://www.example.org/gr%C3%B6%C3%9Fe?a=1&b=2", "tags,wichtig"),
          record("Übersicht"_cp, "14.01.2026 09:00:22", "file:///C:/Daten/Übersicht.html", "unfiled")));
  EXPECT_EQ(TreeText(), std::string(" []\n"
                                    "  menu [menu]\n"
                                    "    Größen & Maße [Größen & Maße]\n"
                                    "      Innen, außen [Innen, außen]\n"
                                    "        Tief [Tief]\n"
                                    "     []\n"
                                    "    Doppelt [Doppelt]\n"
                                    "    Doppelt [Doppelt]\n"
                                    "  toolbar [toolbar]\n"
                                    "  tags [tags]\n"
                                    "    wichtig [wichtig]\n"
                                    "  unfiled [unfiled]\n"
                                    "  mobile [mobile]\n"_cp));
  EXPECT_THAT(Boxes(), IsEmpty());
  EXPECT_THAT(Reports(), IsEmpty());
}

TEST_F(LocationFireFoxSampleTest, SecondIsExported) {
  Open("firefox://Familie/")->Save();
  EXPECT_EQ(WithoutGuids(folder_.Read("Mozilla\\FireFox\\Profiles\\q9w3e5rt.familie\\bookmarks.html")),
            "<!DOCTYPE NETSCAPE-Bookmark-file-1>\r\n"
            "<!-- This is an automatically generated file.\r\n"
            "     It will be read and overwritten.\r\n"
            "     DO NOT EDIT! -->\r\n"
            "<META HTTP-EQUIV=\"Content-Type\" CONTENT=\"text/html; charset=UTF-8\">\r\n"
            "<TITLE>Bookmarks</TITLE>\r\n"
            "<H1 LAST_MODIFIED=\"1273415405\">Bookmarks</H1>\r\n"
            "\r\n"
            "<DL><p>\r\n"
            "    <DL><p>\r\n"
            "        <DT><H3>menu</H3>\r\n"
            "        <DL><p>\r\n"
            "            <DT><A HREF=\"https://www.example.org/kochen\" ID=\"rdf:{}\">Kochen</A>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>toolbar</H3>\r\n"
            "        <DL><p>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>tags</H3>\r\n"
            "        <DL><p>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>unfiled</H3>\r\n"
            "        <DL><p>\r\n"
            "        </DL><p>\r\n"
            "        <DT><H3>mobile</H3>\r\n"
            "        <DL><p>\r\n"
            "        </DL><p>\r\n"
            "    </DL><p>\r\n"
            "</DL><p>\r\n");
}

}  // namespace
}  // namespace vorlent::test
