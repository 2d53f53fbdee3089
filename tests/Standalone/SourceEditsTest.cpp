#include "Standalone/SourceEdits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Standalone/StandaloneHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedTimeZone.h"
#include "Support/SourceTree.h"
#include "Support/SqliteFile.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The number in front of each statement of the database log.
class StatementNumbers : public HostObserver {
 public:
  void DatabaseLogLine(std::string_view line) override {
    const std::size_t mark = line.find("<-");
    if (mark != std::string_view::npos) numbers.emplace_back(line.substr(0, mark));
  }

  std::vector<std::string> numbers;
};

// Sunbird's profile "default" with a copy of the sample calendars, read as the host would.
class SourceEditsTest : public testing::Test {
 protected:
  SourceEditsTest() {
    folder_.Write("Mozilla\\Sunbird\\profiles.ini",
                  SourceBytes("samples/AppData/Mozilla/Sunbird/profiles.ini"));
    folder_.Write("Mozilla\\Sunbird\\Profiles\\h7w2m4tz.default\\storage.sdb",
                  SourceBytes("samples/AppData/Mozilla/Sunbird/Profiles/h7w2m4tz.default/storage.sdb"));
    platform_->SetAppData(folder_.Path());
    HostObjects::Install(host_);
    location_->Open("sunbird://default/Arbeit");
    location_->Load();
  }
  ~SourceEditsTest() override {
    location_->Close();
    HostObjects::Install(nullptr);
  }

  StandaloneItemPtr Item(std::int32_t position) const { return AsStandalone(location_->ItemAt(position)); }

  std::vector<std::string> Rows(const std::string& sql) const {
    return SqliteFile(folder_.Native("Mozilla/Sunbird/Profiles/h7w2m4tz.default/storage.sdb")).Rows(sql);
  }

  ScopedTimeZone zone_{"Europe/Berlin"};
  TemporaryFolder folder_;
  ScopedRecordingPlatform platform_;  // its clock stands at 2010-05-09 14:30:05
  StatementNumbers log_;
  std::shared_ptr<StandaloneHost> host_ = std::make_shared<StandaloneHost>(log_);
  SourceEdits edits_;
  std::optional<ItemListening> listening_{std::in_place, *host_, edits_};
  StandaloneLocationPtr location_ = host_->MakeLocation();
};

TEST_F(SourceEditsTest, ReadingChangesNothing) {
  ASSERT_EQ(location_->ItemCount(), 2);
  EXPECT_THAT(log_.numbers, IsEmpty());
}

TEST_F(SourceEditsTest, ChangedTextReachesTheRow) {
  Item(1)->SetText("Abschied");
  Item(2)->SetText("Bericht");
  EXPECT_THAT(log_.numbers, ElementsAre("0", "0"));
  EXPECT_THAT(Rows("SELECT title, last_modified FROM cal_events WHERE cal_id=2"),
              ElementsAre("Abschied|1273408205000000"));
  EXPECT_THAT(Rows("SELECT title, last_modified FROM cal_todos WHERE cal_id=2"),
              ElementsAre("Bericht|1273408205000000"));
}

TEST_F(SourceEditsTest, NobodyHearsOfAChangeAfterTheListeningHasEnded) {
  listening_.reset();
  Item(1)->SetText("Abschied");
  EXPECT_EQ(Item(1)->Text(), "Abschied");
  EXPECT_THAT(log_.numbers, IsEmpty());
}

TEST_F(SourceEditsTest, ChangedTimesReachTheRow) {
  Item(1)->SetDate("09.05.2010 14:30");
  Item(1)->SetData("DateEnd", "09.05.2010 15:30", false);
  EXPECT_THAT(log_.numbers, ElementsAre("0", "0"));
  EXPECT_THAT(Rows("SELECT event_start, event_end, last_modified FROM cal_events WHERE cal_id=2"),
              ElementsAre("1273408200000000|1273411800000000|1273408205000000"));
}

TEST_F(SourceEditsTest, ChangedLocationStandsBehindTheOthers) {
  Item(1)->SetData("Location", "Raum 7", false);
  EXPECT_THAT(log_.numbers, ElementsAre("0", "0", "0"));
  EXPECT_THAT(Rows("SELECT value FROM cal_properties WHERE item_id LIKE '%f05' AND key='LOCATION'"),
              ElementsAre("Raum 5", "Raum 6", "Raum 7"));
}

TEST_F(SourceEditsTest, FailedChangeStaysWithTheItem) {
  Item(1)->SetText("Anna's");
  EXPECT_THAT(log_.numbers, ElementsAre("1"));
  EXPECT_EQ(Item(1)->Text(), "Anna's");
  EXPECT_THAT(Rows("SELECT title FROM cal_events WHERE cal_id=2"), ElementsAre("Besprechung"));
}

TEST_F(SourceEditsTest, PastedRecordBecomesARow) {
  location_->PasteRecord(
      "ID=new|Type=termin|Text=Neu|Date=09.05.2010 14:30|DataDateEnd=09.05.2010 15:30|"
      "DataLocation=Raum 8|Log=20100509143005,20100509143005*1");
  EXPECT_THAT(
      Rows("SELECT cal_id, title, event_start, event_end, last_modified FROM cal_events WHERE id='new'"),
      ElementsAre("2|Neu|1273408200000000|1273411800000000|1273408205000000"));
  EXPECT_THAT(Rows("SELECT value FROM cal_properties WHERE item_id='new'"), ElementsAre("Raum 8"));
}

TEST_F(SourceEditsTest, ItemWithoutACalendarKeepsItsChangeToItself) {
  const ItemPtr item = host_->NewItem();
  item->SetConnected(true);
  item->SetText("alone");
  EXPECT_EQ(item->Text(), "alone");
  EXPECT_THAT(log_.numbers, IsEmpty());
}

}  // namespace
}  // namespace vorlent
