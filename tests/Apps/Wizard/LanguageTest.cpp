// The wizard in each of its languages.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTreeView>
#include <filesystem>
#include <set>

#include "Apps/Wizard/ImportProgress.h"
#include "Apps/Wizard/MoveQuestion.h"
#include "Apps/Wizard/QtText.h"
#include "Apps/Wizard/WizardApp.h"
#include "Apps/Wizard/WizardFrame.h"
#include "Platform/Settings.h"
#include "Support/MailboxBuilder.h"
#include "Support/ScopedEnvironment.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"
#include "UserScript.h"

namespace vorlent::wizard {
namespace {

using testing::HasSubstr;

struct WizardLanguage {
  const char* locale;
  std::vector<std::string> captions;  // of the form, page by page
  std::vector<std::string> buttons;   // of the frame
  std::string step, profile, drives, nothingTicked, question, result, logged, close, chooser;
};

const WizardLanguage kEnglish = {
    "en_US.UTF-8",
    {"Source:", "Thunderbird folders", "a Thunderbird file (MBOX file)", "...", "including subfolders",
     "Mail folders to import:", "Target:", "New", "move the mails into this target Location",
     "copy the mails into this target Location", "Add structure information to \"My structure\"",
     "Keywords:", "Subfolders as keywords", "additional topics for all files:"},
    {"< Back", "Next >", "Finish", "Cancel"},
    "Step 1 of 4",
    "Profile 'default'",
    "Local drives",
    "No mail folder is ticked.",
    "The mails of this mailbox go into the archive",
    "1 mails imported.",
    "1 items in ",
    "Close",
    "Target: folder of an archive, a new one too"};

const WizardLanguage kGerman = {
    "de_DE.UTF-8",
    {"Datenquelle:", "Thunderbird-Folder", "eine Thunderbird-Datei (MBOX-Datei)", "...",
     "inkl. Unterverzeichnisse", "Zu importierende Mail-Folder:", "Ziel:", "Neu",
     "die Mails in diese Ziel-Location verschieben", "die Mails in diese Ziel-Location kopieren",
     "Struktur-Information zu \"Meine Struktur\" hinzufügen",
     "Schlüsselwörter:", "Unterverzeichnisse als Schlüsselwörter", "zusätzliche Themen für alle Dateien:"},
    {"< Zurück", "Weiter >", "Fertigstellen", "Abbrechen"},
    "Schritt 1 von 4",
    "Profil 'default'",
    "Lokale Laufwerke",
    "Es ist kein Mail-Folder angekreuzt.",
    "Die Mails dieses Postfachs kommen in das Archiv",
    "1 Mails importiert.",
    "1 Items in ",
    "Schließen",
    "Ziel-Datenquelle: Ordner eines Archivs, auch eines neuen"};

// What a widget says, without the mark of its mnemonic.
std::string SaidBy(const QWidget& widget) {
  QString said;
  if (const auto* label = dynamic_cast<const QLabel*>(&widget)) said = label->text();
  if (const auto* button = dynamic_cast<const QAbstractButton*>(&widget)) said = button->text();
  return said.remove('&').toStdString();
}

class WizardLanguageTest : public testing::TestWithParam<const WizardLanguage*> {
 protected:
  WizardLanguageTest() {
    folder.MakeFolder("samples");
    std::filesystem::copy(std::filesystem::path(VORLENT_SAMPLES) / "AppData",
                          folder.Native("samples/AppData"), std::filesystem::copy_options::recursive);
    os::SetDrive('S', folder.Native("samples").string());
    os::SetAppDataFolder(folder.Native("samples/AppData").string());
    folder.Write("one", OrdinaryMail{.subject = "one", .id = "one"}.Bytes());
  }
  ~WizardLanguageTest() override { os::ResetSettings(); }

  int Run() { return RunWizardApp({{folder.Native("Archiv").string()}}); }
  void ChooseTheMailbox(WizardFrame& frame) const {
    Find<QLineEdit>(frame, "Text1").setFocus();
    Type(QString::fromStdString(folder.Native("one").string()));
    Press(Qt::Key_Return);
  }
  // All captions of the form's pages, none of which is cut off.
  static std::vector<std::string> CaptionsOf(WizardFrame& frame) {
    std::vector<std::string> captions;
    for (int page = 1; page <= 4; ++page) {
      for (const ControlSpec& spec : WizardControlTable()) {
        if (spec.page != page || spec.caption.empty()) continue;
        const auto& widget = Find<QWidget>(frame, std::string(spec.name).c_str());
        captions.push_back(SaidBy(widget));
        EXPECT_TRUE(widget.isVisible()) << spec.name;
        EXPECT_GE(widget.width(),
                  widget.fontMetrics().horizontalAdvance(QString::fromStdString(captions.back())));
      }
      if (page < 4) Press(Qt::Key_Return);
    }
    return captions;
  }

  const WizardLanguage& in = *GetParam();
  const ScopedEnvironment locale{"LC_ALL", in.locale};
  const ScopedRules rules{Rules::Today()};
  TemporaryFolder folder;
};

TEST_P(WizardLanguageTest, FormAndFrameSpeakItAndNothingIsCutOff) {
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    EXPECT_EQ(SaidBy(Find<QLabel>(frame, "Step")), in.step);
    std::vector<std::string> buttons;
    for (const char* name : {"Back", "Next", "Finish", "Cancel"}) {
      const auto& button = Find<QPushButton>(frame, name);
      buttons.push_back(SaidBy(button));
      EXPECT_GE(button.width(), button.sizeHint().width());
    }
    EXPECT_EQ(buttons, in.buttons);
    Find<QLineEdit>(frame, "Text1").setFocus();
    Type(QString::fromStdString(folder.Native("one").string()));
    EXPECT_EQ(CaptionsOf(frame), in.captions);
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(Run(), 130);
}

TEST_P(WizardLanguageTest, MnemonicsAreUniqueOnEachPage) {
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    for (int page = 1; page <= 4; ++page) {
      std::set<QChar> taken;
      const auto expectNew = [&](const QString& text) {
        const qsizetype mark = text.indexOf('&');
        if (mark < 0) return;
        EXPECT_TRUE(taken.insert(text[mark + 1].toLower()).second) << text.toStdString();
      };
      for (const char* name : {"Back", "Next", "Finish", "Cancel"})
        expectNew(Find<QPushButton>(frame, name).text());
      for (const ControlSpec& spec : WizardControlTable()) {
        if (spec.page != page) continue;
        auto& widget = Find<QWidget>(frame, std::string(spec.name).c_str());
        if (const auto* button = dynamic_cast<const QAbstractButton*>(&widget)) expectNew(button->text());
        if (const auto* label = dynamic_cast<const QLabel*>(&widget); label != nullptr && label->buddy())
          expectNew(label->text());
      }
    }
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(Run(), 130);
}

TEST_P(WizardLanguageTest, ListAndMessagesSpeakIt) {
  UserScript user;
  std::string told;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    auto& tree = Find<QTreeView>(frame, "qzelSheet1");
    tree.setFocus();
    Press(Qt::Key_Right);
    std::vector<std::string> texts;
    for (QModelIndex index = tree.model()->index(0, 0); index.isValid(); index = tree.indexBelow(index))
      texts.push_back(index.data().toString().toStdString());
    EXPECT_THAT(texts, testing::Contains(in.profile));
    EXPECT_THAT(texts, testing::Contains(in.drives));
    Press(Qt::Key_Return);
    Press(Qt::Key_Escape);
  });
  user.In<QMessageBox>([&](QMessageBox& box) {
    told = box.text().toStdString();
    Press(Qt::Key_Return);
  });
  EXPECT_EQ(Run(), 130);
  EXPECT_THAT(told, HasSubstr(in.nothingTicked));
}

TEST_P(WizardLanguageTest, MoveIsAskedForInIt) {
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseTheMailbox(frame);
    Press(Qt::Key_Return);
    Click(frame, "Option3");
    Press(Qt::Key_Return);
    Press(Qt::Key_Return);
    Press(Qt::Key_Escape);
  });
  user.In<MoveQuestion>([&](MoveQuestion& question) {
    EXPECT_THAT(SaidBy(Find<QLabel>(question, "Question")), HasSubstr(in.question));
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(Run(), 130);
}

TEST_P(WizardLanguageTest, ResultIsToldInIt) {
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseTheMailbox(frame);
    while (frame.isVisible())
      Press(Qt::Key_Return);
  });
  user.In<ImportProgress>(
      [&](ImportProgress& progress) {
        EXPECT_EQ(SaidBy(Find<QLabel>(progress, "Status")), in.result);
        const std::string log = Find<QPlainTextEdit>(progress, "Log").toPlainText().toStdString();
        EXPECT_THAT(log, HasSubstr(in.logged));
        EXPECT_THAT(log, HasSubstr(folder.Native("one").string()));
        Press(Qt::Key_Return);
      },
      [&](ImportProgress& progress) { return SaidBy(Find<QPushButton>(progress, "Cancel")) == in.close; });
  EXPECT_EQ(Run(), 0);
}

TEST_P(WizardLanguageTest, DialogsOfQtSpeakIt) {
  UserScript user;
  user.In<WizardFrame>([&](WizardFrame& frame) {
    ChooseTheMailbox(frame);
    Press(Qt::Key_Return);
    Click(frame, "qzelButton2");
    Press(Qt::Key_Escape);
  });
  user.In<QFileDialog>([&](QFileDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle().toStdString(), in.chooser);
    std::vector<std::string> captions;
    for (const QPushButton* button : dialog.findChildren<QPushButton*>())
      captions.push_back(SaidBy(*button));
    EXPECT_THAT(captions, testing::Contains(in.buttons.back()));
    Press(Qt::Key_Escape);
  });
  EXPECT_EQ(Run(), 130);
}

INSTANTIATE_TEST_SUITE_P(InEach, WizardLanguageTest, testing::Values(&kEnglish, &kGerman),
                         [](const auto& language) {
                           return language.param == &kEnglish ? "English" : "German";
                         });

}  // namespace
}  // namespace vorlent::wizard
