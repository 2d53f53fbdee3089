// A damaged archive: opened, listed, searched, its items read. The input tells the damage to the database of
// a small archive: a byte of which the first bit says that the archive wasn't closed, two bytes that say how
// many pages are left (0 for all), then places of three bytes, each with a count of one byte and as many
// bytes (1 to 8) to be written there.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "Common/StdModul.h"
#include "Fuzz.h"
#include "Standalone/Archive.h"
#include "Standalone/MemoryFolder.h"
#include "Support/SqliteFile.h"

namespace vorlent::fuzz {
namespace {

constexpr std::size_t kPage = 512;
constexpr std::size_t kLongestPatch = 8;
constexpr std::int32_t kMostItems = 50;

constexpr char kBeside[] = "beside.txt";
constexpr char kBesideBytes[] = "not the archive's\r\n";

// Bytes taken off the front of the input, 0 after its end.
class Input {
 public:
  explicit Input(std::string_view bytes) : bytes_(bytes) {}
  bool AtEnd() const { return bytes_.empty(); }
  std::size_t Number(int count) {
    std::size_t number = 0;
    for (; count > 0; --count)
      number = number * 256 + static_cast<unsigned char>(Byte());
    return number;
  }
  char Byte() {
    if (bytes_.empty()) return 0;
    const char byte = bytes_.front();
    bytes_.remove_prefix(1);
    return byte;
  }

 private:
  std::string_view bytes_;
};

class Damage {
 public:
  Damage() {
    Make();
    closed_ = WithSmallPages();
    SqliteFile(folder_.Native("a/archive.sqlite")).Run("UPDATE state SET value = 1 WHERE key = 'open'");
    open_ = folder_.Read("a/archive.sqlite");
    files_ = FilesOfArchive();
    folder_.Write(kBeside, kBesideBytes);
  }

  void Try(std::string_view bytes) {
    Input input(bytes);
    std::string database = input.Byte() % 2 == 0 ? closed_ : open_;
    if (const std::size_t pages = input.Number(2); pages > 0)
      database.resize(std::min(database.size(), pages * kPage));
    while (!input.AtEnd()) {
      const std::size_t at = input.Number(3) % database.size();
      const std::size_t count = input.Number(1) % kLongestPatch + 1;
      for (std::size_t i = at; i < std::min(at + count, database.size()); ++i)
        database[i] = input.Byte();
    }
    Restore(database);
    const std::int32_t count = Read();
    const std::int32_t again = Read();
    // What could be read once can be read again.
    Require(count < 0 || again == count);
    Require(folder_.Read(kBeside) == kBesideBytes);
    const std::filesystem::directory_iterator entries(folder_.Native());
    Require(std::distance(begin(entries), end(entries)) == 2);  // that file and the archive
  }

 private:
  std::filesystem::path FilesFolder() const { return folder_.Native("a/files/000000"); }
  std::map<std::string, std::string> FilesOfArchive() const { return FolderContent(FilesFolder()); }

  static void Take(const ItemPtr& item, const std::string& key, const std::string& path) {
    item->TakeFile(key, path, "move", "file=" + GetFileName(path));
  }

  // Three items, two of them with files, all in the index.
  void Make() {
    const auto archive = std::make_shared<Archive>(std::weak_ptr<StandaloneGlobal>());
    archive->Open(folder_.Path("a"));
    const std::string mail = folder_.Write("mail.eml", "From - \r\nSubject: Rechnung\r\n\r\nGuten Tag\r\n");
    const std::string bill = folder_.Write("Beleg.pdf", "%PDF");
    ItemPtr item = archive->PasteRecord(
        "ID=1@x|Type=mail|Text=Rechnung|Keywords=Account=a,Inbox|DataFrom=a@b.c|DataFile=" +
        EscapeValue(mail + "\nfile=mail.eml") + "|DataFileAttach1=" + EscapeValue(bill + "\nfile=Beleg.pdf") +
        "|Date=09.05.2010 14:30:05|Owner=user|Log=20100510080000");
    Take(item, "File", mail);
    Take(item, "FileAttach1", bill);
    item->SetConnected(true);
    const std::string event = folder_.Write("event.ics", "BEGIN:VEVENT");
    item = archive->PasteRecord("ID=2@x|Type=event|Text=Treffen|DataFile=" +
                                EscapeValue(event + "\nfile=event.ics"));
    Take(item, "File", event);
    item->SetConnected(true);
    archive->PasteRecord("ID=3@x|Type=url|Text=Seite|DataUrl=http://x.de/|Keywords=a,b")->SetConnected(true);
    Require(archive->Search("tag").size() == 1);
    archive->SetSetting("LastImport", "2010");
    archive->Close();
  }

  // The fewer bytes, the more of them mean something.
  std::string WithSmallPages() {
    SqliteFile(folder_.Native("a/archive.sqlite"))
        .Run("PRAGMA journal_mode = DELETE; PRAGMA page_size = 512; VACUUM");
    return folder_.Read("a/archive.sqlite");
  }

  // The archive with that database, its files as they were.
  void Restore(std::string_view database) {
    for (const std::string end : {"-wal", "-shm", "-journal"})
      std::filesystem::remove(folder_.Native("a/archive.sqlite" + end));
    folder_.Write("a/archive.sqlite", database);
    if (FilesOfArchive() == files_) return;
    std::filesystem::remove_all(FilesFolder());
    for (const auto& [name, bytes] : files_)
      folder_.Write("a/files/000000/" + name, bytes);
  }

  // How many items there are, -1 if something failed.
  std::int32_t Read() {
    const auto archive = std::make_shared<Archive>(std::weak_ptr<StandaloneGlobal>());
    std::int32_t count = -1;
    const bool isRead = Swallow([&] {
      archive->Open(folder_.Path("a"));
      ReadItems(*archive);
      count = archive->ItemCount();
    });
    Swallow([&] { archive->Search("rechnung"); });
    Swallow([&] { archive->Search("ta* inbox"); });
    const bool isClosed = Swallow([&] { archive->Close(); });
    Require(!archive->IsOpen());
    return isRead && isClosed ? count : -1;
  }

  static void ReadItems(Archive& archive) {
    for (std::int32_t pos = 1; pos <= std::min(archive.ItemCount(), kMostItems); ++pos) {
      const auto item = std::dynamic_pointer_cast<ArchiveItem>(archive.ItemAt(pos));
      if (item == nullptr) continue;
      // Where the damage put the numbers out of order, an item may not be found by its own.
      const std::int32_t found = archive.PositionOf(*item);
      Require(found >= 0 && found <= archive.ItemCount());
      Require(item->Type().size() + item->FullText().size() < 1'000'000);
      for (std::int32_t data = 1; data <= item->DataCount(); ++data)
        CheckFile(archive, *item, item->DataKey(data));
    }
    archive.FindItem("2@x");
    archive.IncompleteItems();
    archive.GetSetting("LastImport");
  }

  // A file that is given out as the archive's own lies in one of its folders. Any other path is what the
  // item's field says, which an item without that file may.
  static void CheckFile(const Archive& archive, const ArchiveItem& item, const std::string& key) {
    const std::string path = item.DataFile(key, 0);
    if (!path.starts_with(archive.FileLocation())) return;
    const std::string rest = path.substr(archive.FileLocation().size());
    Require(std::count(rest.begin(), rest.end(), '\\') + std::count(rest.begin(), rest.end(), '/') == 1);
  }

  MemoryFolder folder_;
  std::string closed_, open_;  // the database without damage
  std::map<std::string, std::string> files_;
};

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static vorlent::fuzz::Damage damage;
  vorlent::fuzz::UnderBothRules([&] { damage.Try(vorlent::fuzz::Text(data, size)); });
  return 0;
}
