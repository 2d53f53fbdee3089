// Objects that come and go leave nothing behind.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "Component/Com/HostedTest.h"
#include "Host/Com/LateBound.h"

// After what defines the system's types.
#include <psapi.h>

namespace vorlent::com {
namespace {

// How often each class is made, used and let go of: the usual run is a short one.
int Rounds() {
  constexpr int kUsual = 1000;
  const char* const given = std::getenv("VORLENT_ROUNDS");
  return given == nullptr ? kUsual : std::atoi(given);
}

// What the process has of its own.
SIZE_T OwnMemory() {
  PROCESS_MEMORY_COUNTERS counters = {};
  K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters));
  return counters.PagefileUsage;
}

class LifetimeTest : public HostedTest {
 protected:
  // With its Location and an item, which refer to each other.
  void UseConnector(REFCLSID id) {
    LateBound connector(New(id).Get());
    const ComPtr<ScriptedObject> location = host_->NewLocation("none://");
    connector.Put(L"LocObject", Value(static_cast<IDispatch*>(location.Get())));
    connector.Call(L"InitLocation", Value("none://"));
    connector.Call(L"PasteItem", Value("ID=x|Type=mail|Text=t"), Value(false));
    EXPECT_TRUE(ToTruth(connector.Call(L"HasID", Value("X"))));
  }

  void UseAll() {
    host_->calls.clear();
    UseConnector(__uuidof(::Location_Thunderbird));
    UseConnector(__uuidof(::Location_FireFox));
    UseConnector(__uuidof(::Location_Sunbird));
    LateBound actions(New(__uuidof(::Actions)).Get());
    EXPECT_EQ(ToNumber(LateBound(ToObject(actions.Call(L"GetActions")).Get()).Call(L"Count")), 1);
    LateBound wizard(New(__uuidof(::WizardImport)).Get());
    EXPECT_TRUE(ToTruth(wizard.Call(L"Finish")));
    LateBound mail(New(__uuidof(::StdMail)).Get());
    mail.Call(L"AddHeader", Value("Subject: x"));
    EXPECT_EQ(ToText(LateBound(ToObject(mail.Call(L"Headers")).Get()).Call(L"Item", Value("subject"))),
              "Subject: x");
  }
};

TEST_F(LifetimeTest, MemoryStaysFlatHoweverOftenEachClassIsUsed) {
  constexpr int kWarmUp = 200;
  constexpr SIZE_T kTolerance = 1'000'000;
  for (int i = 0; i < kWarmUp; ++i)
    UseAll();
  const SIZE_T before = OwnMemory();
  ASSERT_GT(before, 0U);
  for (int i = 0; i < Rounds(); ++i)
    UseAll();
  EXPECT_LT(OwnMemory(), before + kTolerance);
  EXPECT_EQ(server_.CanUnloadNow(), S_OK);
}

}  // namespace
}  // namespace vorlent::com
