#include "Connectors/Mozilla/Location_FireFox.h"

#include "Common/StdIni.h"
#include "Common/StdModul.h"
#include "Common/StdRegistry.h"
#include "Common/Width.h"
#include "Platform/CodePage.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

void ShowConnectFailure(const std::string& detail) {
  Platform::Current().ShowMessage("Cannot connect FireFox Bookmarks (please close FireFox)" + detail,
                                  "FireFox", MessageIcon::Critical, MessageButtons::Ok);
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

LocationState Location_FireFox::Einlesen() {
  ClearCollection(ItemStore());
  Tree()->Clear();
  const std::string address = HostLocation().Name();
  if (!address.starts_with(kScheme)) {
    frame::ReportUnreadable("ungültige Location!"_cp);
    return LocationState::Unreadable;
  }
  lastAddress_ = address;
  std::string rest = address.substr(kScheme.size());
  if (rest.ends_with("/-")) rest.pop_back();
  return address.ends_with("/*") ? ListAddress(std::string(kScheme), rest) : ReadAddress(rest);
}

LocationState Location_FireFox::ReadAddress(std::string rest) {
  std::string profile = CutToken(rest, "/");
  if (profile.empty()) {
    const KeyedList<std::string> profiles = GetProfiles("*");
    if (profiles.IsEmpty()) return LocationState::Read;
    profile = ProfileOfEntry(profiles.Item(1));
    rest.clear();
  }
  return ReadBookmarks(profile, rest, Tree()) ? LocationState::Read : LocationState::Unreadable;
}

LocationState Location_FireFox::ListAddress(std::string prefix, std::string rest) {
  std::string profileFolder;
  for (int depth = 1; !rest.empty(); ++depth) {
    const std::string token = CutToken(rest, "/");
    const KeyedList<std::string> list =
        depth == 1 ? GetProfiles(token) : GetSubFolders(prefix, token, profileFolder);
    if (token == "*") {
      PasteLocations(list);
    } else if (list.Count() == 1) {
      prefix += token + "/";
      if (depth == 1) profileFolder = list.Item(1);
    } else {
      frame::ShowUnreadable(prefix + token + " nicht gefunden!");
      return LocationState::Unreadable;
    }
  }
  return LocationState::Read;
}

void Location_FireFox::PasteLocations(const KeyedList<std::string>& entries) {
  for (std::int32_t pos = 1; pos <= entries.Count(); ++pos) {
    std::string entry = entries.Item(ToInt16(pos));
    const std::string text = CutLine(entry);
    const std::string address = CutLine(entry);
    PasteItem("ID=" + NewGuidText() + "|Type=location|Text=" + EscapeValue(text) +
                  "|DataLocation=" + EscapeValue(address) + "*",
              false);
  }
}

KeyedList<std::string> Location_FireFox::GetProfiles(std::string_view name) {
  const std::string baseFolder = AddPathSep(AppDataFolder()) + "Mozilla\\FireFox\\";
  StdIni ini;
  ini.Load(baseFolder + "profiles.ini");
  KeyedList<std::string> profiles;
  // The first section is taken for the general one, whatever it is.
  for (std::int32_t pos = 2; pos <= ini.Count(); ++pos) {
    const std::string section = ini.GetSection(pos);
    const std::string profile = ini.GetString(section, "Name");
    if (name == "*") {
      profiles.Add("Profil '" + profile + "'\n" + std::string(kScheme) + profile + "/");
    } else if (name == profile) {
      std::string path = ini.GetString(section, "path");
      ReplaceText(path, "/", "\\");
      profiles.Add(AddPath(baseFolder, path));
      return profiles;
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
    frame::ShowUnreadable("Profil '" + std::string(profile) + "' nicht gefunden!");
    return false;
  }
  profileFolder_ = AddPathSep(folders.Item(1));
  lastAddress_.clear();
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
  } else if (!walk()) {
    ShowConnectFailure("\n\n" + database_->LastError());
  }
}

}  // namespace vorlent
