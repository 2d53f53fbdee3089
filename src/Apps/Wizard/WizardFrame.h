// The frame around the wizard's pages.
#pragma once

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <string_view>

#include "Apps/Wizard/FormView.h"
#include "Connectors/Mozilla/WizardImport.h"

namespace vorlent::wizard {

// A heading over the pages, and buttons to go back and forth, to finish and to cancel. A page isn't left
// forwards without what the import needs of it: a message there says what to do. Accepted once the wizard
// says that it may end, and once the user wants the mails to be moved, if they are to be.
class WizardFrame : public QDialog {
 public:
  WizardFrame(WizardImport& wizard, std::string_view title, QWidget* parent);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void LayOutHeading();
  void LayOutFrame();
  void ConnectButtons();
  bool GoTo(std::int16_t page);
  void GoOn();
  void Finish();

  WizardImport& wizard_;
  std::int16_t page_ = 0;
  QWidget* heading_;
  QLabel* title_;
  QLabel* step_;
  FormView* form_;
  QPushButton* back_;
  QPushButton* next_;
  QPushButton* finish_;
  QPushButton* cancel_;
};

}  // namespace vorlent::wizard
