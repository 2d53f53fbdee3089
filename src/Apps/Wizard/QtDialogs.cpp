#include "Apps/Wizard/QtDialogs.h"

#include <QApplication>
#include <QFileDialog>

#include "Apps/Wizard/QtText.h"
#include "Component/Component.h"
#include "Platform/NativePaths.h"

namespace vorlent::wizard {

std::string QtDialogs::ShowWizard(std::string_view title, std::string_view progId,
                                  std::string_view parameter) {
  if (frame_ == nullptr) {
    wizard_ = RequireAs<WizardImport>(CreateObject(progId));
    wizard_->SetParameter(parameter);
    frame_ = std::make_unique<WizardFrame>(*wizard_, title, nullptr);
  }
  if (frame_->exec() != QDialog::Accepted) return {};
  const std::string command = wizard_->Parameter();
  prepare_(command);
  return command;
}

std::string QtDialogs::ChooseLocation(std::string_view title, std::string_view, std::string_view) {
  QFileDialog dialog(QApplication::activeWindow(),
                     Worded(Phrase::FolderOfArchive, {TranslatedCaption(title)}));
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly);
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  return openTarget_(os::ToWindowsPath(dialog.selectedFiles().front().toStdString()));
}

}  // namespace vorlent::wizard
