// The four entry points, and what they write into the registry.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "Component/Com/RegistryDump.h"
#include "Component/Com/ServerFile.h"
#include "VorlentMozilla.h"

namespace vorlent::com {
namespace {

using testing::Contains;
using testing::IsEmpty;

class ServerTest : public testing::Test {
 protected:
  Apartment apartment_;
  LoadedServer server_;
};

TEST_F(ServerTest, EveryClassIsFoundByItsProgIdOnceRegistered) {
  ASSERT_EQ(server_.Register(), S_OK);
  const struct {
    const wchar_t* progId;
    CLSID classId;
    IID interfaceId;
  } classes[] = {
      {L"VorlentMozilla.Location_Thunderbird", __uuidof(::Location_Thunderbird),
       __uuidof(_Location_Thunderbird)},
      {L"VorlentMozilla.Location_FireFox", __uuidof(::Location_FireFox), __uuidof(_Location_FireFox)},
      {L"VorlentMozilla.Location_Sunbird", __uuidof(::Location_Sunbird), __uuidof(_Location_Sunbird)},
      {L"VorlentMozilla.Actions", __uuidof(::Actions), __uuidof(_Actions)},
      {L"VorlentMozilla.StdMail", __uuidof(::StdMail), __uuidof(_StdMail)},
  };
  for (const auto& entry : classes) {
    CLSID found = {};
    EXPECT_EQ(CLSIDFromProgID(entry.progId, &found), S_OK) << TextOf(std::wstring_view(entry.progId));
    EXPECT_TRUE(IsEqualCLSID(found, entry.classId));
    ComPtr<IUnknown> made;
    EXPECT_EQ(CoCreateInstance(found, nullptr, CLSCTX_INPROC_SERVER, entry.interfaceId,
                               reinterpret_cast<void**>(made.GetAddressOf())),
              S_OK)
        << TextOf(std::wstring_view(entry.progId));
  }
  CLSID wizard = {};
  EXPECT_EQ(CLSIDFromProgID(L"VorlentMozilla.WizardImport", &wizard), S_OK);
  EXPECT_TRUE(IsEqualCLSID(wizard, __uuidof(::WizardImport)));
  EXPECT_EQ(server_.Unregister(), S_OK);
}

TEST_F(ServerTest, RegistrationTellsFileApartmentProgIdAndLibraryOfEachClass) {
  const auto before = RegistryDump::Of(HKEY_CLASSES_ROOT);
  ASSERT_EQ(server_.Register(), S_OK);
  const auto added = Added(before, RegistryDump::Of(HKEY_CLASSES_ROOT));
  ASSERT_EQ(server_.Unregister(), S_OK);
  const std::string key = "CLSID\\{BC461512-FE62-45CF-AC68-C8E4D37AEDC4}";
  EXPECT_THAT(added, Contains(key + "|=VorlentMozilla.StdMail"));
  EXPECT_THAT(added, Contains(key + "\\InprocServer32|=" + TextOf(ServerFile())));
  EXPECT_THAT(added, Contains(key + "\\InprocServer32|ThreadingModel=Apartment"));
  EXPECT_THAT(added, Contains(key + "\\ProgID|=VorlentMozilla.StdMail"));
  EXPECT_THAT(added, Contains(key + "\\TypeLib|={94BFF4C8-DD5C-4626-9004-C44E5E126A33}"));
  EXPECT_THAT(added, Contains("VorlentMozilla.StdMail\\CLSID|={BC461512-FE62-45CF-AC68-C8E4D37AEDC4}"));
  EXPECT_THAT(added, Contains(testing::StrCaseEq("TypeLib\\{94BFF4C8-DD5C-4626-9004-C44E5E126A33}\\1.0")));
}

TEST_F(ServerTest, OnlyTheWizardIsAControl) {
  const auto before = RegistryDump::Of(HKEY_CLASSES_ROOT);
  ASSERT_EQ(server_.Register(), S_OK);
  auto added = Added(before, RegistryDump::Of(HKEY_CLASSES_ROOT));
  ASSERT_EQ(server_.Unregister(), S_OK);
  std::erase_if(added, [](const std::string& line) {
    return !line.ends_with("\\Control") && line.find("\\MiscStatus") == std::string::npos;
  });
  const std::string key = "CLSID\\{1702A783-9B4D-433C-AFA6-C2AACAC2DDE7}";
  const std::vector<std::string> expected = {key + "\\Control", key + "\\MiscStatus", key + "\\MiscStatus\\1",
                                             key + "\\MiscStatus\\1|=131473", key + "\\MiscStatus|=0"};
  EXPECT_EQ(added, expected);
}

TEST_F(ServerTest, UnregisteringLeavesNothing) {
  const auto before = RegistryDump::Of(HKEY_CLASSES_ROOT);
  ASSERT_EQ(server_.Register(), S_OK);
  EXPECT_NE(RegistryDump::Of(HKEY_CLASSES_ROOT), before);
  ASSERT_EQ(server_.Unregister(), S_OK);
  const auto after = RegistryDump::Of(HKEY_CLASSES_ROOT);
  EXPECT_THAT(Added(before, after), IsEmpty());
  EXPECT_THAT(Added(after, before), IsEmpty());
}

TEST_F(ServerTest, UnregisteringTwiceIsNoFailure) {
  ASSERT_EQ(server_.Register(), S_OK);
  EXPECT_EQ(server_.Unregister(), S_OK);
  EXPECT_EQ(server_.Unregister(), S_OK);
}

TEST_F(ServerTest, ClassObjectOfAnUnknownClassIsRefused) {
  ComPtr<IClassFactory> factory;
  EXPECT_EQ(server_.GetClassObject(IID_IUnknown, IID_IClassFactory,
                                   reinterpret_cast<void**>(factory.GetAddressOf())),
            CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(server_.GetClassObject(__uuidof(::StdMail), IID_IClassFactory, nullptr), E_POINTER);
}

TEST_F(ServerTest, ClassObjectMakesNoPartOfAnotherObject) {
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(server_.GetClassObject(__uuidof(::StdMail), IID_IClassFactory,
                                   reinterpret_cast<void**>(factory.GetAddressOf())),
            S_OK);
  ComPtr<IUnknown> made;
  EXPECT_EQ(
      factory->CreateInstance(factory.Get(), IID_IUnknown, reinterpret_cast<void**>(made.GetAddressOf())),
      CLASS_E_NOAGGREGATION);
}

TEST_F(ServerTest, IsUnloadedOnceNothingIsHeld) {
  EXPECT_EQ(server_.CanUnloadNow(), S_OK);
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(server_.GetClassObject(__uuidof(::StdMail), IID_IClassFactory,
                                   reinterpret_cast<void**>(factory.GetAddressOf())),
            S_OK);
  EXPECT_EQ(server_.CanUnloadNow(), S_FALSE);
  ComPtr<_StdMail> mail;
  ASSERT_EQ(
      factory->CreateInstance(nullptr, __uuidof(_StdMail), reinterpret_cast<void**>(mail.GetAddressOf())),
      S_OK);
  factory.Reset();
  EXPECT_EQ(server_.CanUnloadNow(), S_FALSE);
  ComPtr<IDispatch> headers;
  ASSERT_EQ(mail->get_Headers(&headers), S_OK);
  mail.Reset();
  EXPECT_EQ(server_.CanUnloadNow(), S_FALSE) << "a collection is held";
  headers.Reset();
  EXPECT_EQ(server_.CanUnloadNow(), S_OK);
}

TEST_F(ServerTest, LockKeepsItLoaded) {
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(server_.GetClassObject(__uuidof(::StdMail), IID_IClassFactory,
                                   reinterpret_cast<void**>(factory.GetAddressOf())),
            S_OK);
  factory->LockServer(TRUE);
  IClassFactory* const raw = factory.Detach();
  raw->Release();
  EXPECT_EQ(server_.CanUnloadNow(), S_FALSE);
  ASSERT_EQ(server_.GetClassObject(__uuidof(::StdMail), IID_IClassFactory,
                                   reinterpret_cast<void**>(factory.GetAddressOf())),
            S_OK);
  factory->LockServer(FALSE);
  factory.Reset();
  EXPECT_EQ(server_.CanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace vorlent::com
