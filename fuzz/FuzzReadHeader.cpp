// Any bytes as a mailbox for the import reader. Nothing but a Failure may leave it, the mailbox stays as it
// was, both kinds of lines agree where they must, and every mail found can be brought out by its offset.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Fuzz.h"
#include "FuzzMailbox.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent::fuzz {
namespace {

constexpr std::size_t kMailsBroughtOut = 3;

// Reads all mails. Returns what was found, and the offsets of the mails.
std::string ReadAll(const FuzzMailbox& mailbox, const Rules& rules, bool saveattachments, bool waitforfrom,
                    std::vector<std::int32_t>& offsets) {
  ChooseRules(rules);
  StdMail mail;
  mail.SetMailboxFile(mailbox.Path());
  mail.Setmailtmppfad(mailbox.TempPrefix());
  mail.InitStream();
  std::string found;
  // Each call takes at least one line, whether it finds a mail or raises.
  for (std::size_t calls = 0;; ++calls) {
    Require(calls <= mailbox.Bytes().size() + 1);
    bool isMail = false;
    if (!Swallow([&] { isMail = mail.ReadHeader(saveattachments, waitforfrom); })) {
      found += "failure\n";
      continue;
    }
    if (!isMail) break;
    Require(mail.Percent() > 0 && mail.Percent() <= 1);
    const std::string record = mail.GetData("", saveattachments);
    Require(record.starts_with("ID="));
    Require(!GetParam(record, "Log").empty());
    found += mail.GetAllHeaders() + std::to_string(mail.LineCount()) + ' ' +
             std::to_string(mail.ReadCount()) + ' ' + std::to_string(mail.Attachments()->Count()) +
             (mail.hasHTML() ? " html\n" : "\n");
    const std::string offset = mail.Headers()->Item("address");
    if (offset.starts_with(':')) offsets.push_back(static_cast<std::int32_t>(ReadNumber(offset.substr(1))));
    mail.DeleteLastTempfiles();
  }
  Require(mail.Percent() == 1);
  return found;
}

void BringOut(const FuzzMailbox& mailbox, const Rules& rules, const std::vector<std::int32_t>& offsets) {
  ChooseRules(rules);
  for (std::size_t i = 0; i < offsets.size() && i < kMailsBroughtOut; ++i) {
    Require(offsets[i] >= 0 && static_cast<std::size_t>(offsets[i]) < mailbox.Bytes().size());
    for (const std::int16_t part : std::initializer_list<std::int16_t>{-2, 0, 1, 2}) {
      StdMail mail;
      mail.SetMailboxFile(mailbox.Path());
      Swallow([&] {
        mail.SaveAttachmentFile(mailbox.TempPrefix() + "out", offsets[i], part, "09.05.2010 14:30:05");
      });
    }
  }
}

bool HasOnlyWholeLineEnds(std::string_view bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '\n') return false;
    if (bytes[i] != '\r') continue;
    if (i + 1 == bytes.size() || bytes[i + 1] != '\n') return false;
    ++i;
  }
  return bytes.empty() || bytes.back() == '\n';
}

void ReadBothWays(std::string_view bytes) {
  const FuzzMailbox mailbox(bytes);
  for (const bool saveattachments : {false, true}) {
    std::vector<std::int32_t> offsets;
    const std::string windows = ReadAll(mailbox, Rules::Windows(), saveattachments, true, offsets);
    BringOut(mailbox, Rules::Windows(), offsets);
    offsets.clear();
    const Rules otherLines = {.lines = LineRule::Native};
    const std::string native = ReadAll(mailbox, otherLines, saveattachments, true, offsets);
    if (HasOnlyWholeLineEnds(bytes)) Require(windows == native);
    offsets.clear();
    ReadAll(mailbox, Rules::Today(), saveattachments, true, offsets);
    BringOut(mailbox, Rules::Today(), offsets);
    ReadAll(mailbox, Rules::Today(), saveattachments, false, offsets);
  }
  Require(mailbox.Read() == bytes);
}

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vorlent::fuzz::ReadBothWays(vorlent::fuzz::Text(data, size));
  return 0;
}
