#include "Apps/Wizard/FormView.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <cmath>
#include <set>

#include "Apps/Wizard/MoveQuestion.h"
#include "Apps/Wizard/SheetView.h"
#include "Apps/Wizard/WizardFrame.h"
#include "Platform/CodePage.h"
#include "Platform/Settings.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "UserScript.h"

namespace vorlent::wizard {
namespace {

using test::RecordingHost;
using testing::ElementsAre;

class FormViewTest : public testing::Test {
 protected:
  FormViewTest() {
    Offer("Archiv");
    Offer("Büro"_cp);
    host.Browsable["thunderbird://*"] = {Entry("Profil 'p'", "thunderbird://p/*", "C:\\P\\A\\")};
    host.Browsable["thunderbird://p/*"] = {Entry("Entw\xFCrfe", "thunderbird://p/E/", "C:\\P\\E"),
                                           Entry("Sent", "thunderbird://p/S/", "C:\\P\\S")};
  }

  void Offer(std::string_view name) {
    auto location = host.MakeLocation(std::string(name));
    location->Folder = "C:\\" + std::string(name) + "\\files\\";
    host.Global.KnownLocations.push_back(location);
    host.Global.Objects[std::string(name)] = location;
  }

  ItemPtr Entry(std::string text, std::string location, std::string path) {
    auto item = host.MakeItem();
    item->DisplayText = std::move(text);
    item->Data = {{"Location", std::move(location)}, {"Path", std::move(path)}};
    return item;
  }

  void SetUp() override {
    wizard_ = std::make_unique<WizardImport>();
    frame_ = std::make_unique<WizardFrame>(*wizard_, "Import", nullptr);
    frame_->show();
    frame_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(frame_.get()));
  }

  WizardFrame& Frame() { return *frame_; }
  WizardImport& Wizard() { return *wizard_; }
  template <class Kind>
  Kind& Control(std::string_view name) {
    return Wizard().Form().Get<Kind>(name);
  }
  template <class Widget>
  Widget& Shown(const char* name) {
    return Find<Widget>(Frame(), name);
  }
  FormView& View() { return *dynamic_cast<FormView*>(Shown<QWidget>("Picture1").parentWidget()); }
  // What page 1 needs so that the others can be reached.
  void ChooseAMailbox() { Control<TextBox>("Text1").UserTypes("C:\\P\\E"); }
  void GoToPage(int page) {
    if (Control<TextBox>("Text1").Text().empty()) ChooseAMailbox();
    while (Shown<QLabel>("Step").text() != QString("Schritt %1 von 4").arg(page))
      Click(Frame(), "Next");
  }

  int Step() { return Shown<QLabel>("Step").text().section(' ', 1, 1).toInt(); }
  // Enter, and what a message says then.
  std::string Refused() {
    UserScript user;
    std::string told;
    user.In<QMessageBox>([&](QMessageBox& box) {
      told = box.text().toStdString();
      Press(Qt::Key_Return);
    });
    Press(Qt::Key_Return);
    Frame().activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&Frame()));
    return told;
  }

  int Pixels(int twips) { return static_cast<int>(std::lround(twips * Frame().logicalDpiX() / 1440.0)); }

  std::vector<std::string> TreeTexts() {
    auto& tree = Shown<QTreeView>("qzelSheet1");
    std::vector<std::string> texts;
    for (QModelIndex index = tree.model()->index(0, 0); index.isValid(); index = tree.indexBelow(index)) {
      texts.push_back(index.data().toString().toStdString() +
                      (index.data(Qt::CheckStateRole).toInt() == Qt::Checked ? " x" : ""));
    }
    return texts;
  }

  ScopedRecordingPlatform platform;
  RecordingHost host;

 private:
  std::unique_ptr<WizardImport> wizard_;
  std::unique_ptr<WizardFrame> frame_;
};

// --- Place and look -------------------------------------------------------------------------------------

TEST_F(FormViewTest, EveryControlStandsWhereTheFormSays) {
  const QSize sizes[] = {View().DesignSize(), QSize(640, 500), QSize(1200, 900)};
  for (const QSize& size : sizes) {
    View().resize(size);
    for (const auto& control : Wizard().Form().Controls()) {
      const auto& widget = Shown<QWidget>(control->Name().c_str());
      const QRect place = widget.geometry();
      EXPECT_EQ(place.left(), Pixels(control->Left())) << control->Name();
      EXPECT_EQ(place.top(), Pixels(control->Top())) << control->Name();
      const bool isCaption = control->Kind() == ControlKind::Label ||
                             control->Kind() == ControlKind::OptionButton ||
                             control->Kind() == ControlKind::CheckBox;
      const int width = Pixels(control->Left() + control->Width()) - place.left();
      if (isCaption) {
        EXPECT_GE(place.width(), width) << control->Name();
      } else {
        EXPECT_EQ(place.width(), width) << control->Name();
        EXPECT_EQ(place.height(), Pixels(control->Top() + control->Height()) - place.top())
            << control->Name();
      }
    }
  }
}

TEST_F(FormViewTest, SizeOfTheWindowIsTheSizeOfTheControl) {
  View().resize(640, 500);
  const auto twips = [&](int pixels) {
    return static_cast<int>(std::lround(pixels * 1440.0 / Frame().logicalDpiX()));
  };
  const Box& page = Control<vorlent::Control>("Picture2").Bounds();
  EXPECT_EQ(page, (Box{0, 840, twips(640), twips(500) - 840}));
  EXPECT_EQ(Control<Sheet>("qzelSheet2").Width(), twips(640));
  EXPECT_EQ(Shown<QWidget>("qzelSheet2").width(), 640);
}

TEST_F(FormViewTest, CaptionsAreSeenWhole) {
  for (int page = 1; page <= 4; ++page) {
    GoToPage(page);
    for (const ControlSpec& spec : WizardControlTable()) {
      if (spec.page != page || spec.caption.empty()) continue;
      const auto& widget = Shown<QWidget>(std::string(spec.name).c_str());
      QString shown;
      if (const auto* label = dynamic_cast<const QLabel*>(&widget)) shown = label->text();
      if (const auto* button = dynamic_cast<const QAbstractButton*>(&widget)) shown = button->text();
      EXPECT_EQ(shown.remove('&'), QString::fromStdString(std::string(spec.caption)));
      EXPECT_GE(widget.width(), widget.sizeHint().width() * (spec.kind == ControlKind::Button ? 0 : 1))
          << spec.name;
      EXPECT_GE(widget.width(), widget.fontMetrics().horizontalAdvance(shown)) << spec.name;
      EXPECT_TRUE(widget.isVisible());
    }
  }
}

TEST_F(FormViewTest, RowsReachOverTheWholeSheetAndLongOnesScroll) {
  auto& list = Shown<QTreeView>("qzelSheet2");
  GoToPage(2);
  const auto lastPixel = [&] {
    QApplication::processEvents();
    return list.visualRect(list.model()->index(0, 0)).right();
  };
  Control<Sheet>("qzelSheet2").AddRow("C:\\a", "file", 0, false, -1, "");
  EXPECT_EQ(lastPixel(), list.viewport()->width() - 1);
  EXPECT_EQ(list.horizontalScrollBar()->maximum(), 0);
  Frame().resize(Frame().width() + 100, Frame().height());
  EXPECT_EQ(lastPixel(), list.viewport()->width() - 1);
  Control<Sheet>("qzelSheet2").AddRow("C:\\" + std::string(300, 'm'), "file", 0, false, -1, "");
  EXPECT_GT(lastPixel(), list.viewport()->width());
  EXPECT_GT(list.horizontalScrollBar()->maximum(), 0);
}

TEST_F(FormViewTest, LongestRowScrollsToItsEndWhereverItStands) {
  auto& list = Shown<QTreeView>("qzelSheet2");
  GoToPage(2);
  auto& sheet = Control<Sheet>("qzelSheet2");
  const auto widthOfTheColumn = [&] {
    QApplication::processEvents();
    return list.columnWidth(0);
  };
  const auto widthOf = [&](int row) {
    return list.indentation() + list.sizeHintForIndex(list.model()->index(row, 0)).width();
  };
  for (int i = 0; i < 1000; ++i)
    sheet.AddRow("C:\\short", "file", 0, false, -1, "");
  EXPECT_EQ(list.horizontalScrollBar()->maximum(), 0);
  // Of two rows the one with more characters is not the longer one.
  sheet.AddRow("C:\\" + std::string(200, 'i'), "file", 0, false, -1, "");
  sheet.AddRow("C:\\" + std::string(190, 'm'), "file", 0, false, -1, "");
  const int width = widthOfTheColumn();
  EXPECT_GE(width, widthOf(sheet.RowCount() - 1));
  EXPECT_LE(width, widthOf(sheet.RowCount() - 1) + 2);
  EXPECT_GT(list.horizontalScrollBar()->maximum(), 0);
  sheet.RemoveRow(sheet.RowCount());
  EXPECT_LT(widthOfTheColumn(), width);
  QFont large = list.font();
  large.setPointSizeF(3 * large.pointSizeF());
  list.setFont(large);
  EXPECT_GE(widthOfTheColumn(), widthOf(sheet.RowCount() - 1));
}

TEST_F(FormViewTest, WizardKnowsTheWindowOverWhichItsDialogOpens) {
  Click(Frame(), "qzelButton1");
  ASSERT_EQ(platform->fileDialogRequests.size(), 1U);
  EXPECT_EQ(static_cast<WId>(platform->fileDialogRequests[0].owner), Frame().winId());
}

TEST_F(FormViewTest, MnemonicsAreUniqueOnAPageAndInTheFrame) {
  for (int page = 1; page <= 4; ++page) {
    std::set<QChar> taken = {'z', 'w', 'f', 'a'};
    int count = 0;
    for (const auto& control : Wizard().Form().Controls()) {
      if (control->Page() != page) continue;
      const auto& widget = Shown<QWidget>(control->Name().c_str());
      QString shown;
      if (const auto* label = dynamic_cast<const QLabel*>(&widget); label && label->buddy())
        shown = label->text();
      if (const auto* button = dynamic_cast<const QAbstractButton*>(&widget)) shown = button->text();
      const qsizetype mark = shown.indexOf('&');
      if (mark < 0) continue;
      ++count;
      EXPECT_TRUE(taken.insert(shown[mark + 1].toLower()).second) << shown.toStdString();
    }
    EXPECT_GT(count, 0) << page;
  }
}

// --- Keys and clicks ------------------------------------------------------------------------------------

TEST_F(FormViewTest, TabWalksThroughThePageAndTheFramesButtons) {
  std::vector<std::string> walked;
  for (int i = 0; i < 8; ++i) {
    walked.push_back(QApplication::focusWidget()->objectName().toStdString());
    Press(Qt::Key_Tab);
  }
  // Of the two option buttons the set one takes the tab.
  EXPECT_THAT(walked, ElementsAre("Option1", "qzelSheet1", "Text1", "qzelButton1", "Check1", "Next", "Cancel",
                                  "Option1"));
}

TEST_F(FormViewTest, MnemonicsLeadToTheirControls) {
  PressAlt(Qt::Key_E);  // eine Thunderbird-Datei
  EXPECT_TRUE(Control<OptionButton>("Option2").IsSet());
  EXPECT_FALSE(Shown<QRadioButton>("Option1").isChecked());
  PressAlt(Qt::Key_T);  // Thunderbird-Folder
  EXPECT_TRUE(Control<OptionButton>("Option1").IsSet());
  PressAlt(Qt::Key_I);  // inkl. Unterverzeichnisse
  EXPECT_FALSE(Control<CheckBox>("Check1").IsTicked());
  GoToPage(4);
  PressAlt(Qt::Key_T);  // zusätzliche Themen
  EXPECT_EQ(QApplication::focusWidget()->objectName(), "T_Keywords");
}

TEST_F(FormViewTest, TypingAPathChoosesTheFile) {
  Shown<QLineEdit>("Text1").setFocus();
  Type("C:\\Mail\\Büro");
  EXPECT_EQ(Control<TextBox>("Text1").Text(), "C:\\Mail\\B\xFCro");
  EXPECT_TRUE(Shown<QRadioButton>("Option2").isChecked());
  EXPECT_TRUE(Control<OptionButton>("Option2").IsSet());
}

TEST_F(FormViewTest, PathOfThisSystemGoesToTheWizardByItsWindowsName) {
  Shown<QLineEdit>("Text1").setFocus();
  Type("/var/mail/");
  EXPECT_EQ(Control<TextBox>("Text1").Text(), "/var/mail/");
  Press(Qt::Key_Tab);
  EXPECT_EQ(Control<TextBox>("Text1").Text(), "C:\\var\\mail\\");
  EXPECT_EQ(Shown<QLineEdit>("Text1").text(), "/var/mail/");
}

TEST_F(FormViewTest, ChosenFileComesBackIntoTheField) {
  platform->fileDialogAnswers.push_back(RecordingPlatform::Chosen("C:\\Mail\\B\xFCro.mbox"));
  Click(Frame(), "qzelButton1");
  EXPECT_EQ(Control<TextBox>("Text1").Text(), "C:\\Mail\\B\xFCro.mbox");
  EXPECT_EQ(Shown<QLineEdit>("Text1").text(), QString("/Mail/Büro.mbox"));
  EXPECT_TRUE(Shown<QRadioButton>("Option2").isChecked());
}

TEST_F(FormViewTest, ArrowKeysOpenAndCloseRowsAndSpaceTicksThem) {
  Shown<QWidget>("qzelSheet1").setFocus();
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://"));
  Press(Qt::Key_Right);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'"));
  Press(Qt::Key_Down);
  Press(Qt::Key_Right);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'", "Entwürfe", "Sent"));
  Press(Qt::Key_Down);
  Press(Qt::Key_Down);
  Press(Qt::Key_Space);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'", "Entwürfe", "Sent x"));
  Press(Qt::Key_Left);
  Press(Qt::Key_Left);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'"));
  EXPECT_FALSE(Control<Sheet>("qzelSheet1").Row(2).Expanded());
  Press(Qt::Key_Right);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'", "Entwürfe", "Sent x"));
  EXPECT_EQ(host.LocationsMade.size(), 2U) << "a second opening fetches nothing";
}

TEST_F(FormViewTest, TickedRowLosesWhatIsBelowItAndGetsItBackWhenCleared) {
  Shown<QWidget>("qzelSheet1").setFocus();
  Press(Qt::Key_Right);
  Press(Qt::Key_Down);
  Press(Qt::Key_Right);
  Press(Qt::Key_Space);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p' x"));
  Press(Qt::Key_Space);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'"));
  Press(Qt::Key_Right);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'", "Entwürfe", "Sent"));
}

TEST_F(FormViewTest, ClickOnABoxTicksAndClickOnTheArrowOpens) {
  auto& tree = Shown<QTreeView>("qzelSheet1");
  const QRect root = tree.visualRect(tree.model()->index(0, 0));
  const auto click = [&](int x) {
    QTest::mouseClick(tree.viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(x, root.center().y()));
  };
  click(root.left() - tree.indentation() / 2);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p'"));
  click(root.left() + 10);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird:// x"));
  click(root.left() + 10);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://"));
}

TEST_F(FormViewTest, TreeChoosesTheFoldersAgain) {
  PressAlt(Qt::Key_E);
  Shown<QWidget>("qzelSheet1").setFocus();
  Press(Qt::Key_Space);
  EXPECT_TRUE(Shown<QRadioButton>("Option1").isChecked());
  EXPECT_FALSE(Shown<QRadioButton>("Option2").isChecked());
}

TEST_F(FormViewTest, TargetIsPickedByKeysAndDescribed) {
  GoToPage(3);
  EXPECT_EQ(QApplication::focusWidget()->objectName(), "Combo1");
  EXPECT_EQ(Shown<QLabel>("LabelInfo").text(), "FileLocation: /Archiv/files/\n");
  Press(Qt::Key_Down);
  EXPECT_EQ(Control<DropDown>("Combo1").Text(), "B\xFCro");
  EXPECT_EQ(Shown<QLabel>("LabelInfo").text(), QString("FileLocation: /Büro/files/\n"));
}

TEST_F(FormViewTest, NewTargetIsAddedToTheList) {
  GoToPage(3);
  Offer("Neu");
  host.Dialogs.LocationAnswer = "Neu";
  PressAlt(Qt::Key_N);
  EXPECT_EQ(Shown<QComboBox>("Combo1").currentText(), "Neu");
  EXPECT_EQ(Shown<QComboBox>("Combo1").count(), 3);
}

TEST_F(FormViewTest, KeywordsAreTypedOnePerLine) {
  GoToPage(4);
  Shown<QPlainTextEdit>("T_Keywords").setFocus();
  Type("Büro");
  Press(Qt::Key_Return);
  Type("privat");
  EXPECT_EQ(Control<TextBox>("T_Keywords").Text(), "B\xFCro\r\nprivat");
  EXPECT_EQ(Shown<QLabel>("Step").text(), "Schritt 4 von 4") << "Enter in the field stays in it";
  Press(Qt::Key_Tab);
  EXPECT_NE(QApplication::focusWidget()->objectName(), "T_Keywords") << "Tab leaves it";
}

TEST_F(FormViewTest, FailureOfAStepIsToldAndTheWizardGoesOn) {
  host.Log.FailOn("Location(\"\").Load");
  UserScript user;
  QString told;
  user.In<QMessageBox>([&](QMessageBox& box) {
    told = box.text();
    Press(Qt::Key_Return);
  });
  Shown<QWidget>("qzelSheet1").setFocus();
  Press(Qt::Key_Right);
  EXPECT_EQ(told, "scripted failure of Location(\"\").Load");
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://"));
}

// The application-data folder is none of this system: what is shown of it is where it really lies.
TEST_F(FormViewTest, ChosenFileKeepsItsNameThoughItIsShownAtItsRealPlace) {
  os::SetHomeFolder("/home/anna");
  const std::string name = "C:\\home\\anna\\AppData\\Thunderbird\\Profiles\\x\\Mail\\Inbox";
  platform->fileDialogAnswers.push_back(RecordingPlatform::Chosen(name));
  Click(Frame(), "qzelButton1");
  EXPECT_EQ(Shown<QLineEdit>("Text1").text(), "/home/anna/.thunderbird/Profiles/x/Mail/Inbox");
  Shown<QLineEdit>("Text1").setFocus();
  Press(Qt::Key_Tab);
  EXPECT_EQ(Control<TextBox>("Text1").Text(), name);
  GoToPage(2);
  EXPECT_EQ(Shown<QTreeView>("qzelSheet2").model()->index(0, 0).data().toString(),
            "/home/anna/.thunderbird/Profiles/x/Mail/Inbox");
  EXPECT_EQ(Control<Sheet>("qzelSheet2").Row(1).Text(), name);
  EXPECT_THAT(Wizard().Parameter(), testing::EndsWith("import " + name + "\r\n"));
  os::ResetSettings();
}

// --- The frame ------------------------------------------------------------------------------------------

TEST_F(FormViewTest, ButtonsFollowThePages) {
  const auto state = [&] {
    std::string enabled;
    for (const char* name : {"Back", "Next", "Finish", "Cancel"}) {
      const auto& button = Shown<QPushButton>(name);
      enabled += button.isEnabled() ? (button.isDefault() ? '*' : '+') : '-';
    }
    return enabled;
  };
  EXPECT_EQ(state(), "-*-+");
  ChooseAMailbox();
  Press(Qt::Key_Return);
  EXPECT_EQ(state(), "+*-+");
  EXPECT_TRUE(Shown<QWidget>("Picture2").isVisible());
  EXPECT_FALSE(Shown<QWidget>("Picture1").isVisible());
  PressAlt(Qt::Key_W);
  EXPECT_EQ(state(), "+*-+");
  PressAlt(Qt::Key_W);
  EXPECT_EQ(state(), "+-*+");
  PressAlt(Qt::Key_Z);
  EXPECT_EQ(state(), "+*-+");
  EXPECT_EQ(Shown<QLabel>("Step").text(), "Schritt 3 von 4");
}

TEST_F(FormViewTest, EnterOnTheLastPageFinishes) {
  ChooseAMailbox();
  for (int page = 1; page <= 4; ++page)
    Press(Qt::Key_Return);
  EXPECT_FALSE(Frame().isVisible());
  EXPECT_EQ(Frame().result(), QDialog::Accepted);
  EXPECT_EQ(Wizard().Parameter(),
            "target Archiv\r\naction copy\r\nkeyword #subpath\r\noption tree\r\nimport C:\\P\\E\r\n");
}

// --- What a page lacks ----------------------------------------------------------------------------------

TEST_F(FormViewTest, NothingTickedIsToldOnPageOne) {
  EXPECT_THAT(Refused(), testing::StartsWith("Es ist kein Mail-Folder angekreuzt."));
  EXPECT_EQ(Step(), 1);
  EXPECT_TRUE(Shown<QWidget>("Picture1").isVisible());
  EXPECT_FALSE(Shown<QWidget>("Picture2").isVisible());
}

TEST_F(FormViewTest, TickedFoldersWithoutAMailboxAreToldOnPageOneAndStayTicked) {
  Shown<QWidget>("qzelSheet1").setFocus();
  Press(Qt::Key_Right);
  Press(Qt::Key_Down);
  Press(Qt::Key_Space);
  EXPECT_THAT(Refused(), testing::MatchesRegex("In den angekreuzten .* Bitte andere ankreuzen\\."));
  EXPECT_EQ(Step(), 1);
  EXPECT_THAT(TreeTexts(), ElementsAre("thunderbird://", "Profil 'p' x"));
  PressAlt(Qt::Key_I);
  EXPECT_THAT(Refused(), testing::EndsWith("oder „inkl. Unterverzeichnisse“ ankreuzen."));
}

TEST_F(FormViewTest, EmptyPathIsToldOnPageOne) {
  PressAlt(Qt::Key_E);
  EXPECT_THAT(Refused(), testing::StartsWith("Es ist keine Datei angegeben."));
  EXPECT_EQ(Step(), 1);
}

TEST_F(FormViewTest, FolderWithoutAMailboxIsToldOnPageOne) {
  Shown<QLineEdit>("Text1").setFocus();
  Type("/nowhere/");
  EXPECT_THAT(Refused(), testing::StartsWith("In diesem Ordner gibt es kein Postfach."));
  EXPECT_EQ(Shown<QLineEdit>("Text1").text(), "/nowhere/");
}

TEST_F(FormViewTest, ListWithoutATickIsToldOnPageTwo) {
  GoToPage(2);
  Press(Qt::Key_Space);
  EXPECT_THAT(Refused(), testing::StartsWith("Es ist kein Postfach angekreuzt."));
  EXPECT_EQ(Step(), 2);
  EXPECT_FALSE(Control<Sheet>("qzelSheet2").Row(1).IsTicked());
  Shown<QWidget>("qzelSheet2").setFocus();
  Press(Qt::Key_Space);
  Press(Qt::Key_Return);
  EXPECT_EQ(Step(), 3);
}

TEST_F(FormViewTest, FailureOnTheWayToTheListIsToldOnce) {
  Shown<QWidget>("qzelSheet1").setFocus();
  Press(Qt::Key_Space);
  host.Log.FailOn("Location(\"\").Load");
  EXPECT_EQ(Refused(), "scripted failure of Location(\"\").Load");
  EXPECT_EQ(Step(), 1);
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

// --- The question before a move -------------------------------------------------------------------------

TEST_F(FormViewTest, MoveIsAskedForByTheNamesOfTheMailboxes) {
  GoToPage(3);
  PressAlt(Qt::Key_D);
  GoToPage(4);
  UserScript user;
  user.In<MoveQuestion>([](MoveQuestion& question) {
    EXPECT_THAT(Find<QLabel>(question, "Question").text().toStdString(),
                testing::AllOf(testing::HasSubstr("dieses Postfachs"), testing::HasSubstr("Archiv")));
    EXPECT_EQ(Find<QPlainTextEdit>(question, "Mailboxes").toPlainText(), "/P/E");
    Press(Qt::Key_Return);
  });
  Click(Frame(), "Finish");
  EXPECT_TRUE(Frame().isVisible()) << "Enter says no";
  EXPECT_EQ(Step(), 4);
  user.In<MoveQuestion>([](MoveQuestion&) { Press(Qt::Key_Escape); });
  Click(Frame(), "Finish");
  EXPECT_TRUE(Frame().isVisible());
  user.In<MoveQuestion>([](MoveQuestion&) { PressAlt(Qt::Key_V); });
  Click(Frame(), "Finish");
  EXPECT_EQ(Frame().result(), QDialog::Accepted);
}

TEST_F(FormViewTest, MoveOfManyMailboxesNamesTheFirstAndTellsHowManyMore) {
  GoToPage(2);
  auto& sheet = Control<Sheet>("qzelSheet2");
  for (int i = 2; i <= 2100; ++i)
    sheet.AddRow("C:\\P\\" + std::to_string(i), "file", 0, false, -1, "", CheckState::Ticked);
  GoToPage(3);
  PressAlt(Qt::Key_D);
  GoToPage(4);
  UserScript user;
  user.In<MoveQuestion>([](MoveQuestion& question) {
    EXPECT_THAT(Find<QLabel>(question, "Question").text().toStdString(),
                testing::HasSubstr("dieser 2.100 Postfächer"));
    auto& names = Find<QPlainTextEdit>(question, "Mailboxes");
    const QStringList lines = names.toPlainText().split('\n');
    EXPECT_EQ(lines.size(), 101);
    EXPECT_EQ(lines[99], "/P/100");
    EXPECT_EQ(lines[100], "und 2.000 weitere");
    EXPECT_GT(names.verticalScrollBar()->maximum(), 0);
    Press(Qt::Key_Escape);
  });
  Click(Frame(), "Finish");
}

TEST_F(FormViewTest, EscapeCancelsOnEveryPage) {
  GoToPage(3);
  Press(Qt::Key_Escape);
  EXPECT_FALSE(Frame().isVisible());
  EXPECT_EQ(Frame().result(), QDialog::Rejected);
}

TEST_F(FormViewTest, HeadingLeavesThePagesFree) {
  const auto& heading = Shown<QWidget>("Heading");
  const int pageTop = Shown<QWidget>("Picture1").mapTo(&Frame(), QPoint(0, 0)).y();
  EXPECT_LT(heading.geometry().bottom(), pageTop);
  EXPECT_EQ(heading.width(), Frame().width());
}

}  // namespace
}  // namespace vorlent::wizard
