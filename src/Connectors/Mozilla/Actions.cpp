#include "Connectors/Mozilla/Actions.h"

#include "Common/StdModul.h"
#include "Connectors/Mozilla/ImportRun.h"
#include "Host/HostObjects.h"

namespace vorlent {

KeyedList<std::string> Actions::GetActions() {
  KeyedList<std::string> actions;
  actions.Add("importmails|newfile#Import: Thunderbird Mails");
  return actions;
}

void Actions::execute(std::string_view cmd) {
  if (cmd != "importmails") return;
  const std::string command = HostObjects::Current().Dialogs().ShowWizard("Import Thunderbird Mails",
                                                                          "VorlentMozilla.WizardImport", "");
  if (!command.empty()) RunImport(command);
}

void Actions::RunImport(std::string_view cmd) {
  ImportRun(cmd, observer_).Run();
}

void Actions::ApplyAutoTopics(Item& itm) {
  std::string rules = HostObjects::Current().Global().GetOption("autotopic");
  if (rules.empty()) return;
  const std::string text = itm.FullText();
  while (!rules.empty()) {
    std::string keywords = CutLine(rules);
    const std::string word = CutTrimmedToken(keywords, "=");
    if (text.find(word) == std::string::npos) continue;
    while (!keywords.empty())
      itm.AddKeyword(CutTrimmedToken(keywords, ","));
  }
}

}  // namespace vorlent
