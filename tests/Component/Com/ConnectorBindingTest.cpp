// A connector that is driven over COM and drives a host that is known by names only.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>

#include "Component/Com/HostedTest.h"
#include "Component/Com/ScriptHost.h"
#include "Host/Com/LateBound.h"
#include "Platform/Failure.h"

namespace vorlent::com {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::StartsWith;

constexpr char kMailbox[] =
    "From - Mon Jan 01 10:00:00 2007\r\n"
    "X-Mozilla-Status: 0001\r\n"
    "Message-ID: <a@example>\r\n"
    "Date: Mon, 01 Jan 2007 10:00:00 +0100\r\n"
    "Subject: Erste\r\n"
    "\r\n"
    "Text\r\n"
    "\r\n"
    "From - Mon Jan 01 11:00:00 2007\r\n"
    "X-Mozilla-Status: 0000\r\n"
    "Message-ID: <b@example>\r\n"
    "Date: Mon, 01 Jan 2007 11:00:00 +0100\r\n"
    "Subject: Zweite\r\n"
    "\r\n"
    "Text\r\n";

class ConnectorBindingTest : public HostedTest {
 protected:
  void SetUp() override {
    const std::string path = folder_.Write("Inbox", kMailbox);
    // All disks are a profile of their own.
    std::string below = path.substr(3);
    std::replace(below.begin(), below.end(), '\\', '/');
    address_ = "thunderbird://./" + path.substr(0, 1) + "/" + below;
  }

  ComPtr<_Location_Thunderbird> NewConnector() const {
    return New<_Location_Thunderbird>(__uuidof(::Location_Thunderbird));
  }

  std::string address_;
};

TEST_F(ConnectorBindingTest, HostDrivesAConnectorByName) {
  const ComPtr<_Location_Thunderbird> made = NewConnector();
  const ComPtr<ScriptedObject> location = host_->NewLocation(address_);
  LateBound connector(made.Get());
  connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
  EXPECT_TRUE(ToTruth(connector.Call(L"InitLocation", Value(std::string_view(address_)))));
  EXPECT_EQ(ToNumber(connector.Call(L"OpenLocation", Value(std::string_view(address_)))), 1);
  EXPECT_EQ(ToNumber(connector.Call(L"Count")), 2);
  LateBound second(ToObject(connector.Call(L"Item", Value(LONG{2}))).Get());
  EXPECT_EQ(ToText(second.Call(L"ID")), "20070101110000-b@example");
  EXPECT_TRUE(ToTruth(connector.Call(L"HasID", Value("20070101100000-A@EXAMPLE"))));
  EXPECT_EQ(ToObject(connector.Call(L"Item", Value(LONG{3}))), nullptr);
  EXPECT_EQ(ToObject(connector.Call(L"GetItem", Value("none"))), nullptr);
  connector.Call(L"Clear");
}

TEST_F(ConnectorBindingTest, ParameterItemKnowsTheVeryConnector) {
  const ComPtr<_Location_Thunderbird> made = NewConnector();
  const ComPtr<ScriptedObject> location = host_->NewLocation(address_);
  LateBound connector(made.Get());
  connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
  connector.Call(L"InitLocation", Value(std::string_view(address_)));
  const VARIANT& parameter = location->Get(L"ParameterItem");
  ASSERT_EQ(parameter.vt, VT_DISPATCH);
  LateBound item(parameter.pdispVal);
  EXPECT_EQ(ToText(item.Call(L"ID")), "parameter");
  EXPECT_EQ(ToText(item.Call(L"AccessList")), "anna:rd");
  EXPECT_TRUE(AreSame(ToObject(item.Call(L"Location")).Get(), made.Get()));
  EXPECT_THAT(host_->calls, Contains("Item.SetData Condition $type=mail"));
}

TEST_F(ConnectorBindingTest, LocationComesBackAsTheVeryObject) {
  const ComPtr<_Location_Thunderbird> connector = NewConnector();
  const ComPtr<ScriptedObject> location = host_->NewLocation(address_);
  ASSERT_EQ(
      connector->putref_LocObject(reinterpret_cast<_Location*>(static_cast<IDispatch*>(location.Get()))),
      S_OK);
  _Location* given = nullptr;
  ASSERT_EQ(connector->get_LocObject(&given), S_OK);
  EXPECT_TRUE(AreSame(given, location.Get()));
  given->Release();
  ASSERT_EQ(connector->putref_LocObject(nullptr), S_OK);
  ASSERT_EQ(connector->get_LocObject(&given), S_OK);
  EXPECT_EQ(given, nullptr);
}

TEST_F(ConnectorBindingTest, LocationIsHeldByOneReferenceAndLetGoOf) {
  ComPtr<_Location_Thunderbird> connector = NewConnector();
  const ComPtr<ScriptedObject> location = host_->NewLocation(address_);
  const ULONG before = location->References();
  LateBound(connector.Get()).Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
  EXPECT_EQ(location->References(), before + 1);
  connector.Reset();
  EXPECT_EQ(location->References(), before);
}

TEST_F(ConnectorBindingTest, RecordsAreStreamedIntoAScriptsVariable) {
  const ComPtr<_Location_Thunderbird> connector = NewConnector();
  const ComPtr<ScriptedObject> location = host_->NewLocation(address_);
  const ComPtr<ScriptedObject> out = ScriptedObject::Make();
  out->Set(L"Text", Value());
  ScriptHost script(L"VBScript");
  script.Name(L"connector", connector.Get());
  script.Name(L"location", location.Get());
  script.Name(L"out", out.Get());
  EXPECT_EQ(script.Run("Dim rec, n\r\nn = 0\r\n"
                       "Set connector.LocObject = location\r\n"
                       "connector.InitLocation location.Name\r\n"
                       "connector.SourceInit Nothing, False\r\n"
                       "Do While connector.SourceGetNext(rec)\r\n"
                       "  n = n + 1\r\n  out.Text = out.Text & n & Left(rec, 3)\r\n"
                       "Loop\r\n"),
            "");
  EXPECT_EQ(TextOf(out->Get(L"Text").bstrVal), "1ID=2ID=");
}

TEST_F(ConnectorBindingTest, EnumerationMayReplaceTheExpression) {
  const ComPtr<_Location_Thunderbird> made = NewConnector();
  const ComPtr<ScriptedObject> location = host_->NewLocation(address_);
  LateBound connector(made.Get());
  connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
  host_->replacement = ScriptedHost::NewExpression("another");
  ComPtr<IDispatch> expression = ScriptedHost::NewExpression("one");
  Value reference;
  reference->vt = VT_BYREF | VT_DISPATCH;
  reference->ppdispVal = expression.GetAddressOf();
  EXPECT_NE(ToObject(connector.Call(L"CreateEnum", reference)), nullptr);
  EXPECT_TRUE(AreSame(expression.Get(), host_->replacement.Get()));
}

TEST_F(ConnectorBindingTest, HostsFailureReachesItsCallerWithNumberAndText) {
  const ComPtr<_Location_Thunderbird> made = NewConnector();
  const ComPtr<ScriptedObject> location = host_->NewLocation(address_);
  LateBound connector(made.Get());
  connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
  host_->failing = 2;
  try {
    connector.Call(L"InitLocation", Value(std::string_view(address_)));
    FAIL() << "a failed call of the host was swallowed";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 70);
    EXPECT_STREQ(failure.what(), "the host says no");
  }
}

TEST_F(ConnectorBindingTest, MissingMemberOfTheHostHasItsNumber) {
  const ComPtr<_Location_Thunderbird> made = NewConnector();
  const ComPtr<ScriptedObject> location = ScriptedObject::Make();
  LateBound connector(made.Get());
  connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
  try {
    connector.Call(L"InitLocation", Value(std::string_view(address_)));
    FAIL() << "a Location without members was taken";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 438) << failure.what();
  }
}

TEST_F(ConnectorBindingTest, WithoutALocationTheConnectorSaysSo) {
  const ComPtr<_Location_Thunderbird> made = NewConnector();
  try {
    LateBound(made.Get()).Call(L"NewItem");
    FAIL();
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), 91);
  }
  LateBound(made.Get()).Call(L"Clear");
}

TEST_F(ConnectorBindingTest, LocationMayBeAClassOfAScript) {
  const ComPtr<_Location_Thunderbird> connector = NewConnector();
  const ComPtr<ScriptedObject> out = ScriptedObject::Make();
  out->Set(L"Text", Value());
  ScriptHost script(L"VBScript");
  script.Name(L"connector", connector.Get());
  script.Name(L"out", out.Get());
  EXPECT_EQ(
      script.Run("Class HostLocation\r\n"
                 "  Public ItemCounter\r\n  Public LastItemTimer\r\n  Public Changed\r\n  Public Kept\r\n"
                 "  Public Property Set parameterITEM(given)\r\n    Set Kept = given\r\n  End Property\r\n"
                 "  Public Property Get name\r\n    name = \"" +
                 address_ +
                 "\"\r\n  End Property\r\n"
                 "End Class\r\n"
                 "Dim l\r\nSet l = New HostLocation\r\nl.ItemCounter = 0\r\n"
                 "Set connector.LocObject = l\r\n"
                 "connector.InitLocation l.Name\r\n"
                 "out.Text = connector.OpenLocation(l.Name) & \" \" & connector.Count & \" \" & l.ItemCounter"
                 " & \" \" & l.Kept.Type\r\n"
                 "connector.Clear\r\nSet connector.LocObject = Nothing\r\n"),
      "");
  EXPECT_EQ(TextOf(out->Get(L"Text").bstrVal), "1 2 2 parameter");
}

using OtherClassesBindingTest = ConnectorBindingTest;

TEST_F(OtherClassesBindingTest, ActionsAreOneEntryWithoutAKey) {
  LateBound actions(New(__uuidof(::Actions)).Get());
  LateBound list(ToObject(actions.Call(L"GetActions")).Get());
  EXPECT_EQ(ToNumber(list.Call(L"Count")), 1);
  EXPECT_EQ(ToText(list.Call(L"Item", Value(LONG{1}))), "importmails|newfile#Import: Thunderbird Mails");
  actions.Call(L"execute", Value("another"));
}

TEST_F(OtherClassesBindingTest, WizardHasFourPagesAndACommand) {
  LateBound wizard(New(__uuidof(::WizardImport)).Get());
  EXPECT_EQ(ToNumber(wizard.Call(L"Pages")), 4);
  wizard.Put(L"Pages", Value(LONG{3}));
  EXPECT_EQ(ToNumber(wizard.Call(L"Pages")), 3);
  EXPECT_TRUE(ToTruth(wizard.Call(L"Finish")));
  wizard.Put(L"Parameter", Value("has no effect"));
  EXPECT_EQ(ToText(wizard.Call(L"Parameter")),
            "target target\r\naction copy\r\nkeyword #subpath\r\noption tree\r\n");
}

TEST_F(OtherClassesBindingTest, WizardThatCannotAskTheHostIsNotMade) {
  host_->failing = 1;
  ComPtr<IDispatch> made;
  EXPECT_EQ(ClassObject(__uuidof(::WizardImport))
                ->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(made.GetAddressOf())),
            static_cast<HRESULT>(0x800A0046));
  EXPECT_EQ(made.Get(), nullptr);
}

TEST_F(OtherClassesBindingTest, BookmarkAndCalendarConnectorsHoldItemsAlike) {
  for (const CLSID& id : {__uuidof(::Location_FireFox), __uuidof(::Location_Sunbird)}) {
    const ComPtr<ScriptedObject> location = host_->NewLocation("firefox://*");
    LateBound connector(New(id).Get());
    connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
    const ComPtr<IDispatch> item =
        ToObject(connector.Call(L"PasteItem", Value("ID=x|Type=url"), Value(false)));
    EXPECT_TRUE(AreSame(item.Get(), ToObject(connector.Call(L"GetItem", Value("X"))).Get()));
    EXPECT_EQ(ToNumber(connector.Call(L"Count")), 1);
    connector.Call(L"Clear");
    EXPECT_FALSE(ToTruth(connector.Call(L"HasID", Value("x"))));
  }
}

}  // namespace
}  // namespace vorlent::com
