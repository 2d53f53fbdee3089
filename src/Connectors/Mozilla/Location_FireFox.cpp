#include "Connectors/Mozilla/Location_FireFox.h"

#include <optional>

#include "Common/DatabaseSnapshot.h"
#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/BrokenItems.h"
#include "Connectors/Mozilla/Profiles.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Platform.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

void ShowConnectFailure(const std::string& detail) {
  Platform::Current().ShowMessage("Cannot connect FireFox Bookmarks (please close FireFox)" + detail,
                                  "FireFox", MessageIcon::Critical, MessageButtons::Ok);
}

// A copy is never read without a word.
void RemarkSnapshot(const qzelSQLite& database) {
  const std::optional<DateTime> moment = database.SnapshotMoment();
  if (!moment) return;
  frame::Remark(SnapshotRemark(database.file, *moment));
}

// Closes a connection, also when a failure rises out of its walk.
class ConnectionEnd {
 public:
  explicit ConnectionEnd(qzelSQLite& database) : database_(database) {}
  ~ConnectionEnd() { database_.closeFile(); }
  ConnectionEnd(const ConnectionEnd&) = delete;
  ConnectionEnd& operator=(const ConnectionEnd&) = delete;

 private:
  qzelSQLite& database_;
};

// The name in an entry of two lines, text and "firefox://<name>/".
std::string ProfileOfEntry(std::string entry) {
  CutLine(entry);
  CutToken(entry, "://");
  return CutToken(entry, "/");
}

}  // namespace

void Location_FireFox::Reload() {
  Einlesen();
  Save();
}

void Location_FireFox::Pasted(const ItemPtr& item, std::string_view import) {
  HostObjects::Current().Global().Report(report::kItemPasted, import, item);
}

bool Location_FireFox::Withdraw(const ItemPtr& item) {
  for (std::int32_t pos = 1; pos <= Count(); ++pos) {
    if (!ItemStore().Item(pos)->IsSame(*item)) continue;
    ItemStore().Remove(pos);
    return true;
  }
  return false;
}

std::shared_ptr<KeyedList<std::string>> Location_FireFox::GetSubKeywords(ExpressionPtr& expr) {
  HostEnumPtr enumeration;
  std::string keyword;
  std::shared_ptr<KeyedList<std::string>> keywords;
  Swallow([&] { enumeration = HostObjects::Current().NewEnum(); });
  Swallow([&] {
    LocationPtr location = LocObject();
    Require(enumeration).Init(location, expr);
    SetLocObject(location);
  });
  Swallow([&] { keyword = Require(expr).Text(); });
  Swallow([&] { keywords = Require(enumeration).SubKeywords(keyword); });
  return keywords;
}

std::string Location_FireFox::CutScheme(std::string& address) {
  return frame::CutScheme(address, kScheme);
}

bool Location_FireFox::ReadAddress(std::string path) {
  if (path.ends_with("/-")) path.pop_back();
  std::string profile = CutToken(path, "/");
  if (profile.empty()) {
    const KeyedList<std::string> profiles = GetProfiles("*");
    if (profiles.IsEmpty()) {
      if (BrokenItemsAreNamed()) TellNoProfile(kFireFoxScheme);
      return !BrokenItemsAreNamed();
    }
    profile = ProfileOfEntry(profiles.Item(1));
    path.clear();
  }
  return ReadBookmarks(profile, path, Tree());
}

KeyedList<std::string> Location_FireFox::Discover(const BrowsePoint& point, std::string_view segment) {
  return point.level == 1 ? GetProfiles(segment) : GetSubFolders(point.prefix, segment, point.profilePath);
}

// The entries are counted in 16 bits by the rules of old.
void Location_FireFox::PasteLocations(const KeyedList<std::string>& entries, std::int32_t) {
  for (std::int32_t pos = 1; pos <= entries.Count(); ++pos) {
    std::string entry = entries.Item(static_cast<std::int32_t>(Within16(pos)));
    const std::string text = CutLine(entry);
    const std::string address = CutLine(entry);
    std::string record;
    AppendField(record, record_key::kId, NewGuidText());
    AppendField(record, record_key::kType, "location");
    AppendField(record, record_key::kText, EscapeValue(text));
    AppendDataField(record, data_key::kLocation, EscapeValue(address) + "*");
    PasteItem(record, false);
  }
}

KeyedList<std::string> Location_FireFox::GetProfiles(std::string_view name) {
  KeyedList<std::string> profiles;
  for (const MozillaProfile& profile : ReadMozillaProfiles(kFireFoxScheme.appFolder)) {
    if (name == "*") {
      profiles.Add("Profil '" + profile.name + "'\n" + std::string(kScheme) + profile.segment + "/");
    } else if (name == profile.segment) {
      profiles.Add(profile.path);
      break;
    }
  }
  return profiles;
}

KeyedList<std::string> Location_FireFox::GetSubFolders(std::string_view address, std::string_view token,
                                                       std::string_view profileFolder) {
  std::string rest(address);
  std::string root = CutToken(rest, "://") + "://";
  root += CutToken(rest, "/") + "/";
  KeyedList<std::string> list;
  Connect(profileFolder, [&] { return CollectSubFolders(0, list, address, token, root, true); });
  return list;
}

bool Location_FireFox::ReadBookmarks(std::string_view profile, std::string_view path, const TreePtr& tree) {
  const KeyedList<std::string> folders = GetProfiles(profile);
  if (folders.IsEmpty()) {
    TellMissingProfile(profile);
    return false;
  }
  profileFolder_ = AddPathSep(folders.Item(1));
  lastAddress_.clear();
  outline_.Reset(tree, CurrentRules().bookmarkOrder == BookmarkOrder::OfBrowser);
  Connect(profileFolder_, [&] { return ReadFolder(0, "", 0, tree, path, true); });
  return true;
}

void Location_FireFox::Connect(std::string_view profileFolder, const std::function<bool()>& walk) {
  databaseFile_ = AddPathSep(profileFolder) + "places.sqlite";
  if (!FileExists(databaseFile_)) return;
  database_ = std::make_unique<qzelSQLite>();
  const ConnectionEnd end(*database_);
  database_->file = databaseFile_;
  if (!database_->openFile()) {
    ShowConnectFailure("");
    return;
  }
  RemarkSnapshot(*database_);
  if (walk()) return;
  if (BrokenItemsAreNamed()) {
    // It is there and open: no closing of the browser would help.
    frame::ReportUnreadable({databaseFile_, database_->LastError()});
  } else {
    ShowConnectFailure("\n\n" + database_->LastError());
  }
}

}  // namespace vorlent
