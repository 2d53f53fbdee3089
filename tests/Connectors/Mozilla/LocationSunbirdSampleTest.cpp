#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "SunbirdTest.h"
#include "Support/SourceTree.h"

namespace vorlent {
namespace {

// The sample calendars as they lie in the source tree.
class SunbirdSampleTest : public SunbirdTest {
 protected:
  SunbirdSampleTest() {
    // A system with drives of its own says which one it is.
    const std::filesystem::path native = std::filesystem::absolute(SourcePath("samples/AppData"));
    std::string path = (native.has_root_name() ? "" : "C:") + native.string();
    std::replace(path.begin(), path.end(), '/', '\\');
    platform_->SetAppData(path);
  }

  const std::string bytes_ = SourceBytes(kSampleFile);

  ~SunbirdSampleTest() override { EXPECT_EQ(SourceBytes(kSampleFile), bytes_); }

 private:
  static constexpr const char* kSampleFile =
      "samples/AppData/Mozilla/Sunbird/Profiles/h7w2m4tz.default/storage.sdb";
};

TEST_F(SunbirdSampleTest, CalendarsAreListed) {
  ASSERT_EQ(Read("sunbird://default/*"), LocationState::Read);
  ASSERT_EQ(connector_->Count(), 2);
  EXPECT_EQ(Stored(1).DataText("Location"), "sunbird://default/Privat/");
  EXPECT_EQ(Stored(2).DataText("Location"), "sunbird://default/Arbeit/");
}

TEST_F(SunbirdSampleTest, FirstCalendarHoldsTheRowsOfTwoIds) {
  ASSERT_EQ(Read("sunbird://default/Privat"), LocationState::Read);
  EXPECT_EQ(Records(),
            "ID=5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f01|Type=termin|Text=Nacht der Zeitumstellung|"
            "Date=27.03.2010 23:30|DataDateEnd=28.03.2010 03:30|DataLocation=|DataCalendar=Privat|"
            "Log=20100412080530,20100412080530*1\n"
            "ID=5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f02|Type=termin|Text=Fr\xC3\xBChst\xC3\xBC"
            "ck \\| Brunch|"
            "Date=09.05.2010 14:30|DataDateEnd=09.05.2010 16:00|DataLocation=Caf\xC3\xA9 M\xC3\xBCller \\| "
            "Terrasse|DataCalendar=Privat|Log=20100412080530,20100413174510*1\n"
            "ID=5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f03|Type=termin|Text=Die doppelte Stunde|"
            "Date=31.10.2010 02:30|DataDateEnd=31.10.2010 02:30|DataLocation=|DataCalendar=Privat|"
            "Log=20100412080530,20100412080530*1\n"
            "ID=5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f04|Type=termin|Text=Heiligabend\\nbei den "
            "Gro\xC3\x9F"
            "eltern\\nC:\\\\Geschenke|Date=24.12.2010 18:00|DataDateEnd=24.12.2010 23:59|"
            "DataLocation=Dorfstra\xC3\x9F"
            "e 1\\n2. Stock|DataCalendar=Privat|"
            "Log=20100412080530,20100412080530*1\n"
            "ID=77ab1c90-65f4-4f6b-8f0d-3d1f8b2a4c01|Type=task|Text=Geschenke kaufen|DataCalendar=Privat|"
            "Log=20100412080530,20100412080530*1\n"
            "ID=77ab1c90-65f4-4f6b-8f0d-3d1f8b2a4c02|Type=task|Text=Fahrrad \\| Keller|DataCalendar=Privat|"
            "Log=20100412080530,20100413174510*1\n");
}

TEST_F(SunbirdSampleTest, SecondCalendarHoldsItsOwnRows) {
  ASSERT_EQ(Read("sunbird://default/Arbeit"), LocationState::Read);
  EXPECT_EQ(Records(),
            "ID=5d0c7a66-1f0e-4b5c-9a51-0a7b9c3e6f05|Type=termin|Text=Besprechung|Date=14.06.2010 09:00|"
            "DataDateEnd=14.06.2010 09:15|DataLocation=Raum 5|DataCalendar=Arbeit|"
            "Log=20100412080530,20100413174510*1\n"
            "ID=77ab1c90-65f4-4f6b-8f0d-3d1f8b2a4c03|Type=task|Text=Protokoll schreiben|DataCalendar=Arbeit|"
            "Log=20100412080530,20100413174510*1\n");
}

TEST_F(SunbirdSampleTest, WholeProfileShowsBothCalendars) {
  ASSERT_EQ(Read("sunbird://"), LocationState::Read);
  EXPECT_EQ(connector_->Count(), 8);
  EXPECT_EQ(host_.Trees.front()->Dump(),
            "Calendar 'Privat' [Calendar=Privat]\nCalendar 'Arbeit' [Calendar=Arbeit]\n");
}

}  // namespace
}  // namespace vorlent
