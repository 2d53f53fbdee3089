#include "Connectors/Mozilla/LocationFrame.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "Support/ErrorNumbers.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"

namespace vorlent {
namespace {

using test::RecordingHost;
using test::RecordingItem;
using test::TextExpression;
using testing::ElementsAre;
using testing::IsEmpty;

// A connector that has the frame and nothing else.
class PlainConnector final : public LocationFrame<MailConnector> {
 public:
  explicit PlainConnector(test::CallLog& log) : log_(log) {}

  LocationState Einlesen() override {
    log_.Write("Einlesen");
    return state;
  }

  std::string GetFile(const ItemPtr&, std::string_view, GetFileOption) override { return ""; }
  void SourceInit(const TreePtr&, bool) override {}
  bool SourceGetNext(std::string&) override { return false; }
  void SourceDelete() override {}
  std::string GetActions() override { return ""; }
  std::string ExecuteAction(std::string_view) override { return ""; }
  const KeyedList<std::string>& MailFiles() const override { return none_; }
  void SetRunObserver(MailRunObserver*) override {}
  bool HasRestored() const override { return false; }

  LocationState state = LocationState::Read;
  bool prepares = true;
  bool withdraws = true;

 protected:
  ParameterSettings Parameters() const override { return {"$type=x", "KeywordTree", restricts}; }

  bool PrepareAddress(std::string_view file) override {
    log_.Write("PrepareAddress " + std::string(file));
    return prepares;
  }

  void Pasted(const ItemPtr& item, std::string_view import) override {
    log_.Write("Pasted " + (item == nullptr ? "nothing" : item->ID()) + " " + std::string(import));
  }

  bool Withdraw(const ItemPtr& item) override {
    log_.Write("Withdraw " + item->ID());
    ItemStore().Remove(item->ID());
    return withdraws;
  }

 public:
  bool restricts = false;

 private:
  test::CallLog& log_;
  KeyedList<std::string> none_;
};

// The smallest connectors of the other two interfaces.
class PlainBookmarks final : public LocationFrame<BookmarkConnector> {
 public:
  LocationState Einlesen() override { return LocationState::Unreadable; }
  std::string GetFile(const ItemPtr&, std::string_view) override { return ""; }
  void Save() override {}
  std::shared_ptr<KeyedList<std::string>> GetSubKeywords(ExpressionPtr&) override { return nullptr; }
  void SaveInto(std::string_view) override {}
  std::string ProfileFolder() const override { return ""; }
  std::string DatabaseFile() const override { return ""; }

 protected:
  ParameterSettings Parameters() const override { return {}; }
  bool Withdraw(const ItemPtr&) override { return true; }
};

constexpr int kHostFailure = static_cast<int>(ErrorNumber::Host);

class LocationFrameTest : public testing::Test {
 protected:
  LocationFrameTest() {
    platform->now = {2010, 5, 9, 0, 0, 5, 500};
    connector->SetLocObject(location);
  }

  std::vector<std::string> Ids() {
    std::vector<std::string> ids;
    for (std::int32_t i = 1; i <= connector->Count(); ++i) {
      ids.push_back(connector->Item(i)->ID());
    }
    return ids;
  }

  ScopedRecordingPlatform platform;
  RecordingHost host;
  std::shared_ptr<test::RecordingLocation> location = host.MakeLocation("x://here");
  std::shared_ptr<PlainConnector> connector = std::make_shared<PlainConnector>(host.Log);
};

TEST_F(LocationFrameTest, InitLocationSetsUpTheParameterItemAndThenTheAddress) {
  EXPECT_TRUE(connector->InitLocation("x://there"));
  EXPECT_THAT(
      host.Log.Lines(),
      ElementsAre("Location(\"x://here\").SetParameterItem(item1)", "item1.SetLocation(connector)",
                  "item1.SetReady(false)", "item1.SetID(\"parameter\")", "item1.SetType(\"parameter\")",
                  "item1.SetText(\"Parameter\")", "item1.SetData(\"Condition\",\"$type=x\",false)",
                  "item1.SetData(\"Flags\",\"KeywordTree\",false)", "item1.SetReady(true)",
                  "item1.SetConnected(true)", "PrepareAddress x://there"));
  EXPECT_EQ(host.Items[0]->Owning.lock(), connector);
  EXPECT_EQ(connector->Count(), 0);
}

TEST_F(LocationFrameTest, AccessIsForTheCurrentUserWhereTheConnectorRestrictsIt) {
  connector->restricts = true;
  host.Global.User = "anna";
  connector->InitLocation("");
  EXPECT_THAT(host.Log.Only({"item1.SetA", "item1.SetData(\"Flags", "item1.SetReady(true"}),
              ElementsAre("item1.SetData(\"Flags\",\"KeywordTree\",false)", "item1.SetAccessDefault(\"-\")",
                          "item1.SetAccessList(\"anna:rd\")", "item1.SetReady(true)"));
}

TEST_F(LocationFrameTest, InitLocationGivesTheResultOfTheAddress) {
  connector->prepares = false;
  EXPECT_FALSE(connector->InitLocation(""));
  PlainBookmarks* bookmarks = nullptr;
  const auto held = std::make_shared<PlainBookmarks>();
  bookmarks = held.get();
  bookmarks->SetLocObject(location);
  EXPECT_TRUE(bookmarks->InitLocation("anything"));
}

TEST_F(LocationFrameTest, InitLocationLetsEveryFailedCallRise) {
  const std::vector<std::string> calls = {"Host.NewItem",        "Location",           "item1.SetLocation",
                                          "item1.SetReady(f",    "item1.SetID",        "item1.SetType",
                                          "item1.SetText",       "item1.SetData(\"C",  "item1.SetData(\"F",
                                          "Global.UserName",     "item1.SetAccessDef", "item1.SetAccessList",
                                          "item1.SetReady(true", "item1.SetConnected", "PrepareAddress"};
  for (const std::string& call : calls) {
    RecordingHost freshHost;
    const auto fresh = std::make_shared<PlainConnector>(freshHost.Log);
    fresh->restricts = true;
    fresh->SetLocObject(freshHost.MakeLocation("x://"));
    freshHost.Log.FailOn(call);
    EXPECT_THROW(fresh->InitLocation(""), Failure) << call;
  }
}

TEST_F(LocationFrameTest, InitLocationWithoutALocationFailsBehindTheNewItem) {
  connector->SetLocObject(nullptr);
  EXPECT_EQ(SwallowedNumber([&] { connector->InitLocation(""); }), kObjectNotSet);
  EXPECT_EQ(host.Items.size(), 1U);
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
}

TEST_F(LocationFrameTest, OpenLocationReadsWhateverAddressItIsGiven) {
  connector->state = LocationState::Unreadable;
  EXPECT_EQ(connector->OpenLocation("y://elsewhere"), LocationState::Unreadable);
  connector->state = LocationState::Read;
  EXPECT_EQ(connector->OpenLocation(""), LocationState::Read);
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Einlesen", "Einlesen"));
}

TEST_F(LocationFrameTest, DisconnectDoesNothing) {
  connector->NewItem();
  host.Log.RecordReads = true;
  host.Log.Clear();
  connector->Disconnect();
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
  EXPECT_EQ(connector->Count(), 1);
}

TEST_F(LocationFrameTest, TreeIsMadeOnFirstUseAndCanBeReplaced) {
  EXPECT_THAT(host.Trees, IsEmpty());
  const TreePtr tree = connector->Tree();
  EXPECT_EQ(tree, connector->Tree());
  EXPECT_EQ(host.Trees.size(), 1U);
  const TreePtr other = HostObjects::Current().NewTree();
  connector->SetTree(other);
  EXPECT_EQ(connector->Tree(), other);
}

TEST_F(LocationFrameTest, NewItemIsStoredUnderItsIDAndCounted) {
  location->Counter = 41;
  const ItemPtr item = connector->NewItem();
  EXPECT_THAT(host.Log.Lines(),
              ElementsAre("item1.SetLocation(connector)", "Location(\"x://here\").SetItemCounter(42)",
                          "Location(\"x://here\").SetLastItemTimer(5.5)"));
  EXPECT_EQ(connector->GetItem("{NEW-1}"), item);
  EXPECT_FALSE(host.Items[0]->Connected);
}

TEST_F(LocationFrameTest, NewItemIsConnectedIfAskedFor) {
  connector->NewItem(true);
  EXPECT_THAT(host.Log.Lines()[1], "item1.SetConnected(true)");
  EXPECT_TRUE(host.Items[0]->Connected);
}

TEST_F(LocationFrameTest, ItemCounterOverflows) {
  location->Counter = 2147483647;
  try {
    connector->NewItem();
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::Overflow));
  }
  EXPECT_EQ(connector->Count(), 1);
}

TEST_F(LocationFrameTest, NewItemThatCouldNotBeCountedStaysInTheStore) {
  host.Log.FailOn("Location(\"x://here\").SetItemCounter");
  EXPECT_THROW(connector->NewItem(), Failure);
  EXPECT_THAT(Ids(), ElementsAre("{NEW-1}"));
}

TEST_F(LocationFrameTest, NewItemLetsEveryFailedCallRise) {
  // Each with what the store then holds.
  const std::vector<std::pair<std::string, std::int32_t>> rows = {{"Host.NewItem", 0},
                                                                  {"item1.SetLocation", 0},
                                                                  {"item1.SetConnected", 0},
                                                                  {"item1.ID", 0},
                                                                  {"Location(\"x://\").ItemC", 1},
                                                                  {"Location(\"x://\").SetItemCounter", 1},
                                                                  {"Location(\"x://\").SetL", 1}};
  for (const auto& [call, count] : rows) {
    RecordingHost freshHost;
    const auto fresh = std::make_shared<PlainConnector>(freshHost.Log);
    fresh->SetLocObject(freshHost.MakeLocation("x://"));
    freshHost.Log.FailOn(call);
    EXPECT_EQ(SwallowedNumber([&] { fresh->NewItem(true); }), kHostFailure) << call;
    EXPECT_EQ(fresh->Count(), count) << call;
  }
}

TEST_F(LocationFrameTest, ItemsAreFoundByPositionAndByID) {
  const ItemPtr first = connector->NewItem();
  const ItemPtr second = connector->NewItem();
  EXPECT_EQ(connector->Count(), 2);
  EXPECT_EQ(connector->Item(1), first);
  EXPECT_EQ(connector->Item(2), second);
  EXPECT_EQ(connector->Item(0), nullptr);
  EXPECT_EQ(connector->Item(3), nullptr);
  EXPECT_EQ(connector->Item(-1), nullptr);
  EXPECT_EQ(connector->GetItem("{new-2}"), second);
  EXPECT_EQ(connector->GetItem("unknown"), nullptr);
  EXPECT_TRUE(connector->HasID("{NEW-1}"));
  EXPECT_FALSE(connector->HasID(""));
}

TEST_F(LocationFrameTest, ClearEmptiesTheStoreAndLeavesTheTree) {
  connector->Tree()->AddChild("a", "a");
  connector->NewItem();
  connector->Clear();
  EXPECT_EQ(connector->Count(), 0);
  EXPECT_FALSE(connector->HasID("{NEW-1}"));
  EXPECT_EQ(host.Trees[0]->Dump(), "a [a]\n");
}

TEST_F(LocationFrameTest, EnumIsBoundToTheLocationAndMayReplaceBoth) {
  const LocationPtr otherLocation = host.MakeLocation("x://other");
  const ExpressionPtr otherExpression = std::make_shared<TextExpression>("b");
  host.OnEnumInit = [&](LocationPtr& bound, ExpressionPtr& expression) {
    bound = otherLocation;
    expression = otherExpression;
  };
  ExpressionPtr expression = std::make_shared<TextExpression>("$type=mail");
  const ObjectPtr enumeration = connector->CreateEnum(expression);
  EXPECT_NE(std::dynamic_pointer_cast<HostEnum>(enumeration), nullptr);
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Enum.Init(Location(\"x://here\"),\"$type=mail\")"));
  EXPECT_EQ(connector->LocObject(), otherLocation);
  EXPECT_EQ(expression, otherExpression);
}

TEST_F(LocationFrameTest, FailedInitOfAnEnumRises) {
  host.Log.FailOn("Enum.Init");
  ExpressionPtr expression = std::make_shared<TextExpression>("$type=mail");
  EXPECT_EQ(SwallowedNumber([&] { connector->CreateEnum(expression); }), kHostFailure);
  EXPECT_EQ(connector->LocObject(), location);
}

// --- PasteItem

TEST_F(LocationFrameTest, PastedItemTakesTheIDOfItsRecord) {
  const ItemPtr item = connector->PasteItem("ID=a|Type=mail|Text=Hello", false);
  EXPECT_THAT(host.Log.Lines(),
              ElementsAre("item1.SetLocation(connector)", "Location(\"x://here\").SetItemCounter(1)",
                          "Location(\"x://here\").SetLastItemTimer(5.5)",
                          "item1.ImportRecord(\"ID=a|Type=mail|Text=Hello\")", "item1.SetConnected(true)"));
  EXPECT_EQ(connector->GetItem("a"), item);
  EXPECT_FALSE(connector->HasID("{NEW-1}"));
  EXPECT_EQ(item->Text(), "Hello");
}

TEST_F(LocationFrameTest, RecordWithoutAnIDLeavesTheItemUnderTheOneItWasBornWith) {
  connector->PasteItem("Type=mail", false);
  EXPECT_THAT(Ids(), ElementsAre("{NEW-1}"));
}

TEST_F(LocationFrameTest, RepeatedIDReplacesAndMovesToTheEnd) {
  connector->PasteItem("ID=a|Text=1", false);
  connector->PasteItem("ID=b|Text=2", false);
  connector->PasteItem("ID=A|Text=3", false);
  EXPECT_THAT(Ids(), ElementsAre("b", "A"));
  EXPECT_EQ(connector->GetItem("a")->Text(), "3");
}

TEST_F(LocationFrameTest, PastedItemIsConnectedWhateverWasAskedFor) {
  connector->PasteItem("ID=a", false);
  EXPECT_TRUE(host.Items[0]->Connected);
  EXPECT_THAT(host.Log.Only({"Pasted"}), IsEmpty());
}

TEST_F(LocationFrameTest, ConnectorLearnsOfAPasteThatIsConnected) {
  connector->PasteItem("ID=a|Text=x", true);
  EXPECT_THAT(host.Log.Only({"item1.SetC", "item1.I", "Pasted"}),
              ElementsAre("item1.SetConnected(true)", "item1.ImportRecord(\"ID=a|Text=x\")",
                          "Pasted a ID=a|Text=x", "item1.SetConnected(true)"));
}

// Each row: the call that fails, whether an item comes back, and what the store then holds.
struct FailedPaste {
  std::string call;
  bool gives;
  std::vector<std::string> ids;
  std::vector<std::string> lastCalls;
};

TEST_F(LocationFrameTest, PasteItemGoesOnBehindEveryFailedStep) {
  const std::vector<FailedPaste> rows = {
      {"Host.NewItem", false, {}, {"Pasted nothing ID=a"}},
      {"item1.SetLocation", false, {}, {"Pasted nothing ID=a"}},
      {"Location(\"x://\").SetItemCounter", false, {"{NEW-1}"}, {"Pasted nothing ID=a"}},
      {"Location(\"x://\").SetLastItemTimer", false, {"{NEW-1}"}, {"Pasted nothing ID=a"}},
      {"item1.ID", false, {}, {"Pasted nothing ID=a"}},
      {"item1.ImportRecord", true, {"{NEW-1}"}, {"Pasted {NEW-1} ID=a", "item1.SetConnected(true)"}},
      {"Pasted", true, {"a"}, {"Pasted a ID=a", "item1.SetConnected(true)"}},
  };
  for (const FailedPaste& row : rows) {
    SCOPED_TRACE(row.call);
    RecordingHost freshHost;
    connector = std::make_shared<PlainConnector>(freshHost.Log);
    connector->SetLocObject(freshHost.MakeLocation("x://"));
    freshHost.Log.FailOn(row.call);
    EXPECT_EQ(connector->PasteItem("ID=a", true) != nullptr, row.gives);
    const auto& lines = freshHost.Log.Lines();
    ASSERT_GE(lines.size(), row.lastCalls.size());
    EXPECT_EQ(std::vector<std::string>(lines.end() - static_cast<int>(row.lastCalls.size()), lines.end()),
              row.lastCalls);
    EXPECT_EQ(Ids(), row.ids);
    connector.reset();
  }
}

TEST_F(LocationFrameTest, PasteTellsTheFirstOfItsFailures) {
  connector->PasteItem("ID=a", false);
  EXPECT_TRUE(connector->PasteLoss().IsEmpty());
  host.Log.FailOn("item2.ImportRecord");
  host.Log.FailOn("item2.SetConnected");
  connector->PasteItem("ID=b", false);
  EXPECT_THAT(connector->PasteLoss().reason, testing::HasSubstr("ImportRecord"));
  connector->PasteItem("ID=c", false);
  EXPECT_TRUE(connector->PasteLoss().IsEmpty());
}

TEST_F(LocationFrameTest, PasteItemSwallowsTheLastStepToo) {
  host.Log.FailOn("item1.SetConnected");
  EXPECT_NE(connector->PasteItem("ID=a", false), nullptr);
  EXPECT_THAT(Ids(), ElementsAre("a"));
}

TEST_F(LocationFrameTest, PastedItemWhoseOldIDCannotBeReadStaysUnderItToo) {
  host.Log.FailOn("item1.ID", 2);
  const ItemPtr item = connector->PasteItem("ID=a", false);
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(connector->GetItem("{NEW-1}"), item);
  EXPECT_EQ(connector->GetItem("a"), item);
  EXPECT_EQ(connector->Count(), 2);
}

TEST_F(LocationFrameTest, PastedItemWhoseNewIDCannotBeReadStaysUnderTheOldOne) {
  host.Log.FailOn("item1.ID", 3);
  const ItemPtr item = connector->PasteItem("ID=a", false);
  ASSERT_NE(item, nullptr);
  EXPECT_EQ(connector->GetItem("{NEW-1}"), item);
  EXPECT_FALSE(connector->HasID("a"));
  EXPECT_TRUE(host.Items[0]->Connected);
}

TEST_F(LocationFrameTest, ManyRecordsArePastedInLinearTime) {
  constexpr int kCount = 5000;
  for (int i = 0; i < kCount; ++i) {
    connector->PasteItem("ID=" + std::to_string(i), false);
  }
  EXPECT_EQ(connector->Count(), kCount);
  EXPECT_EQ(connector->Item(1)->ID(), "0");
  EXPECT_EQ(connector->Item(kCount)->ID(), std::to_string(kCount - 1));
}

// --- DeleteItem

TEST_F(LocationFrameTest, DeletedItemLeavesTheStoreAndTheHostIsTold) {
  const ItemPtr item = connector->PasteItem("ID=a", false);
  connector->PasteItem("ID=b", false);
  host.Log.Clear();
  EXPECT_TRUE(connector->DeleteItem(item));
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Withdraw a", "Global.Report(38,\"\",item1)",
                                            "Location(\"x://here\").SetChanged(true)"));
  EXPECT_THAT(Ids(), ElementsAre("b"));
}

TEST_F(LocationFrameTest, DeletingNothingDoesNothing) {
  host.Log.RecordReads = true;
  EXPECT_FALSE(connector->DeleteItem(nullptr));
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
}

TEST_F(LocationFrameTest, ItemThatTheStoreDoesNotHoldIsAFailureOfTheDeletion) {
  const ItemPtr item = host.MakeItem();
  EXPECT_THROW(connector->DeleteItem(item), Failure);
  EXPECT_THAT(host.Log.Only({"Global", "Location"}), IsEmpty());
}

TEST_F(LocationFrameTest, HostIsNotToldOfADeletionThatFailedAtTheSource) {
  const ItemPtr item = connector->PasteItem("ID=a", false);
  host.Log.Clear();
  host.Log.FailOn("Withdraw");
  EXPECT_THROW(connector->DeleteItem(item), Failure);
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Withdraw a"));
  EXPECT_THAT(Ids(), ElementsAre("a"));
}

TEST_F(LocationFrameTest, ConnectorDecidesTheResultOfADeletion) {
  const ItemPtr item = connector->PasteItem("ID=a", false);
  connector->withdraws = false;
  EXPECT_FALSE(connector->DeleteItem(item));
  EXPECT_THAT(host.Log.Only({"Global.Report"}), ElementsAre("Global.Report(38,\"\",item1)"));
}

TEST_F(LocationFrameTest, DeletedItemIsReportedBeforeTheLocationIsMissed) {
  const ItemPtr item = connector->PasteItem("ID=a", false);
  connector->SetLocObject(nullptr);
  host.Log.Clear();
  EXPECT_EQ(SwallowedNumber([&] { connector->DeleteItem(item); }), kObjectNotSet);
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Withdraw a", "Global.Report(38,\"\",item1)"));
}

TEST_F(LocationFrameTest, DeletionLetsAFailedCallOfTheHostRise) {
  for (const std::string call : {"Global.Report", "Location(\"x://here\").SetChanged"}) {
    host.Log.ClearFaults();
    const ItemPtr item = connector->PasteItem("ID=a", false);
    host.Log.FailOn(call);
    EXPECT_EQ(SwallowedNumber([&] { connector->DeleteItem(item); }), kHostFailure) << call;
    EXPECT_EQ(connector->Count(), 0) << call;
  }
  EXPECT_EQ(host.Log.Only({"Location(\"x://here\").SetChanged"}).size(), 1U);
}

// --- Reload

TEST_F(LocationFrameTest, ReloadKeepsTheTopicsOutWhileItReads) {
  host.AddTopics();
  connector->Reload();
  EXPECT_THAT(host.Log.Lines(),
              ElementsAre("Topics.SetNotify(false)", "Topics.ClearLocation(connector)", "Einlesen",
                          "Topics.AddLocation(connector)", "Topics.SetNotify(true)"));
}

TEST_F(LocationFrameTest, ReloadWithoutTopicsReadsAlone) {
  connector->state = LocationState::Unreadable;
  connector->Reload();
  EXPECT_THAT(host.Log.Lines(), ElementsAre("Einlesen"));
}

TEST_F(LocationFrameTest, FailedReloadLeavesTheTopicsOff) {
  host.AddTopics();
  host.Log.FailOn("Einlesen");
  EXPECT_THROW(connector->Reload(), Failure);
  EXPECT_THAT(host.Log.Lines(),
              ElementsAre("Topics.SetNotify(false)", "Topics.ClearLocation(connector)", "Einlesen"));
}

TEST_F(LocationFrameTest, ReloadLetsEveryFailedCallRise) {
  // Each with what was done up to there.
  const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
      {"Global.GetObject(\"topics\")", {}},
      {"Topics.SetNotify(false)", {"Topics.SetNotify(false)"}},
      {"Topics.ClearLocation", {"Topics.SetNotify(false)", "Topics.ClearLocation(connector)"}},
      {"Topics.AddLocation",
       {"Topics.SetNotify(false)", "Topics.ClearLocation(connector)", "Einlesen",
        "Topics.AddLocation(connector)"}}};
  host.AddTopics();
  for (const auto& [call, done] : rows) {
    host.Log.Clear();
    host.Log.ClearFaults();
    host.Log.FailOn(call);
    EXPECT_EQ(SwallowedNumber([&] { connector->Reload(); }), kHostFailure) << call;
    EXPECT_EQ(host.Log.Lines(), done) << call;
  }
}

TEST_F(LocationFrameTest, TopicsThatAreNoLocationAreAFailure) {
  host.Global.Objects["topics"] = host.MakeItem();
  EXPECT_EQ(SwallowedNumber([&] { connector->Reload(); }), kNoSuchMember);
  auto topics = host.MakeLocation("topics");
  host.Global.Objects["topics"] = topics;
  EXPECT_EQ(SwallowedNumber([&] { connector->Reload(); }), kObjectNotSet);
  topics->ConnectorObject = host.MakeItem();
  EXPECT_EQ(SwallowedNumber([&] { connector->Reload(); }), kNoSuchMember);
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
}

TEST_F(LocationFrameTest, ConnectorGoesThoughItsItemsStay) {
  const ItemPtr item = connector->NewItem();
  connector.reset();
  EXPECT_TRUE(host.Items[0]->Owning.expired());
}

// --- Messages

TEST_F(LocationFrameTest, UnreadableLocationIsReportedAndMayBeShown) {
  frame::ReportUnreadable({.reason = "why"});
  EXPECT_TRUE(platform->calls.empty());
  frame::ShowUnreadable("because");
  EXPECT_THAT(platform->calls, ElementsAre("ShowMessage(\"because\",\"error\",Critical,Ok) -> Ok"));
  EXPECT_THAT(host.Log.Lines(),
              ElementsAre("Global.Report(27,\"why\",nothing)", "Global.Report(27,\"because\",nothing)"));
}

}  // namespace
}  // namespace vorlent
