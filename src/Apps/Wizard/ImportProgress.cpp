#include "Apps/Wizard/ImportProgress.h"

#include <QApplication>
#include <QLocale>
#include <QMessageBox>
#include <QVBoxLayout>
#include <utility>

#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/Twips.h"
#include "Connectors/Mozilla/ImportRun.h"

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

QString SumOf(const MailAccount& account) {
  QString sum = QString("%1 Mails importiert").arg(account.delivered);
  if (account.expunged > 0) sum += QString(", %1 als gelöscht markierte übergangen").arg(account.expunged);
  if (!account.failed.empty()) sum += QString(", %1 gescheitert").arg(account.failed.size());
  if (!account.unmarked.empty())
    sum += QString(", %1 nicht als gelöscht markiert").arg(account.unmarked.size());
  return sum;
}

}  // namespace

ImportProgress::ImportProgress(std::function<void()> cancel, QWidget* parent)
    : QDialog(parent),
      cancel_(std::move(cancel)),
      status_(new QLabel(this)),
      bar_(new QProgressBar(this)),
      rate_(new QLabel(this)),
      log_(new QPlainTextEdit(this)),
      button_(new QPushButton(this)) {
  setModal(true);
  status_->setObjectName("Status");
  bar_->setObjectName("Progress");
  rate_->setObjectName("Rate");
  log_->setObjectName("Log");
  button_->setObjectName("Cancel");
  status_->setTextFormat(Qt::PlainText);
  status_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  status_->setMinimumWidth(1);
  status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  bar_->setRange(0, kBarSteps);
  log_->setReadOnly(true);
  log_->setLineWrapMode(QPlainTextEdit::NoWrap);
  log_->setTabChangesFocus(true);

  auto* buttons = new QHBoxLayout;
  buttons->addWidget(rate_, 1);
  buttons->addWidget(button_);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(status_);
  layout->addWidget(bar_);
  layout->addWidget(log_, 1);
  layout->addLayout(buttons);
  resize(ToPixels(kProgressWidth, *this), ToPixels(kProgressHeight, *this));
  connect(button_, &QPushButton::clicked, this, &ImportProgress::reject);
}

// --- What the host reports ------------------------------------------------------------------------------

void ImportProgress::ProgressOpened(std::string_view title) {
  opened_ = isRunning_ = true;
  setWindowTitle(ToQt(title));
  bar_->setValue(0);
  rate_->clear();
  log_->clear();
  button_->setText("&Abbrechen");
  button_->setEnabled(true);
  button_->setFocus();
  running_.start();
  lastShown_.start();
  show();
}

void ImportProgress::ProgressMoved(double percent) {
  if (lastShown_.elapsed() < kShowPause) return;
  lastShown_.start();
  ShowRate(percent);
}

void ImportProgress::ProgressClosed() {
  isRunning_ = false;
  rate_->clear();
}

void ImportProgress::StatusChanged(std::string_view text) {
  status_->setText(ToQt(text));
}

void ImportProgress::LogLine(std::string_view line) {
  log_->appendPlainText(ToQt(line));
}

void ImportProgress::LocationUnreadable(std::string_view reason) {
  Tell(reason);
}

void ImportProgress::ErrorRaised(std::int32_t, std::string_view, bool, std::string_view text) {
  Tell(text);
}

void ImportProgress::Tell(std::string_view error) {
  if (isRunning_) {
    log_->appendPlainText(ToQt(error));
  } else {
    QMessageBox::warning(QApplication::activeWindow(), QString(), ToQt(error));
  }
}

void ImportProgress::ShowRate(double percent) {
  bar_->setValue(static_cast<int>(percent * kBarSteps / 100));
  const qint64 elapsed = running_.elapsed();
  if (!button_->isEnabled() || elapsed < kFirstRate || percent <= 0) return;
  const auto mails = static_cast<qlonglong>(ImportRun::LastAccount().delivered);
  const double rate = static_cast<double>(mails) * 1000.0 / static_cast<double>(elapsed);
  const auto left = static_cast<qint64>(static_cast<double>(elapsed) * (100 - percent) / percent);
  rate_->setText(QString("%1 Mails, %2 Mails/Sekunde, noch %3")
                     .arg(mails)
                     .arg(QLocale(QLocale::German).toString(rate, 'f', 1))
                     .arg(Duration(left)));
}

// --- The end --------------------------------------------------------------------------------------------

void ImportProgress::ShowResult(const MailAccount& account, const QString& failure) {
  isRunning_ = false;
  for (const auto& [mails, outcome] :
       {std::pair(&account.failed, ""), std::pair(&account.unmarked, "nicht als gelöscht markiert: ")}) {
    for (const MailAccount::Failed& mail : *mails) {
      log_->appendPlainText(QString("%1, Mail an Stelle %2: %3%4")
                                .arg(ToQt(mail.mailbox))
                                .arg(mail.offset)
                                .arg(outcome, ToQt(mail.reason)));
    }
  }
  if (failure.isEmpty()) {
    bar_->setValue(kBarSteps);
    status_->setText(SumOf(account) + (button_->isEnabled() ? "." : ", dann abgebrochen."));
  } else {
    log_->appendPlainText(SumOf(account) + ", dann gescheitert.");
    status_->setText("Der Import ist gescheitert: " + failure);
  }
  rate_->clear();
  button_->setText("&Schließen");
  button_->setEnabled(true);
  button_->setDefault(true);
  button_->setFocus();
  exec();
}

void ImportProgress::reject() {
  if (!isRunning_) return QDialog::reject();
  cancel_();
  button_->setEnabled(false);
  rate_->setText("Wird hinter der laufenden Mail abgebrochen ...");
}

}  // namespace vorlent::wizard
