// What a reader notes about mails beside what they say.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/Failure.h"

namespace vorlent {

// For the runs that import mails and mark them, which must know what became of each. Only its reader writes
// it.
struct MailLedger {
  // --- The mail that ReadHeader read last

  // Its zero-based offset in the mailbox, or that of the one that could not be read; or from where on the
  // mailbox could not be read.
  std::int64_t offset = 0;

  // It has a header Address of its own, under which ReadHeader notes the offset: what goes by that header
  // takes another place in the mailbox for the mail's.
  bool hidesOffset = false;

  // The part of its size that is the separator of the next mail, 0 if none comes after it.
  double nextSeparatorCount = 0;

  // Why it isn't there whole, empty if it is: it could not be read to its end, or a file of it could not be
  // written or was lost. ReadHeader and GetData go on after such a failure; whoever is about to delete the
  // mail should ask. A line with a bad quoted-printable code doesn't count. Where ReadHeader found no mail,
  // why the rest of the mailbox could not be read.
  Cause loss;

  // The attachments of its record that stayed where they were, as no file could be made of their names: where
  // each lies, by its data field.
  std::map<std::string, std::string, std::less<>> unmoved;

  // The boundaries of the multiparts that its parts stand in, in their order.
  std::vector<std::string> boundaries;

  // Mails before it that ReadHeader could not read and passed over.
  struct BrokenMail {
    std::int64_t offset;
    Cause why;
  };
  std::vector<BrokenMail> broken;

  // The IDs of the mails before it that ReadHeader passed over as expunged, if they are noted.
  std::vector<std::string> expungedIds;

  // --- The mailbox, since it was opened

  // Mails that ReadHeader passed over as expunged.
  std::int32_t expungedCount = 0;

  bool IsWhole() const { return loss.IsEmpty(); }

  // Where the file of a data field lies: `path`, which its description names, unless it is one that stayed.
  std::string FileAt(std::string_view key, std::string_view path) const {
    const auto stayed = unmoved.find(key);
    return stayed == unmoved.end() ? std::string(path) : stayed->second;
  }

  // The first reason is kept.
  void NoteLoss(const Cause& why) {
    if (IsWhole()) loss = why;
  }
};

}  // namespace vorlent
