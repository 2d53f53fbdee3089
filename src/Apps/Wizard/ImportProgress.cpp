#include "Apps/Wizard/ImportProgress.h"

#include <QApplication>
#include <QVBoxLayout>
#include <utility>

#include "Apps/Wizard/Guarded.h"
#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/Twips.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::wizard {

namespace {

// A size to begin with in which most mailboxes are seen with their whole path, in twips.
constexpr int kProgressWidth = 10200;
constexpr int kProgressHeight = 5100;

constexpr int kBarSteps = 10'000;
constexpr qint64 kShowPause = 100;  // milliseconds between two changes of the numbers
constexpr qint64 kFirstRate = 500;  // before that a rate says nothing

QString Duration(qint64 milliseconds) {
  const qint64 seconds = (milliseconds + 999) / 1000;
  return QString("%1:%2").arg(seconds / 60).arg(seconds % 60, 2, 10, QChar('0'));
}

std::string Counted(auto count) {
  return std::to_string(count);
}

QString SumOf(const ArchiveImport& import) {
  const std::int64_t there = import.AlreadyThere();
  QString sum = Worded(Phrase::MailsImported, {Counted(import.Delivered() - there)});
  if (there > 0) sum += Worded(there == 1 ? Phrase::OneWasThere : Phrase::SeveralWereThere, {Counted(there)});
  if (import.Expunged() > 0) sum += Worded(Phrase::ExpungedPassed, {Counted(import.Expunged())});
  if (!import.Failed().empty()) sum += Worded(Phrase::SomeFailed, {Counted(import.Failed().size())});
  if (!import.Unmarked().empty()) sum += Worded(Phrase::SomeUnmarked, {Counted(import.Unmarked().size())});
  return sum;
}

QString LineOf(const MailPlace& mail, const QString& outcome) {
  return Worded(Phrase::MailAtOffset,
                {NativePaths().Of(mail.mailbox), Counted(mail.offset), outcome.toStdString()});
}

}  // namespace

ImportProgress::ImportProgress(CancelFlag cancelFlag, QWidget* parent)
    : QDialog(parent),
      cancelFlag_(std::move(cancelFlag)),
      status_(new QLabel(this)),
      bar_(new QProgressBar(this)),
      rate_(new QLabel(this)),
      log_(new LogView(this)),
      back_(new QPushButton(Worded(Phrase::Back), this)),
      button_(new QPushButton(this)),
      question_(new QMessageBox(QMessageBox::Question, Worded(Phrase::CancelTitle),
                                Worded(Phrase::CancelImport), QMessageBox::NoButton, this)) {
  setModal(true);
  status_->setObjectName("Status");
  bar_->setObjectName("Progress");
  rate_->setObjectName("Rate");
  log_->setObjectName("Log");
  back_->setObjectName("Back");
  button_->setObjectName("Cancel");
  status_->setTextFormat(Qt::PlainText);
  status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  status_->setMinimumWidth(1);
  status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  bar_->setRange(0, kBarSteps);
  // Enter and the space bar press nothing as long as the user doesn't go to the button.
  button_->setAutoDefault(false);
  question_->setInformativeText(Worded(Phrase::ImportGoesOn));
  QPushButton* yes = question_->addButton(Worded(Phrase::Yes), QMessageBox::YesRole);
  QPushButton* no = question_->addButton(Worded(Phrase::No), QMessageBox::NoRole);
  question_->setDefaultButton(no);
  question_->setEscapeButton(no);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(rate_, 1);
  buttons->addWidget(back_);
  buttons->addWidget(button_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(status_);
  layout->addWidget(bar_);
  layout->addWidget(log_, 1);
  layout->addLayout(buttons);
  resize(ToPixels(kProgressWidth, *this), ToPixels(kProgressHeight, *this));
  connect(button_, &QPushButton::clicked, this, &ImportProgress::reject);
  connect(back_, &QPushButton::clicked, this, &QDialog::accept);
  connect(yes, &QPushButton::clicked, this, [this] { Guarded(this, [&] { Stop(); }); });
}

// --- What the host reports ------------------------------------------------------------------------------

void ImportProgress::ProgressOpened(std::string_view title) {
  opened_ = isRunning_ = true;
  setWindowTitle(QtTold(title));
  bar_->setValue(0);
  rate_->clear();
  log_->clear();
  percent_ = 0;
  back_->hide();
  button_->setText(Worded(Phrase::Cancel));
  button_->setDefault(false);
  log_->setFocus();
  running_.start();
  lastShown_.start();
  show();
}

// After a mailbox comes its place among all, whatever was read of it: a run that is told to stop came only as
// far as it was.
void ImportProgress::ProgressMoved(double percent) {
  if (cancelFlag_()) return;
  percent_ = percent;
  if (lastShown_.elapsed() < kShowPause) return;
  lastShown_.start();
  ShowHowFar();
  ShowRate();
}

void ImportProgress::ProgressClosed() {
  End();
}

void ImportProgress::End() {
  isRunning_ = false;
  question_->close();
  rate_->clear();
}

void ImportProgress::StatusChanged(std::string_view text) {
  status_->setText(QtTold(text));
  status_->setToolTip(status_->text());
}

void ImportProgress::LogLine(std::string_view line) {
  log_->appendPlainText(QtTold(line));
}

void ImportProgress::LocationUnreadable(const Cause& why) {
  Tell(ShownCause(why));
}

void ImportProgress::ErrorRaised(std::int32_t, std::string_view, bool, std::string_view text) {
  Tell(QtTold(text));
}

void ImportProgress::Tell(const QString& error) {
  if (isRunning_) {
    log_->appendPlainText(error);
  } else {
    QMessageBox::warning(QApplication::activeWindow(), QString(), error);
  }
}

void ImportProgress::ShowHowFar() {
  bar_->setValue(static_cast<int>(percent_ * kBarSteps / 100));
}

void ImportProgress::ShowRate() {
  const qint64 elapsed = running_.elapsed();
  if (tally_ == nullptr || elapsed < kFirstRate || percent_ <= 0) return;
  const auto mails = static_cast<qlonglong>(tally_->Delivered());
  const double rate = static_cast<double>(mails) * 1000.0 / static_cast<double>(elapsed);
  const auto left = static_cast<qint64>(static_cast<double>(elapsed) * (100 - percent_) / percent_);
  rate_->setText(Worded(Phrase::Rate, {Counted(mails), FormLocale().toString(rate, 'f', 1).toStdString(),
                                       Duration(left).toStdString()}));
}

// --- The end --------------------------------------------------------------------------------------------

bool ImportProgress::ShowResult(const ArchiveImport& import, const Cause& failure) {
  End();
  for (const auto& [mail, why] : import.Failed())
    log_->appendPlainText(LineOf(mail, ShownCause(why)));
  for (const auto& [mail, why] : import.Unmarked())
    log_->appendPlainText(LineOf(mail, Worded(Phrase::NotMarkedAsDeleted, {InWords(why, FormLanguage())})));
  for (const Hint hint : import.HintsWith(failure))
    log_->appendPlainText(ToQt(InWords(hint, FormLanguage())));
  if (failure.IsEmpty()) {
    if (!cancelFlag_()) percent_ = 100;
    status_->setText(SumOf(import) + (cancelFlag_() ? Worded(Phrase::ThenCancelled) : "."));
  } else {
    log_->appendPlainText(SumOf(import) + Worded(Phrase::ThenFailed));
    status_->setText(Worded(Phrase::ImportFailed, {ShownCause(failure).toStdString()}));
  }
  ShowHowFar();
  button_->setText(Worded(Phrase::Close));
  button_->setEnabled(true);
  back_->setVisible(!failure.IsEmpty());
  QPushButton* likely = failure.IsEmpty() ? button_ : back_;
  likely->setDefault(true);
  likely->setFocus();
  opened_ = false;
  return exec() == Accepted;
}

void ImportProgress::reject() {
  if (!isRunning_) return QDialog::reject();
  Guarded(this, [&] {
    if (!cancelFlag_()) question_->open();
  });
}

void ImportProgress::Stop() {
  cancelFlag_() = true;
  button_->setEnabled(false);
  rate_->setText(Worded(Phrase::EndsAfterMail));
}

}  // namespace vorlent::wizard
