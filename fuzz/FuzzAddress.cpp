// Addresses as a user may type them, walked over a small tree of profiles and drives.

#include <memory>
#include <string>
#include <string_view>

#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Fuzz.h"
#include "Platform/Settings.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/TemporaryFolder.h"

namespace vorlent::fuzz {
namespace {

constexpr std::string_view kScheme = "thunderbird://";

// A tree made once, which is drive C to the component.
class Profiles {
 public:
  Profiles() {
    os::SetDrive('C', folder_.Native().string());
    platform_->SetAppData("C:\\AppData");
    folder_.Write("AppData/Thunderbird/profiles.ini",
                  "[General]\r\nx=1\r\n[Profile0]\r\nName=p\r\nPath=Profiles/"
                  "p\r\n[Profile1]\r\nName=q\r\nPath=C:\\q\r\n");
    folder_.Write("AppData/Thunderbird/Profiles/p/prefs.js",
                  "user_pref(\"mail.account.account1.server\", \"server1\");\r\n"
                  "user_pref(\"mail.account.account2.server\", \"server2\");\r\n"
                  "user_pref(\"mail.accountmanager.accounts\", \"account1,account2,none\");\r\n"
                  "user_pref(\"mail.server.server1.directory\", \"C:\\\\mail\\\\a\");\r\n"
                  "user_pref(\"mail.server.server1.name\", \"a\");\r\n"
                  "user_pref(\"mail.server.server2.directory\", \"C:\\\\nowhere\");\r\n"
                  "user_pref(\"mail.server.server2.name\", \"b b\");\r\n");
    for (const std::string name : {"Inbox", "Inbox.sbd/Sub", "Inbox.sbd/Sub.sbd/Deep", "Sent"}) {
      folder_.Write("mail/a/" + name, "From - x\r\nSubject: y\r\n\r\nz\r\n");
      folder_.Write("mail/a/" + name + ".msf", "");
    }
    folder_.Write("mail/a/Raw", "no mail");
    folder_.MakeFolder("mail/a/Empty.sbd");
    folder_.MakeFolder("Temp");
  }

 private:
  TemporaryFolder folder_;
  ScopedRecordingPlatform platform_;
};

void Walk(const std::string& address) {
  test::RecordingHost host;
  host.Global.TemporaryPath = "C:\\Temp\\";
  const auto connector = std::make_shared<Location_Thunderbird>();
  connector->SetLocObject(host.MakeLocation(address));
  Swallow([&] { Require(connector->InitLocation(address)); });
  Require(connector->Count() == 0);
  LocationState state = LocationState::Read;
  const bool ended = Swallow([&] { state = connector->Einlesen(); });
  if (ended && !address.starts_with(kScheme)) Require(state == LocationState::Unreadable);
  const bool browsed = address.ends_with("/*");
  for (std::int32_t i = 1; i <= connector->Count(); ++i) {
    Require(connector->Item(i)->Type() == (browsed ? "location" : "mail"));
  }
}

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const vorlent::fuzz::Profiles profiles;
  const std::string_view address = vorlent::fuzz::Text(data, size);
  // A walk that climbs out of the tree goes through the whole disk.
  if (address.find("..") != std::string_view::npos) return 0;
  vorlent::fuzz::UnderBothRules([&] {
    vorlent::fuzz::Walk(std::string(address));
    // Most inputs lack the scheme, and end before anything is looked up.
    vorlent::fuzz::Walk(std::string(vorlent::fuzz::kScheme).append(address));
  });
  return 0;
}
