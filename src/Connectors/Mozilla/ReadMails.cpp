#include "Connectors/Mozilla/ReadMails.h"

#include <algorithm>

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

}  // namespace vorlent
