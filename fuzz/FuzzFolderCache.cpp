// Any bytes as the folderCache.json of a profile.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Connectors/Mozilla/FolderNames.h"
#include "Fuzz.h"
#include "Platform/Rules.h"
#include "Standalone/MemoryFolder.h"

namespace vorlent::fuzz {
namespace {

// The profile's folder is "p", as that of the paths in the seeds.
class Profile {
 public:
  Profile() { folder_.MakeFolder("p/Mail/Local Folders"); }

  std::string Shown(std::string_view cache, const std::string& mailbox) const {
    folder_.Write("p/folderCache.json", cache);
    FolderNames names;
    names.TurnTo(folder_.Path("p"));
    return names.Shown(folder_.Path("p\\Mail\\Local Folders\\"), mailbox);
  }

 private:
  MemoryFolder folder_;
};

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace vorlent;
  using namespace vorlent::fuzz;
  static const Profile profile;
  UnderBothRules([&] {
    const std::string shown = profile.Shown(Text(data, size), "Inbox");
    Require(!shown.empty());
    Require(std::none_of(shown.begin(), shown.end(), [](unsigned char c) { return c < ' '; }));
    Require(CurrentRules().folderNames == MailFolderNames::Shown || shown == "Inbox");
  });
  return 0;
}
