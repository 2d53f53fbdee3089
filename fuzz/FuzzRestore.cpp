// Stored mails and attachments of any kind, restored into a mailbox and read back. The first byte of the
// input tells what is asked for: bit 0 a link to the mail instead of all of it, bit 1 no mailbox there yet,
// bits 2 and 3 how many attachments. A name and a content follow for each, a line each; the rest is the mail.

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/ThunderbirdTree.h"
#include "Fuzz.h"
#include "Platform/CodePage.h"
#include "Platform/Rules.h"
#include "Standalone/MemoryFolder.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/SqliteFile.h"

namespace vorlent::fuzz {
namespace {

constexpr char kAddress[] = "thunderbird://p/a/Inbox/-";
constexpr char kMailInThere[] =
    "From - Sun May 09 14:30:05 2010\r\nX-Mozilla-Status: 0001\r\nSubject: there before\r\n\r\nText\r\n\r\n";

// A file of this size comes back as an empty one.
constexpr std::size_t kLostSize = 54;

struct Attachment {
  std::string name, bytes;
};

struct Input {
  explicit Input(std::string_view text) {
    const int choices = text.empty() ? 0 : static_cast<unsigned char>(text.front());
    text.remove_prefix(std::min<std::size_t>(1, text.size()));
    asLink = (choices & 1) != 0;
    newMailbox = (choices & 2) != 0;
    for (int count = choices >> 2 & 3; count > 0; --count) {
      Attachment attachment;
      attachment.name = CutLine(text);
      attachment.bytes = CutLine(text);
      attachments.push_back(std::move(attachment));
    }
    mail = text;
  }

  bool asLink = false;
  bool newMailbox = false;
  std::vector<Attachment> attachments;
  std::string mail;
};

bool EndsInLoneFeeds() {
  return CurrentRules().lines == LineRule::Native;
}

// The lines of a mailbox, each as the reader takes it.
std::vector<std::string_view> LinesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of(EndsInLoneFeeds() ? "\r\n" : "\r"), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(std::min(text.size(), end + (text.substr(end, 2) == "\r\n" ? 2 : 1)));
  }
  return lines;
}

// A mail that says nothing about parts or about its own state.
bool IsPlain(std::string_view mail) {
  const std::string text = LowerCase(mail);
  for (const std::string_view mark : {"content-", "boundary", "x-mozilla-status", "from ", "address"}) {
    if (text.find(mark) != std::string::npos) return false;
  }
  // Without an empty line it is all header, which takes no attachments.
  const std::vector<std::string_view> lines = LinesOf(mail);
  if (std::find(lines.begin(), lines.end(), "") == lines.end()) return false;
  // The separator that it gets is one before a header only.
  return CurrentRules().separators == Separators::Dashed || ContinuesHeader(lines.front());
}

// A name with a line end in it says in the mailbox whatever it likes. The archive knows none.
bool HasNameOfSeveralLines(const Input& input) {
  return std::any_of(input.attachments.begin(), input.attachments.end(), [](const Attachment& attachment) {
    return attachment.name.find('\r') != std::string::npos;
  });
}

class Mailbox {
 public:
  Mailbox() {
    platform_->SetAppData(tree_.Path());
    tree_.AddProfile("p", {"a"});
    path_ = tree_.AddMailbox("p", "a", "Inbox");
  }

  void Try(const Input& input) {
    platform_->calls.clear();
    std::filesystem::remove(Native("Inbox"));
    if (!input.newMailbox) WriteBytes(path_, kMailInThere);
    Restore(input);
    const std::string mailbox = ReadBytes(path_);
    const std::size_t start = input.newMailbox ? 0 : std::string_view(kMailInThere).size();
    Require(mailbox.starts_with(std::string_view(kMailInThere).substr(0, start)));
    CheckText(std::string_view(mailbox).substr(start), input);
    CheckMails(static_cast<std::int32_t>(start), input);
    Require(ReadBytes(path_) == mailbox);
    // Nothing else was made or changed.
    Require(FolderContent(Native("")).size() == 2);
    Require(FolderContent(store_.Native()) == StoreOf(input));
  }

 private:
  std::filesystem::path Native(const std::string& name) const {
    return tree_.Folder().Native("Thunderbird/Profiles/p/Mail/a/" + name);
  }

  static std::map<std::string, std::string> StoreOf(const Input& input) {
    std::map<std::string, std::string> files = {{"mail.eml", input.mail}};
    for (std::size_t i = 0; i < input.attachments.size(); ++i)
      files[std::to_string(i)] = input.attachments[i].bytes;
    return files;
  }

  void Restore(const Input& input) {
    test::RecordingHost host;
    const auto item = host.MakeItem();
    for (const auto& [name, bytes] : FolderContent(store_.Native()))
      std::filesystem::remove(store_.Native(name));
    for (const auto& [name, bytes] : StoreOf(input))
      store_.Write(name, bytes);
    item->Data = {{"From", "a@b.c"}, {"File", "mail.eml"}};
    item->Files["File"] = store_.Path("mail.eml");
    item->OutsideAddress = "archive#" + input.mail.substr(0, 20);
    for (std::size_t i = 0; i < input.attachments.size(); ++i) {
      const std::string key = "FileAttach" + std::to_string(i + 1);
      item->Data.emplace_back(key, "x\r\nfile=" + input.attachments[i].name + "\r\nsize=1");
      item->Files[key] = store_.Path(std::to_string(i));
    }
    host.Global.ItemsById["1"] = item;
    const auto connector = std::make_shared<Location_Thunderbird>();
    connector->SetLocObject(host.MakeLocation(kAddress));
    Require(connector->InitLocation(kAddress));
    Require(connector->ExecuteAction(input.asLink ? "Shortcut:1" : "Restore:1").empty());
  }

  // Every line of the stored mail is there, in order, but for its content type, which may stand further down.
  static void CheckText(std::string_view restored, const Input& input) {
    Require(restored.ends_with("\r\n"));
    const bool isDashed = CurrentRules().separators == Separators::Dashed;
    Require(input.mail.empty() || restored.starts_with(isDashed ? "From - " : "From "));
    if (input.asLink) return;
    const std::vector<std::string_view> lines = LinesOf(restored);
    auto at = lines.begin();
    bool isContentType = false;
    bool inHeader = true;
    for (const std::string_view line : LinesOf(input.mail)) {
      if (line.empty()) inHeader = false;
      if (!line.starts_with(' ') && !line.starts_with('\t'))
        isContentType = inHeader && LowerCase(line).find("content-type") != std::string::npos;
      if (isContentType) continue;
      at = std::find(at, lines.end(), line);
      Require(at != lines.end());
      ++at;
    }
  }

  // The mail stands at its offset, and the import reader finds the attachments in it again.
  void CheckMails(std::int32_t offset, const Input& input) {
    if (!IsPlain(input.mail) || HasNameOfSeveralLines(input)) return;
    StdMail mail;
    mail.SetMailboxFile(path_);
    mail.Setmailtmppfad(temporary_.Path() + "\\");
    mail.InitStream();
    if (!input.newMailbox) Require(mail.ReadHeader(true));
    Require(mail.ReadHeader(true));
    Require(mail.Ledger().offset == offset);
    if (!input.asLink) CheckAttachments(mail, input);
    mail.DeleteLastTempfiles();
    Require(!mail.ReadHeader(true));
    Require(ReadHeaderAt(mail, offset));
  }

  void CheckAttachments(const StdMail& mail, const Input& input) {
    const auto count = static_cast<std::int32_t>(input.attachments.size());
    // The mail itself is the first part.
    Require(mail.Attachments()->Count() == (count == 0 ? 0 : count + 1));
    for (std::int32_t i = 1; i <= count; ++i) {
      const Attachment& attachment = input.attachments[static_cast<std::size_t>(i) - 1];
      const std::string file = "att" + std::to_string(i + 1);
      // A name may end the header that tells of it, or say that there is none.
      if (!IsSoundName(attachment.name)) continue;
      Require(temporary_.Exists(file));
      Require(temporary_.Read(file) == (attachment.bytes.size() == kLostSize ? "" : attachment.bytes));
    }
  }

  static bool IsSoundName(std::string_view name) {
    return !name.empty() &&
           std::all_of(name.begin(), name.end(), [](unsigned char c) { return std::isalnum(c) != 0; });
  }

  MemoryFolder temporary_, store_;
  ThunderbirdTree tree_;
  ScopedRecordingPlatform platform_;
  std::string path_;
};

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static vorlent::fuzz::Mailbox mailbox;
  const vorlent::fuzz::Input input(vorlent::fuzz::Text(data, size));
  vorlent::fuzz::UnderBothRules([&] { mailbox.Try(input); });
  return 0;
}
