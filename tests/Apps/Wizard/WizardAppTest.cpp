#include "Apps/Wizard/WizardApp.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QTreeView>
#include <filesystem>

#include "Apps/Wizard/ImportProgress.h"
#include "Apps/Wizard/QtDialogs.h"
#include "Apps/Wizard/QtPlatform.h"
#include "Apps/Wizard/WizardFrame.h"
#include "Platform/Posix/PathMapping.h"
#include "Standalone/StandaloneHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/TemporaryFolder.h"
#include "UserScript.h"

namespace vorlent::wizard {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;

// The sample profiles, copied to a drive of their own, and a place for archives.
class WizardAppTest : public testing::Test {
 protected:
  WizardAppTest() {
    folder.MakeFolder("samples");
    std::filesystem::copy(std::filesystem::path(VORLENT_SAMPLES) / "AppData",
                          folder.Native("samples/AppData"), std::filesystem::copy_options::recursive);
    os::SetDrive('S', folder.Native("samples").string());
    os::SetAppDataFolder(folder.Native("samples/AppData").string());
  }
  ~WizardAppTest() override { os::ResetPathMapping(); }

  WizardAppOptions WithArchive() { return {{folder.Native("Archiv").string()}}; }

  // The texts of the items in the archive, in order.
  std::vector<std::string> Archived() {
    HostObserver nobody;
    StandaloneHost host(nobody);
    const ArchivePtr archive = host.Global().OpenArchive(folder.Path("Archiv"));
    std::vector<std::string> texts;
    for (std::int32_t i = 1; i <= archive->ItemCount(); ++i)
      texts.push_back(archive->ItemAt(i)->Text());
    return texts;
  }

  // On page 1: a file by its path.
  static void ChooseFile(WizardFrame& frame, const std::string& path) {
    Find<QLineEdit>(frame, "Text1").setFocus();
    Type(QString::fromStdString(path));
    Press(Qt::Key_Return);
  }
  // Acts when the import is over and its window says what became of it.
  static void InResult(UserScript& user, std::function<void(ImportProgress&)> act) {
    user.In<ImportProgress>(std::move(act), [](ImportProgress& progress) {
      return Find<QPushButton>(progress, "Cancel").text() == QString("&Schließen");
    });
  }
  static void GoOnToTheEnd(WizardFrame& frame) {
    while (frame.isVisible())
      Press(Qt::Key_Return);
  }

  // A mailbox of so many mails.
  std::string ManyMails(int count) {
    std::string bytes;
    for (int i = 1; i <= count; ++i) {
      bytes +=
          "From - x\r\nX-Mozilla-Status: 0001\r\nDate: Sun, 09 May 2010 14:30:00 +0200\r\nSubject: mail " +
          std::to_string(i) + "\r\nMessage-ID: <" + std::to_string(i) + "@x>\r\n\r\ntext\r\n\r\n";
    }
    folder.Write("many", bytes);
    return folder.Native("many").string();
  }

  TemporaryFolder folder;
};

const std::string kLocalFolders =
    "S:\\AppData\\Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\Local Folders\\";

// --- The command ----------------------------------------------------------------------------------------

TEST_F(WizardAppTest, FourPagesByKeyAndMouseGiveTheImportCommand) {
  HostObserver nobody;
  const auto host = std::make_shared<StandaloneHost>(nobody);
  const auto before = HostObjects::Install(host);
  const ScopedPlatform platform(std::make_shared<QtPlatform>());
  std::string prepared;
  QtDialogs dialogs([&](const std::string& path) { return host->Global().OpenArchive(path)->Name(); },
                    [&](const std::string& command) { prepared = command; });
  host->Global().OpenArchive(folder.Path("Archiv"));
  host->Global().OpenArchive(folder.Path("Zweites Archiv"));

  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    // Page 1: open the root and the profile, tick the account.
    Press(Qt::Key_Tab);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Space})
      Press(key);
    Click(frame, "Next");
    // Page 2: all mailboxes of the account; leave the waste behind.
    auto& list = Find<QTreeView>(frame, "qzelSheet2");
    EXPECT_EQ(list.model()->rowCount(), 7);
    for (int row = 0; row < 7; ++row) {
      const QModelIndex index = list.model()->index(row, 0);
      if (!index.data().toString().endsWith("Trash")) continue;
      list.setCurrentIndex(index);
      Press(Qt::Key_Space);
    }
    PressAlt(Qt::Key_W);
    // Page 3: the other archive, move.
    Press(Qt::Key_Down);
    PressAlt(Qt::Key_D);
    Press(Qt::Key_Return);
    // Page 4: two keywords.
    Find<QPlainTextEdit>(frame, "T_Keywords").setFocus();
    Type("Büro");
    Press(Qt::Key_Return);
    Press(Qt::Key_Return);
    Type("alte Mails");
    Click(frame, "Finish");
  });
  const std::string command =
      dialogs.ShowWizard("Import Thunderbird Mails", "VorlentMozilla.WizardImport", "");
  HostObjects::Install(before);

  std::vector<std::string> lines;
  for (std::string rest = command; !rest.empty();) {
    const std::size_t end = rest.find("\r\n");
    lines.push_back(rest.substr(0, end));
    rest.erase(0, end + 2);
  }
  EXPECT_THAT(
      lines,
      ElementsAre("target " + folder.Path("Zweites Archiv"), "action move", "keyword #subpath", "option tree",
                  "keyword B\xFCro", "keyword alte Mails", "import " + kLocalFolders + "Entw\xFCrfe",
                  "import " + kLocalFolders + "Inbox", "import " + kLocalFolders + "Sent",
                  "import " + kLocalFolders + "Zitate", "import " + kLocalFolders + "Inbox.sbd\\Projekte",
                  "import " + kLocalFolders + "Inbox.sbd\\Projekte.sbd\\Archiv 2025"));
  EXPECT_EQ(prepared, command);
}

// --- The whole program ----------------------------------------------------------------------------------

TEST_F(WizardAppTest, ImportGoesFromThePagesIntoANewArchive) {
  const std::string bytes =
      folder.Read("samples/AppData/Thunderbird/Profiles/w2x8q7cd.buero/Mail/mail.example.com/Inbox");
  UserScript user;
  user.In<WizardFrame>([](WizardFrame& frame) {
    Press(Qt::Key_Tab);
    // Down over the profile "default" to the second one, and into its account.
    for (const Qt::Key key :
         {Qt::Key_Right, Qt::Key_Down, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Space}) {
      Press(key);
    }
    GoOnToTheEnd(frame);
  });
  InResult(user, [](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(),
                testing::MatchesRegex("[1-9][0-9]* Mails importiert.*\\."));
    auto& bar = Find<QProgressBar>(progress, "Progress");
    EXPECT_EQ(bar.value(), bar.maximum());
    const std::string log = Find<QPlainTextEdit>(progress, "Log").toPlainText().toStdString();
    EXPECT_THAT(log, HasSubstr("mail.example.com\\Inbox\n"));
    EXPECT_THAT(log, HasSubstr(" finished ("));
    EXPECT_THAT(progress.windowTitle().toStdString(), testing::StartsWith("Import Thunderbird "));
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(RunWizardApp(WithArchive()), 0);
  EXPECT_FALSE(Archived().empty());
  EXPECT_EQ(folder.Read("samples/AppData/Thunderbird/Profiles/w2x8q7cd.buero/Mail/mail.example.com/Inbox"),
            bytes);
}

TEST_F(WizardAppTest, MovedMailsAreInTheArchiveAndMarkedInTheMailbox) {
  const std::string box = ManyMails(3);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    Press(Qt::Key_Return);
    PressAlt(Qt::Key_D);
    GoOnToTheEnd(frame);
  });
  InResult(user, [](ImportProgress&) { Press(Qt::Key_Escape); });
  EXPECT_EQ(RunWizardApp(WithArchive()), 0);
  EXPECT_THAT(Archived(), ElementsAre("mail 1", "mail 2", "mail 3"));
  const std::string left = folder.Read("many");
  EXPECT_THAT(left, HasSubstr("X-Mozilla-Status: 0009\r\n"));
  EXPECT_THAT(left, testing::Not(HasSubstr("X-Mozilla-Status: 0001\r\n")));
}

TEST_F(WizardAppTest, NewArchiveIsChosenOnPageThree) {
  const std::string box = ManyMails(2);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    Press(Qt::Key_Return);
    EXPECT_EQ(Find<QComboBox>(frame, "Combo1").count(), 0);
    PressAlt(Qt::Key_N);
    EXPECT_EQ(Find<QComboBox>(frame, "Combo1").currentText().toStdString(), folder.Path("Archiv"));
    EXPECT_THAT(Find<QLabel>(frame, "LabelInfo").text().toStdString(),
                HasSubstr("FileLocation: " + folder.Path("Archiv")));
    GoOnToTheEnd(frame);
  });
  user.In<QFileDialog>([&](QFileDialog& dialog) {
    std::filesystem::create_directory(folder.Native("Archiv"));
    EXPECT_THAT(dialog.windowTitle().toStdString(), testing::StartsWith("Ziel-Datenquelle"));
    auto& name = Find<QLineEdit>(dialog, "fileNameEdit");
    name.setFocus();
    name.clear();
    Type(QString::fromStdString(folder.Native("Archiv").string()));
    Press(Qt::Key_Return);
  });
  InResult(user, [](ImportProgress&) { Press(Qt::Key_Return); });
  EXPECT_EQ(RunWizardApp({}), 0);
  EXPECT_THAT(Archived(), ElementsAre("mail 1", "mail 2"));
}

TEST_F(WizardAppTest, CancelIsSeenBetweenTwoMails) {
  const std::string box = ManyMails(3000);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    GoOnToTheEnd(frame);
  });
  user.In<ImportProgress>([](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(), testing::EndsWith("many"));
    Click(progress, "Cancel");
    EXPECT_FALSE(Find<QPushButton>(progress, "Cancel").isEnabled());
  });
  InResult(user, [](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(),
                testing::MatchesRegex("[0-9]+ Mails importiert, dann abgebrochen\\."));
    Click(progress, "Cancel");
  });
  EXPECT_EQ(RunWizardApp(WithArchive()), 130);
  const std::vector<std::string> archived = Archived();
  EXPECT_GE(archived.size(), 1U);
  EXPECT_LT(archived.size(), 3000U);
  EXPECT_EQ(archived.back(), "mail " + std::to_string(archived.size()));
}

TEST_F(WizardAppTest, CancelledWizardImportsNothing) {
  UserScript user;
  user.In<WizardFrame>([](WizardFrame&) { Press(Qt::Key_Escape); });
  EXPECT_EQ(RunWizardApp(WithArchive()), 130);
  EXPECT_THAT(Archived(), ElementsAre());
}

TEST_F(WizardAppTest, FailureOfTheImportIsShown) {
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, folder.Native("nowhere").string());
    GoOnToTheEnd(frame);
  });
  InResult(user, [](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(),
                testing::AllOf(testing::StartsWith("Der Import ist gescheitert: "), HasSubstr("nowhere")));
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(RunWizardApp(WithArchive()), 1);
}

TEST_F(WizardAppTest, WizardWithoutATargetSaysSo) {
  const std::string box = ManyMails(1);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    GoOnToTheEnd(frame);
  });
  user.In<QMessageBox>([](QMessageBox& told) {
    EXPECT_EQ(told.windowTitle(), QString("kann Location nicht öffnen!"));
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(RunWizardApp({}), 1);
}

TEST_F(WizardAppTest, ArchiveThatCannotBeOpenedEndsTheProgram) {
  folder.Write("file", "");
  EXPECT_EQ(RunWizardApp({{folder.Native("file").string()}}), 3);
}

TEST_F(WizardAppTest, HostAndPlatformComeBack) {
  const ScopedRecordingPlatform platform;
  UserScript user;
  user.In<WizardFrame>([](WizardFrame&) { Press(Qt::Key_Escape); });
  RunWizardApp({});
  EXPECT_EQ(&Platform::Current(), &*platform);
  EXPECT_EQ(SwallowedNumber([] { HostObjects::Current(); }), 91);
}

TEST(WizardDisplayTest, WithoutADisplayTheProgramNamesTheOtherWay) {
  QProcess program;
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.remove("DISPLAY");
  environment.remove("WAYLAND_DISPLAY");
  environment.remove("QT_QPA_PLATFORM");
  program.setProcessEnvironment(environment);
  program.start(QCoreApplication::applicationFilePath(), {"--run-wizard"});
  ASSERT_TRUE(program.waitForFinished());
  EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
  EXPECT_EQ(program.exitCode(), 2);
  EXPECT_EQ(program.readAllStandardOutput(), "");
  const std::string said = program.readAllStandardError().toStdString();
  EXPECT_THAT(said, testing::StartsWith("vorlent-mozilla: the wizard needs a display"));
  EXPECT_THAT(said, HasSubstr("vorlent-mozilla import --target"));
}

}  // namespace
}  // namespace vorlent::wizard
