#include "Apps/Wizard/ImportProgress.h"

#include <QApplication>
#include <QLocale>
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

QString SumOf(const ArchiveImport& import) {
  const std::int64_t there = import.AlreadyThere();
  QString sum = QString("%1 Mails importiert").arg(import.Delivered() - there);
  if (there > 0)
    sum += QString(there == 1 ? ", %1 war schon im Archiv" : ", %1 waren schon im Archiv").arg(there);
  if (import.Expunged() > 0) sum += QString(", %1 als gelöscht markierte übergangen").arg(import.Expunged());
  if (!import.Failed().empty()) sum += QString(", %1 gescheitert").arg(import.Failed().size());
  if (!import.Unmarked().empty())
    sum += QString(", %1 nicht als gelöscht markiert").arg(import.Unmarked().size());
  return sum;
}

QString GermanReasonOf(Marking why) {
  switch (why) {
    case Marking::Marked:
      break;
    case Marking::NoStatus:
      return "sie hat keine Kopfzeile X-Mozilla-Status";
    case Marking::BadStatus:
      return "ihre Kopfzeile X-Mozilla-Status ist keine Zahl; nur das letzte Zeichen der Zeile wurde "
             "geändert";
    case Marking::OtherMail:
      return "die Mailbox wurde inzwischen geändert, und die Mail steht dort nicht mehr wie gelesen";
    case Marking::HiddenPlace:
      return "ihre eigene Kopfzeile Address verdeckt ihre Stelle";
    case Marking::KeptByUser:
      return "Thunderbird läuft";
    case Marking::Unreadable:
      return "die Mailbox konnte dort nicht gelesen oder geschrieben werden";
    case Marking::ReadOnly:
      return "die Mailbox darf nicht geschrieben werden";
  }
  return {};
}

QString LineOf(const MailPlace& mail, const QString& outcome) {
  return QString("%1, Mail an Stelle %2: %3")
      .arg(ToQt(NativePaths().Of(mail.mailbox)))
      .arg(mail.offset)
      .arg(outcome);
}

}  // namespace

ImportProgress::ImportProgress(CancelFlag cancelFlag, QWidget* parent)
    : QDialog(parent),
      cancelFlag_(std::move(cancelFlag)),
      status_(new QLabel(this)),
      bar_(new QProgressBar(this)),
      rate_(new QLabel(this)),
      log_(new LogView(this)),
      back_(new QPushButton("< &Zurück", this)),
      button_(new QPushButton(this)),
      question_(new QMessageBox(QMessageBox::Question, "Abbrechen", "Den Import abbrechen?",
                                QMessageBox::NoButton, this)) {
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
  question_->setInformativeText("Er läuft inzwischen weiter. Was er importiert hat, bleibt im Archiv.");
  QPushButton* yes = question_->addButton("&Ja", QMessageBox::YesRole);
  QPushButton* no = question_->addButton("&Nein", QMessageBox::NoRole);
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
  setWindowTitle(QtWithNativePaths(title));
  bar_->setValue(0);
  rate_->clear();
  log_->clear();
  percent_ = 0;
  back_->hide();
  button_->setText("&Abbrechen");
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
  status_->setText(QtWithNativePaths(text));
  status_->setToolTip(status_->text());
}

void ImportProgress::LogLine(std::string_view line) {
  log_->appendPlainText(QtWithNativePaths(line));
}

void ImportProgress::LocationUnreadable(const Cause& why) {
  Tell(ShownCause(why));
}

void ImportProgress::ErrorRaised(std::int32_t, std::string_view, bool, std::string_view text) {
  Tell(QtWithNativePaths(text));
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
  rate_->setText(QString("%1 Mails, %2 Mails/Sekunde, noch %3")
                     .arg(mails)
                     .arg(QLocale(QLocale::German).toString(rate, 'f', 1))
                     .arg(Duration(left)));
}

// --- The end --------------------------------------------------------------------------------------------

bool ImportProgress::ShowResult(const ArchiveImport& import, const Cause& failure) {
  End();
  for (const auto& [mail, why] : import.Failed())
    log_->appendPlainText(LineOf(mail, ShownCause(why)));
  for (const auto& [mail, why] : import.Unmarked())
    log_->appendPlainText(LineOf(mail, "nicht als gelöscht markiert: " + GermanReasonOf(why)));
  for (const Hint hint : import.HintsWith(failure))
    log_->appendPlainText(ToQt(GermanTextOf(hint)));
  if (failure.IsEmpty()) {
    if (!cancelFlag_()) percent_ = 100;
    status_->setText(SumOf(import) + (cancelFlag_() ? ", dann abgebrochen." : "."));
  } else {
    log_->appendPlainText(SumOf(import) + ", dann gescheitert.");
    status_->setText("Der Import ist gescheitert: " + ShownCause(failure));
  }
  ShowHowFar();
  button_->setText("&Schließen");
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
  rate_->setText("Wird nach der laufenden Mail abgebrochen ...");
}

}  // namespace vorlent::wizard
