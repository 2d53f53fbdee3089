// A host whose calls go wrong, one after the other: nothing breaks, and what was promised for a failing host
// is kept.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Component/Com/HostedTest.h"
#include "Host/Com/LateBound.h"
#include "Platform/Failure.h"

namespace vorlent::com {
namespace {

using testing::Contains;
using testing::Not;
using testing::StartsWith;

const std::string kMails = "thunderbird://default/Local Folders/Zitate";
const std::string kBookmarks = "firefox://Familie";
const std::string kCalendars = "sunbird://default/Arbeit";

class HostileHostTest : public SampleTest {
 protected:
  // Whether the call that was to go wrong was reached.
  bool WentWrong() const { return host_->failsOn ? host_->failing == 1 : host_->failing == 0; }

  // Runs a use with the first call of the host going wrong, then with the second, and so on, until none of
  // its calls is left. Gives how many there were.
  int LetEachCallGoWrong(Wrong wrong, bool failsOn, const std::function<void()>& use) {
    constexpr int kMost = 2000;
    for (int call = 1; call < kMost; ++call) {
      host_->calls.clear();
      host_->wrong = wrong;
      host_->failing = call;
      host_->failsOn = failsOn;
      use();
      const bool wentWrong = WentWrong();
      host_->failing = 0;
      EXPECT_EQ(server_.CanUnloadNow(), S_OK) << "call " << call << " left something held";
      if (!wentWrong) return call - 1;
    }
    ADD_FAILURE() << "no end of calls";
    return kMost;
  }

  void LetEachCallGoWrongInEachWay(const std::function<void()>& use) {
    for (const Wrong wrong :
         {Wrong::Raises, Wrong::Fails, Wrong::GivesNothing, Wrong::GivesAnotherType, Wrong::ReleasesTooOften})
      EXPECT_GT(LetEachCallGoWrong(wrong, false, use), 4) << "hardly a call was made";
    // A recordset that gives nothing from then on has no end.
    LetEachCallGoWrong(Wrong::Raises, true, use);
  }

  // Files that a use changes, put back as they were.
  class Kept {
   public:
    explicit Kept(std::vector<std::string> paths) {
      for (std::string& path : paths) {
        std::string bytes = ReadBytes(path);
        files_.emplace_back(std::move(path), std::move(bytes));
      }
    }

    void PutBack() const {
      for (const auto& [path, bytes] : files_)
        WriteBytes(path, bytes);
    }

   private:
    std::vector<std::pair<std::string, std::string>> files_;
  };

  ComPtr<ScriptedObject> NewLocation(const std::string& address) {
    const ComPtr<ScriptedObject> location = host_->NewLocation(address);
    location->Set(L"ItemCounter", Value(LONG{0}));
    return location;
  }

  // A connector with its Location, from which both are let go of at the end.
  template <class Step>
  void WithConnector(REFCLSID id, const std::string& address, Step&& step) {
    const ComPtr<IDispatch> made = New(id);
    if (made == nullptr) return;
    const ComPtr<ScriptedObject> location = NewLocation(address);
    LateBound connector(made.Get());
    Swallow([&] { connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get()))); });
    std::forward<Step>(step)(connector);
    Swallow([&] { connector.Put(L"LocObject", Value(static_cast<IDispatch*>(nullptr))); });
  }

  // What every connector bears, and what one with items does. What fails and what doesn't is of no matter
  // here.
  static void Read(LateBound& connector, const std::string& address) {
    Swallow([&] { connector.Call(L"InitLocation", Value(address)); });
    Swallow([&] { connector.Call(L"Reload"); });
  }
  static void UseItems(LateBound& connector) {
    const ComPtr<IDispatch> expression = ScriptedHost::NewExpression("x");
    Swallow([&] { connector.Call(L"NewItem", Value(true)); });
    Swallow([&] { connector.Call(L"PasteItem", Value("ID=x|Type=task|Text=t"), Value(true)); });
    Swallow([&] { connector.Call(L"CreateEnum", Value(expression.Get())); });
    Swallow([&] { connector.Call(L"DeleteItem", connector.Call(L"Item", Value(LONG{1}))); });
  }
};

TEST_F(HostileHostTest, MailConnectorBearsEachCallGoingWrong) {
  host_->HaveTopics();
  const std::string mailbox = Sample("Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\Local Folders\\Zitate");
  const Kept mails({mailbox, mailbox + ".msf"});
  LetEachCallGoWrongInEachWay([&] {
    mails.PutBack();
    WithConnector(__uuidof(::Location_Thunderbird), kMails, [&](LateBound& connector) {
      Read(connector, kMails);
      UseItems(connector);
      Swallow([&] {
        connector.Call(L"GetFile", connector.Call(L"Item", Value(LONG{1})), Value("File"), Value(LONG{1}));
      });
      Swallow([&] { connector.Call(L"ExecuteAction", Value("Restore:none")); });
      Swallow([&] { connector.Call(L"SourceInit", connector.Call(L"Tree"), Value(false)); });
      Swallow([&] { connector.Call(L"SourceGetNext", Value("")); });
      Swallow([&] { connector.Call(L"SourceGetNext", Value("")); });
      Swallow([&] { connector.Call(L"Clear"); });
    });
  });
}

TEST_F(HostileHostTest, BookmarkConnectorBearsEachCallGoingWrong) {
  LetEachCallGoWrongInEachWay([&] {
    WithConnector(__uuidof(::Location_FireFox), kBookmarks, [&](LateBound& connector) {
      const ComPtr<IDispatch> expression = ScriptedHost::NewExpression("Keywords=one");
      Read(connector, kBookmarks);
      UseItems(connector);
      Swallow([&] { connector.Call(L"GetSubKeywords", Value(expression.Get())); });
      Swallow([&] { connector.Call(L"Save"); });
    });
  });
}

TEST_F(HostileHostTest, CalendarConnectorBearsEachCallGoingWrong) {
  const Kept calendar({Sample("Mozilla\\Sunbird\\Profiles\\h7w2m4tz.default\\storage.sdb")});
  LetEachCallGoWrongInEachWay([&] {
    calendar.PutBack();
    WithConnector(__uuidof(::Location_Sunbird), kCalendars, [&](LateBound& connector) {
      Swallow([&] { connector.Call(L"InitLocation", Value(kCalendars)); });
      UseItems(connector);
      Swallow([&] {
        connector.Call(L"RedoAction", connector.Call(L"Item", Value(LONG{1})), Value("20260101000000"),
                       Value(LONG{1}));
      });
    });
  });
}

TEST_F(HostileHostTest, ImportBearsEachCallGoingWrong) {
  host_->HaveTopics();
  host_->named["Ziel"] = host_->NewLocation("Ziel");
  host_->wizardAnswer = "target Ziel\r\naction copy\r\noption tree\r\nimport " +
                        Sample("Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\pop.example.org\\Inbox") +
                        "\r\n";
  LetEachCallGoWrongInEachWay([&] {
    LateBound actions(New(__uuidof(::Actions)).Get());
    Swallow([&] { actions.Call(L"execute", Value("importmails")); });
  });
}

TEST_F(HostileHostTest, WizardBearsEachCallGoingWrong) {
  LetEachCallGoWrongInEachWay([&] {
    const ComPtr<IDispatch> made = New(__uuidof(::WizardImport));
    if (made == nullptr) return;
    LateBound wizard(made.Get());
    Swallow([&] { wizard.Call(L"ShowPage", Value(LONG{1})); });
    Swallow([&] {
      wizard.Call(L"AddSubQueries", Value("thunderbird://*"), Value(LONG{-1}), Value(LONG{1}),
                  Value(LONG{0}));
    });
    Swallow([&] { wizard.Call(L"Parameter"); });
  });
}

// --- What a failing host is promised

constexpr HRESULT kRaised = ScriptedObject::kRaised;

TEST_F(HostileHostTest, PastingSwallowsEveryFailure) {
  for (const Wrong wrong : {Wrong::Raises, Wrong::Fails, Wrong::GivesNothing, Wrong::GivesAnotherType}) {
    const int calls = LetEachCallGoWrong(wrong, false, [&] {
      const ComPtr<_Location_Thunderbird> connector =
          New<_Location_Thunderbird>(__uuidof(::Location_Thunderbird));
      const ComPtr<ScriptedObject> location = NewLocation(kMails);
      connector->putref_LocObject(reinterpret_cast<_Location*>(static_cast<IDispatch*>(location.Get())));
      BSTR record = NewBstr("ID=x|Type=mail|Text=t");
      VARIANT_BOOL conn = VARIANT_TRUE;
      _Item* item = nullptr;
      EXPECT_EQ(connector->PasteItem(&record, &conn, &item), S_OK) << host_->calls.back();
      SysFreeString(record);
      if (item != nullptr) item->Release();
      connector->putref_LocObject(nullptr);
    });
    EXPECT_GT(calls, 6);
  }
}

TEST_F(HostileHostTest, FailureWhileTheParameterItemIsSetUpReachesTheCaller) {
  std::set<std::string> reached;
  LetEachCallGoWrong(Wrong::Raises, false, [&] {
    WithConnector(__uuidof(::Location_Thunderbird), kMails, [&](LateBound& connector) {
      const bool isWhole = Swallow([&] { connector.Call(L"InitLocation", Value(kMails)); });
      const bool isBeforeTheAddress =
          host_->failing == 0 &&
          std::find(host_->calls.begin(), host_->calls.end(), "Tree.New") == host_->calls.end();
      if (!isBeforeTheAddress) return;
      reached.insert(host_->calls.back());
      EXPECT_FALSE(isWhole) << host_->calls.back();
    });
  });
  const std::set<std::string> expected = {"Item.New",
                                          "Location.ParameterItem",
                                          "Item.Location",
                                          "Item.Ready",
                                          "Item.ID parameter",
                                          "Item.Type parameter",
                                          "Item.Text Parameter",
                                          "Item.SetData Condition $type=mail",
                                          "Item.SetData Flags LogReadonly",
                                          "Item.AccessDefault -",
                                          "Global.New",
                                          "Global.UserName",
                                          "Item.AccessList anna:rd",
                                          "Item.Connected"};
  std::set<std::string> missing;
  std::set_difference(expected.begin(), expected.end(), reached.begin(), reached.end(),
                      std::inserter(missing, missing.end()));
  EXPECT_EQ(missing, std::set<std::string>());
}

TEST_F(HostileHostTest, FailedDeletionTellsTheHostNothing) {
  WithConnector(__uuidof(::Location_Thunderbird), kMails, [&](LateBound& connector) {
    connector.Call(L"InitLocation", Value(kMails));
    connector.Call(L"OpenLocation", Value(kMails));
    const Value item = connector.Call(L"Item", Value(LONG{1}));
    host_->calls.clear();
    host_->failing = 1;
    EXPECT_FALSE(Swallow([&] { connector.Call(L"DeleteItem", item); }));
    EXPECT_THAT(host_->calls, Not(Contains(StartsWith("Global.Report 38"))));
    EXPECT_THAT(host_->calls, Not(Contains("Location.Changed")));
    EXPECT_EQ(ToNumber(connector.Call(L"Count")), 2);
    connector.Call(L"Clear");
  });
}

TEST_F(HostileHostTest, FailedReportOfADeletionLeavesTheLocationUnchanged) {
  WithConnector(__uuidof(::Location_FireFox), kBookmarks, [&](LateBound& connector) {
    const auto paste = [&] {
      Value item = connector.Call(L"PasteItem", Value("ID=x|Type=url"), Value(false));
      host_->calls.clear();
      return item;
    };
    const auto isReport = [](const std::string& call) { return call.starts_with("Global.Report 38"); };
    // The first time something is made that the host makes once.
    EXPECT_TRUE(ToTruth(connector.Call(L"DeleteItem", paste())));
    EXPECT_TRUE(ToTruth(connector.Call(L"DeleteItem", paste())));
    EXPECT_THAT(host_->calls, Contains("Location.Changed"));
    const auto report = std::find_if(host_->calls.begin(), host_->calls.end(), isReport);
    ASSERT_NE(report, host_->calls.end());
    const auto position = static_cast<int>(report - host_->calls.begin()) + 1;
    const Value item = paste();
    host_->failing = position;
    EXPECT_FALSE(Swallow([&] { connector.Call(L"DeleteItem", item); }));
    EXPECT_THAT(host_->calls.back(), StartsWith("Global.Report 38"));
    EXPECT_FALSE(ToTruth(connector.Call(L"HasID", Value("x")))) << "it was deleted before";
    connector.Call(L"Clear");
  });
}

TEST_F(HostileHostTest, FailureOfTheTopicsReachesTheCallerOfReload) {
  host_->HaveTopics();
  for (const char* failing : {"Global.GetObject topics", "Location.Connector", "Topics.Notify",
                              "Topics.ClearLocation", "Topics.AddLocation"}) {
    WithConnector(__uuidof(::Location_Thunderbird), kMails, [&](LateBound& connector) {
      connector.Call(L"Reload");  // makes what is made on first use
      host_->calls.clear();
      connector.Call(L"Reload");
      const auto at = std::find(host_->calls.begin(), host_->calls.end(), failing);
      ASSERT_NE(at, host_->calls.end()) << failing;
      host_->failing = static_cast<int>(at - host_->calls.begin()) + 1;
      host_->calls.clear();
      EXPECT_FALSE(Swallow([&] { connector.Call(L"Reload"); })) << failing;
      EXPECT_EQ(host_->calls.back(), failing);
      connector.Call(L"Clear");
    });
  }
}

TEST_F(HostileHostTest, MembersThatCallNoHostWorkWithABrokenOne) {
  const ComPtr<_Location_Thunderbird> connector =
      New<_Location_Thunderbird>(__uuidof(::Location_Thunderbird));
  host_->failing = 1;
  host_->failsOn = true;
  BSTR id = NewBstr("none");
  VARIANT_BOOL has = VARIANT_TRUE;
  EXPECT_EQ(connector->HasID(&id, &has), S_OK);
  EXPECT_EQ(has, VARIANT_FALSE);
  _Item* item = nullptr;
  EXPECT_EQ(connector->GetItem(&id, &item), S_OK);
  EXPECT_EQ(item, nullptr);
  LONG count = 7;
  EXPECT_EQ(connector->get_Count(&count), S_OK);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(connector->Clear(), S_OK);
  EXPECT_EQ(connector->Disconnect(), S_OK);
  _Tree* tree = nullptr;
  EXPECT_EQ(connector->get_Tree(&tree), kRaised) << "the host can't make a tree";
  SysFreeString(id);
  host_->failing = 0;
}

// --- Objects that are released too often

TEST_F(HostileHostTest, ConnectorThatTheHostReleasedTooOftenIsGoneForItsOwner) {
  ComPtr<_Location_Thunderbird> connector = New<_Location_Thunderbird>(__uuidof(::Location_Thunderbird));
  const ComPtr<ScriptedObject> location = NewLocation(kMails);
  connector->putref_LocObject(reinterpret_cast<_Location*>(static_cast<IDispatch*>(location.Get())));
  host_->wrong = Wrong::ReleasesTooOften;
  host_->failing = 1;
  host_->failsOn = true;
  BSTR file = NewBstr(kMails);
  VARIANT_BOOL isWhole = VARIANT_FALSE;
  EXPECT_EQ(connector->InitLocation(&file, &isWhole), S_OK) << "the member that is running ends";
  SysFreeString(file);
  host_->failing = 0;
  EXPECT_EQ(location->References(), 1U) << "it lets go of its Location";
  LONG count = 0;
  EXPECT_EQ(connector->get_Count(&count), CO_E_OBJNOTCONNECTED);
  DISPPARAMS none = {};
  EXPECT_EQ(connector->Invoke(9, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
            CO_E_OBJNOTCONNECTED);
  connector.Reset();
  EXPECT_EQ(server_.CanUnloadNow(), S_OK);
}

TEST_F(HostileHostTest, ObjectsAreReleasedTooOftenWithoutHarm) {
  for (int round = 0; round < 500; ++round) {
    IDispatch* const mail = New(__uuidof(::StdMail)).Detach();
    const ComPtr<IDispatch> headers = ToObject(LateBound(mail).Call(L"Headers"));
    EXPECT_EQ(mail->Release(), 0U);
    EXPECT_EQ(mail->Release(), 0U);
    EXPECT_EQ(mail->AddRef(), 0U);
    IDispatch* const list = headers.Get();
    ComPtr<IUnknown> walk;
    *walk.GetAddressOf() = std::exchange(LateBound(list).Call(L"_NewEnum")->punkVal, nullptr);
    list->AddRef();
    EXPECT_EQ(walk.Get()->AddRef(), 2U);
    EXPECT_EQ(walk.Get()->Release(), 1U);
    list->Release();
  }
}

}  // namespace
}  // namespace vorlent::com
