#include "Apps/Wizard/QtPlatform.h"

#include <QApplication>
#include <QFileDialog>
#include <QMessageBox>
#include <QPushButton>
#include <utility>

#include "Apps/Wizard/QtText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/NativePaths.h"

namespace vorlent::wizard {

namespace {

constexpr qint64 kYieldPause = 10;  // milliseconds

// Flags of the platform's file dialog.
constexpr std::int32_t kOverwritePrompt = 2;
constexpr std::int32_t kFileMustExist = 4096;

QMessageBox::Icon IconOf(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Question:
      return QMessageBox::Question;
    case MessageIcon::Exclamation:
      return QMessageBox::Warning;
    case MessageIcon::Critical:
      return QMessageBox::Critical;
    case MessageIcon::Information:
      break;
  }
  return QMessageBox::Information;
}

// "label\0pattern\0...\0\0" as "label (pattern)" entries; "*.*" means every name, one without a point too.
QStringList NameFilters(std::string filter) {
  QStringList filters;
  while (!filter.empty() && filter.front() != '\0') {
    const std::string label = CutToken(filter, std::string_view("\0", 1));
    std::string patterns = CutToken(filter, std::string_view("\0", 1));
    ReplaceText(patterns, ";", " ");
    filters += CaptionText(label) + " (" + ToQt(patterns == "*.*" ? "*" : patterns) + ")";
  }
  return filters;
}

QString NativeOf(std::string_view path) {
  return QString::fromStdString(os::ToNativePath(path));
}

// The window that a number of the platform means, or else the one at work.
QWidget* WindowOf(std::int32_t handle) {
  QWidget* window = QWidget::find(static_cast<WId>(handle));
  return window != nullptr ? window : QApplication::activeWindow();
}

// A path that the caller has no room for counts as none, as with the platform's own dialog.
FileDialogAnswer Chosen(const QString& native, std::int32_t room) {
  FileDialogAnswer answer;
  std::string path = os::ToWindowsPath(native.toStdString());
  if (std::cmp_greater(path.size(), room)) return answer;
  answer.chosen = true;
  answer.fileNameOffset = ToInt16(GetPath(path).size());
  answer.nameBuffer = std::move(path) + '\0';
  return answer;
}

}  // namespace

MessageAnswer QtPlatform::ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                                      MessageButtons buttons) {
  QMessageBox box(IconOf(icon), QtTold(title), QtTold(text), QMessageBox::NoButton,
                  QApplication::activeWindow());
  box.setTextFormat(Qt::PlainText);
  if (buttons == MessageButtons::Ok) {
    box.addButton(QMessageBox::Ok);
    box.exec();
    return MessageAnswer::Ok;
  }
  QPushButton* yes = box.addButton(Worded(Phrase::Yes), QMessageBox::YesRole);
  QPushButton* no = box.addButton(Worded(Phrase::No), QMessageBox::NoRole);
  QPushButton* cancel = box.addButton(Worded(Phrase::CancelTitle), QMessageBox::RejectRole);
  box.setDefaultButton(yes);
  box.setEscapeButton(cancel);
  box.exec();
  if (box.clickedButton() == yes) return MessageAnswer::Yes;
  return box.clickedButton() == no ? MessageAnswer::No : MessageAnswer::Cancel;
}

FileDialogAnswer QtPlatform::ShowFileDialog(const FileDialogRequest& request) {
  QFileDialog dialog(WindowOf(request.owner), CaptionText(request.title), NativeOf(request.initialFolder));
  dialog.setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(request.flags & kFileMustExist ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
  dialog.setOption(QFileDialog::DontConfirmOverwrite, (request.flags & kOverwritePrompt) == 0);
  dialog.setNameFilters(NameFilters(request.filter));
  if (request.save) dialog.setDefaultSuffix(ToQt(request.defaultExtension));
  std::string name = request.nameBuffer;
  name = CutToken(name, std::string_view("\0", 1));
  if (!name.empty()) dialog.selectFile(ToQt(name));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
  return Chosen(dialog.selectedFiles().front(), request.nameBufferSize);
}

void QtPlatform::SetPointer(bool busy) {
  if (std::exchange(busy_, busy) == busy) return;
  if (busy) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QApplication::restoreOverrideCursor();
  }
}

void QtPlatform::YieldOnce() {
  if (lastYield_.isValid() && lastYield_.elapsed() < kYieldPause) return;
  QCoreApplication::processEvents();
  lastYield_.start();
}

}  // namespace vorlent::wizard
