// The standalone host served over COM to the registered component, beside the same host with the component
// that is linked.
#include "Standalone/Com/ServedComponent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Component/Com/ServerFile.h"
#include "Component/Component.h"
#include "Host/Com/Failures.h"
#include "Host/Com/LateBound.h"
#include "Host/Connector.h"
#include "Platform/Settings.h"
#include "Standalone/Com/HostServer.h"
#include "Standalone/InstalledHost.h"
#include "Standalone/StandaloneHost.h"
#include "Support/RecordingRunObserver.h"
#include "Support/SourceTree.h"
#include "Support/TemporaryFolder.h"
#include "Vorlent.h"

namespace vorlent::com {
namespace {

using ::testing::Contains;
using ::testing::EndsWith;

constexpr std::string_view kInbox = "thunderbird://default/Local Folders/Inbox/-";
constexpr std::string_view kMailbox =
    "AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders/Inbox";

// Registered for this test, and taken back at the end.
class RegisteredServer {
 public:
  RegisteredServer() { EXPECT_EQ(server_.Register(), S_OK); }
  RegisteredServer(const RegisteredServer&) = delete;
  RegisteredServer& operator=(const RegisteredServer&) = delete;
  ~RegisteredServer() {
    EXPECT_EQ(server_.CanUnloadNow(), S_OK) << "something is still held";
    EXPECT_EQ(server_.Unregister(), S_OK);
  }

 private:
  LoadedServer server_;
};

class ServedComponentTest : public testing::Test {
 protected:
  ServedComponentTest() {
    std::filesystem::copy(SourcePath("samples/AppData"), folder_.Native("AppData"),
                          std::filesystem::copy_options::recursive);
    const std::string samples = folder_.Native().string(), appData = folder_.Native("AppData").string();
    os::SetDrive('S', samples);
    os::SetAppDataFolder(appData);
    SettleServed(samples, appData);
  }
  ~ServedComponentTest() override {
    for (const LocationPtr& location : host_->Global().Locations())
      location->Close();
    host_->Global().SetConnectorFactory(nullptr);
    os::ResetSettings();
    SettleServed("", "");
  }

  void SettleServed(const std::string& samples, const std::string& appData) {
    EXPECT_EQ(component_.Inside().SetDrive(L'S', Bstr(WideOfUtf8(samples)).Get()), S_OK);
    EXPECT_EQ(component_.Inside().SetAppDataFolder(Bstr(WideOfUtf8(appData)).Get()), S_OK);
  }

  void UseServed() {
    host_->Global().SetConnectorFactory(
        [this](std::string_view progId) { return component_.Create(progId); });
  }
  void UseLinked() { host_->Global().SetConnectorFactory(CreateObject); }

  StandaloneLocationPtr Read(std::string_view address) {
    const StandaloneLocationPtr location = host_->MakeLocation();
    location->Open(address);
    location->Load();
    return location;
  }
  std::vector<std::string> RecordsOf(std::string_view address) {
    const StandaloneLocationPtr location = Read(address);
    std::vector<std::string> records;
    for (std::int32_t i = 1; i <= location->ItemCount(); ++i)
      records.push_back(WithoutMadeId(AsStandalone(location->ItemAt(i))->Record()));
    location->Close();
    return records;
  }

  // An ID that the host made is another each time.
  static std::string WithoutMadeId(std::string record) {
    if (record.starts_with("ID={")) record.erase(0, record.find('|'));
    return record;
  }

  // The records and what an observer hears of a stream.
  std::vector<std::string> StreamOf(std::string_view address) {
    const StandaloneLocationPtr location = host_->MakeLocation();
    location->Open(address);
    const auto connector = RequireAs<MailConnector>(location->Connector());
    test::RecordingRunObserver observer;
    std::vector<std::string> told;
    {
      const RunObservation observation(*connector, observer);
      connector->SourceInit(nullptr, false);
      for (std::string record; connector->SourceGetNext(record);)
        told.push_back(record);
    }
    told.insert(told.end(), observer.events.begin(), observer.events.end());
    location->Close();
    return told;
  }

  Apartment apartment_;
  RegisteredServer registered_;
  TemporaryFolder folder_;
  HostObserver silent_;
  std::shared_ptr<StandaloneHost> host_ = std::make_shared<StandaloneHost>(silent_);
  InstalledHost installed_{nullptr, host_};
  HostServer server_{host_};
  ServedComponent component_;
};

TEST_F(ServedComponentTest, ReadsWhatTheLinkedComponentReads) {
  for (const std::string_view address :
       {kInbox, std::string_view("thunderbird://*"), std::string_view("firefox://default/"),
        std::string_view("sunbird://default/*")}) {
    UseLinked();
    const std::vector<std::string> expected = RecordsOf(address);
    EXPECT_FALSE(expected.empty()) << address;
    UseServed();
    EXPECT_EQ(RecordsOf(address), expected) << address;
  }
}

TEST_F(ServedComponentTest, ConnectorIsCalledOverCom) {
  UseServed();
  const StandaloneLocationPtr location = Read(kInbox);
  const auto* face = dynamic_cast<const HostFace*>(location->Connector().get());
  ASSERT_NE(face, nullptr);
  EXPECT_EQ(ToNumber(LateBound(face->Dispatch()).Call(L"Count")), location->ItemCount());
}

TEST_F(ServedComponentTest, ItemsComeBackAsTheVeryObjectsOfTheHost) {
  UseServed();
  const StandaloneLocationPtr location = Read(kInbox);
  const ItemPtr item = location->ItemAt(1);
  EXPECT_EQ(location->ItemAt(1), item);
  ASSERT_NE(AsStandalone(item), nullptr);
  EXPECT_EQ(AsStandalone(item)->Location(), location->Connector());
  EXPECT_EQ(RequireAs<Connector>(location->Connector())->LocObject(), location);
}

TEST_F(ServedComponentTest, GlobalObjectExistsOnce) {
  const auto make = [] {
    ComPtr<IDispatch> made;
    CoCreateInstance(__uuidof(::HostGlobal), nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                     reinterpret_cast<void**>(made.GetAddressOf()));
    return made;
  };
  const ComPtr<IDispatch> first = make(), second = make();
  ASSERT_NE(first, nullptr);
  EXPECT_TRUE(AreSame(first.Get(), second.Get()));
}

TEST_F(ServedComponentTest, FailureOfTheHostHasItsNumberAndTextByNameAndByVtable) {
  ComPtr<_HostDatabase> database;
  ASSERT_EQ(CoCreateInstance(__uuidof(::HostDatabase), nullptr, CLSCTX_INPROC_SERVER, __uuidof(_HostDatabase),
                             reinterpret_cast<void**>(database.GetAddressOf())),
            S_OK);
  std::string expected;
  int number = 0;
  try {
    host_->NewDatabase()->Execute("SELECT 1");
  } catch (const Failure& failure) {
    expected = failure.what();
    number = failure.Number();
  }
  ASSERT_NE(number, 0);
  try {
    LateBound(database.Get()).Call(L"Execute", Value(std::string_view("SELECT 1")));
    ADD_FAILURE() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Number(), number);
    EXPECT_EQ(failure.what(), expected);
  }
  BSTR sql = NewBstr("SELECT 1");
  Value result;
  const HRESULT status = database->Execute(&sql, result.Place());
  SysFreeString(sql);
  EXPECT_EQ(status, static_cast<HRESULT>(0x800A0000 | number));
  EXPECT_EQ(std::string(ToldFailure(status).what()), expected);
}

TEST_F(ServedComponentTest, ObjectOfAnotherProgramIsRefused) {
  UseServed();
  const StandaloneLocationPtr location = Read(kInbox);
  const ComPtr<IDispatch> item = FaceOf(location->ItemAt(1));
  CLSID id = {};
  ASSERT_EQ(CLSIDFromProgID(L"VorlentMozilla.StdMail", &id), S_OK);
  ComPtr<IDispatch> reader;
  ASSERT_EQ(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                             reinterpret_cast<void**>(reader.GetAddressOf())),
            S_OK);
  try {
    LateBound(item.Get()).Put(L"Location", Value(reader.Get()));
    ADD_FAILURE() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::TypeMismatch)) << failure.Number();
  }
}

TEST_F(ServedComponentTest, StreamTellsWhatTheLinkedComponentTells) {
  UseLinked();
  const std::vector<std::string> expected = StreamOf(kInbox);
  EXPECT_THAT(expected, Contains(testing::StartsWith("delivered Inbox at ")));
  UseServed();
  EXPECT_EQ(StreamOf(kInbox), expected);
}

TEST_F(ServedComponentTest, FailureOfAnObserverEndsTheRunWithItsNumberAndText) {
  class RefusingObserver : public MailRunObserver {
   public:
    void MailDelivered(const MailPlace&, bool) override { throw Failure(ErrorNumber::DiskFull, "no room"); }
  };
  UseServed();
  const StandaloneLocationPtr location = host_->MakeLocation();
  location->Open(kInbox);
  const auto connector = RequireAs<MailConnector>(location->Connector());
  RefusingObserver refusing;
  const RunObservation observation(*connector, refusing);
  connector->SourceInit(nullptr, false);
  try {
    std::string record;
    connector->SourceGetNext(record);
    ADD_FAILURE() << "no failure";
  } catch (const Failure& failure) {
    EXPECT_TRUE(failure.Is(ErrorNumber::DiskFull)) << failure.Number();
    EXPECT_STREQ(failure.what(), "no room");
  }
}

TEST_F(ServedComponentTest, DeletionMarksTheMailInItsMailbox) {
  UseServed();
  const std::string before = folder_.Read(kMailbox);
  const StandaloneLocationPtr location = Read(kInbox);
  const std::int32_t count = location->ItemCount();
  EXPECT_TRUE(RequireAs<Connector>(location->Connector())->DeleteItem(location->ItemAt(1)));
  EXPECT_EQ(location->ItemCount(), count - 1);
  EXPECT_TRUE(location->IsChanged());
  EXPECT_EQ(folder_.Read(kMailbox).size(), before.size());
  EXPECT_NE(folder_.Read(kMailbox), before);
}

TEST_F(ServedComponentTest, WhatIsBeyondTheContractIsTold) {
  UseServed();
  const auto mails = RequireAs<MailConnector>(Read(kInbox)->Connector());
  ASSERT_EQ(mails->MailFiles().Count(), 1);
  EXPECT_THAT(mails->MailFiles().Item(1), EndsWith("Inbox"));
  EXPECT_FALSE(mails->HasRestored());
  const auto bookmarks = RequireAs<BookmarkConnector>(Read("firefox://default/")->Connector());
  EXPECT_THAT(bookmarks->DatabaseFile(), EndsWith("places.sqlite"));
  EXPECT_EQ(bookmarks->DatabaseFile(), bookmarks->ProfileFolder() + "places.sqlite");
  EXPECT_THAT(RequireAs<CalendarConnector>(Read("sunbird://default/")->Connector())->DatabaseFile(),
              EndsWith("storage.sdb"));
}

TEST_F(ServedComponentTest, UnknownClassIsNothing) {
  EXPECT_EQ(component_.Create("VorlentMozilla.Nothing"), nullptr);
}

}  // namespace
}  // namespace vorlent::com
