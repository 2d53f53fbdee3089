#include "Apps/Wizard/WizardFrame.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/Twips.h"

namespace vorlent::wizard {

namespace {

// The letters of the frame's buttons: Zurück, Weiter, Fertigstellen, Abbrechen.
constexpr auto kFrameLetters = "zwfa";

// A comfortable size to begin with, in twips.
constexpr int kFrameWidth = 10200;
constexpr int kFrameHeight = 6600;

constexpr int kMargin = 12;  // pixels

}  // namespace

WizardFrame::WizardFrame(WizardImport& wizard, std::string_view title, QWidget* parent)
    : QDialog(parent),
      wizard_(wizard),
      heading_(new QWidget(this)),
      title_(new QLabel(ToQt(title), heading_)),
      step_(new QLabel(heading_)),
      form_(new FormView(wizard, kFrameLetters, this)),
      back_(new QPushButton("< &Zurück", this)),
      next_(new QPushButton("&Weiter >", this)),
      finish_(new QPushButton("&Fertigstellen", this)),
      cancel_(new QPushButton("&Abbrechen", this)) {
  setWindowTitle(ToQt(title));
  setSizeGripEnabled(true);

  // The heading lies in the band that the form leaves empty above its pages.
  heading_->setObjectName("Heading");
  heading_->setAutoFillBackground(true);
  heading_->setBackgroundRole(QPalette::Base);
  QFont bold = title_->font();
  bold.setBold(true);
  title_->setFont(bold);
  step_->setObjectName("Step");
  auto* headingLayout = new QVBoxLayout(heading_);
  headingLayout->setContentsMargins(kMargin, 0, kMargin, 0);
  headingLayout->setSpacing(2);
  headingLayout->addStretch();
  headingLayout->addWidget(title_);
  headingLayout->addWidget(step_);
  headingLayout->addStretch();

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

  back_->setObjectName("Back");
  next_->setObjectName("Next");
  finish_->setObjectName("Finish");
  cancel_->setObjectName("Cancel");
  connect(back_, &QPushButton::clicked, this, [this] { GoTo(static_cast<std::int16_t>(page_ - 1)); });
  connect(next_, &QPushButton::clicked, this, [this] { GoTo(static_cast<std::int16_t>(page_ + 1)); });
  connect(finish_, &QPushButton::clicked, this, [this] { Finish(); });
  connect(cancel_, &QPushButton::clicked, this, &QDialog::reject);
  wizard_.SetWindow(static_cast<std::int32_t>(winId()));
  GoTo(1);
}

void WizardFrame::GoTo(std::int16_t page) {
  page_ = page;
  const bool isLast = page == wizard_.Pages();
  back_->setEnabled(page > 1);
  next_->setEnabled(!isLast);
  finish_->setEnabled(isLast);
  // Enter goes on, and finishes on the last page.
  next_->setDefault(!isLast);
  finish_->setDefault(isLast);
  step_->setText(QString("Schritt %1 von %2").arg(page).arg(wizard_.Pages()));
  form_->ShowPage(page);
}

void WizardFrame::Finish() {
  bool mayEnd = false;
  form_->Run([&] { mayEnd = wizard_.Finish(); });
  if (mayEnd) accept();
}

void WizardFrame::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  heading_->setGeometry(0, 0, width(), ToPixels(kPageTop, *this) - kMargin);
  heading_->raise();
}

}  // namespace vorlent::wizard
