#include "Connectors/Mozilla/MailboxFiles.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>

#include "Common/LineFile.h"
#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// What the mail client and its add-ons keep beside the mailboxes.
constexpr std::array<std::string_view, 17> kOtherEndings = {
    ".msf", ".sbd", ".mozmsgs", ".dat", ".html", ".log",  ".json",   ".js", ".rdf",
    ".snm", ".toc", ".lck",     ".tmp", ".bak",  ".lock", ".sqlite", "~"};

bool IsOfAnotherKind(std::string_view name) {
  return name.starts_with('#') ||
         std::ranges::any_of(kOtherEndings, [&](std::string_view ending) { return HasEnding(name, ending); });
}

// Up to `most` bytes from the beginning of a file.
std::string BeginningOf(const std::string& path, std::size_t most) {
  os::File file = os::File::Open(path, os::File::Mode::Read);
  std::string bytes(most, '\0');
  bytes.resize(file.Read(bytes.data(), bytes.size()));
  return bytes;
}

// The first bytes are looked at alone: a file of something else may be a single line of gigabytes.
bool BeginsWithAMail(const std::string& path) {
  constexpr std::size_t kLead = 5;
  if (!MayBeSeparator(BeginningOf(path, kLead))) return false;
  LineFile lines(path, os::File::Mode::Read);
  const std::string first(lines.ReadLine());
  return IsSeparator(first, [&]() -> std::optional<std::string_view> {
    if (lines.AtEnd()) return std::nullopt;
    return lines.ReadLine();
  });
}

bool LooksLikeAMailbox(const std::string& path, MailboxPlace place) {
  const bool isOfAccount = place == MailboxPlace::Account;
  bool looksSo = isOfAccount;
  Swallow([&] { looksSo = os::FileLength(path) == 0 ? isOfAccount : BeginsWithAMail(path); });
  return looksSo;
}

}  // namespace

bool IsMailbox(std::string_view folder, const std::string& name, bool hasSummary, MailboxPlace place) {
  if (CurrentRules().mailboxes == MailboxFiles::WithSummary) return hasSummary;
  if (name.starts_with('.')) return false;
  return hasSummary || (!IsOfAnotherKind(name) && LooksLikeAMailbox(std::string(folder) + name, place));
}

bool HoldsSomethingElse(const std::string& mailbox) {
  constexpr std::size_t kEnough = 4096;
  bool holdsIt = false;
  Swallow([&] {
    const bool isBlank = BeginningOf(mailbox, kEnough).find_first_not_of(" \t\r\n") == std::string::npos;
    holdsIt = !isBlank && !BeginsWithAMail(mailbox);
  });
  return holdsIt;
}

}  // namespace vorlent
