// What divides the mails of a mailbox.
#pragma once

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "Platform/Rules.h"

namespace vorlent {

// What some editors put before the first line of a file. By the rules of today it is no part of that.
inline constexpr std::string_view kMarkOfUtf8 = "\xEF\xBB\xBF";

inline bool BeginsWithPassedMark(std::string_view firstLine) {
  return CurrentRules().separators == Separators::Envelopes && firstLine.starts_with(kMarkOfUtf8);
}

// Whether a line could separate by either set of rules. Spares nearly all lines all further tests.
inline bool MayBeSeparator(std::string_view line) {
  return line.starts_with("From ") || line.starts_with(">From - ");
}

// Whether a line is "From " with quotes before it, as what begins so is written into a mailbox.
inline bool IsQuotedFrom(std::string_view line) {
  if (!line.starts_with('>')) return false;
  line.remove_prefix(std::min(line.find_first_not_of('>'), line.size()));
  return line.starts_with("From ");
}

// "From - " or ">From - ", whatever follows.
bool IsDashedSeparator(std::string_view line);
// "From ", and after it a date, the sender of the envelope, "-", or nothing.
bool IsEnvelopeSeparator(std::string_view line);
// Whether a mail's header can go on with a line: a field, or the end of the header. Nothing is the end of the
// mailbox.
bool ContinuesHeader(const std::optional<std::string_view>& line);

// Whether a mail begins on a line, if that is the first one or comes after an empty one. `next` gives the
// line after it, or nothing at the end; it is asked for few lines only, and last, so that it may take the
// place of `line` in memory.
template <class Next>
bool IsSeparator(std::string_view line, Next&& next) {
  if (!MayBeSeparator(line)) return false;
  if (CurrentRules().separators == Separators::Dashed) return IsDashedSeparator(line);
  return IsEnvelopeSeparator(line) && ContinuesHeader(std::forward<Next>(next)());
}

}  // namespace vorlent
