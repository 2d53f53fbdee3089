// How a reader knows the mails again that it has read.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <optional>
#include <string_view>

#include "Common/LineFile.h"
#include "Common/TextHash.h"

namespace vorlent {

// A hash of a mail's header block, its separator line included. It leaves out what the mail client changes in
// place: the values of X-Mozilla-Status, X-Mozilla-Status2 and X-Mozilla-Keys.
class HeaderBlockHash {
 public:
  // The separator line, then each line up to the empty one.
  void Add(std::string_view line);
  // `isWhole` says whether an empty line ended the block. One that the mailbox's end cut off is another, as
  // it may be on its way still.
  std::uint64_t End(bool isWhole);

 private:
  TextHash hash_;
  bool isLeftOut_ = false;  // the value of the present header
};

// The mails read in one mailbox, each by its zero-based offset there.
class ReadMails {
 public:
  // A mail that ended with the mailbox when it was read.
  struct LastMail {
    std::int64_t offset;
    std::uint64_t bodySize;  // in bytes
    bool endsWithEmptyLine;
  };

  // A mail read again is known by its later hash, and isn't the last one until that is noted again.
  void Add(std::int64_t offset, std::uint64_t hash);
  void NoteLast(const LastMail& mail) { last_ = mail; }

  bool Knows(std::int64_t offset) const { return HashAt(offset).has_value(); }
  // Nothing for an offset at which no mail was read.
  std::optional<std::uint64_t> HashAt(std::int64_t offset) const;

  // Whether the mail that was read at the offset is the one that begins at the mailbox's present position,
  // and is no longer than it was.
  bool StillStands(LineFile& mailbox, std::int64_t offset) const;

 private:
  static bool HasGrown(const LastMail& mail, LineFile& mailbox);

  // Both in pieces, as numbers of 64 bits would take 16 bytes. No file is too large for the offset's 48 bits.
  struct Mail {
    Mail(std::int64_t at, std::uint64_t hashOfBlock);
    std::int64_t Offset() const;
    std::uint64_t Hash() const;

    std::array<std::uint16_t, 3> offset;
    std::array<std::uint16_t, 4> hash;
  };
  static_assert(sizeof(Mail) == 14);

  // By offset. A deque has no spare room as large as what it holds.
  std::deque<Mail> mails_;
  std::optional<LastMail> last_;
};

}  // namespace vorlent
