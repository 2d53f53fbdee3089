// Makes the pictures of the wizard for the documents: wizard_screenshots SAMPLES TARGET-FOLDER
#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QStyleFactory>
#include <QTreeView>
#include <cstdio>
#include <filesystem>

#include "../UserScript.h"
#include "Apps/Wizard/ImportProgress.h"
#include "Apps/Wizard/WizardApp.h"
#include "Apps/Wizard/WizardFrame.h"
#include "Platform/Posix/PathMapping.h"

namespace {

using namespace vorlent;
using namespace vorlent::wizard;
namespace fs = std::filesystem;

fs::path target;

void Save(QWidget& window, const char* name) {
  QTest::qWait(50);
  window.grab().save(QString::fromStdString((target / name).string()));
}

void WalkThroughThePages(WizardFrame& frame) {
  Press(Qt::Key_Tab);
  for (const Qt::Key key :
       {Qt::Key_Right, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Down,
        Qt::Key_Right, Qt::Key_Up, Qt::Key_Up, Qt::Key_Space}) {
    Press(key);
  }
  Save(frame, "wizard-1-folders.png");
  Press(Qt::Key_Return);
  Save(frame, "wizard-2-mailboxes.png");
  Press(Qt::Key_Return);
  Save(frame, "wizard-3-target.png");
  Press(Qt::Key_Return);
  Find<QPlainTextEdit>(frame, "T_Keywords").setFocus();
  Type("Büro");
  Press(Qt::Key_Return);
  Type("alte Mails");
  Save(frame, "wizard-4-keywords.png");
  Click(frame, "Finish");
}

// A long enough mailbox for the running import to be seen.
void WriteMailbox(const fs::path& file) {
  std::FILE* mailbox = std::fopen(file.c_str(), "wb");
  for (int i = 1; i <= 20'000; ++i) {
    std::fprintf(
        mailbox,
        "From - x\r\nX-Mozilla-Status: 0001\r\nDate: Sun, 09 May 2010 14:30:00 +0200\r\nSubject: %d\r\n"
        "Message-ID: <%d@x>\r\n\r\ntext\r\n\r\n",
        i, i);
  }
  std::fclose(mailbox);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return std::fputs("usage: wizard_screenshots SAMPLES TARGET-FOLDER\n", stderr), 2;
  const fs::path work = "/tmp/vorlent";
  fs::remove_all(work);
  fs::create_directories(work);
  fs::copy(argv[1], work / "samples", fs::copy_options::recursive);
  target = argv[2];
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  const QApplication application(argc, argv);
  os::SetDrive('S', (work / "samples").string());
  os::SetAppDataFolder((work / "samples/AppData").string());
  WriteMailbox(work / "samples/AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders/Inbox");

  UserScript user;
  user.In<WizardFrame>(WalkThroughThePages);
  user.In<ImportProgress>(
      [](ImportProgress& progress) {
        Save(progress, "wizard-5-import.png");
        Click(progress, "Cancel");
      },
      [](ImportProgress& progress) { return !Find<QLabel>(progress, "Rate").text().isEmpty(); });
  user.In<ImportProgress>([](ImportProgress& progress) { Click(progress, "Cancel"); },
                          [](ImportProgress& progress) {
                            return Find<QPushButton>(progress, "Cancel").text() == QString("&Schließen");
                          });
  RunWizardApp({{(work / "Archiv").string()}});
  fs::remove_all(work);
  return 0;
}
