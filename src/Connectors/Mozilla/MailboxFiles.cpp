#include "Connectors/Mozilla/MailboxFiles.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>

#include "Common/LineFile.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/SiblingNames.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// What the mail client, its add-ons and other programs keep beside the mailboxes, and nearly never mails in.
constexpr std::array<std::string_view, 17> kOtherEndings = {
    ".msf", ".sbd", ".mozmsgs", ".dat", ".html", ".log",  ".json",   ".js", ".rdf",
    ".snm", ".toc", ".lck",     ".tmp", ".bak",  ".lock", ".sqlite", "~"};

bool IsOfAnotherKind(std::string_view name) {
  return name.starts_with('#') ||
         std::ranges::any_of(kOtherEndings, [&](std::string_view ending) { return HasEnding(name, ending); });
}

// Whether a file is the summary of a mailbox beside it, of which profiles have thousands.
bool IsSummary(std::string_view folder, const std::string& name) {
  return HasEnding(name, kSummary) &&
         FileExists(std::string(folder) + name.substr(0, name.size() - kSummary.size()));
}

// How much of a file is looked at where mails are not to be expected.
constexpr std::uint64_t kLook = 64 * 1024;
constexpr std::uint64_t kWholeFile = std::numeric_limits<std::uint64_t>::max();

// Up to `most` bytes from the beginning of a file.
std::string BeginningOf(const std::string& path, std::size_t most) {
  os::File file = os::File::Open(path, os::File::Mode::Read);
  std::string bytes(most, '\0');
  bytes.resize(file.Read(bytes.data(), bytes.size()));
  return bytes;
}

// What a look at a file finds: that a mail begins in it, or that it begins with a separator and yet no mail
// comes after that.
enum class Found { Nothing, Separator, Mail };

// Looks at the lines that begin in the first `most` bytes. The first mail may come after empty lines or text,
// as where the one before it was damaged.
Found LookInto(const std::string& path, std::uint64_t most) {
  LineFile lines(path, os::File::Mode::Read);
  Found found = Found::Nothing;
  bool mayBegin = true;
  bool isFirst = true;
  while (!lines.AtEnd() && lines.Position() <= most) {
    std::string_view line = lines.ReadLine();
    if (isFirst && BeginsWithPassedMark(line)) line.remove_prefix(kMarkOfUtf8.size());
    if (mayBegin && MayBeSeparator(line)) {
      const std::string separator(line);
      if (isFirst && IsSeparator(separator, [] { return std::nullopt; })) found = Found::Separator;
      if (IsSeparator(separator, [&] { return lines.NextLine(); })) return Found::Mail;
      mayBegin = isFirst = false;
      continue;
    }
    mayBegin = line.empty();
    isFirst = isFirst && mayBegin;
  }
  return found;
}

// A file of something else may be a single line of gigabytes.
Found LookAtBeginning(const std::string& path) {
  const bool maySeparate = BeginningOf(path, kLook).find("From ") != std::string::npos;
  return maySeparate ? LookInto(path, kLook) : Found::Nothing;
}

bool LooksLikeAMailbox(const std::string& path, bool isToBeExpected) {
  bool looksSo = isToBeExpected;
  Swallow([&] {
    if (os::FileLength(path) == 0) return;
    looksSo = (isToBeExpected ? LookInto(path, kWholeFile) : LookAtBeginning(path)) != Found::Nothing;
  });
  return looksSo;
}

}  // namespace

bool IsMailbox(std::string_view folder, const std::string& name, bool hasSummary, MailboxPlace place) {
  if (CurrentRules().mailboxes == MailboxFiles::WithSummary) return hasSummary;
  if (name.starts_with('.')) return false;
  if (hasSummary) return true;
  const bool isToBeExpected = place == MailboxPlace::Account && !IsOfAnotherKind(name);
  return !IsSummary(folder, name) && LooksLikeAMailbox(std::string(folder) + name, isToBeExpected);
}

bool HoldsSomethingElse(const std::string& mailbox) {
  constexpr std::size_t kEnough = 4096;
  bool holdsIt = false;
  Swallow([&] {
    const bool isBlank = BeginningOf(mailbox, kEnough).find_first_not_of(" \t\r\n") == std::string::npos;
    holdsIt = !isBlank && LookInto(mailbox, kWholeFile) != Found::Mail;
  });
  return holdsIt;
}

}  // namespace vorlent
