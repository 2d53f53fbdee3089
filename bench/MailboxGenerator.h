// Mailboxes for measuring, the same on every machine for the same seed.
#pragma once

#include <cstdint>
#include <string_view>

namespace vorlent {

enum class MailboxKind {
  Text,         // plain mails of some kilobytes, every eighth with an HTML alternative
  Attachments,  // mails with attachments of some hundred kilobytes, in base64 lines of 76 characters
  SingleMail,   // one mail with one attachment that fills the mailbox
};

// Writes a mailbox of about `size` bytes with CR LF line ends; returns the number of its mails.
int GenerateMailbox(std::string_view path, MailboxKind kind, std::uint64_t size, std::uint64_t seed = 1);

// Writes a mailbox of plain mails of half a kilobyte.
void GenerateSmallMails(std::string_view path, int mails);

}  // namespace vorlent
