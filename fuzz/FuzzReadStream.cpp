// Any bytes as a mailbox for the extraction reader and the deletion. The first byte is what ReadStream
// writes, the next two an offset. Nothing but a Failure may leave them; a deletion changes one byte at most.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Connectors/Mozilla/StdMail.h"
#include "Fuzz.h"
#include "FuzzMailbox.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent::fuzz {
namespace {

void ReadAll(const FuzzMailbox& mailbox, std::int16_t saveflag, bool toFile) {
  StdMail mail;
  mail.SetMailboxFile(mailbox.Path());
  mail.InitStream(saveflag);
  const std::string file = toFile ? mailbox.TempPrefix() + "body" : "";
  for (std::size_t calls = 0;; ++calls) {
    Require(calls <= mailbox.Bytes().size() + 1);
    bool isMail = false;
    if (!Swallow([&] { isMail = mail.ReadStream(file); })) continue;
    Require(isMail == !mail.Headers()->IsEmpty());
    if (!isMail) break;
    std::size_t size = 0;
    for (const std::string& line : *mail.BodyLines())
      size += line.size() + 2;
    Require(mail.Body().size() == size);
    Require(toFile || saveflag == -1 || size == 0);
    mail.SaveMail(mailbox.TempPrefix() + "mail", "");
  }
}

void Delete(const FuzzMailbox& mailbox, std::int32_t offset) {
  NoThunderbirdCheck() = true;  // the machine's own processes are no part of the input
  StdMail mail;
  mail.SetMailboxFile(mailbox.Path());
  const std::string before = mailbox.Read();
  mail.DeleteMail(offset);
  const std::string after = mailbox.Read();
  Require(before.size() == after.size());
  std::size_t changed = 0;
  for (std::size_t i = 0; i < before.size(); ++i)
    changed += before[i] != after[i];
  Require(changed <= 1);
}

void ReadAndDelete(std::string_view input) {
  if (input.size() < 3) return;
  // NOLINTNEXTLINE(bugprone-signed-char-misuse): negative ones too
  const auto saveflag = static_cast<std::int16_t>(static_cast<signed char>(input[0]));
  const std::int32_t offset =
      static_cast<unsigned char>(input[1]) * 256 + static_cast<unsigned char>(input[2]);
  UnderBothRules([&] {
    const FuzzMailbox mailbox(input.substr(3));
    ReadAll(mailbox, saveflag, false);
    ReadAll(mailbox, saveflag, true);
    Delete(mailbox, 0);
    Delete(mailbox, offset);
  });
}

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  vorlent::fuzz::ReadAndDelete(vorlent::fuzz::Text(data, size));
  return 0;
}
