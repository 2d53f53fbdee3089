// The actions that the component adds to the host's menu.
#pragma once

#include <string>
#include <string_view>

#include "Host/Connector.h"

namespace vorlent {

// The one action is the import of Thunderbird mails: the wizard asks for the import command, the run carries
// it out. Nothing is caught: what the host can't create and whatever fails in the run reaches the caller of
// execute.
class Actions : public ActionList {
 public:
  // One entry without a key: the action's name, "|", a flag word for the host's menu, "#", the caption.
  KeyedList<std::string> GetActions() override;

  // Runs "importmails" from the wizard to the last mail; any other name does nothing.
  void execute(std::string_view cmd) override;

  void SetRunObserver(MailRunObserver* observer) override { observer_ = observer; }

 private:
  friend class ImportRun;

  void RunImport(std::string_view cmd);

  // Adds the keywords of the host's setting "autotopic" to a new item: a line "word=keyword,keyword" applies
  // if the item's full text holds the word exactly.
  static void ApplyAutoTopics(Item& itm);

  MailRunObserver* observer_ = nullptr;
};

}  // namespace vorlent
