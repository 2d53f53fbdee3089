// Marking a mail as deleted, the way the mail client itself does it.
#include <cstdint>
#include <string>
#include <string_view>

#include "Common/LineFile.h"
#include "Common/StdModul.h"
#include "Common/StdTask.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Platform/CodePage.h"
#include "Platform/Platform.h"

namespace vorlent {

namespace {

bool noThunderbirdCheck = false;

// What a process needs to be gone after it was ended.
constexpr std::uint32_t kEndingMilliseconds = 1000;

// Asks what to do about a running Thunderbird and does it. False if the mail shall stay.
bool SettleThunderbird() {
  if (noThunderbirdCheck) return true;
  const std::uint32_t process = FindProcessId("thunderbird.exe");
  if (process == 0) return true;
  constexpr std::string_view kQuestion =
      "Mozilla Thunderbird ist derzeit aktiv.\n"
      "Damit Mails gelöscht werden können, muss Thunderbird geschlossen werden!\n"
      "Thunderbird jetzt schließen?"_cp;
  switch (Platform::Current().ShowMessage(kQuestion, "Mozilla Thunderbird Archivierung",
                                          MessageIcon::Question, MessageButtons::YesNoCancel)) {
    case MessageAnswer::Yes:
      CloseProcessWindows(process);
      KillProcess(process);
      Platform::Current().Wait(kEndingMilliseconds);
      return true;
    case MessageAnswer::No:
      noThunderbirdCheck = true;
      return true;
    default:
      return false;
  }
}

char MarkExpunged(char digit) {
  return "0123456789ABCDEF"[ReadHexNumber(std::string_view(&digit, 1)) | kExpunged];
}

// Changes the status digit of the mail that begins at the present position. False for a mail without a status
// header, which stays, and for one whose status is empty: its colon gives way to the digit.
bool MarkMail(LineFile& mailbox) {
  constexpr std::string_view kStatus = "x-mozilla-status:";
  while (!mailbox.AtEnd()) {
    const std::string_view line = mailbox.ReadLine();
    if (line.empty()) return false;
    if (BeginsNoCase(line, kStatus)) {
      const bool hasDigit = line.size() > kStatus.size();
      const char digit = MarkExpunged(line.back());
      mailbox.Seek(mailbox.Position() - mailbox.LineEndLength() - 1);
      mailbox.WriteByte(digit);
      return hasDigit;
    }
  }
  return false;
}

}  // namespace

bool& NoThunderbirdCheck() {
  return noThunderbirdCheck;
}

bool StdMail::DeleteMail(std::int32_t offset) {
  if (!SettleThunderbird()) return false;
  LineFile mailbox(mailboxFile_, os::File::Mode::ReadWrite);
  // Another program has cleaned it up: at the offsets that were read there may be other mails by now.
  if (mailbox.Length() < lengthRead_) {
    throw Failure(ErrorNumber::PermissionDenied, mailboxFile_ + ": has become shorter since it was read");
  }
  mailbox.Seek(MailPosition(offset));
  bool isMarked = false;
  Swallow([&] { isMarked = MarkMail(mailbox); });
  Swallow([&] { mailbox.Close(); });
  RemoveExactFile(mailboxFile_ + std::string(kSummary));
  return isMarked;
}

}  // namespace vorlent
