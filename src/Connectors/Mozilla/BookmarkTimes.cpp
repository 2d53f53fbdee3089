#include "Connectors/Mozilla/BookmarkTimes.h"

#include <utility>

#include "Common/StdModul.h"
#include "Common/StdTime.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

bool BookmarkTimesAreLocal() {
  return CurrentRules().bookmarkTimes == BookmarkTimes::OfTheReader;
}

}  // namespace

// The first and the last moment that can be shown stay in UTC where they are of another year in the zone.
std::string ShownBookmarkTime(std::int64_t seconds) {
  std::string stamp = EpochToStamp(seconds);
  std::string shown = StampToDisplay(stamp);
  if (!BookmarkTimesAreLocal()) return shown;
  Swallow([&] {
    std::string local = UtcToLocalText(ParseDate(shown));
    if (local.size() == shown.size()) shown = std::move(local);
  });
  return shown;
}

std::int64_t SecondsOfShownTime(std::string_view display) {
  const std::string utc = BookmarkTimesAreLocal() ? LocalToUtcText(display) : "";
  return StampToEpoch(DisplayToStamp(utc.empty() ? display : utc));
}

}  // namespace vorlent
