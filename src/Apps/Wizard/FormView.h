// The four pages of the wizard on the screen.
#pragma once

#include <QWidget>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Apps/Wizard/SheetView.h"
#include "Connectors/Mozilla/WizardImport.h"

namespace vorlent::wizard {

// Shows every control of the form as a widget of the same object name, and passes on what the user does. The
// widget's size is the control's size: a change runs its layout.
class FormView : public QWidget {
 public:
  // `reserved` are the letters that the frame's own buttons take as mnemonics.
  FormView(WizardImport& wizard, QString reserved, QWidget* parent);
  ~FormView() override;

  // Size at which every control is as large as designed.
  QSize DesignSize() const;
  // Shows a page and puts the focus on its first control. False if that failed, as Run tells.
  bool ShowPage(std::int16_t page);
  // Runs something the user did and shows what came of it; a failure is told in a message box. False if there
  // was one.
  bool Run(const std::function<void()>& step);

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  struct Shown {
    Control* control;
    QWidget* widget;
    std::function<void()> update;  // takes over the control's own state
  };

  void FocusFirst(std::int16_t page);
  void Add(Control& control);
  QWidget* MakeWidget(Control& control, QWidget* page, std::function<void()>& update);
  QWidget* MakeOption(OptionButton& option, QWidget* page, std::function<void()>& update);
  QWidget* MakeCheck(CheckBox& box, QWidget* page, std::function<void()>& update);
  QWidget* MakeLine(TextBox& box, QWidget* page, std::function<void()>& update);
  QWidget* MakeLines(TextBox& box, QWidget* page, std::function<void()>& update);
  QWidget* MakeButton(Button& button, QWidget* page, std::function<void()>& update);
  QWidget* MakeDropDown(DropDown& list, QWidget* page, std::function<void()>& update);
  QWidget* MakeSheet(Sheet& sheet, QWidget* page);
  void ConnectLabels();
  void Update(const Shown& shown);
  QRect PlaceOf(const Shown& shown) const;
  QString WithMnemonic(const Control& control, const QString& caption);

  WizardImport& wizard_;
  QString reserved_;
  std::map<std::int16_t, QString> taken_;  // mnemonics by page
  std::vector<Shown> shown_;
  std::vector<SheetView*> sheets_;
};

}  // namespace vorlent::wizard
