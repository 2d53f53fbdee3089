// Marking a mail as deleted, the way the mail client itself does it.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <functional>
#include <optional>
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
#include "Platform/Rules.h"

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
  const std::string_view kQuestion =
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

// How far a status line goes up to the digit that is changed. By the rules of old that is the line's last
// character, whatever it is.
std::size_t EndOfStatus(std::string_view line) {
  return FirstStatusCounts() ? WithoutTrailingBlanks(line).size() : line.size();
}

// Whether a status line has no digit to be changed, and why. By the rules of old every character is one.
std::optional<Marking> ReasonToLeave(std::string_view line) {
  if (!FirstStatusCounts()) return std::nullopt;
  const std::string_view status = WithoutTrailingBlanks(SplitHeaderLine(line).value);
  if (status.empty()) return Marking::NoStatus;
  const bool isNumber =
      std::ranges::all_of(status, [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; });
  return isNumber ? std::nullopt : std::optional(Marking::NoNumber);
}

// Changes the status digit of the mail that begins at the present position.
Marking MarkMail(LineFile& mailbox) {
  while (!mailbox.AtEnd()) {
    const std::uint64_t start = mailbox.Position();
    const std::string_view line = mailbox.ReadLine();
    if (line.empty()) return Marking::NoStatus;
    if (IsStatusLine(line)) {
      if (const std::optional<Marking> reason = ReasonToLeave(line)) return *reason;
      const std::size_t end = EndOfStatus(line);
      const char digit = MarkExpunged(line[end - 1]);
      mailbox.Seek(mailbox.Position() - mailbox.LineEnd().size() - 1 - (line.size() - end));
      mailbox.WriteByte(digit);
      // What was changed may have been no digit.
      mailbox.Seek(start);
      return (ReadStatus(mailbox.ReadLine()) & kExpunged) != 0 ? Marking::Marked : Marking::BadStatus;
    }
  }
  return Marking::NoStatus;
}

bool IsGone(const Failure& failure) {
  return failure.Is(ErrorNumber::FileNotFound) || failure.Is(ErrorNumber::PathNotFound);
}

// Whether the mailbox may not be written, and that is told as a reason.
bool IsReadOnly(const Failure& failure) {
  return CurrentRules().mailboxOpening == MailboxOpening::ForReading && failure.Is(ErrorNumber::PathAccess);
}

// Whether the summary tells of a mailbox that isn't so any more.
bool MustSummaryGo(Marking result) {
  return CurrentRules().summaries == Summaries::AlwaysRemoved || result == Marking::Marked ||
         result == Marking::BadStatus;
}

}  // namespace

bool& NoThunderbirdCheck() {
  return noThunderbirdCheck;
}

Marking StdMail::DeleteMail(std::int64_t offset, const std::function<bool()>& isWanted) {
  if (!SettleThunderbird()) return Marking::KeptByUser;
  const bool isKnown = isWanted != nullptr || readMails_.Knows(offset);
  Marking result = Marking::Marked;
  try {
    if (isWanted != nullptr) result = LookForWanted(offset, isWanted);
    if (result == Marking::Marked) result = MarkAt(offset);
  } catch (const Failure& failure) {
    if (IsReadOnly(failure)) return Marking::ReadOnly;
    if (!isKnown || !IsGone(failure)) throw;
    result = Marking::OtherMail;
  }
  if (MustSummaryGo(result)) RemoveExactFile(mailboxFile_ + std::string(kSummary));
  return result;
}

// Why the mail that the caller means can't be marked at the offset; Marked if it stands there.
Marking StdMail::LookForWanted(std::int64_t offset, const std::function<bool()>& isWanted) {
  OpenStream(os::File::Mode::Read);
  lines_.Seek(MailPosition(offset));
  Marking result = Marking::OtherMail;
  const bool isRead = ReadStep([&] {
    if (ReadMailHere(Expunged::Read) && ledger_.offset == offset && isWanted()) result = Marking::Marked;
  });
  CloseStream();
  return isRead && ledger_.IsWhole() ? result : Marking::Unreadable;
}

// A missing mailbox is made where nothing was read at the offset, and raises elsewhere.
Marking StdMail::MarkAt(std::int64_t offset) {
  const bool isKnown = readMails_.Knows(offset);
  LineFile mailbox(mailboxFile_, isKnown ? os::File::Mode::Change : os::File::Mode::ReadWrite);
  mailbox.Seek(MailPosition(offset));
  Marking result = Marking::Unreadable;
  Swallow([&] {
    if (isKnown && !readMails_.StillStands(mailbox, offset)) {
      result = Marking::OtherMail;
      return;
    }
    mailbox.Seek(MailPosition(offset));
    result = MarkMail(mailbox);
  });
  Swallow([&] { mailbox.Close(); });
  return result;
}

}  // namespace vorlent
