#include "Apps/CommandLine/MailPlace.h"

#include "Common/Width.h"
#include "Connectors/Mozilla/StdMail.h"

namespace vorlent::app {

bool LiesAtItsPlace(const StandaloneItem& item) {
  std::int32_t offset = 0;
  if (!Swallow([&] { offset = ParseInt32(item.DataText("_SourceOffset")); })) return false;
  StdMail mail;
  mail.SetMailboxFile(item.DataText("_SourceFile"));
  if (!mail.ReadHeaderAt(offset) || mail.HidesOffset()) return false;
  StandaloneItem there;
  there.ImportRecord(mail.GetData("", false));
  return there.ID() == item.ID() && there.DataText("Size") == item.DataText("Size");
}

}  // namespace vorlent::app
