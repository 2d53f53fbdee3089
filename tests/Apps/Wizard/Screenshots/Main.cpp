// Makes the pictures of the wizard for the documents:
//   wizard_screenshots SAMPLES TARGET-FOLDER [TIMES]
// With TIMES, such as 2 or 0.5, the windows are that many times as large as they come, or as small as they
// get. The language is that of the locale.
#include <QApplication>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QStyleFactory>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "../UserScript.h"
#include "Apps/Wizard/ImportProgress.h"
#include "Apps/Wizard/MoveQuestion.h"
#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/WizardApp.h"
#include "Apps/Wizard/WizardFrame.h"
#include "Platform/Rules.h"
#include "Platform/Settings.h"

namespace {

using namespace vorlent;
using namespace vorlent::wizard;
namespace fs = std::filesystem;

fs::path target;
double times = 1;

void Resize(QWidget& window) {
  window.resize(window.size() * times);
}

void Save(QWidget& window, const char* name) {
  QTest::qWait(50);
  constexpr int kSmallestFile = 0;
  window.grab().save(QString::fromStdString((target / name).string()), "PNG", kSmallestFile);
}

void WalkThroughThePages(WizardFrame& frame) {
  Resize(frame);
  Press(Qt::Key_Tab);
  // Opens the root, the first profile and its second account, and ticks the first account.
  for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Down,
                            Qt::Key_Right, Qt::Key_Up, Qt::Key_Space}) {
    Press(key);
  }
  Save(frame, "wizard-1-folders.png");
  Press(Qt::Key_Return);
  Save(frame, "wizard-2-mailboxes.png");
  Press(Qt::Key_Return);
  Click(frame, "Option3");
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
  for (int i = 1; i <= 600; ++i) {
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
  if (argc != 3 && argc != 4) {
    std::fputs("usage: wizard_screenshots SAMPLES TARGET-FOLDER [TIMES]\n", stderr);
    return 2;
  }
  target = argv[2];
  if (argc == 4) times = std::atof(argv[3]);
  fs::create_directories(target);

  // Its name is seen in the pictures, and should be the same each time.
  const fs::path work = fs::temp_directory_path() / "anna";
  if (!fs::create_directory(work)) {
    std::fprintf(stderr, "%s is there already\n", work.c_str());
    return 1;
  }
  fs::copy(argv[1], work / "samples", fs::copy_options::recursive);
  WriteMailbox(work / "samples/AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders/Inbox");
  ChooseRules(Rules::Today());
  os::SetDrive('D', work.string());
  os::SetDrive('S', (work / "samples").string());
  os::SetAppDataFolder((work / "samples/AppData").string());

  QApplication::setStyle(QStyleFactory::create("Fusion"));
  const QApplication application(argc, argv);
  UserScript user;
  user.In<WizardFrame>(WalkThroughThePages);
  user.In<MoveQuestion>([](MoveQuestion& question) {
    Save(question, "wizard-5-move.png");
    Click(question, "Move");
  });
  user.In<ImportProgress>([](ImportProgress& progress) { Save(progress, "wizard-6-import.png"); },
                          [](ImportProgress& progress) {
                            const auto& bar = Find<QProgressBar>(progress, "Progress");
                            return bar.value() > bar.maximum() / 2;
                          });
  user.In<ImportProgress>(
      [](ImportProgress& progress) {
        Save(progress, "wizard-7-result.png");
        Click(progress, "Cancel");
      },
      [](ImportProgress& progress) {
        return Find<QPushButton>(progress, "Cancel").text() == Worded(Phrase::Close);
      });
  RunWizardApp({{(work / "Archiv").string()}});
  fs::remove_all(work);
  return 0;
}
