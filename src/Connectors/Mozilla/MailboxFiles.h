// Which files are mailboxes.
#pragma once

#include <string>
#include <string_view>

namespace vorlent {

// Where a file lies: among those of a mail account, or anywhere on the disks.
enum class MailboxPlace { Account, Disks };

// Whether the file `name` in `folder`, given with its closing separator, is a mailbox. By the rules of old
// its summary tells. Today that does, too, and so does a mail that begins in it, whatever it is called. It is
// looked for in the whole of an account's file, else in the beginning; so it is where the name is that of
// another kind of file. An account's file that isn't called so is a mailbox, too, if it is empty or if it may
// not be read, so that it is missed. One whose name begins with a dot, which hides it, is none.
bool IsMailbox(std::string_view folder, const std::string& name, bool hasSummary, MailboxPlace place);

// Whether a mailbox in which no mail was found has something else in it, as far as its beginning tells.
bool HoldsSomethingElse(const std::string& mailbox);

// What there is to tell of such a one.
inline constexpr std::string_view kNoMailInIt = "kein Postfach; keine Mail darin";

}  // namespace vorlent
