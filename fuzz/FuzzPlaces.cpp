// Any bytes as the bookmark database of a profile: read, listed folder by folder, exported.

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "Connectors/Mozilla/Location_FireFox.h"
#include "Fuzz.h"
#include "Standalone/MemoryFolder.h"
#include "Standalone/StandaloneHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/SqliteFile.h"

namespace vorlent::fuzz {
namespace {

constexpr char kProfile[] = "Mozilla/FireFox/p";
constexpr char kDatabase[] = "places.sqlite";
constexpr char kExport[] = "bookmarks.html";

// One profile "p", and a host that reads it.
class Browser {
 public:
  Browser() : host_(std::make_shared<StandaloneHost>(observer_)) {
    platform_->SetAppData(folder_.Path());
    folder_.Write("Mozilla/FireFox/profiles.ini", "[General]\r\nx=1\r\n[Profile0]\r\nName=p\r\nPath=p\r\n");
    folder_.MakeFolder(kProfile);
    HostObjects::Install(host_);
  }
  ~Browser() { HostObjects::Install(nullptr); }
  Browser(const Browser&) = delete;
  Browser& operator=(const Browser&) = delete;

  void Read(std::string_view database) {
    platform_->calls.clear();
    folder_.Write(std::string(kProfile) + "/" + kDatabase, database);
    ReadAndExport(database);
    for (const std::string address : {"firefox://p/a/", "firefox://p/*", "firefox://p/a/*"})
      Swallow([&] { Open(address)->Close(); });
  }

 private:
  StandaloneLocationPtr Open(const std::string& address) {
    const StandaloneLocationPtr location = host_->MakeLocation();
    location->Open(address);
    location->Load();
    return location;
  }

  void ReadAndExport(std::string_view database) {
    StandaloneLocationPtr location;
    if (!Swallow([&] { location = Open("firefox://p/"); })) return;
    Require(location->State() == LocationState::Read);
    const auto connector = std::dynamic_pointer_cast<Location_FireFox>(location->Connector());
    if (!Swallow([&] { connector->Save(); })) return;
    std::map<std::string, std::string> files = FolderContent(folder_.Native(kProfile));
    Require(files.size() == 2 && files[kDatabase] == database);
    CheckExport(files[kExport], location->ItemCount());
    location->Close();
  }

  // Every bookmark stands in the file, and what was begun is ended.
  static void CheckExport(const std::string& file, std::int32_t items) {
    Require(file.starts_with("<!DOCTYPE NETSCAPE-Bookmark-file-1>\r\n"));
    Require(file.ends_with("</DL><p>\r\n"));
    Require(CountOf(file, "<DT><A HREF=\"") >= items);
    Require(CountOf(file, "</A>\r\n") >= items);
  }

  static std::int32_t CountOf(std::string_view text, std::string_view word) {
    std::int32_t count = 0;
    for (std::size_t at = text.find(word); at != std::string_view::npos; at = text.find(word, at + 1))
      ++count;
    return count;
  }

  MemoryFolder folder_;
  ScopedRecordingPlatform platform_;
  HostObserver observer_;
  std::shared_ptr<StandaloneHost> host_;
};

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static vorlent::fuzz::Browser browser;
  vorlent::fuzz::UnderBothRules([&] { browser.Read(vorlent::fuzz::Text(data, size)); });
  return 0;
}
