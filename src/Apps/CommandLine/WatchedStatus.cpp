#include "Apps/CommandLine/WatchedStatus.h"

#include <algorithm>
#include <cctype>

#include "Apps/CommandLine/Terminal.h"
#include "Common/LineFile.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

WatchedStatus::WatchedStatus(const StandaloneItem& item) : file_(item.DataText(data_key::kSourceFile)) {
  Swallow([&] {
    LineFile file(file_, os::File::Mode::Read);
    file.Seek(static_cast<std::uint64_t>(Within32(ParseNumber(item.DataText(data_key::kSourceOffset)))) + 1);
    for (bool inHeader = true; inHeader && position_ == 0 && !file.AtEnd();) {
      const std::uint64_t start = file.Position();
      const std::string line(file.ReadLine());
      inHeader = !line.empty();
      if (!IsStatusLine(line)) continue;
      // An empty status has the line's last character for its digit.
      const std::size_t value = std::min(line.find_first_not_of(" \t", line.find(':') + 1), line.size() - 1);
      position_ = start + value;
      before_ = line.substr(value);
    }
  });
}

std::string WatchedStatus::ChangeOfNoNumber() const {
  const auto isDigit = [](unsigned char c) { return std::isxdigit(c) != 0; };
  if (std::all_of(before_.begin(), before_.end(), isDigit)) return {};
  std::string after = before_;
  Swallow([&] {
    LineFile file(file_, os::File::Mode::Read);
    file.Seek(position_);
    after = file.ReadLine();
  });
  return after == before_ ? std::string() : InWords(Phrase::StatusBecame, {Shown(before_), Shown(after)});
}

}  // namespace vorlent::app
