#include "Standalone/RunTally.h"

#include <algorithm>

namespace vorlent {

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
