#include "Apps/Wizard/FormView.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalBlocker>
#include <algorithm>
#include <utility>

#include "Apps/Wizard/Guarded.h"
#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/Twips.h"
#include "Platform/NativePaths.h"

namespace vorlent::wizard {

namespace {

// The height of a label of one line is that of the font for which the form was drawn.
constexpr double kPointSize = 8;

// Whether the widget may stretch to the right so that its caption is seen whole in any font.
bool IsCaptioned(const Control& control) {
  return control.Kind() == ControlKind::Label || control.Kind() == ControlKind::OptionButton ||
         control.Kind() == ControlKind::CheckBox;
}

QString WithoutMarks(QString caption) {
  return caption.replace("&", "&&");
}

}  // namespace

FormView::FormView(WizardImport& wizard, QString reserved, QWidget* parent)
    : QWidget(parent), wizard_(wizard), reserved_(std::move(reserved)) {
  QFont font = this->font();
  font.setPointSizeF(kPointSize);
  setFont(font);
  for (const auto& control : wizard_.Form().Controls())
    Add(*control);
  ConnectLabels();
  for (const Shown& shown : shown_)
    Update(shown);
}

FormView::~FormView() {
  for (const Shown& shown : shown_)
    shown.control->OnChange = nullptr;
}

QSize FormView::DesignSize() const {
  const Control& page = wizard_.Form().Get<Control>("Picture1");
  return {ToPixels(page.Width(), *this), ToPixels(kPageTop + page.Height(), *this)};
}

bool FormView::ShowPage(std::int16_t page) {
  const bool shown = Run([&] { wizard_.ShowPage(page); });
  FocusFirst(page);
  return shown;
}

void FormView::FocusFirst(std::int16_t page) {
  for (const Shown& shown : shown_) {
    if (shown.control->Page() != page || shown.widget->focusPolicy() == Qt::NoFocus) continue;
    // Of a group of buttons the set one takes the focus: it isn't picked by that.
    const auto* option = dynamic_cast<const OptionButton*>(shown.control);
    if (option != nullptr && !option->IsSet()) continue;
    return shown.widget->setFocus(Qt::TabFocusReason);
  }
}

bool FormView::Run(const std::function<void()>& step) {
  const QString failure = FailureOf(step);
  const bool synced = Guarded(this, [&] {
    for (SheetView* sheet : sheets_)
      sheet->Sync();
  });
  if (failure.isEmpty()) return synced;
  TellFailure(this, failure);
  return false;
}

void FormView::resizeEvent(QResizeEvent*) {
  Guarded(this, [&] {
    wizard_.Layout(ToTwips(width(), *this), ToTwips(height(), *this));
    // Captions have as much room as their page now gives.
    for (const Shown& shown : shown_)
      shown.widget->setGeometry(PlaceOf(shown));
  });
}

// --- Widgets --------------------------------------------------------------------------------------------

void FormView::Add(Control& control) {
  QWidget* page = this;
  for (const Shown& shown : shown_) {
    if (shown.control->Kind() == ControlKind::Page && shown.control->Page() == control.Page())
      page = shown.widget;
  }
  std::function<void()> update;
  QWidget* widget = MakeWidget(control, page, update);
  widget->setObjectName(ToQt(control.Name()));
  shown_.push_back({&control, widget, std::move(update)});
  const std::size_t at = shown_.size() - 1;
  control.OnChange = [this, at] { Update(shown_[at]); };
}

QWidget* FormView::MakeWidget(Control& control, QWidget* page, std::function<void()>& update) {
  switch (control.Kind()) {
    case ControlKind::OptionButton:
      return MakeOption(dynamic_cast<OptionButton&>(control), page, update);
    case ControlKind::CheckBox:
      return MakeCheck(dynamic_cast<CheckBox&>(control), page, update);
    case ControlKind::TextBox: {
      auto& box = dynamic_cast<TextBox&>(control);
      return box.MultiLine ? MakeLines(box, page, update) : MakeLine(box, page, update);
    }
    case ControlKind::Button:
      return MakeButton(dynamic_cast<Button&>(control), page, update);
    case ControlKind::DropDown:
      return MakeDropDown(dynamic_cast<DropDown&>(control), page, update);
    case ControlKind::Sheet:
      return MakeSheet(dynamic_cast<Sheet&>(control), page);
    case ControlKind::Page:
      return new QWidget(this);
    case ControlKind::Label:
      break;
  }
  auto* label = new QLabel(page);
  label->setTextFormat(Qt::PlainText);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  update = [label, &control] {
    const QString caption = CaptionText(control.Caption());
    if (label->buddy() == nullptr) label->setText(caption);
    label->setToolTip(caption.contains('\n') ? caption : QString());
  };
  return label;
}

QWidget* FormView::MakeOption(OptionButton& option, QWidget* page, std::function<void()>& update) {
  auto* button = new QRadioButton(WithMnemonic(option, CaptionText(option.Caption())), page);
  connect(button, &QRadioButton::toggled, this, [this, &option](bool set) {
    if (set) Run([&] { option.UserPicks(); });
  });
  update = [button, &option] {
    // Qt clears the others of the group by itself, and lets none be cleared without another.
    const QSignalBlocker quiet(button);
    if (option.IsSet()) button->setChecked(true);
  };
  return button;
}

QWidget* FormView::MakeCheck(CheckBox& box, QWidget* page, std::function<void()>& update) {
  auto* check = new QCheckBox(WithMnemonic(box, CaptionText(box.Caption())), page);
  connect(check, &QCheckBox::clicked, this, [this, &box] { Run([&] { box.UserToggles(); }); });
  update = [check, &box] { check->setChecked(box.IsTicked()); };
  return check;
}

QWidget* FormView::MakeLine(TextBox& box, QWidget* page, std::function<void()>& update) {
  auto* line = new QLineEdit(page);
  connect(line, &QLineEdit::textEdited, this,
          [this, &box](const QString& text) { Run([&] { box.UserTypes(FromQt(text)); }); });
  // A path as this system writes it is taken as the same place by its Windows name. One that the field itself
  // shows so has its name already, and may have another one: that of the place it is found by.
  connect(line, &QLineEdit::editingFinished, this, [this, line, &box] {
    const std::string native = line->text().toStdString();
    if (native.starts_with('/') && line->isModified()) Run([&] { box.UserTypes(os::ToWindowsPath(native)); });
  });
  update = [line, &box] {
    if (FromQt(line->text()) == box.Text()) return;
    const QString shown = QtWithNativePaths(box.Text());
    if (line->text() != shown) line->setText(shown);
  };
  return line;
}

QWidget* FormView::MakeLines(TextBox& box, QWidget* page, std::function<void()>& update) {
  auto* lines = new QPlainTextEdit(page);
  lines->setTabChangesFocus(true);
  lines->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  lines->setLineWrapMode(QPlainTextEdit::NoWrap);
  connect(lines, &QPlainTextEdit::textChanged, this,
          [this, lines, &box] { Run([&] { box.UserTypes(FromQt(lines->toPlainText())); }); });
  update = [lines, &box] {
    if (FromQt(lines->toPlainText()) != box.Text()) lines->setPlainText(ToQt(box.Text()));
  };
  return lines;
}

QWidget* FormView::MakeButton(Button& button, QWidget* page, std::function<void()>& update) {
  auto* push = new QPushButton(WithMnemonic(button, CaptionText(button.Caption())), page);
  push->setAutoDefault(false);
  connect(push, &QPushButton::clicked, this, [this, &button] { Run([&] { button.UserPresses(); }); });
  update = [] {};
  return push;
}

QWidget* FormView::MakeDropDown(DropDown& list, QWidget* page, std::function<void()>& update) {
  auto* combo = new QComboBox(page);
  connect(combo, &QComboBox::activated, this,
          [this, &list](int index) { Run([&] { list.UserSelects(index + 1); }); });
  update = [combo, &list] {
    for (std::size_t i = static_cast<std::size_t>(combo->count()); i < list.Entries().size(); ++i) {
      combo->addItem(QtWithNativePaths(list.Entries()[i]));
    }
    combo->setCurrentIndex(list.Selected() - 1);
  };
  return combo;
}

QWidget* FormView::MakeSheet(Sheet& sheet, QWidget* page) {
  auto* view = new SheetView(
      sheet, [this](const std::function<void()>& step) { Run(step); }, page);
  sheets_.push_back(view);
  return view;
}

// A label's mnemonic leads to the control behind it.
void FormView::ConnectLabels() {
  for (std::size_t i = 0; i + 1 < shown_.size(); ++i) {
    auto* label = dynamic_cast<QLabel*>(shown_[i].widget);
    // Table and widgets stand in the same order. A label that starts without a caption shows text of its own.
    if (label == nullptr || WizardControlTable()[i].caption.empty()) continue;
    QWidget* next = shown_[i + 1].widget;
    if (next->focusPolicy() == Qt::NoFocus) continue;
    label->setText(WithMnemonic(*shown_[i].control, CaptionText(shown_[i].control->Caption())));
    label->setBuddy(next);
    next->setAccessibleName(CaptionText(shown_[i].control->Caption()));
  }
}

// --- Place and captions ---------------------------------------------------------------------------------

void FormView::Update(const Shown& shown) {
  if (shown.update) shown.update();
  shown.widget->setEnabled(shown.control->Enabled());
  shown.widget->setVisible(shown.control->Visible());
  shown.widget->setGeometry(PlaceOf(shown));
}

QRect FormView::PlaceOf(const Shown& shown) const {
  const Box& box = shown.control->Bounds();
  const QPoint topLeft(ToPixels(box.left, *this), ToPixels(box.top, *this));
  QSize size(ToPixels(box.left + box.width, *this) - topLeft.x(),
             ToPixels(box.top + box.height, *this) - topLeft.y());
  if (IsCaptioned(*shown.control)) {
    const int room = shown.widget->parentWidget()->width() - topLeft.x();
    const QSize hint = shown.widget->sizeHint();
    size.setWidth(std::max(size.width(), std::min(hint.width(), room)));
    size.setHeight(std::max(size.height(), hint.height()));
  }
  return {topLeft, size};
}

QString FormView::WithMnemonic(const Control& control, const QString& caption) {
  QString& taken = taken_.try_emplace(control.Page(), reserved_).first->second;
  const auto isFree = [&](QChar c) { return c.isLetter() && !taken.contains(c, Qt::CaseInsensitive); };
  const auto isWordStart = [&](qsizetype i) { return i == 0 || !caption[i - 1].isLetter(); };
  for (const bool anywhere : {false, true}) {
    for (qsizetype i = 0; i < caption.size(); ++i) {
      if (!isFree(caption[i]) || !(anywhere || isWordStart(i))) continue;
      taken += caption[i];
      return WithoutMarks(caption.left(i)) + '&' + WithoutMarks(caption.mid(i));
    }
  }
  return WithoutMarks(caption);
}

}  // namespace vorlent::wizard
