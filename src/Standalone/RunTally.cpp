#include "Standalone/RunTally.h"

#include <algorithm>

namespace vorlent {

std::string_view ReasonOf(Marking why) {
  switch (why) {
    case Marking::Marked:
      break;
    case Marking::NoStatus:
      return "it has no header X-Mozilla-Status";
    case Marking::BadStatus:
      return "its header X-Mozilla-Status is no number; only the last character of that line was changed";
    case Marking::OtherMail:
      return "the mailbox has changed, and the mail doesn't stand there any more as it was read";
    case Marking::HiddenPlace:
      return "its own header Address hides its place";
    case Marking::KeptByUser:
      return "Thunderbird is running";
    case Marking::Unreadable:
      return "the mailbox could not be read or written there";
    case Marking::ReadOnly:
      return "the mailbox may not be written";
  }
  return {};
}

std::vector<Hint> RunTally::HintsWith(const Cause& failure) const {
  std::vector<Hint> hints;
  const auto add = [&](Hint hint) {
    if (hint != Hint::None && std::ranges::find(hints, hint) == hints.end()) hints.push_back(hint);
  };
  for (const FailedMail& mail : failed_)
    add(mail.why.hint);
  add(failure.hint);
  return hints;
}

}  // namespace vorlent
