#include "Component/Component.h"

#include <gmock/gmock.h>

#include <set>
#include <string>

#include "Support/RecordingHost.h"

namespace vorlent {
namespace {

struct Row {
  std::string progId;
  std::string classId;
  std::string interfaceId;
};

const Row kRows[] = {
    {"VorlentMozilla.Location_Thunderbird", "{229D05C1-7126-420E-ACB6-70458A7FC236}",
     "{B23BB2D4-CF75-454F-883E-4216814B82D5}"},
    {"VorlentMozilla.Location_FireFox", "{73648EA2-7614-47E8-B577-8C09A1123062}",
     "{AD509209-FC57-4CEF-AD9D-9D379B6DF351}"},
    {"VorlentMozilla.Location_Sunbird", "{9BFEE0EE-F0C5-462B-B151-2C7901932CC5}",
     "{B83DA60F-7A4C-4F14-89B3-DD1C8F520314}"},
    {"VorlentMozilla.Actions", "{24F4E411-5F6F-48A9-9F61-61E6607AD71E}",
     "{D4FCC313-4A06-4523-9B47-492FD99BB427}"},
    {"VorlentMozilla.WizardImport", "{1702A783-9B4D-433C-AFA6-C2AACAC2DDE7}",
     "{47785AAA-CDCA-4358-B672-0397BEAEB566}"},
    {"VorlentMozilla.StdMail", "{BC461512-FE62-45CF-AC68-C8E4D37AEDC4}",
     "{6128758A-0F3E-4B94-A9CA-6E7A7D0F13D6}"},
};

TEST(ComponentTest, ClassesAreThoseOfTheTypeLibrary) {
  ASSERT_EQ(ComponentClasses().size(), std::size(kRows));
  for (std::size_t i = 0; i < std::size(kRows); ++i) {
    EXPECT_EQ(ComponentClasses()[i].progId, kRows[i].progId);
    EXPECT_EQ(ComponentClasses()[i].classId, kRows[i].classId);
    EXPECT_EQ(ComponentClasses()[i].interfaceId, kRows[i].interfaceId);
  }
}

TEST(ComponentTest, EveryClassIsMadeByItsProgIDInAnyCase) {
  const test::RecordingHost host;  // the wizard asks it for Locations
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.progId);
    EXPECT_NE(CreateObject(row.progId), nullptr);
    std::string upper = row.progId;
    for (char& c : upper) {
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    }
    EXPECT_NE(CreateObject(upper), nullptr);
    EXPECT_EQ(CreateObject(row.progId + "2"), nullptr);
    EXPECT_EQ(CreateObject(row.progId.substr(1)), nullptr);
  }
}

TEST(ComponentTest, EachCallMakesAnObjectOfItsOwn) {
  const test::RecordingHost host;  // the wizard asks it for Locations
  for (const Row& row : kRows) {
    const ObjectPtr first = CreateObject(row.progId);
    const ObjectPtr second = CreateObject(row.progId);
    EXPECT_FALSE(first->IsSame(*second)) << row.progId;
  }
}

TEST(ComponentTest, WizardCannotBeMadeWithoutAHost) {
  EXPECT_EQ(SwallowedNumber([] { CreateObject("VorlentMozilla.WizardImport"); }),
            static_cast<int>(ErrorNumber::ObjectNotSet));
}

TEST(ComponentTest, UnknownProgIDsGiveNothing) {
  for (const std::string progId :
       {"", "VorlentMozilla", "VorlentMozilla.", "Location_Thunderbird", "Other.StdMail"}) {
    EXPECT_EQ(CreateObject(progId), nullptr) << progId;
  }
}

TEST(ComponentTest, LocationsAreConnectorsOfTheirKind) {
  EXPECT_NE(std::dynamic_pointer_cast<MailConnector>(CreateObject("VorlentMozilla.Location_Thunderbird")),
            nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<BookmarkConnector>(CreateObject("VorlentMozilla.Location_FireFox")),
            nullptr);
  EXPECT_NE(std::dynamic_pointer_cast<CalendarConnector>(CreateObject("VorlentMozilla.Location_Sunbird")),
            nullptr);
}

}  // namespace
}  // namespace vorlent
