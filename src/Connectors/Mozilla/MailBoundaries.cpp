#include "Connectors/Mozilla/MailBoundaries.h"

#include "Common/StdHttp.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent {

void MailBoundaries::Clear() {
  own_ = {};
  nested_.clear();
}

void MailBoundaries::Begin(std::string_view boundary) {
  own_ = BoundaryPair(boundary);
  nested_.clear();
}

void MailBoundaries::Await(std::string_view boundary) {
  // Nobody nests deeper, and each line that begins as a boundary is compared to all.
  constexpr std::size_t kDeepest = 100;
  if (CurrentRules().boundaries == Boundaries::Exact) nested_.clear();
  if (nested_.size() < kDeepest) nested_.emplace_back(boundary);
}

bool MailBoundaries::Take(std::string_view line, bool (BoundaryPair::*is)(std::string_view) const) {
  if (!BoundaryPair::MayMatch(line)) return false;
  std::size_t depth = nested_.size();
  while (depth > 0 && !(nested_[depth - 1].*is)(line))
    --depth;
  if (depth == 0 && !(own_.*is)(line)) return false;
  if (CurrentRules().boundaries == Boundaries::Rfc2046) nested_.resize(depth);
  return true;
}

void AwaitPartsIn(const std::string& partHeader, std::int32_t position, MailBoundaries& boundaries) {
  if (CurrentRules().boundaries == Boundaries::Exact) return;
  // Spares nearly all parts the decoding of their headers.
  if (LowerCase(partHeader).find("boundary") == std::string::npos) return;
  std::string name, boundary;
  Swallow([&] { name = AttachmentName(partHeader, position); });
  if (name.empty()) Swallow([&] { boundary = GetPartBoundary(partHeader); });
  if (!boundary.empty()) boundaries.Await(boundary);
}

}  // namespace vorlent
