// The multiparts that the lines of a mail lie in, and the numbers of their parts.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Connectors/Mozilla/PartNumber.h"
#include "Connectors/Mozilla/StdMailPart.h"

namespace vorlent {

// Knows the mail's own multipart and those nested in it; by the rules of old, of the latter the one seen last
// alone.
class MailBoundaries {
 public:
  // Nothing is a boundary until Begin is called.
  void Clear();
  // Those of a mail with this boundary.
  void Begin(std::string_view boundary);
  // A part begins that has parts itself.
  void Await(std::string_view boundary);

  // How many are nested at present, and the way back to so many.
  std::size_t Depth() const { return nested_.size(); }
  void ReturnTo(std::size_t depth) { nested_.resize(depth); }

  // Whether the line is a boundary of the mail, or of a nested multipart; of those within that none is
  // awaited then.
  bool TakeOpening(std::string_view line) { return Take(line, &BoundaryPair::IsOpening); }
  bool TakeClosing(std::string_view line) { return Take(line, &BoundaryPair::IsClosing); }
  // Whether the line closes the mail's own multipart.
  bool ClosesMail(std::string_view line) const { return own_.IsClosing(line); }

 private:
  bool Take(std::string_view line, bool (BoundaryPair::*is)(std::string_view) const);

  BoundaryPair own_;
  std::vector<BoundaryPair> nested_;
};

// Where nested multiparts are all known: awaits the parts of a part with this header and position, if it has
// any.
void AwaitPartsIn(const std::string& partHeader, std::int32_t position, MailBoundaries& boundaries);

}  // namespace vorlent
