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
#include "Apps/Wizard/MoveQuestion.h"
#include "Apps/Wizard/QtDialogs.h"
#include "Apps/Wizard/QtPlatform.h"
#include "Apps/Wizard/WizardFrame.h"
#include "Common/StdModul.h"
#include "Component/Component.h"
#include "Platform/NativePaths.h"
#include "Platform/Settings.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/StandaloneHost.h"
#include "Support/MailboxBuilder.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedEnvironment.h"
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
  ~WizardAppTest() override { os::ResetSettings(); }

  WizardAppOptions WithArchive() { return {{folder.Native("Archiv").string()}}; }

  // What is told of each item in the archive, in order.
  std::vector<std::string> OfArchived(const std::function<std::string(const Item&)>& tell) {
    HostObserver nobody;
    StandaloneHost host(nobody);
    const ArchivePtr archive = host.Global().OpenArchive(folder.Path("Archiv"));
    std::vector<std::string> told;
    for (std::int32_t i = 1; i <= archive->ItemCount(); ++i)
      told.push_back(tell(*archive->ItemAt(i)));
    return told;
  }
  std::vector<std::string> Archived() {
    return OfArchived([](const Item& item) { return item.Text(); });
  }

  // A mailbox of the sample profile, by its name below the drive's folder.
  static std::string Sample(const std::string& mailbox) {
    return "samples/AppData/Thunderbird/Profiles/k3j9x2ab.default/Mail/Local Folders/" + mailbox;
  }
  // The mail states of a mailbox, in order.
  std::vector<std::string> States(const std::string& mailbox) {
    std::vector<std::string> states;
    const std::string bytes = folder.Read(Sample(mailbox));
    const std::string key = "\r\nX-Mozilla-Status: ";
    for (std::size_t at = 0; (at = bytes.find(key, at)) != std::string::npos; at += key.size())
      states.push_back(bytes.substr(at + key.size(), 4));
    return states;
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
  // Makes a new folder and takes it.
  void ChooseNewFolder(QFileDialog& dialog, const char* name) {
    std::filesystem::create_directory(folder.Native(name));
    auto& path = Find<QLineEdit>(dialog, "fileNameEdit");
    path.setFocus();
    path.clear();
    Type(QString::fromStdString(folder.Native(name).string()));
    Press(Qt::Key_Return);
  }
  static void GoOnToTheEnd(WizardFrame& frame) {
    while (frame.isVisible())
      Press(Qt::Key_Return);
  }

  // Chooses the mailbox on the first page and confirms all pages.
  static void ImportFile(UserScript& user, const std::string& path) {
    user.In<WizardFrame>([path](WizardFrame& frame) {
      ChooseFile(frame, path);
      GoOnToTheEnd(frame);
    });
  }

  // A mailbox of so many mails.
  std::string ManyMails(int count) {
    std::string bytes;
    for (int i = 1; i <= count; ++i)
      bytes += OrdinaryMail{.subject = "mail " + std::to_string(i), .id = std::to_string(i)}.Bytes();
    folder.Write("many", bytes);
    return folder.Native("many").string();
  }

  TemporaryFolder folder;
};

const std::string kLocalFolders =
    "S:\\AppData\\Thunderbird\\Profiles\\k3j9x2ab.default\\Mail\\Local Folders\\";

// --- From the pages to the archive -----------------------------------------------------------------------

std::vector<std::string> Lines(std::string text) {
  std::vector<std::string> lines;
  while (!text.empty())
    lines.push_back(CutLine(text));
  return lines;
}

TEST_F(WizardAppTest, FourPagesByKeyAndMouseGiveACommandThatFillsANewArchive) {
  std::shared_ptr<StandaloneHost> host;
  ImportProgress progress([&]() -> std::atomic<bool>& { return host->Global().CancelFlag(); }, nullptr);
  host = std::make_shared<StandaloneHost>(progress);
  const auto before = HostObjects::Install(host);
  const ScopedPlatform platform(std::make_shared<QtPlatform>());
  std::string command;
  host->SetDialogs(std::make_shared<QtDialogs>(
      [&](const std::string& path) { return host->Global().OpenArchive(path)->Name(); },
      [&](const std::string& produced) { command = produced; }));
  host->Global().OpenArchive(folder.Path("Anderes Archiv"));
  const std::string trash = folder.Read(Sample("Trash"));

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
    // Page 3: a new archive in place of the one on offer, move.
    EXPECT_EQ(Find<QComboBox>(frame, "Combo1").count(), 1);
    Click(frame, "qzelButton2");
    EXPECT_EQ(Find<QComboBox>(frame, "Combo1").currentText().toStdString(), folder.Native("Archiv").string());
    PressAlt(Qt::Key_D);
    Press(Qt::Key_Return);
    // Page 4: two keywords with an empty line between them.
    Find<QPlainTextEdit>(frame, "T_Keywords").setFocus();
    Type("Büro");
    Press(Qt::Key_Return);
    Press(Qt::Key_Return);
    Type("alte Mails");
    Click(frame, "Finish");
  });
  user.In<QFileDialog>([&](QFileDialog& dialog) { ChooseNewFolder(dialog, "Archiv"); });
  user.In<MoveQuestion>([&](MoveQuestion& question) {
    const std::string names = Find<QPlainTextEdit>(question, "Mailboxes").toPlainText().toStdString();
    EXPECT_EQ(std::count(names.begin(), names.end(), '\n'), 5);
    EXPECT_THAT(names, HasSubstr(folder.Native(Sample("Inbox")).string() + "\n"));
    EXPECT_THAT(names, testing::Not(HasSubstr("Trash")));
    Click(question, "Move");
  });
  InResult(user, [](ImportProgress& window) {
    // One mail has no header in which it could be marked.
    EXPECT_EQ(Find<QLabel>(window, "Status").text(),
              QString("13 Mails importiert, 1 als gelöscht markierte übergangen, "
                      "1 nicht als gelöscht markiert."));
    EXPECT_THAT(Find<QPlainTextEdit>(window, "Log").toPlainText().toStdString(),
                HasSubstr("Zitate, Mail an Stelle 320: nicht als gelöscht markiert: "));
    Click(window, "Cancel");
  });
  ArchiveImport import;
  import.Run();
  progress.ShowResult(import, {});
  HostObjects::Install(before);
  host.reset();

  EXPECT_THAT(
      Lines(command),
      ElementsAre("target " + folder.Path("Archiv"), "action move", "keyword #subpath", "option tree",
                  "keyword B\xFCro", "keyword alte Mails", "import " + kLocalFolders + "Entw\xFCrfe",
                  "import " + kLocalFolders + "Inbox", "import " + kLocalFolders + "Sent",
                  "import " + kLocalFolders + "Zitate", "import " + kLocalFolders + "Inbox.sbd\\Projekte",
                  "import " + kLocalFolders + "Inbox.sbd\\Projekte.sbd\\Archiv 2025"));
  EXPECT_TRUE(command.ends_with("Archiv 2025\r\n"));

  EXPECT_THAT(Archived(), ElementsAre("Gr\xFC\xDF"
                                      "e aus K\xF6ln",
                                      "Rechnung | Januar", "Einladung: Sommerfest f\xFCr  5 \x80",
                                      "Ohne Message-ID", "Ohne Datum", "Notizen zur Sitzung", "Neuigkeiten",
                                      "\xDC"
                                      "bersicht der Kosten: 100 \x80  und mehr",
                                      "Re: Gr\xFC\xDF"
                                      "e aus K\xF6ln",
                                      "Ein Zitat am Absatzanfang", "Aus dem Zitat geworden", "Projektplan",
                                      "Altes Projekt"));
  EXPECT_THAT(OfArchived(KeywordsOf),
              testing::Contains("Account=Local Folders,Inbox,Projekte,Archiv 2025,B\xFCro,alte Mails"));
  // Moved mails are marked, whatever else their state says.
  EXPECT_THAT(States("Inbox"),
              ElementsAre("0009", "000D", "0009", "0009", "0008", "0008", "0009", "0009", "0008"));
  EXPECT_THAT(States("Inbox.sbd/Projekte.sbd/Archiv 2025"), ElementsAre("0009"));
  EXPECT_EQ(folder.Read(Sample("Trash")), trash);
}

// --- The whole program ----------------------------------------------------------------------------------

TEST_F(WizardAppTest, ImportGoesFromThePagesIntoANewArchive) {
  const std::string buero = "samples/AppData/Thunderbird/Profiles/w2x8q7cd.buero/Mail/mail.example.com/Inbox";
  const std::string bytes = folder.Read(buero);
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
  InResult(user, [&](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(),
                testing::MatchesRegex("[1-9][0-9]* Mails importiert.*\\."));
    auto& bar = Find<QProgressBar>(progress, "Progress");
    EXPECT_EQ(bar.value(), bar.maximum());
    const std::string log = Find<QPlainTextEdit>(progress, "Log").toPlainText().toStdString();
    EXPECT_THAT(log, HasSubstr(": " + folder.Native(buero).string() + "\n"));
    EXPECT_THAT(log, HasSubstr(" finished ("));
    EXPECT_EQ(progress.windowTitle().toStdString(), "Import Thunderbird " + folder.Native("Archiv").string());
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(RunWizardApp(WithArchive()), 0);
  EXPECT_FALSE(Archived().empty());
  EXPECT_EQ(folder.Read(buero), bytes);
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
  user.In<MoveQuestion>([](MoveQuestion&) { PressAlt(Qt::Key_V); });
  InResult(user, [](ImportProgress&) { Press(Qt::Key_Escape); });
  EXPECT_EQ(RunWizardApp(WithArchive()), 0);
  EXPECT_THAT(Archived(), ElementsAre("mail 1", "mail 2", "mail 3"));
  const std::string left = folder.Read("many");
  EXPECT_THAT(left, HasSubstr("X-Mozilla-Status: 0009\r\n"));
  EXPECT_THAT(left, testing::Not(HasSubstr("X-Mozilla-Status: 0001\r\n")));
}

TEST_F(WizardAppTest, ResultTellsHowManyMailsWereInTheArchiveAlready) {
  const std::string box = ManyMails(1);
  const auto importBox = [&] {
    std::string sum;
    UserScript user;
    user.In<WizardFrame>([&](WizardFrame& frame) {
      ChooseFile(frame, box);
      GoOnToTheEnd(frame);
    });
    InResult(user, [&](ImportProgress& progress) {
      sum = Find<QLabel>(progress, "Status").text().toStdString();
      Press(Qt::Key_Return);
    });
    EXPECT_EQ(RunWizardApp(WithArchive()), 0);
    return sum;
  };
  EXPECT_EQ(importBox(), "1 Mails importiert.");
  folder.Write("many", OrdinaryMail{.subject = "new", .id = "new"}.Bytes() + folder.Read("many"));
  EXPECT_EQ(importBox(), "1 Mails importiert, 1 war schon im Archiv.");
  EXPECT_EQ(importBox(), "0 Mails importiert, 2 waren schon im Archiv.");
  EXPECT_THAT(Archived(), ElementsAre("mail 1", "new"));
}

TEST_F(WizardAppTest, NewArchiveIsChosenOnPageThree) {
  const std::string box = ManyMails(2);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    Press(Qt::Key_Return);
    EXPECT_EQ(Find<QComboBox>(frame, "Combo1").count(), 0);
    PressAlt(Qt::Key_N);
    EXPECT_EQ(Find<QComboBox>(frame, "Combo1").currentText().toStdString(), folder.Native("Archiv").string());
    EXPECT_THAT(Find<QLabel>(frame, "LabelInfo").text().toStdString(),
                HasSubstr("FileLocation: " + folder.Native("Archiv").string()));
    GoOnToTheEnd(frame);
  });
  user.In<QFileDialog>([&](QFileDialog& dialog) {
    EXPECT_THAT(dialog.windowTitle().toStdString(), testing::StartsWith("Ziel-Datenquelle"));
    ChooseNewFolder(dialog, "Archiv");
  });
  InResult(user, [](ImportProgress&) { Press(Qt::Key_Return); });
  EXPECT_EQ(RunWizardApp({}), 0);
  EXPECT_THAT(Archived(), ElementsAre("mail 1", "mail 2"));
}

TEST_F(WizardAppTest, CancelIsSeenBetweenTwoMails) {
  const std::string box = ManyMails(3000);
  UserScript user;
  ImportFile(user, box);
  user.In<ImportProgress>([&](ImportProgress& progress) {
    EXPECT_EQ(Find<QLabel>(progress, "Status").text().toStdString(), box);
    Click(progress, "Cancel");
  });
  user.In<QMessageBox>([](QMessageBox& question) {
    EXPECT_EQ(question.text(), "Den Import abbrechen?");
    PressAlt(Qt::Key_J);
    // Asked once: while the mail at hand is finished there is nothing left to ask.
    EXPECT_FALSE(Find<QPushButton>(*question.parentWidget(), "Cancel").isEnabled());
    Press(Qt::Key_Escape);
    EXPECT_FALSE(question.isVisible());
    EXPECT_TRUE(question.parentWidget()->isVisible());
  });
  double shown = 0;
  InResult(user, [&](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(),
                testing::MatchesRegex("[0-9]+ Mails importiert, dann abgebrochen\\."));
    auto& bar = Find<QProgressBar>(progress, "Progress");
    shown = static_cast<double>(bar.value()) / bar.maximum();
    Click(progress, "Cancel");
  });
  EXPECT_EQ(RunWizardApp(WithArchive()), 130);
  const std::vector<std::string> archived = Archived();
  EXPECT_GE(archived.size(), 1U);
  EXPECT_LT(archived.size(), 3000U);
  EXPECT_EQ(archived.back(), "mail " + std::to_string(archived.size()));
  EXPECT_NEAR(shown, static_cast<double>(archived.size()) / 3000, 0.01) << "how far it came";
}

TEST_F(WizardAppTest, EnterAndSpaceLeaveARunningImportAlone) {
  const std::string box = ManyMails(300);
  UserScript user;
  ImportFile(user, box);
  user.In<ImportProgress>([](ImportProgress& progress) {
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space})
      Press(key);
    EXPECT_EQ(dynamic_cast<QPushButton*>(QApplication::focusWidget()), nullptr);
    EXPECT_TRUE(Find<QPushButton>(progress, "Cancel").isEnabled());
    EXPECT_EQ(QApplication::activeModalWidget(), &progress) << "nothing is asked";
  });
  InResult(user, [](ImportProgress&) { Press(Qt::Key_Return); });
  EXPECT_EQ(RunWizardApp(WithArchive()), 0);
  EXPECT_EQ(Archived().size(), 300U);
}

TEST_F(WizardAppTest, ImportGoesOnAfterANoToTheQuestion) {
  const std::string box = ManyMails(300);
  UserScript user;
  ImportFile(user, box);
  user.In<ImportProgress>([](ImportProgress&) { Press(Qt::Key_Escape); });
  user.In<QMessageBox>([](QMessageBox&) { Press(Qt::Key_Return); });
  user.In<ImportProgress>(
      [](ImportProgress& progress) { EXPECT_TRUE(Find<QPushButton>(progress, "Cancel").isEnabled()); });
  InResult(user, [](ImportProgress&) { Press(Qt::Key_Return); });
  EXPECT_EQ(RunWizardApp(WithArchive()), 0);
  EXPECT_EQ(Archived().size(), 300U);
}

TEST_F(WizardAppTest, ImportRunsOnBesideTheQuestionAndTakesItAwayAtItsEnd) {
  const std::string box = ManyMails(300);
  UserScript user;
  ImportFile(user, box);
  user.In<ImportProgress>([](ImportProgress&) { Press(Qt::Key_Escape); });
  user.In<QMessageBox>([](QMessageBox&) {});
  InResult(user, [](ImportProgress& progress) {
    EXPECT_EQ(Find<QLabel>(progress, "Status").text(), QString("300 Mails importiert."));
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(RunWizardApp(WithArchive()), 0);
}

TEST_F(WizardAppTest, CancelledWizardImportsNothing) {
  UserScript user;
  user.In<WizardFrame>([](WizardFrame&) { Press(Qt::Key_Escape); });
  EXPECT_EQ(RunWizardApp(WithArchive()), 130);
  EXPECT_THAT(Archived(), ElementsAre());
}

TEST_F(WizardAppTest, FailureOfTheImportIsShown) {
  UserScript user;
  ImportFile(user, folder.Native("nowhere").string());
  InResult(user, [&](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(),
                testing::AllOf(testing::StartsWith("Der Import ist gescheitert: "),
                               HasSubstr(folder.Native("nowhere").string())));
    Click(progress, "Cancel");
  });
  EXPECT_EQ(RunWizardApp(WithArchive()), 1);
}

TEST_F(WizardAppTest, AfterAFailureAllChoicesAreStillThere) {
  const std::filesystem::path sent = folder.Native(Sample("Sent"));
  const std::filesystem::path away = folder.Native("away");
  const auto textsOf = [](WizardFrame& frame, const char* sheet) {
    std::vector<std::string> ticked;
    auto& view = Find<QTreeView>(frame, sheet);
    for (QModelIndex index = view.model()->index(0, 0); index.isValid(); index = view.indexBelow(index)) {
      if (index.data(Qt::CheckStateRole).toInt() == Qt::Checked)
        ticked.push_back(index.data().toString().toStdString());
    }
    return ticked;
  };
  std::vector<std::string> mailboxes;
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    Press(Qt::Key_Tab);
    for (const Qt::Key key : {Qt::Key_Right, Qt::Key_Down, Qt::Key_Right, Qt::Key_Down, Qt::Key_Space})
      Press(key);
    Press(Qt::Key_Return);
    Press(Qt::Key_Space);
    mailboxes = textsOf(frame, "qzelSheet2");
    EXPECT_EQ(mailboxes.size(), 6U);
    Press(Qt::Key_Return);
    PressAlt(Qt::Key_N);
    PressAlt(Qt::Key_D);
    Press(Qt::Key_Return);
    Find<QPlainTextEdit>(frame, "T_Keywords").setFocus();
    Type("alte Mails");
    std::filesystem::rename(sent, away);
    Click(frame, "Finish");
  });
  user.In<QFileDialog>([&](QFileDialog& dialog) { ChooseNewFolder(dialog, "Archiv"); });
  user.In<MoveQuestion>([](MoveQuestion&) { PressAlt(Qt::Key_V); });
  InResult(user, [](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(), HasSubstr("Sent"));
    EXPECT_TRUE(Find<QPushButton>(progress, "Back").isVisible());
    Press(Qt::Key_Return);
  });
  user.In<WizardFrame>([&](WizardFrame& frame) {
    EXPECT_EQ(Find<QLabel>(frame, "Step").text(), "Schritt 4 von 4");
    EXPECT_EQ(Find<QPlainTextEdit>(frame, "T_Keywords").toPlainText(), "alte Mails");
    PressAlt(Qt::Key_Z);
    EXPECT_EQ(Find<QComboBox>(frame, "Combo1").currentText().toStdString(), folder.Native("Archiv").string());
    EXPECT_TRUE(Find<QAbstractButton>(frame, "Option3").isChecked());
    PressAlt(Qt::Key_Z);
    EXPECT_EQ(textsOf(frame, "qzelSheet2"), mailboxes);
    PressAlt(Qt::Key_Z);
    EXPECT_THAT(textsOf(frame, "qzelSheet1"), ElementsAre("Local Folders"));
    std::filesystem::rename(away, sent);
    GoOnToTheEnd(frame);
  });
  user.In<MoveQuestion>([](MoveQuestion&) { PressAlt(Qt::Key_V); });
  InResult(user, [](ImportProgress& progress) {
    EXPECT_THAT(Find<QLabel>(progress, "Status").text().toStdString(),
                testing::MatchesRegex("1[0-9] Mails importiert, .*"));
    EXPECT_FALSE(Find<QPushButton>(progress, "Back").isVisible());
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(RunWizardApp({}), 1) << "one mail can't be marked";
  EXPECT_THAT(OfArchived(KeywordsOf), testing::Each(HasSubstr("alte Mails")));
}

TEST_F(WizardAppTest, WizardCancelledAfterAFailureEndsAsOneThatFailed) {
  UserScript user;
  ImportFile(user, folder.Native("nowhere").string());
  InResult(user, [](ImportProgress&) { PressAlt(Qt::Key_Z); });
  user.In<WizardFrame>([](WizardFrame&) { Press(Qt::Key_Escape); });
  EXPECT_EQ(RunWizardApp(WithArchive()), 1);
}

TEST_F(WizardAppTest, WizardWithoutATargetSaysSoOnItsPage) {
  const std::string box = ManyMails(1);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    Press(Qt::Key_Return);
    Press(Qt::Key_Return);
    EXPECT_EQ(Find<QLabel>(frame, "Step").text(), "Schritt 3 von 4");
    PressAlt(Qt::Key_N);
    GoOnToTheEnd(frame);
  });
  user.In<QMessageBox>([](QMessageBox& told) {
    EXPECT_THAT(told.text().toStdString(), HasSubstr("„Neu“"));
    Press(Qt::Key_Return);
  });
  user.In<QFileDialog>([&](QFileDialog& dialog) { ChooseNewFolder(dialog, "Archiv"); });
  InResult(user, [](ImportProgress&) { Press(Qt::Key_Return); });
  EXPECT_EQ(RunWizardApp({}), 0);
  EXPECT_THAT(Archived(), ElementsAre("mail 1"));
}

TEST_F(WizardAppTest, TextsOfQtAreGerman) {
  const std::string box = ManyMails(1);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    Press(Qt::Key_Return);
    PressAlt(Qt::Key_N);
    Press(Qt::Key_Escape);
  });
  user.In<QFileDialog>([](QFileDialog& dialog) {
    QStringList captions;
    for (const QPushButton* button : dialog.findChildren<QPushButton*>())
      captions += button->text().remove('&');
    EXPECT_TRUE(captions.contains("Abbrechen")) << captions.join(", ").toStdString();
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(RunWizardApp({}), 130);
}

// --- Told to end ----------------------------------------------------------------------------------------

class ToldToEndTest : public WizardAppTest {
 protected:
  // The pages up to the last, and on.
  void MoveAll(WizardFrame& frame, const std::string& box) {
    ChooseFile(frame, box);
    Press(Qt::Key_Return);
    PressAlt(Qt::Key_D);
    GoOnToTheEnd(frame);
  }

  int Run() {
    const int code = RunWizardApp({{folder.Native("Archiv").string()}, [this] { return told; }});
    EXPECT_TRUE(std::filesystem::is_empty(temporary));
    return code;
  }

  const std::filesystem::path temporary = os::ToNativePath(folder.MakeFolder("tmp"));
  const ScopedEnvironment environment{"TMPDIR", temporary.c_str()};
  // The user of these tests leaves all windows as they are from then on.
  bool told = false;
};

TEST_F(ToldToEndTest, ThePagesClose) {
  UserScript user;
  user.In<WizardFrame>([this](WizardFrame&) { told = true; });
  EXPECT_EQ(Run(), 130);
}

TEST_F(ToldToEndTest, AMessageClosesWithThePagesBelowIt) {
  UserScript user;
  user.In<WizardFrame>([](WizardFrame& frame) { Click(frame, "Next"); });
  user.In<QMessageBox>([this](QMessageBox&) { told = true; });
  EXPECT_EQ(Run(), 130);
}

TEST_F(ToldToEndTest, TheChoiceOfAFolderClosesWithThePagesBelowIt) {
  const std::string box = ManyMails(1);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseFile(frame, box);
    Press(Qt::Key_Return);
    PressAlt(Qt::Key_N);
  });
  user.In<QFileDialog>([this](QFileDialog&) { told = true; });
  EXPECT_EQ(Run(), 130);
}

TEST_F(ToldToEndTest, TheQuestionBeforeAMoveIsAnsweredWithNo) {
  const std::string box = ManyMails(1);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) { MoveAll(frame, box); });
  user.In<MoveQuestion>([this](MoveQuestion&) { told = true; });
  EXPECT_EQ(Run(), 130);
  EXPECT_THAT(Archived(), testing::IsEmpty());
  EXPECT_THAT(folder.Read("many"), HasSubstr("X-Mozilla-Status: 0001\r\n"));
}

// What was imported until then is whole in the archive and marked in the mailbox, and nothing else is.
void ExpectMovedUpTo(std::size_t count, const std::string& left) {
  std::size_t number = 0;
  const std::string key = "\r\nX-Mozilla-Status: ";
  for (std::size_t at = 0; (at = left.find(key, at)) != std::string::npos; ++number) {
    at += key.size();
    ASSERT_EQ(left.substr(at, 4), number < count ? "0009" : "0001") << "mail " << number + 1;
  }
}

TEST_F(ToldToEndTest, AMoveEndsAfterTheMailAtHand) {
  constexpr int kMails = 6000;
  const std::string box = ManyMails(kMails);
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) { MoveAll(frame, box); });
  user.In<MoveQuestion>([](MoveQuestion& question) { Click(question, "Move"); });
  user.In<ImportProgress>([this](ImportProgress&) {
    EXPECT_FALSE(std::filesystem::is_empty(temporary));
    told = true;
  });
  EXPECT_EQ(Run(), 130);
  const std::vector<std::string> archived = Archived();
  EXPECT_GE(archived.size(), 1U);
  EXPECT_LT(archived.size(), static_cast<std::size_t>(kMails));
  EXPECT_EQ(archived.back(), "mail " + std::to_string(archived.size()));
  EXPECT_THAT(OfArchived([](const Item& item) { return ReadBytes(item.DataFile("File", 0)); }),
              testing::Each(HasSubstr("\r\n\r\ntext\r\n")));
  ExpectMovedUpTo(archived.size(), folder.Read("many"));
}

TEST_F(ToldToEndTest, TheQuestionWhetherToCancelClosesWithTheImport) {
  const std::string box = ManyMails(6000);
  UserScript user;
  ImportFile(user, box);
  user.In<ImportProgress>([](ImportProgress& progress) { Click(progress, "Cancel"); });
  user.In<QMessageBox>([this](QMessageBox&) { told = true; });
  EXPECT_EQ(Run(), 130);
  const std::size_t archived = Archived().size();
  EXPECT_GE(archived, 1U);
  EXPECT_LT(archived, 6000U);
}

TEST_F(ToldToEndTest, TheResultCloses) {
  const std::string box = ManyMails(2);
  UserScript user;
  ImportFile(user, box);
  InResult(user, [this](ImportProgress&) { told = true; });
  EXPECT_EQ(Run(), 130);
  EXPECT_THAT(Archived(), ElementsAre("mail 1", "mail 2"));
}

TEST_F(ToldToEndTest, TheResultOfAFailureClosesAndDoesNotLeadBackToThePages) {
  UserScript user;
  ImportFile(user, folder.Native("nowhere").string());
  InResult(user, [this](ImportProgress&) { told = true; });
  EXPECT_EQ(Run(), 1);
}

// --- The end of the program -----------------------------------------------------------------------------

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

// --- The file dialog ------------------------------------------------------------------------------------

class QtFileDialogTest : public WizardAppTest {
 protected:
  // Has the user choose that file in the dialog that the wizard's button opens.
  std::string Choose(const std::string& native) {
    std::string path;
    UserScript user;
    user.In<WizardFrame>([&](WizardFrame& frame) {
      ChooseFile(frame, folder.Native("here").string());
      PressAlt(Qt::Key_Z);
      Click(frame, "qzelButton1");
      path = Find<QLineEdit>(frame, "Text1").text().toStdString();
      Press(Qt::Key_Escape);
    });
    user.In<QFileDialog>([&](QFileDialog& dialog) {
      EXPECT_EQ(dialog.windowTitle(), QString("Thunderbird-Datei"));
      EXPECT_EQ(dialog.directory().path().toStdString(), folder.Native().string());
      EXPECT_EQ(dialog.nameFilters(),
                QStringList({"Thunderbird-Datei (*)", "MBOX-Datei (*.mbox)", "Alle Dateien (*)"}));
      EXPECT_NE(dynamic_cast<WizardFrame*>(dialog.parentWidget()), nullptr);
      auto& name = Find<QLineEdit>(dialog, "fileNameEdit");
      EXPECT_EQ(name.text(), QString("here"));
      name.setFocus();
      name.clear();
      Type(QString::fromStdString(native));
      Press(Qt::Key_Return);
    });
    EXPECT_EQ(RunWizardApp({}), 130);
    return path;
  }
};

TEST_F(QtFileDialogTest, ChosenFileIsShownAsThisSystemWritesIt) {
  folder.Write("here", "");
  folder.Write("B\xFCro/Inbox", "");
  const std::string native = folder.Native("B\xFCro/Inbox").string();
  EXPECT_EQ(Choose(native), native);
}

TEST_F(QtFileDialogTest, PathTooLongForTheWizardCountsAsNone) {
  folder.Write("here", "");
  const std::string name = std::string(150, 'a') + "/" + std::string(150, 'b');
  folder.Write(name, "");
  EXPECT_EQ(Choose(folder.Native(name).string()), folder.Native("here").string());
}

// --- Without a display ----------------------------------------------------------------------------------

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
