// Mails as a test makes them, mailboxes taken apart, and what an archive must hold of them. All of this knows
// nothing of the component, whose work it is there to judge.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent {

// A mail with its separator line and all lines after it, in the form that Thunderbird writes: lines end in
// CR LF, an empty one divides it from the next.
struct MadeMail {
  std::string bytes;
  // What the archive makes of it: the mail without its attachments, its decoded HTML, each attachment. A mail
  // that can't be kept whole has none.
  std::vector<std::string> files;
  bool isPlain = true;
};

// The mails of a seed, by their numbers from 0: plain ones, ones with HTML and attachments, large ones, ones
// without an ID or a status, expunged ones, ones that quote a separator line, ones with another's header
// block or all of another's bytes. The same numbers always make the same mail.
class MailMaker {
 public:
  explicit MailMaker(std::uint64_t seed) : seed_(seed) {}

  MadeMail Make(std::uint64_t number) const;
  // A plain mail of just so many bytes, if there can be one: "" otherwise.
  std::string MakeFiller(std::uint64_t number, std::size_t size) const;

  // What the archive must hold of the mail with these bytes, of which the values that Thunderbird changes in
  // place don't matter: files as Comparable makes them. None for a mail that can't be kept whole.
  std::vector<std::string> FilesOf(std::string_view mail) const;
  // Whether the seed has another mail with this header block.
  bool HasTwin(std::string_view mail) const;

 private:
  std::uint64_t seed_;
};

// A mail in a mailbox.
struct PlacedMail {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t status = std::string::npos;  // of the last character of its status line
  bool isExpunged = false;

  std::string_view In(std::string_view mailbox) const { return mailbox.substr(begin, end - begin); }
};
std::vector<PlacedMail> MailsIn(std::string_view mailbox);

// The digit that marks a mail as deleted whose status ends in this one.
char MarkedDigit(char digit);

// The bytes of a mail or of a file of it, without the values that Thunderbird changes in place, and with an
// end of the last line.
std::string Comparable(std::string_view mail);

// The header block of a mail.
std::string_view HeaderBlock(std::string_view mail);

}  // namespace vorlent
