#include "Standalone/StandaloneItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Standalone/HostActions.h"
#include "Standalone/ItemOf.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

TEST(StandaloneItemTest, IsBornWithAnIDOfItsOwn) {
  const StandaloneItem a, b;
  EXPECT_EQ(a.ID().size(), 38u);
  EXPECT_NE(a.ID(), b.ID());
}

TEST(StandaloneItemTest, ARecordWithoutAnIDLeavesTheItemItsOwn) {
  auto item = std::make_shared<StandaloneItem>();
  const std::string id = item->ID();
  item->ImportRecord("Type=url|Text=x");
  EXPECT_EQ(item->ID(), id);
  item->ImportRecord("ID=new|Text=y");
  EXPECT_EQ(item->ID(), "new");
}

TEST(StandaloneItemTest, ARecordFillsEveryMember) {
  const auto item = ItemOf(
      "ID=1-a@b|Type=mail|Text=Gr\xFC\xDF"
      "e|Keywords=Account=x,Inbox|DataFrom=me|DataSize=12|Date=09.05.2010 14:30:05|Owner=user|"
      "Log=20100510080000|Source=thunderbird://p/x/Inbox");
  EXPECT_EQ(item->ID(), "1-a@b");
  EXPECT_EQ(item->Type(), "mail");
  EXPECT_EQ(item->Text(), "Grüße"_cp);
  EXPECT_EQ(item->Keywords(), "Account=x,Inbox");
  EXPECT_EQ(item->DataText("From"), "me");
  EXPECT_EQ(item->DataText("Absent"), "");
  EXPECT_EQ(item->DataCount(), 2);
  EXPECT_EQ(item->DataKey(2), "Size");
  EXPECT_EQ(item->Date(), "09.05.2010 14:30:05");
  EXPECT_EQ(item->Owner(), "user");
  EXPECT_EQ(item->Log(), "20100510080000");
  EXPECT_EQ(item->Source(), "thunderbird://p/x/Inbox");
}

struct DatesRow {
  const char* record;
  const char* created;
  const char* modified;
};

class StandaloneItemDates : public ::testing::TestWithParam<DatesRow> {};

TEST_P(StandaloneItemDates, ComeFromTheLogElseFromTheDate) {
  const auto item = ItemOf(GetParam().record);
  EXPECT_EQ(item->DateCreated(), GetParam().created);
  EXPECT_EQ(item->DateModified(), GetParam().modified);
  EXPECT_EQ(item->DateVisited(), "");
}

INSTANTIATE_TEST_SUITE_P(
    Rows, StandaloneItemDates,
    ::testing::Values(DatesRow{"Log=20100509143005,20110102030405*1", "09.05.2010 14:30:05",
                               "02.01.2011 03:04:05"},
                      DatesRow{"Log=20100509143005", "09.05.2010 14:30:05", "09.05.2010 14:30:05"},
                      DatesRow{"Log=20100509143005*1", "09.05.2010 14:30:05", "09.05.2010 14:30:05"},
                      DatesRow{"Date=09.05.2010 14:30:05", "09.05.2010 14:30:05", "09.05.2010 14:30:05"},
                      DatesRow{"Date=01.01.2000 00:00:00|Log=20100509143005,20110102030405*1",
                               "09.05.2010 14:30:05", "02.01.2011 03:04:05"},
                      DatesRow{"Type=url", "", ""}));

TEST(StandaloneItemTest, KeywordsAreAddedOnceToTheList) {
  const auto item = ItemOf("Keywords=Account=x,Inbox");
  item->AddKeyword("Finanzen");
  item->AddKeyword("Inbox");
  item->AddKeyword("");
  item->AddKeyword("In");
  EXPECT_EQ(item->Keywords(), "Account=x,Inbox,Finanzen,In");
  const auto bare = ItemOf("Type=mail");
  bare->AddKeyword("Post");
  EXPECT_EQ(bare->Keywords(), "Post");
}

TEST(StandaloneItemTest, FullTextHoldsTextDataAndFileNames) {
  const auto item = ItemOf(
      "Text=Rechnung|DataFrom=me@x|DataFile=C:\\\\tmp\\\\mail.eml\\nfile=mail.eml\\nsize=3|"
      "DataFileAttach1=C:\\\\tmp\\\\Beleg.pdf\\ndate=1");
  EXPECT_EQ(item->FullText(), "Rechnung\r\nme@x\r\nmail.eml\r\nBeleg.pdf");
  EXPECT_THAT(FileNames(*item), ElementsAre("mail.eml", "Beleg.pdf"));
}

TEST(StandaloneItemTest, DataFileIsThePathThatTheFieldNames) {
  const auto item = ItemOf("DataFile=C:\\\\tmp\\\\mail.eml\\nfile=mail.eml");
  EXPECT_EQ(item->DataFile("File", 0), "C:\\tmp\\mail.eml");
  EXPECT_EQ(item->DataFile("File", 1), "");
  EXPECT_EQ(item->DataFile("FileHTML", 0), "");
}

TEST(StandaloneItemTest, AnItemInMemoryRefusesAFile) {
  const auto item = ItemOf("ID=1");
  try {
    item->TakeFile("File", "C:\\x.eml", "move", "");
    FAIL() << "was taken";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::PathAccess));
    EXPECT_THAT(failure.what(), ::testing::HasSubstr("C:\\x.eml"));
  }
}

TEST(StandaloneItemTest, AnItemWithoutALocationIsAddressedByItsID) {
  EXPECT_EQ(ItemOf("ID=7")->Address(), "7");
}

class NotingListener : public ItemListener {
 public:
  void ItemChanged(StandaloneItem& item, std::int32_t action, std::string_view value) override {
    lines.push_back(item.ID() + " " + std::string(HostActionName(action)) + " " + std::string(value));
  }

  std::vector<std::string> lines;
};

class ItemChanges : public ::testing::Test {
 protected:
  ItemChanges() {
    slot_->listener = &listener_;
    item_->ImportRecord(
        "ID=7|Type=termin|Text=old|Date=09.05.2010 14:30|Log=20100509143005,20110102030405*1");
  }

  NotingListener listener_;
  std::shared_ptr<ItemListenerSlot> slot_ = std::make_shared<ItemListenerSlot>();
  StandaloneItemPtr item_ = std::make_shared<StandaloneItem>(slot_);
};

TEST_F(ItemChanges, AreTold) {
  item_->SetConnected(true);
  item_->SetText("new");
  item_->SetDate("10.05.2010 10:00");
  item_->SetData("Location", "a=b", false);
  EXPECT_THAT(listener_.lines, ElementsAre("7 ChangeText ", "7 Date ", "7 DataSet Location=a=b"));
}

TEST_F(ItemChanges, AreNotToldBeforeTheItemIsConnectedAndReady) {
  item_->SetText("a");
  item_->SetConnected(true);
  item_->SetReady(false);
  item_->SetText("b");
  EXPECT_THAT(listener_.lines, ElementsAre());
  EXPECT_EQ(item_->DateModified(), "02.01.2011 03:04:05");
  item_->SetReady(true);
  slot_->listener = nullptr;
  item_->SetText("c");
  EXPECT_EQ(item_->Text(), "c");
}

TEST_F(ItemChanges, MoveTheTimeOfModificationAlone) {
  item_->SetConnected(true);
  const std::string before = NowStamp();
  item_->SetText("new");
  const std::string after = NowStamp();
  EXPECT_THAT(item_->Log(), StartsWith("20100509143005,"));
  EXPECT_TRUE(item_->Log().ends_with("*1"));
  const std::string modified = DisplayToStamp(item_->DateModified());
  EXPECT_GE(modified, before);
  EXPECT_LE(modified, after);
  EXPECT_EQ(item_->DateCreated(), "09.05.2010 14:30:05");
}

TEST_F(ItemChanges, OfAnItemWithoutALogMakeItsDateTheTimeOfCreation) {
  auto url = std::make_shared<StandaloneItem>(slot_);
  url->ImportRecord("ID=8|Type=url|Date=09.05.2010 14:30:05");
  url->SetConnected(true);
  url->SetText("new");
  EXPECT_EQ(url->DateCreated(), "09.05.2010 14:30:05");
  EXPECT_THAT(url->Log(), StartsWith("20100509143005,"));
}

TEST(HostActionsTest, EachNumberHasItsName) {
  EXPECT_EQ(HostActionName(37), "ItemInsert");
  EXPECT_EQ(HostActionName(38), "ItemRemove");
  EXPECT_EQ(HostActionName(action::kChangeText), "ChangeText");
  EXPECT_EQ(HostActionName(action::kDate), "Date");
  EXPECT_EQ(HostActionName(action::kDataSet), "DataSet");
  EXPECT_EQ(HostActionName(0), "");
}

}  // namespace
}  // namespace vorlent
