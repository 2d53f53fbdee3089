// Any bytes as the preferences of a profile, and as the list of profiles: up to a line "=" the input is
// profiles.ini, behind it prefs.js.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/LocationRecord.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Fuzz.h"
#include "Standalone/MemoryFolder.h"
#include "Support/RecordingPlatform.h"

namespace vorlent::fuzz {
namespace {

constexpr std::string_view kApplication = "Thunderbird";
constexpr std::string_view kProfilesEnd = "\n=\n";

// Each look-up by name reads the preferences anew.
constexpr int kLookUps = 3;

// An application-data folder that the component finds, with the one profile folder "p".
class ApplicationData {
 public:
  ApplicationData() {
    platform_->SetAppData(folder_.Path());
    folder_.MakeFolder("Thunderbird/p");
  }

  void Write(std::string_view profiles, std::string_view prefs) const {
    folder_.Write("Thunderbird/profiles.ini", profiles);
    folder_.Write("Thunderbird/p/prefs.js", prefs);
  }

  std::string Profile() const { return folder_.Path("Thunderbird\\p"); }
  bool Holds(std::string_view profiles, std::string_view prefs) const {
    return folder_.Read("Thunderbird/profiles.ini") == profiles &&
           folder_.Read("Thunderbird/p/prefs.js") == prefs;
  }

 private:
  MemoryFolder folder_;
  ScopedRecordingPlatform platform_;
};

// A preference that occurs twice raises.
constexpr std::initializer_list<ErrorNumber> kPrefFailures = {ErrorNumber::KeyExists};

void CheckPrefs(std::string_view prefs) {
  Require(PrefNames().Count() >= PrefValues().Count());
  for (const std::string& name : PrefNames())
    Require(prefs.find("user_pref(\"" + name) != std::string_view::npos);
  for (std::int32_t pos = 1; pos <= PrefValues().Count(); ++pos)
    Require(GetPref(PrefValues().Key(pos)) == PrefValues().Item(pos));
}

// Whoever is listed is found by name, in the order of the list.
void Accounts(const std::string& profile, std::string_view prefs) {
  KeyedList<std::string> listed;
  MayFail(kPrefFailures, [&] { listed = GetAccounts("x://", "*", profile); });
  CheckPrefs(prefs);
  KeyedList<std::string> names;
  for (const std::string& entry : listed) {
    if (names.Count() == kLookUps) return;
    // An entry is lines, so a name or folder of several spoils it.
    if (std::count(entry.begin(), entry.end(), '\n') != 2 || entry.find('\r') != std::string::npos) return;
    const DiscoveryEntry account = SplitDiscoveryEntry(entry);
    Require(account.location == "x://" + account.text + "/*");
    // What holds "://" is closed as an address is.
    const bool isAddress = account.path.find("://") != std::string::npos;
    Require(account.path.empty() || account.path.ends_with(isAddress ? '/' : '\\'));
    if (account.text == "*" || names.HasKey(account.text)) continue;
    Swallow([&] { names.Add(account.text, account.text); });
    const KeyedList<std::string> found = GetAccounts("", account.text, profile);
    // Names that differ in case only share a key of `names`, so that only the first of them comes here.
    Require(found.Count() == 1 && found.Item(1) == account.path);
  }
}

void Profiles() {
  KeyedList<std::string> listed;
  if (!Swallow([&] { listed = GetMozillaProfiles("x://", "*", kApplication); })) return;
  Require(listed.Count() >= 1);
  Require(SplitDiscoveryEntry(listed.Item(listed.Count())).location == "x://./*");
  for (std::int32_t pos = 1; pos < std::min(listed.Count(), kLookUps); ++pos) {
    const std::string& entry = listed.Item(pos);
    Require(entry.starts_with("Profil '"));
    const std::string name = NameOfDiscoveryEntry("\n" + SplitDiscoveryEntry(entry).location.substr(4));
    if (std::count(entry.begin(), entry.end(), '\n') != 2 || entry.find("/*\n") == std::string::npos)
      continue;
    if (name == "*" || entry.substr(8, name.size() + 1) != name + "'") continue;
    Require(GetMozillaProfiles("", name, kApplication).Count() == 1);
  }
}

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vorlent;
  static const fuzz::ApplicationData applicationData;
  const std::string_view input = fuzz::Text(data, size);
  const std::size_t end = std::min(input.find(fuzz::kProfilesEnd), input.size());
  const std::string_view profiles = input.substr(0, end);
  const std::string_view prefs = input.substr(std::min(end + fuzz::kProfilesEnd.size(), size));
  // Other folders of the machine are no part of the input.
  if (profiles.find("..") != std::string_view::npos || profiles.find(':') != std::string_view::npos) return 0;
  applicationData.Write(profiles, prefs);
  fuzz::UnderBothRules([&] {
    fuzz::Accounts(applicationData.Profile(), prefs);
    fuzz::Profiles();
    Swallow([] { GetKeywordsOfFile("C:\\mail\\a\\Inbox.sbd\\Sub"); });
  });
  fuzz::Require(applicationData.Holds(profiles, prefs));
  return 0;
}
