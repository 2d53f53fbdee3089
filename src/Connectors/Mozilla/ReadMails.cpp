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

// Pieces of a number, the lowest first.
template <std::size_t kCount>
std::array<std::uint16_t, kCount> PiecesOf(std::uint64_t number) {
  std::array<std::uint16_t, kCount> pieces;
  for (std::uint16_t& piece : pieces) {
    piece = static_cast<std::uint16_t>(number);
    number >>= 16;
  }
  return pieces;
}

template <std::size_t kCount>
std::uint64_t WholeOf(const std::array<std::uint16_t, kCount>& pieces) {
  std::uint64_t number = 0;
  for (std::size_t i = kCount; i > 0; --i)
    number = number << 16 | pieces[i - 1];
  return number;
}

}  // namespace

ReadMails::Mail::Mail(std::int64_t at, std::uint64_t hashOfBlock)
    : offset(PiecesOf<3>(static_cast<std::uint64_t>(at))), hash(PiecesOf<4>(hashOfBlock)) {}

std::int64_t ReadMails::Mail::Offset() const {
  return static_cast<std::int64_t>(WholeOf(offset));
}

std::uint64_t ReadMails::Mail::Hash() const {
  return WholeOf(hash);
}

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

void ReadMails::Add(std::int64_t offset, std::uint64_t hash) {
  if (last_ && last_->offset == offset) last_.reset();
  const Mail mail(offset, hash);
  // Nearly always, as a mailbox is read from front to back.
  if (mails_.empty() || mails_.back().Offset() < offset) {
    mails_.push_back(mail);
    return;
  }
  const auto at = std::ranges::lower_bound(mails_, offset, {}, &Mail::Offset);
  if (at->Offset() == offset) {
    *at = mail;
  } else {
    mails_.insert(at, mail);
  }
}

std::optional<std::uint64_t> ReadMails::HashAt(std::int64_t offset) const {
  const auto at = std::ranges::lower_bound(mails_, offset, {}, &Mail::Offset);
  if (at == mails_.end() || at->Offset() != offset) return std::nullopt;
  return at->Hash();
}

bool ReadMails::StillStands(LineFile& mailbox, std::int64_t offset) const {
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
