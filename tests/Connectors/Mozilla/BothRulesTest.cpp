// What both sets of rules can read they read alike.

#include <filesystem>
#include <map>
#include <regex>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/FireFoxFixture.h"
#include "Connectors/Mozilla/PageMails.h"
#include "Connectors/Mozilla/SunbirdTest.h"
#include "Connectors/Mozilla/ThunderbirdFixture.h"
#include "Platform/CodePage.h"
#include "Support/ScopedRules.h"
#include "Support/ScopedTimeZone.h"

namespace vorlent {
namespace {

constexpr std::uint32_t kHomes = 5;

// What was read, as texts in UTF-8. What comes new with every reading shows as {}.
class Finds {
 public:
  void Add(std::string_view text) {
    static const std::regex kGuid(R"(\{[0-9A-F-]{36}\}|[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12})");
    texts_.push_back(std::regex_replace(TextToUtf8(text), kGuid, "{}"));
  }
  void AddBytes(const std::string& bytes) { texts_.push_back(bytes); }

  // All items of a connector with all that they hold, and the tree.
  template <class Connector>
  void AddItems(Connector& connector) {
    for (std::int32_t i = 1; i <= connector.Count(); ++i) {
      const auto& item = dynamic_cast<const test::RecordingItem&>(*connector.Item(i));
      Add(item.IdText + " " + item.TypeText + " " + item.DisplayText + " " + item.DateText + " " +
          item.Keywords + " " + item.Record);
      for (const auto& [key, value] : item.Data)
        Add(key + "=" + value);
    }
    Add(dynamic_cast<const test::RecordingTree&>(*connector.Tree()).Dump());
  }

  // All files below a folder.
  void AddFiles(const std::filesystem::path& folder) {
    std::map<std::string, std::string> files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) files[entry.path().string()] = ReadBytes(entry.path().string());
    }
    for (const auto& [name, bytes] : files)
      AddBytes(name + ": " + bytes);
  }

  std::size_t Count() const { return texts_.size(); }

  // Where others differ first; empty if they are the same.
  std::string DifferenceTo(const Finds& others) const {
    for (std::size_t i = 0; i < std::max(texts_.size(), others.texts_.size()); ++i) {
      const std::string mine = i < texts_.size() ? texts_[i] : "nothing";
      const std::string other = i < others.texts_.size() ? others.texts_[i] : "nothing";
      if (mine != other) return mine + "\nand by the other rules\n" + other;
    }
    return {};
  }

 private:
  std::vector<std::string> texts_;
};

// --- Mails

// Those of today but for what is meant to differ in any mailbox: the line end before a boundary, the last
// line, which no mail brought out by the others has, and the name of an attachment as it was sent.
Rules TodaysRulesOfReading() {
  Rules rules = Rules::Today();
  rules.partLineEnds = PartLineEnds::CrLf;
  rules.readAhead = ReadAhead::Loses;
  rules.attachmentHeaders = AttachmentHeaders::Plain;
  rules.disksProfile = DisksProfile::Everywhere;
  return rules;
}

class BothRules : public ThunderbirdFixture {
 protected:
  // All mails are sent in the system's zone, so that the reader's clock is the sender's.
  const ScopedTimeZone zone{"UTC"};

  // All records of the address with what each of the mails' files holds.
  Finds Streamed(const Rules& rules, const std::string& address) {
    const ScopedRules scope(rules);
    Connect(TextFromUtf8(address));
    connector->InitLocation(TextFromUtf8(address));
    Finds finds;
    connector->SourceInit(nullptr, true);
    for (std::string record; connector->SourceGetNext(record);) {
      finds.Add(record);
      for (const char* key : {"DataFile", "DataFileHTML", "DataFileAttach1", "DataFileAttach2"}) {
        std::string description = GetParam(record, key);
        if (const std::string path = CutLine(description); !path.empty()) finds.AddBytes(ReadBytes(path));
      }
    }
    return finds;
  }

  // All items of the address with each of their files, brought out.
  Finds Listed(const Rules& rules, const std::string& address) {
    const ScopedRules scope(rules);
    Finds finds;
    finds.Add(std::to_string(static_cast<int>(Read(TextFromUtf8(address)))));
    finds.AddItems(*connector);
    for (std::int32_t i = 1; i <= connector->Count(); ++i)
      BringOut(connector->Item(i), finds);
    return finds;
  }

  void BringOut(const ItemPtr& item, Finds& finds) {
    for (std::int32_t i = 1; i <= item->DataCount(); ++i) {
      const std::string key = item->DataKey(i);
      if (!key.starts_with("File")) continue;
      finds.AddBytes(ReadBytes(connector->GetFile(item, key, 0)));
      ++broughtOut_;
    }
  }

  // The home after every third mail of the address was deleted. It stays as it was.
  Finds Deleted(const Rules& rules, const ThunderbirdTree& home) {
    const TemporaryFolder copy;
    const std::filesystem::path place = home.Folder().Native("Thunderbird");
    std::filesystem::copy(place, copy.Native("kept"), std::filesystem::copy_options::recursive);
    Finds finds;
    {
      const ScopedRules scope(rules);
      Read("thunderbird://");
      std::vector<ItemPtr> doomed;
      for (std::int32_t i = 1; i <= connector->Count(); i += 3)
        doomed.push_back(connector->Item(i));
      for (const ItemPtr& item : doomed)
        finds.Add(connector->DeleteItem(item) ? "deleted" : "kept");
      finds.AddFiles(place);
    }
    std::filesystem::remove_all(place);
    std::filesystem::copy(copy.Native("kept"), place, std::filesystem::copy_options::recursive);
    return finds;
  }

  std::size_t broughtOut_ = 0;
};

// Profiles of accounts of folders in folders, drawn by chance.
class PageHome {
 public:
  explicit PageHome(std::uint32_t seed) : mails_(seed) {
    for (std::size_t i = 0, profiles = 1 + mails_.Draw(2); i < profiles; ++i)
      AddProfile("p" + std::to_string(i));
  }

  const ThunderbirdTree& Tree() const { return tree_; }
  const std::vector<std::string>& Addresses() const { return addresses_; }

 private:
  void AddProfile(const std::string& profile) {
    std::vector<std::string> accounts;
    for (std::size_t i = 0, count = 1 + mails_.Draw(2); i < count; ++i)
      accounts.push_back("a " + std::to_string(i) + "@x.de");
    tree_.AddProfile(profile, accounts);
    AddAddresses("thunderbird://" + profile);
    for (const std::string& account : accounts) {
      AddAddresses("thunderbird://" + profile + "/" + account);
      AddFolders(profile, account, "", "", 0);
    }
  }

  // `beside` is where the files lie, `above` the folders as an address names them.
  void AddFolders(const std::string& profile, const std::string& account, const std::string& beside,
                  const std::string& above, int depth) {
    for (std::size_t count = 1 + mails_.Draw(2); count > 0; --count) {
      const std::string name = codepage::ToUtf8(mails_.Name());
      tree_.AddMailbox(profile, account, beside + name, mails_.Draw(6) == 0 ? "" : mails_.Mailbox());
      AddAddresses("thunderbird://" + profile + "/" + account + "/" + above + name);
      if (depth < 2 && mails_.Draw(2) == 0)
        AddFolders(profile, account, beside + name + ".sbd/", above + name + "/", depth + 1);
    }
  }

  void AddAddresses(const std::string& address) {
    for (const char* end : {"", "/*", "/-"})
      addresses_.push_back(address + end);
  }

  PageMails mails_;
  ThunderbirdTree tree_;
  std::vector<std::string> addresses_ = {"thunderbird://", "thunderbird://*"};
};

TEST_F(BothRules, ReadMailsOfTheCodePageAlike) {
  std::size_t files = 0;
  for (std::uint32_t seed = 0; seed < 20; ++seed) {
    const std::string box = "Entwürfe" + std::to_string(seed % 3);
    PageMails mails(seed);
    if (seed == 0) tree.AddProfile("p", {"a"});
    tree.AddMailbox("p", "a", box, mails.Mailbox());
    tree.AddMailbox("p", "a", box + ".sbd/Größe", mails.Mailbox());
    const Finds windows = Streamed(Rules::Windows(), "thunderbird://p/a/" + box);
    ASSERT_EQ(windows.DifferenceTo(Streamed(TodaysRulesOfReading(), "thunderbird://p/a/" + box)), "") << seed;
    files += windows.Count();
  }
  EXPECT_GE(files, 20U * 12 * 2);  // two mailboxes of six mails, each with its record and its file
}

TEST_F(BothRules, ReadWholeHomesAlike) {
  for (std::uint32_t seed = 0; seed < kHomes; ++seed) {
    const PageHome home(seed);
    platform->SetAppData(home.Tree().Path());
    for (const std::string& address : home.Addresses())
      ASSERT_EQ(Listed(Rules::Windows(), address).DifferenceTo(Listed(TodaysRulesOfReading(), address)), "")
          << seed << " " << address;
    ASSERT_EQ(Streamed(Rules::Windows(), "thunderbird://")
                  .DifferenceTo(Streamed(TodaysRulesOfReading(), "thunderbird://")),
              "")
        << seed;
  }
  EXPECT_GE(broughtOut_, kHomes * 2 * 12);  // by each of the rules, not counting what several addresses find
}

TEST_F(BothRules, DeleteMailsAlike) {
  for (std::uint32_t seed = 0; seed < kHomes; ++seed) {
    const PageHome home(seed);
    platform->SetAppData(home.Tree().Path());
    ASSERT_EQ(Deleted(Rules::Windows(), home.Tree()).DifferenceTo(Deleted(Rules::Today(), home.Tree())), "")
        << seed;
  }
}

// --- Bookmarks

class BothRulesOfBookmarks : public test::FireFoxTest {
 protected:
  // Folders in a folder, and bookmarks after them.
  void AddBookmarks(PageTexts& texts, std::int64_t folder, int depth) {
    for (std::size_t count = texts.Draw(4); depth < 3 && count > 0; --count)
      AddBookmarks(texts, Places().AddFolder(folder, texts.Utf8(20)), depth + 1);
    for (std::size_t count = texts.Draw(5); count > 0; --count) {
      Places().AddBookmark(folder, texts.Draw(6) == 0 ? "" : texts.Utf8(40), AddressOf(texts),
                           static_cast<std::int64_t>(texts.Draw(2'000'000'000)) * 1'000'000,
                           static_cast<std::int64_t>(texts.Draw(2'000'000'000)) * 1'000'000);
      if (texts.Draw(5) == 0) Places().AddRow(3, folder, std::nullopt);
    }
  }

  static std::string AddressOf(PageTexts& texts) {
    return "https://example.org/" + std::to_string(texts.Draw(20)) + "?a=1&b=2";
  }

  Finds Listed(const Rules& rules, const std::string& address) {
    const ScopedRules scope(rules);
    Finds finds;
    const auto connector = Open(TextFromUtf8(address));
    finds.Add(std::to_string(static_cast<int>(state_)));
    finds.AddItems(*connector);
    return finds;
  }

  std::string Exported(const Rules& rules) {
    const ScopedRules scope(rules);
    Open("firefox://x")->Save();
    return test::WithoutGuids(folder_.Read(ProfileFolder() + "\\bookmarks.html"));
  }
};

TEST_F(BothRulesOfBookmarks, AreReadAlike) {
  for (std::uint32_t seed = 0; seed < kHomes; ++seed) {
    places_.reset();
    std::filesystem::remove_all(folder_.Native("Mozilla"));
    PageTexts texts(seed);
    AddBookmarks(texts, 1, 0);
    Places().AddBookmark(Places().AddFolder(1, "Menü"), "Grüße", "http://a/");
    for (const std::string address :
         {"firefox://", "firefox://x", "firefox://x/", "firefox://x/Menü", "firefox://*", "firefox://x/*"})
      ASSERT_EQ(Listed(Rules::Windows(), address).DifferenceTo(Listed(Rules::Today(), address)), "")
          << seed << " " << address;
  }
}

// As far as both write the same: letters that have one code in the page and in Unicode, no markup, folders of
// different names without commas in front, all with a title.
TEST_F(BothRulesOfBookmarks, AreExportedAlike) {
  for (std::uint32_t seed = 0; seed < kHomes; ++seed) {
    places_.reset();
    std::filesystem::remove_all(folder_.Native("Mozilla"));
    PageTexts texts(seed);
    for (int i = 0; i < 3; ++i) {
      const std::int64_t folder = Places().AddFolder(1, codepage::ToUtf8(texts.Name()));
      const std::int64_t inner = Places().AddFolder(folder, codepage::ToUtf8(texts.Name()));
      for (std::size_t count = texts.Draw(5); count > 0; --count)
        Places().AddBookmark(texts.Draw(2) == 0 ? inner : folder, codepage::ToUtf8(texts.Name()),
                             "http://a/");
    }
    ASSERT_EQ(Exported(Rules::Today()), Exported(Rules::Windows())) << seed;
  }
}

// --- Calendars

class BothRulesOfCalendars : public SunbirdTest {
 protected:
  // Events and tasks of two calendars in UTC. Texts of a calendar are taken as the database has them, so that
  // only ASCII is the same in the page and in UTF-8.
  void WriteCalendars(PageTexts& texts) const {
    WriteHome();
    StorageFile storage = Storage();
    const std::string other = texts.Ascii(10);
    storage.Run("INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (3, 'name', '" + other +
                "')");
    for (std::size_t i = 0; i < 12; ++i) {
      const std::string id = "id-" + std::to_string(i);
      const std::string calendar = std::to_string(2 + texts.Draw(2));
      const std::size_t start = texts.Draw(2'000'000'000);
      const std::string stamps = ", " + Moment(texts.Draw(2'000'000'000)) + ", " +
                                 Moment(texts.Draw(2'000'000'000)) + ", '" + texts.Ascii(30) + "', 4";
      storage.Run(texts.Draw(3) == 0
                      ? "INSERT INTO cal_todos VALUES (" + calendar + ", '" + id + "'" + stamps + ")"
                      : "INSERT INTO cal_events VALUES (" + calendar + ", '" + id + "'" + stamps + ", " +
                            Moment(start) + ", " + Moment(start + texts.Draw(90'000)) + ", 'UTC', 'UTC')");
      if (texts.Draw(2) == 0)
        storage.Run("INSERT INTO cal_properties VALUES ('" + id + "', 'LOCATION', '" + texts.Ascii(20) +
                    "')");
    }
  }

  static std::string Moment(std::size_t seconds) { return std::to_string(seconds) + "000000"; }

  Finds Listed(const Rules& rules, const std::string& address) {
    const ScopedRules scope(rules);
    Finds finds;
    finds.Add(std::to_string(static_cast<int>(Read(address))));
    finds.AddItems(*connector_);
    return finds;
  }

  // All rows after an item was added, changed and removed. The file stays as it was.
  Finds Written(const Rules& rules) {
    const std::string file = ProfileFolder("Mozilla\\Sunbird", "p") + "\\storage.sdb";
    const std::string before = folder_.Read(file);
    Finds finds;
    {
      const ScopedRules scope(rules);
      Read("sunbird://p/Home");
      connector_->PasteItem(
          "ID=new|Type=termin|Text=Lunch, 5 EUR|Date=09.05.2010 14:30|"
          "DataDateEnd=09.05.2010 15:30|DataLocation=Room 5",
          true);
      if (connector_->Count() > 1) connector_->DeleteItem(connector_->Item(1));
      for (const char* table : {"cal_events", "cal_todos", "cal_properties"}) {
        for (const std::string& row : Storage().Rows(std::string("SELECT * FROM ") + table))
          finds.AddBytes(row);
      }
    }
    folder_.Write(file, before);
    return finds;
  }
};

TEST_F(BothRulesOfCalendars, AreReadAndWrittenAlike) {
  for (std::uint32_t seed = 0; seed < kHomes; ++seed) {
    std::filesystem::remove_all(folder_.Native("Mozilla"));
    PageTexts texts(seed);
    WriteCalendars(texts);
    for (const std::string address :
         {"sunbird://", "sunbird://p", "sunbird://p/Home", "sunbird://p/*", "sunbird://p/Home/*"})
      ASSERT_EQ(Listed(Rules::Windows(), address).DifferenceTo(Listed(Rules::Today(), address)), "")
          << seed << " " << address;
    ASSERT_EQ(Written(Rules::Windows()).DifferenceTo(Written(Rules::Today())), "") << seed;
  }
}

}  // namespace
}  // namespace vorlent
