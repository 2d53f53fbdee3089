#include "Standalone/StandaloneHost.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"
#include "Platform/User.h"
#include "Platform/WorkFolder.h"
#include "Standalone/Condition.h"
#include "Standalone/HostActions.h"
#include "Standalone/MemoryFolder.h"
#include "Standalone/StandaloneEnum.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class NotingObserver : public HostObserver {
 public:
  void ProgressOpened(std::string_view title) override { Note("opened ", title); }
  void ProgressMoved(double percent) override { Note("moved ", NumberText(percent)); }
  void ProgressClosed() override { Note("closed"); }
  void ProgressShown(bool visible) override {
    Note(visible ? "shown" : "hidden");
    if (!visible && failsToHide) throw Failure(ErrorNumber::Host, "the display can't be hidden");
  }
  void StatusChanged(std::string_view text) override { Note("status ", text); }
  void LogLine(std::string_view line) override { Note("log ", line); }
  void DatabaseLogLine(std::string_view line) override { Note("database ", line); }
  void LocationUnreadable(const Cause& why) override { Note("unreadable ", why.Text()); }
  void ErrorRaised(std::int32_t kind, std::string_view source, bool flag, std::string_view text) override {
    Note("error " + std::to_string(kind) + (flag ? " true " : " false ") + std::string(source) + " ", text);
  }
  void ItemPasted(std::string_view record, const ItemPtr& item) override {
    Note("pasted " + item->ID() + " ", record);
  }
  void ItemDeleted(const ItemPtr& item) override { Note("deleted ", item->ID()); }
  void ImportFinished() override { Note("finished"); }
  void TreeImported() override { Note("tree"); }
  void PaneRefreshed(std::int32_t pane, const TreePtr&) override { Note("pane ", std::to_string(pane)); }
  void OtherReport(std::int32_t code, std::string_view text, const ItemPtr&) override {
    Note("other " + std::to_string(code) + " ", text);
  }

  bool failsToHide = false;
  std::vector<std::string> lines;

 private:
  void Note(std::string_view what, std::string_view text = {}) {
    lines.push_back(std::string(what).append(text));
  }
};

// A connector that holds what its address lists: "thunderbird://a,b" has the items a and b. For "%" it
// reports progress.
class ListConnector : public Connector {
 public:
  explicit ListConnector(std::string progId) : ProgId(std::move(progId)) {}

  LocationPtr LocObject() const override { return location_; }
  void SetLocObject(const LocationPtr& location) override {
    location_ = location;
    if (location == nullptr && FailsToLetGo) throw Failure(ErrorNumber::Host, "can't let go");
  }
  TreePtr Tree() override { return tree_; }
  void SetTree(const TreePtr& tree) override { tree_ = tree; }
  bool InitLocation(std::string_view file) override {
    if (file.ends_with("!")) throw Failure(ErrorNumber::Host, "refused");
    if (file.ends_with("?")) return false;
    const ItemPtr parameter = HostObjects::Current().NewItem();
    parameter->SetData("Condition", "$type=mail", false);
    location_->SetParameterItem(parameter);
    return true;
  }
  LocationState OpenLocation(std::string_view) override {
    std::string name = location_->Name();
    CutToken(name, "://");
    while (!name.empty()) {
      const std::string id = CutToken(name, ",");
      if (id == "%") {
        HostObjects::Current().Global().Report(report::kProgress, "50", nullptr);
        continue;
      }
      PasteItem("ID=" + id + "|Type=mail|Keywords=Account=x," + id, false);
    }
    return LocationState::Read;
  }
  void Disconnect() override {
    Disconnected = true;
    if (FailsToLetGo) throw Failure(ErrorNumber::Host, "can't disconnect");
  }
  ItemPtr NewItem(bool) override { return HostObjects::Current().NewItem(); }
  ItemPtr GetItem(std::string_view id) override {
    for (const ItemPtr& item : items_) {
      if (item->ID() == id) return item;
    }
    return nullptr;
  }
  bool HasID(std::string_view id) override { return GetItem(id) != nullptr; }
  std::int32_t Count() override { return static_cast<std::int32_t>(items_.size()); }
  ItemPtr Item(std::int32_t pos) override { return items_.at(static_cast<std::size_t>(pos) - 1); }
  void Clear() override { items_.clear(); }
  ObjectPtr CreateEnum(ExpressionPtr& expr) override {
    const HostEnumPtr made = HostObjects::Current().NewEnum();
    made->Init(location_, expr);
    return made;
  }
  ItemPtr PasteItem(std::string_view import, bool conn) override {
    const ItemPtr item = NewItem(conn);
    item->ImportRecord(import);
    item->SetLocation(location_->Connector());
    if (conn) PastedForGood.push_back(item->ID());
    items_.push_back(item);
    return item;
  }
  bool DeleteItem(const ItemPtr&) override { return false; }
  void Reload() override {}

  std::string ProgId;
  bool Disconnected = false;
  bool FailsToLetGo = false;
  std::vector<std::string> PastedForGood;

 private:
  LocationPtr location_;
  TreePtr tree_ = HostObjects::Current().NewTree();
  std::vector<ItemPtr> items_;
};

class StandaloneHostTest : public ::testing::Test {
 protected:
  StandaloneHostTest() {
    previous_ = HostObjects::Install(host_);
    host_->Global().SetConnectorFactory([this](std::string_view progId) {
      connector_ = std::make_shared<ListConnector>(std::string(progId));
      return connector_;
    });
  }
  ~StandaloneHostTest() override { HostObjects::Install(previous_); }

  StandaloneLocationPtr OpenLocation(std::string_view address) {
    const StandaloneLocationPtr location = host_->MakeLocation();
    location->Open(address);
    location->Load();
    return location;
  }

  NotingObserver observer_;
  std::shared_ptr<StandaloneHost> host_ = std::make_shared<StandaloneHost>(observer_);
  std::shared_ptr<HostObjects> previous_;
  std::shared_ptr<ListConnector> connector_;
};

// --- Reports

TEST_F(StandaloneHostTest, ReportsReachTheObserver) {
  HostGlobal& global = host_->Global();
  const ItemPtr item = host_->NewItem();
  item->SetID("7");
  global.Report(32, "0/100:Thunderbird C:\\Inbox", nullptr);
  global.Report(32, NumberText(12.5), nullptr);
  global.Report(32, "", nullptr);
  global.Report(33, "Import", nullptr);
  global.Report(33, "", nullptr);
  global.Report(29, "a line", nullptr);
  global.Report(30, "0<-SELECT 1", nullptr);
  global.Report(27, "ung\xFCltige Location!", nullptr);
  global.Report(37, "ID=7", item);
  global.Report(38, "", item);
  global.Report(19, "", nullptr);
  global.Report(45, "", nullptr);
  global.Report(99, "odd", nullptr);
  global.SetProgressVisible(true);
  global.SetProgressVisible(false);
  EXPECT_THAT(
      observer_.lines,
      ElementsAre("opened Thunderbird C:\\Inbox", "moved " + NumberText(12.5), "closed", "status Import",
                  "status ", "log a line", "database 0<-SELECT 1", "unreadable ung\xFCltige Location!",
                  "pasted 7 ID=7", "deleted 7", "finished", "tree", "other 99 odd", "shown", "hidden"));
}

TEST_F(StandaloneHostTest, TheLogIsSilentWhileItIsOff) {
  HostGlobal& global = host_->Global();
  EXPECT_TRUE(global.LogEnabled());
  global.SetLogEnabled(false);
  EXPECT_FALSE(global.LogEnabled());
  global.Report(29, "a", nullptr);
  global.Report(30, "b", nullptr);
  global.Report(32, "50", nullptr);
  global.SetLogEnabled(true);
  global.Report(29, "c", nullptr);
  EXPECT_THAT(observer_.lines, ElementsAre("moved 50", "log c"));
}

TEST_F(StandaloneHostTest, RaisedErrorsReachTheObserver) {
  const auto error = host_->Global().ErrorFactory()->Error();
  EXPECT_FALSE(error->Silent());
  EXPECT_FALSE(error->Suppressed());
  error->Raise(3, "VorlentMozilla.Location_Thunderbird", false, "Profil 'x' nicht gefunden!");
  OpenLocation("thunderbird://a")->ErrorFactory()->Error()->Raise(1, "S", true, "t");
  EXPECT_THAT(observer_.lines,
              ElementsAre("error 3 false VorlentMozilla.Location_Thunderbird Profil 'x' nicht gefunden!",
                          "error 1 true S t"));
}

// --- Settings

TEST_F(StandaloneHostTest, OptionsAreWhatTheHostWasTold) {
  EXPECT_EQ(host_->Global().GetOption("autotopic"), "");
  host_->Global().SetOption("autotopic", "rechnung = Finanzen");
  EXPECT_EQ(host_->Global().GetOption("autotopic"), "rechnung = Finanzen");
}

TEST_F(StandaloneHostTest, TheUserIsTheOneLoggedInUnlessToldOtherwise) {
  EXPECT_EQ(host_->Global().UserName(), os::LoginName());
  host_->Global().SetUserName("anna");
  EXPECT_EQ(host_->Global().UserName(), "anna");
}

TEST_F(StandaloneHostTest, CancellingIsSeenAtOnce) {
  EXPECT_FALSE(host_->Global().Cancelled());
  host_->Global().CancelFlag() = true;
  EXPECT_TRUE(host_->Global().Cancelled());
}

TEST_F(StandaloneHostTest, ActionNumbersHaveTheirNames) {
  EXPECT_EQ(host_->Global().ActionName(37), "ItemInsert");
  EXPECT_EQ(host_->Global().ActionName(38), "ItemRemove");
  EXPECT_EQ(host_->Global().ActionName(action::kDate), "Date");
  EXPECT_EQ(host_->Global().ActionName(9999), "");
}

TEST_F(StandaloneHostTest, TheTemporaryFolderGoesWithTheHost) {
  const std::string path = host_->Global().TempPath();
  EXPECT_TRUE(path.ends_with('\\'));
  EXPECT_EQ(host_->Global().TempPath(), path);
  EXPECT_TRUE(FolderExists(path));
  WriteBytes(path + "left.txt", "x");
  HostObjects::Install(previous_);
  host_.reset();
  EXPECT_FALSE(FolderExists(path));
}

TEST_F(StandaloneHostTest, TheTemporaryFolderIsPrivate) {
  const std::string path = RemovePathSep(host_->Global().TempPath());
  const std::filesystem::path work = std::filesystem::path(os::ToNativePath(path)).parent_path();
  EXPECT_EQ(std::filesystem::status(work).permissions(), std::filesystem::perms::owner_all);
}

TEST_F(StandaloneHostTest, NoFileOfAMailTakesTheMarkerOfTheTemporaryFolder) {
  const std::string path = host_->Global().TempPath();
  WriteBytes(path + ".in-use", "an attachment");
  std::filesystem::remove(os::ToNativePath(path + ".in-use"));
  WriteBytes(path + "mail.eml", "mail");
  os::RemoveAbandonedWorkFolders();
  EXPECT_TRUE(FileExists(path + "mail.eml"));
}

TEST_F(StandaloneHostTest, WithoutDialogsTheUserCancels) {
  EXPECT_EQ(host_->Dialogs().ShowWizard("t", "VorlentMozilla.WizardImport", ""), "");
  EXPECT_EQ(host_->Dialogs().ChooseLocation("Ziel-Datenquelle", "", ""), "");
}

TEST_F(StandaloneHostTest, PanesKeepTheirTrees) {
  const auto window = host_->Global().MainWindow();
  EXPECT_FALSE(window->IsPaneShown(3));
  host_->Global().Window().ShowPane(3, true);
  EXPECT_TRUE(window->IsPaneShown(3));
  const TreePtr tree = window->GetPaneTree(3);
  tree->AddKeywordPath("a,b");
  EXPECT_EQ(window->GetPaneTree(3), tree);
  EXPECT_NE(window->GetPaneTree(2), tree);
  window->SetPaneTree(2, tree);
  EXPECT_EQ(window->GetPaneTree(2), tree);
  EXPECT_THAT(observer_.lines, ElementsAre("pane 2"));
}

// --- Locations

TEST_F(StandaloneHostTest, TheSchemeChoosesTheConnector) {
  const std::vector<std::pair<std::string, std::string>> rows = {
      {"thunderbird", "VorlentMozilla.Location_Thunderbird"},
      {"firefox", "VorlentMozilla.Location_FireFox"},
      {"sunbird", "VorlentMozilla.Location_Sunbird"},
      {"lightning", "VorlentMozilla.Location_Sunbird"}};
  for (const auto& [scheme, progId] : rows) {
    const auto location = host_->MakeLocation();
    EXPECT_EQ(location->Open(scheme + "://"), LocationState::Read);
    EXPECT_EQ(connector_->ProgId, progId);
    EXPECT_EQ(location->GetOption("type"), scheme);
    location->Close();
  }
}

TEST_F(StandaloneHostTest, AnAddressWithoutConnectorIsUnreadable) {
  for (const char* address : {"", "http://x", "thunderbird:/x", "xthunderbird://", "Thunderbird://x"}) {
    observer_.lines.clear();
    const auto location = host_->MakeLocation();
    EXPECT_EQ(location->Open(address), LocationState::Unreadable) << address;
    EXPECT_THAT(observer_.lines, ElementsAre("unreadable ung\xFCltige Location!"));
    location->Load();
    EXPECT_EQ(location->ItemCount(), 0);
    EXPECT_FALSE(location->IsOpen());
  }
}

TEST_F(StandaloneHostTest, OpenBindsAndLoadReads) {
  const auto location = host_->MakeLocation();
  EXPECT_EQ(location->Open("thunderbird://a,b"), LocationState::Read);
  EXPECT_EQ(location->Name(), "thunderbird://a,b");
  EXPECT_EQ(location->Connector(), connector_);
  EXPECT_EQ(connector_->LocObject(), location);
  EXPECT_EQ(location->ItemCount(), 0);
  EXPECT_EQ(location->State(), LocationState::Unreadable);
  location->Load();
  EXPECT_EQ(location->State(), LocationState::Read);
  EXPECT_EQ(location->ItemCount(), 2);
  EXPECT_EQ(location->ItemAt(2)->ID(), "b");
  EXPECT_EQ(location->GetSetting("Condition"), "$type=mail");
  EXPECT_EQ(location->GetSetting("Keywords"), "");
  EXPECT_EQ(location->FileLocation(), "");
  EXPECT_EQ(location->ItemAt(1)->Address(), "thunderbird://a,b#a");
}

TEST_F(StandaloneHostTest, ACancelledReadingEndsAtItsNextReportOfProgress) {
  const auto location = host_->MakeLocation();
  location->Open("thunderbird://a,%,b");
  host_->Global().CancelFlag() = true;
  EXPECT_THROW(location->Load(), Failure);
  EXPECT_EQ(location->ItemCount(), 1);
  EXPECT_EQ(location->State(), LocationState::Unreadable);
  EXPECT_THAT(observer_.lines, IsEmpty());
  // What else reports progress ends by its own rules.
  host_->Global().Report(report::kProgress, "50", nullptr);
  EXPECT_THAT(observer_.lines, ElementsAre("moved 50"));
}

TEST_F(StandaloneHostTest, CloseLetsLocationAndConnectorGo) {
  auto location = OpenLocation("thunderbird://a");
  location->Close();
  EXPECT_TRUE(connector_->Disconnected);
  EXPECT_EQ(connector_->LocObject(), nullptr);
  EXPECT_EQ(location->ItemCount(), 0);
  EXPECT_THROW(location->ItemAt(1), Failure);
  EXPECT_THROW(location->PasteRecord("ID=1"), Failure);
  const std::weak_ptr<StandaloneLocation> weak = location;
  location.reset();
  EXPECT_TRUE(weak.expired());
}

TEST_F(StandaloneHostTest, AConnectorThatFailsToEndIsLetGoAllTheSame) {
  const StandaloneLocationPtr location = OpenLocation("thunderbird://a");
  connector_->FailsToLetGo = true;
  EXPECT_NO_THROW(location->Close());
  EXPECT_FALSE(location->IsOpen());
  EXPECT_TRUE(connector_->Disconnected);
  EXPECT_EQ(connector_->LocObject(), nullptr);
}

TEST_F(StandaloneHostTest, AFailedOpenLeavesNothingOpen) {
  const auto location = host_->MakeLocation();
  EXPECT_EQ(location->Open("thunderbird://?"), LocationState::Unreadable);
  EXPECT_TRUE(location->IsOpen());
  EXPECT_THROW(location->Open("thunderbird://!"), Failure);
  EXPECT_FALSE(location->IsOpen());
  EXPECT_EQ(connector_->LocObject(), nullptr);
}

TEST_F(StandaloneHostTest, APastedRecordIsForGood) {
  const auto location = OpenLocation("thunderbird://a");
  location->PasteRecord("ID=new");
  EXPECT_THAT(connector_->PastedForGood, ElementsAre("new"));
}

TEST_F(StandaloneHostTest, CountersAreKept) {
  const auto location = host_->MakeLocation();
  EXPECT_EQ(location->ItemCounter(), 0);
  location->SetItemCounter(5);
  location->SetLastItemTimer(1.5F);
  EXPECT_FALSE(location->IsChanged());
  location->SetChanged(true);
  EXPECT_EQ(location->ItemCounter(), 5);
  EXPECT_EQ(location->LastItemTimer(), 1.5F);
  EXPECT_TRUE(location->IsChanged());
}

TEST_F(StandaloneHostTest, TheFiledTreeHoldsEveryItemOnce) {
  const auto location = OpenLocation("thunderbird://a,b");
  connector_->Tree()->AddChild("Account 'x'", "Account=x")->AddChild("a", "a");
  for (int round = 0; round < 2; ++round) {
    const TreePtr account = location->FiledTree()->Children().Item(1);
    EXPECT_EQ(account->ItemCount(), 1);
    EXPECT_EQ(account->Items().Item(1)->ID(), "b");
    EXPECT_EQ(account->Children().Item(1)->Items().Item(1)->ID(), "a");
  }
}

TEST_F(StandaloneHostTest, OpenLocationsAreKnownByName) {
  EXPECT_EQ(host_->Global().GetObject("thunderbird://a"), nullptr);
  const auto location = OpenLocation("thunderbird://a");
  EXPECT_EQ(host_->Global().GetObject("Thunderbird://A"), location);
  ASSERT_EQ(host_->Global().Locations().Count(), 1);
  EXPECT_EQ(host_->Global().FindItem("a")->ID(), "a");
  EXPECT_EQ(host_->Global().FindItem("b"), nullptr);
  location->Close();
  EXPECT_EQ(host_->Global().GetObject("thunderbird://a"), nullptr);
  EXPECT_EQ(host_->Global().Locations().Count(), 0);
  EXPECT_EQ(host_->Global().FindItem("a"), nullptr);
}

TEST_F(StandaloneHostTest, TheHostClosesWhatIsStillOpen) {
  const auto location = OpenLocation("thunderbird://a");
  const auto connector = connector_;
  HostObjects::Install(previous_);
  host_.reset();
  EXPECT_FALSE(location->IsOpen());
  EXPECT_TRUE(connector->Disconnected);
  EXPECT_THROW(location->ErrorFactory(), Failure);
}

// --- Archives

TEST_F(StandaloneHostTest, ArchivesAreFoundByPathAndName) {
  const MemoryFolder folder;
  const std::string path = folder.Path("Mein Archiv");
  EXPECT_EQ(host_->Global().GetObject(path), nullptr);
  EXPECT_FALSE(folder.Exists("Mein Archiv"));
  const ArchivePtr archive = host_->Global().OpenArchive(path);
  EXPECT_EQ(host_->Global().OpenArchive(path + "\\"), archive);
  EXPECT_EQ(host_->Global().GetObject(path), archive);
  EXPECT_EQ(host_->Global().GetObject("mein archiv"), archive);
  EXPECT_EQ(host_->Global().Locations().Item(1)->Name(), path);
  EXPECT_EQ(host_->Global().Locations().Item(1)->GetOption("type"), "");
  archive->PasteRecord("ID=in the archive");
  EXPECT_EQ(host_->Global().FindItem("in the archive")->ID(), "in the archive");
  archive->Close();
  EXPECT_EQ(host_->Global().Locations().Count(), 0);
  const auto again = std::dynamic_pointer_cast<Archive>(host_->Global().GetObject(path));
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(again->ItemCount(), 1);
}

TEST_F(StandaloneHostTest, ChosenItemIsTheOneMeantByItsId) {
  const MemoryFolder folder;
  const ArchivePtr archive = host_->Global().OpenArchive(folder.Path("a"));
  const ItemPtr oldest = archive->PasteRecord("ID=same|Text=1");
  const ItemPtr chosen = archive->PasteRecord("ID=same|Text=2");
  const ItemPtr other = archive->PasteRecord("ID=other");
  EXPECT_EQ(host_->Global().FindItem("same"), oldest);
  host_->Global().ChooseItem(chosen);
  EXPECT_EQ(host_->Global().FindItem("same"), chosen);
  EXPECT_EQ(host_->Global().FindItem("other"), other);
  host_->Global().ChooseItem(nullptr);
  EXPECT_EQ(host_->Global().FindItem("same"), oldest);
}

TEST_F(StandaloneHostTest, WhatIsPastedIntoAnArchiveIsTold) {
  const MemoryFolder folder;
  const ArchivePtr archive = host_->Global().OpenArchive(folder.Path("archive"));
  observer_.lines.clear();
  archive->PasteRecord("ID=1|Text=one");
  archive->PasteRecord("ID=2");
  EXPECT_THAT(observer_.lines, ElementsAre("pasted 1 ID=1|Text=one", "pasted 2 ID=2"));
}

// Twice as many as the index takes up at a time.
constexpr int kManyMails = 4096;

ArchivePtr ArchiveOfManyMails(StandaloneHost& host, const std::string& path) {
  const ArchivePtr archive = host.Global().OpenArchive(path);
  Archive::Portions portions(*archive);
  for (int i = 1; i <= kManyMails; ++i)
    archive->PasteRecord("ID=n" + std::to_string(i) + "|Text=wort");
  portions.Finish();
  return archive;
}

TEST_F(StandaloneHostTest, FirstSearchBehindALargeImportShowsItsProgress) {
  const MemoryFolder folder;
  const ArchivePtr archive = ArchiveOfManyMails(*host_, folder.Path("archive"));
  observer_.lines.clear();
  EXPECT_EQ(archive->Search("wort").size(), std::size_t{kManyMails});
  EXPECT_THAT(observer_.lines, ElementsAre("opened Index " + folder.Path("archive"), "shown", "moved 50",
                                           "moved 100", "hidden", "closed"));
  observer_.lines.clear();
  EXPECT_EQ(archive->Search("wort").size(), std::size_t{kManyMails});
  EXPECT_THAT(observer_.lines, IsEmpty());
}

TEST_F(StandaloneHostTest, FirstSearchThatIsCancelledIsContinuedByTheNext) {
  const MemoryFolder folder;
  const ArchivePtr archive = ArchiveOfManyMails(*host_, folder.Path("archive"));
  host_->Global().CancelFlag() = true;
  observer_.lines.clear();
  EXPECT_TRUE(archive->Search("wort").empty());
  EXPECT_THAT(observer_.lines,
              ElementsAre("opened Index " + folder.Path("archive"), "shown", "moved 50", "hidden", "closed"));
  host_->Global().CancelFlag() = false;
  observer_.lines.clear();
  EXPECT_EQ(archive->Search("wort").size(), std::size_t{kManyMails});
  EXPECT_THAT(observer_.lines, IsEmpty());
  host_->Global().CancelFlag() = true;
  EXPECT_EQ(archive->Search("wort").size(), std::size_t{kManyMails}) << "there is nothing left to cancel";
}

TEST_F(StandaloneHostTest, SearchFindsAlsoIfItsProgressCanNotBeHidden) {
  const MemoryFolder folder;
  const ArchivePtr archive = ArchiveOfManyMails(*host_, folder.Path("archive"));
  observer_.lines.clear();
  observer_.failsToHide = true;
  EXPECT_EQ(archive->Search("wort").size(), std::size_t{kManyMails});
  EXPECT_EQ(observer_.lines.back(), "closed");
}

// --- Topics

TEST_F(StandaloneHostTest, TopicsTakeUpLocationsAndLetThemGo) {
  const auto topics = std::dynamic_pointer_cast<Location>(host_->Global().GetObject("topics"));
  ASSERT_NE(topics, nullptr);
  EXPECT_EQ(host_->Global().GetObject("topics"), topics);
  EXPECT_EQ(topics->Name(), "topics");
  EXPECT_NE(topics->GetOption("type"), "");
  EXPECT_EQ(topics->ItemCount(), 0);
  EXPECT_THROW(topics->PasteRecord("ID=1"), Failure);
  const auto connector = RequireAs<TopicsConnector>(topics->Connector());
  const auto content = host_->Global().TopicsOfHost()->Content();
  EXPECT_EQ(connector, content);
  EXPECT_TRUE(content->Notify());
  connector->SetNotify(false);
  EXPECT_FALSE(content->Notify());

  const auto location = OpenLocation("thunderbird://a,b");
  connector->AddLocation(location);
  connector->AddLocation(location);
  connector->AddLocation(connector_);
  EXPECT_EQ(content->Sources().size(), 2u);
  connector->ClearLocation(location);
  EXPECT_THAT(content->Sources(), ElementsAre(connector_));
  const TreePtr account = content->BuildTree()->Children().Item(1);
  EXPECT_EQ(account->Text(), "Account=x");
  EXPECT_EQ(account->Children().Item(2)->Items().Item(1)->ID(), "b");
  connector->ClearLocation(connector_);
  connector->ClearLocation(nullptr);
  EXPECT_THAT(content->Sources(), IsEmpty());
  EXPECT_THROW(connector->AddLocation(nullptr), Failure);
}

// --- Enumerations

class EnumerationTest : public StandaloneHostTest {
 protected:
  EnumerationTest() {
    location_->Open("thunderbird://");
    for (const char* record :
         {"ID=1|Type=mail|Keywords=Account=x,Inbox,Sub", "ID=2|Type=mail|Keywords=Account=x,Sent",
          "ID=3|Type=termin|DataCalendar=Home", "ID=4|Type=task|DataCalendar=Work",
          "ID=5|Type=mail|Keywords=Account=x,Inbox,Other", "ID=6|Type=url|Keywords=Account=xy"}) {
      connector_->PasteItem(record, false);
    }
  }

  std::shared_ptr<StandaloneEnum> EnumOf(std::string_view condition) {
    ExpressionPtr expression = std::make_shared<StandaloneExpression>(condition);
    return RequireAs<StandaloneEnum>(connector_->CreateEnum(expression));
  }

  std::string Found(std::string_view condition) {
    std::string ids;
    for (const ItemPtr& item : EnumOf(condition)->Items())
      ids += item->ID();
    return ids;
  }

  std::string SubKeywords(std::string_view condition, std::string_view keyword) {
    std::string joined;
    const auto children = EnumOf(condition)->SubKeywords(keyword);
    for (const std::string& child : *children)
      joined += child + ";";
    return joined;
  }

  StandaloneLocationPtr location_ = host_->MakeLocation();
};

TEST_F(EnumerationTest, ConditionsChooseItems) {
  EXPECT_EQ(Found(""), "123456");
  EXPECT_EQ(Found("$type=mail"), "125");
  EXPECT_EQ(Found("$type=termin|$type=task"), "34");
  EXPECT_EQ(Found("$type="), "");
  EXPECT_EQ(Found("Calendar=Home"), "3");
  EXPECT_EQ(Found("Account=x"), "125");
  EXPECT_EQ(Found("Account=x,Inbox"), "15");
  EXPECT_EQ(Found("Account=x,Inbo"), "");
  EXPECT_EQ(Found("Calendar=Work | Account=xy"), "46");
}

TEST_F(EnumerationTest, WithoutAnExpressionAllItemsAreMeant) {
  ExpressionPtr nothing;
  EXPECT_EQ(RequireAs<StandaloneEnum>(connector_->CreateEnum(nothing))->Items().size(), 6u);
  EXPECT_THROW(StandaloneEnum().Items(), Failure);
}

TEST_F(EnumerationTest, SubKeywordsStandBelowAPathOnceEach) {
  EXPECT_EQ(SubKeywords("", ""), "Account=x;Account=xy;");
  EXPECT_EQ(SubKeywords("", "Account=x"), "Inbox;Sent;");
  EXPECT_EQ(SubKeywords("", "Account=x,Inbox"), "Sub;Other;");
  EXPECT_EQ(SubKeywords("", "Account=x,Inbox,Sub"), "");
  EXPECT_EQ(SubKeywords("", "Nowhere"), "");
  EXPECT_EQ(SubKeywords("$type=url", ""), "Account=xy;");
  EXPECT_EQ(SubKeywords("Account=x,Inbox", "Account=x,Inbox"), "Sub;Other;");
}

}  // namespace
}  // namespace vorlent
