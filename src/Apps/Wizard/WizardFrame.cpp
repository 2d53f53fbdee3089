#include "Apps/Wizard/WizardFrame.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QVBoxLayout>

#include "Apps/Wizard/Guarded.h"
#include "Apps/Wizard/MoveQuestion.h"
#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/Twips.h"
#include "Connectors/Mozilla/ImportCommand.h"

namespace vorlent::wizard {

namespace {

// A comfortable size to begin with, in twips.
constexpr int kFrameWidth = 10200;
constexpr int kFrameHeight = 6600;

constexpr int kMargin = 12;  // pixels

// Whether a sheet has a ticked row; one without a text, as an empty path gives it, is none.
bool HasTickedRow(const Sheet& sheet) {
  for (std::int32_t position = 1; position <= sheet.RowCount(); ++position) {
    const SheetRow& row = sheet.Row(position);
    if (row.IsTicked() && !row.Text().empty()) return true;
  }
  return false;
}

// Why page 1 leads to no mailbox, and what to do there.
QString WhyNoMailboxes(const WizardForm& form) {
  const bool areFolders = form.Get<OptionButton>("Option1").IsSet();
  if (areFolders && !HasTickedRow(form.Get<Sheet>("qzelSheet1"))) return Worded(Phrase::NoFolderTicked);
  if (!areFolders && form.Get<TextBox>("Text1").Text().empty()) return Worded(Phrase::NoFileNamed);
  const bool areAllRead = form.Get<CheckBox>("Check1").IsTicked();
  return Worded(areFolders ? Phrase::NoMailboxTicked : Phrase::NoMailboxInFolder,
                {areAllRead ? "" : InWords(Phrase::OrTickSubfolders, {}, FormLanguage())});
}

// What a page lacks that the import needs, and what to do there; "" if nothing.
QString MissingOn(std::int16_t page, const WizardForm& form) {
  switch (page) {
    case 1:
      return HasTickedRow(form.Get<Sheet>("qzelSheet2")) ? QString() : WhyNoMailboxes(form);
    case 2:
      if (HasTickedRow(form.Get<Sheet>("qzelSheet2"))) return {};
      return Worded(Phrase::NoneTicked);
    case 3:
      if (!form.Get<DropDown>("Combo1").Text().empty()) return {};
      return Worded(Phrase::NoTarget);
    default:
      return {};
  }
}

}  // namespace

WizardFrame::WizardFrame(WizardImport& wizard, std::string_view title, QWidget* parent)
    : QDialog(parent),
      wizard_(wizard),
      heading_(new QWidget(this)),
      title_(new QLabel(CaptionText(title), heading_)),
      step_(new QLabel(heading_)),
      form_(new FormView(wizard, Worded(Phrase::FrameLetters), this)),
      back_(new QPushButton(Worded(Phrase::Back), this)),
      next_(new QPushButton(Worded(Phrase::Next), this)),
      finish_(new QPushButton(Worded(Phrase::Finish), this)),
      cancel_(new QPushButton(Worded(Phrase::Cancel), this)) {
  setWindowTitle(CaptionText(title));
  setSizeGripEnabled(true);
  LayOutHeading();
  LayOutFrame();
  ConnectButtons();
  wizard_.SetWindow(static_cast<std::int32_t>(winId()));
  GoTo(1);
}

// The heading lies in the band that the form leaves empty above its pages.
void WizardFrame::LayOutHeading() {
  heading_->setObjectName("Heading");
  heading_->setAutoFillBackground(true);
  heading_->setBackgroundRole(QPalette::Base);
  QFont bold = title_->font();
  bold.setBold(true);
  title_->setFont(bold);
  step_->setObjectName("Step");
  auto* layout = new QVBoxLayout(heading_);
  layout->setContentsMargins(kMargin, 0, kMargin, 0);
  layout->setSpacing(2);
  layout->addStretch();
  layout->addWidget(title_);
  layout->addWidget(step_);
  layout->addStretch();
}

void WizardFrame::LayOutFrame() {
  auto* line = new QFrame(this);
  line->setFrameShape(QFrame::HLine);
  line->setFrameShadow(QFrame::Sunken);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(back_);
  buttons->addWidget(next_);
  buttons->addSpacing(kMargin);
  buttons->addWidget(finish_);
  buttons->addWidget(cancel_);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(kMargin, 0, kMargin, kMargin);
  layout->addWidget(form_, 1);
  layout->addSpacing(kMargin / 2);
  layout->addWidget(line);
  layout->addLayout(buttons);
  form_->setMinimumSize(form_->DesignSize());
  resize(ToPixels(kFrameWidth, *this), ToPixels(kFrameHeight, *this));
}

void WizardFrame::ConnectButtons() {
  back_->setObjectName("Back");
  next_->setObjectName("Next");
  finish_->setObjectName("Finish");
  cancel_->setObjectName("Cancel");
  connect(back_, &QPushButton::clicked, this,
          [this] { Guarded(this, [&] { GoTo(static_cast<std::int16_t>(page_ - 1)); }); });
  connect(next_, &QPushButton::clicked, this, [this] { Guarded(this, [&] { GoOn(); }); });
  connect(finish_, &QPushButton::clicked, this, [this] { Guarded(this, [&] { Finish(); }); });
  connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
}

// The list of mailboxes is made on the way to page 2, so that only there it is seen to be empty.
void WizardFrame::GoOn() {
  const std::int16_t left = page_;
  const bool went = GoTo(static_cast<std::int16_t>(left + 1));
  const QString missing = MissingOn(left, wizard_.Form());
  if (missing.isEmpty()) return;
  GoTo(left);
  // A failure on the way was told already, and is the reason.
  if (went) QMessageBox::information(this, windowTitle(), missing);
}

bool WizardFrame::GoTo(std::int16_t page) {
  page_ = page;
  const bool isLast = page == wizard_.Pages();
  back_->setEnabled(page > 1);
  next_->setEnabled(!isLast);
  finish_->setEnabled(isLast);
  // Enter goes on, and finishes on the last page.
  next_->setDefault(!isLast);
  finish_->setDefault(isLast);
  step_->setText(Worded(Phrase::Step, {std::to_string(page), std::to_string(wizard_.Pages())}));
  return form_->ShowPage(page);
}

void WizardFrame::Finish() {
  bool mayEnd = false;
  form_->Run([&] { mayEnd = wizard_.Finish(); });
  if (!mayEnd) return;
  const ImportCommand command = ImportCommand::Parse(wizard_.Parameter());
  if (!command.move || MoveQuestion(command, this).exec() == QDialog::Accepted) accept();
}

void WizardFrame::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  heading_->setGeometry(0, 0, width(), ToPixels(kPageTop, *this) - kMargin);
  heading_->raise();
}

}  // namespace vorlent::wizard
