// The host's dialogs with windows.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "Apps/Wizard/WizardFrame.h"
#include "Connectors/Mozilla/WizardImport.h"
#include "Host/HostDialogs.h"

namespace vorlent::wizard {

class QtDialogs : public HostDialogs {
 public:
  // Opens the Location in a folder, given by its Windows path, makes it known to the host and returns its
  // name. Raises if that fails.
  using OpenTarget = std::function<std::string(const std::string& folder)>;
  // Hears of the command of a wizard that was finished, before anything is done with it.
  using Prepare = std::function<void(const std::string& command)>;

  QtDialogs(OpenTarget openTarget, Prepare prepare)
      : openTarget_(std::move(openTarget)), prepare_(std::move(prepare)) {}

  // The wizard stays: shown another time, after an import that failed, it is as the user left it. Raises
  // NoSuchMember for a ProgID that is no wizard of this component.
  std::string ShowWizard(std::string_view title, std::string_view progId,
                         std::string_view parameter) override;

  // Lets the user pick a folder, a new one too, and opens the Location in it.
  std::string ChooseLocation(std::string_view title, std::string_view first,
                             std::string_view second) override;

 private:
  OpenTarget openTarget_;
  Prepare prepare_;
  std::shared_ptr<WizardImport> wizard_;
  std::unique_ptr<WizardFrame> frame_;
};

}  // namespace vorlent::wizard
