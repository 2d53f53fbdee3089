#include "Connectors/Mozilla/ReadMails.h"

#include <algorithm>

#include "Connectors/Mozilla/MailSeparator.h"
#include "Connectors/Mozilla/StdMailPart.h"

namespace vorlent {

namespace {

// The part of a header line that stays while the mail client changes the mail in place.
std::string_view LastingPart(std::string_view line) {
  if (!BeginsNoCase(line, "x-mozilla-")) return line;
  const std::string_view name = SplitHeaderLine(line).name;
  for (const std::string_view changing : {"x-mozilla-status", "x-mozilla-status2", "x-mozilla-keys"}) {
    if (name.size() == changing.size() && BeginsNoCase(name, changing)) return name;
  }
  return line;
}

}  // namespace

void HeaderBlockHash::Add(std::string_view line) {
  if (IsContinuation(line)) {
    if (!isLeftOut_) hash_.Add(line);
    return;
  }
  const std::string_view lasting = LastingPart(line);
  isLeftOut_ = lasting.size() < line.size();
  hash_.Add(lasting);
}

std::uint64_t HeaderBlockHash::End(bool isWhole) {
  if (isWhole) hash_.Add({});
  return hash_.Value();
}

void ReadMails::Add(std::int32_t offset, std::uint64_t hash) {
  if (last_ && last_->offset == offset) last_.reset();
  const Mail mail = {offset, static_cast<std::uint32_t>(hash), static_cast<std::uint32_t>(hash >> 32)};
  // Nearly always, as a mailbox is read from front to back.
  if (mails_.empty() || mails_.back().offset < offset) {
    mails_.push_back(mail);
    return;
  }
  const auto at = std::ranges::lower_bound(mails_, offset, {}, &Mail::offset);
  if (at->offset == offset) {
    *at = mail;
  } else {
    mails_.insert(at, mail);
  }
}

std::optional<std::uint64_t> ReadMails::HashAt(std::int32_t offset) const {
  const auto at = std::ranges::lower_bound(mails_, offset, {}, &Mail::offset);
  if (at == mails_.end() || at->offset != offset) return std::nullopt;
  return std::uint64_t{at->high} << 32 | at->low;
}

bool ReadMails::StillStands(LineFile& mailbox, std::int32_t offset) const {
  if (mailbox.AtEnd()) return false;
  HeaderBlockHash block;
  std::string_view line = mailbox.ReadLine();
  block.Add(line);
  while (!mailbox.AtEnd()) {
    line = mailbox.ReadLine();
    if (line.empty()) break;
    block.Add(line);
  }
  if (block.End(line.empty()) != HashAt(offset)) return false;
  return !last_ || last_->offset != offset || !HasGrown(*last_, mailbox);
}

// Whether lines came to the last mail since it was read: it may have been on its way still. Mails after it
// don't matter. Its body begins at the present position.
bool ReadMails::HasGrown(const LastMail& mail, LineFile& mailbox) {
  mailbox.Seek(mailbox.Position() + mail.bodySize);
  bool isAfterEmptyLine = mail.endsWithEmptyLine;
  while (!mailbox.AtEnd()) {
    const std::string_view line = mailbox.ReadLine();
    if (!line.empty()) return !isAfterEmptyLine || !IsSeparator(line, [&] { return mailbox.NextLine(); });
    isAfterEmptyLine = true;
  }
  return false;
}

}  // namespace vorlent
