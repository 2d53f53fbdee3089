// Which files are mailboxes.
#pragma once

#include <string>
#include <string_view>

namespace vorlent {

// Where a file lies: among those of a mail account, or anywhere on the disks.
enum class MailboxPlace { Account, Disks };

// Whether the file `name` in `folder`, given with its closing separator, is a mailbox. By the rules of old
// its summary tells. Today that does, too, and so do the beginning of a file without one, and in an account
// that it is empty; one that begins with a dot and, without a summary, one of the mail client's other files
// is none. A file of an account that may not be read counts, so that it is missed.
bool IsMailbox(std::string_view folder, const std::string& name, bool hasSummary, MailboxPlace place);

// Whether a mailbox in which no mail was found has something else in it, as far as its beginning tells.
bool HoldsSomethingElse(const std::string& mailbox);

// What there is to tell of such a one.
inline constexpr std::string_view kNoMailInIt = "kein Postfach; keine Mail darin";

}  // namespace vorlent
