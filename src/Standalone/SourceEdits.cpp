#include "Standalone/SourceEdits.h"

#include "Common/StdModul.h"
#include "Host/Connector.h"

namespace vorlent {

void SourceEdits::ItemChanged(StandaloneItem& item, std::int32_t action, std::string_view value) {
  const auto connector = std::dynamic_pointer_cast<CalendarConnector>(item.Location());
  if (connector != nullptr) connector->RedoAction(item.shared_from_this(), NowStamp(), action, value);
}

}  // namespace vorlent
