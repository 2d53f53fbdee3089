#include "Connectors/Mozilla/Actions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/MailboxBuilder.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using test::RecordingHost;
using testing::ElementsAre;
using testing::IsEmpty;

class ActionsTest : public testing::Test {
 protected:
  ScopedRecordingPlatform platform;
  RecordingHost host;
  Actions actions;
};

TEST_F(ActionsTest, OneActionIsOfferedWithoutAKey) {
  const KeyedList<std::string> list = actions.GetActions();
  ASSERT_EQ(list.Count(), 1);
  EXPECT_EQ(list.Item(1), "importmails|newfile#Import: Thunderbird Mails");
  EXPECT_EQ(list.Key(1), "");
  EXPECT_FALSE(list.HasKey(""));
}

TEST_F(ActionsTest, EachCallGivesANewList) {
  actions.GetActions().Add("more");
  EXPECT_EQ(actions.GetActions().Count(), 1);
}

TEST_F(ActionsTest, OtherActionsDoNothing) {
  host.Dialogs.WizardAnswer = "target Weg\r\n";
  for (const char* name : {"ImportMails", "importmails ", "", "import", "importmails|newfile"})
    actions.execute(name);
  EXPECT_THAT(host.Log.Lines(), IsEmpty());
  EXPECT_THAT(platform->calls, IsEmpty());
}

TEST_F(ActionsTest, ImportAsksTheWizard) {
  actions.execute("importmails");
  EXPECT_THAT(
      host.Log.Lines(),
      ElementsAre("Dialogs.ShowWizard(\"Import Thunderbird Mails\",\"VorlentMozilla.WizardImport\",\"\")"));
}

TEST_F(ActionsTest, CancelledWizardEndsTheAction) {
  host.Log.RecordReads = true;
  actions.execute("importmails");
  EXPECT_EQ(host.Log.Lines().size(), 1U);
  EXPECT_THAT(platform->calls, IsEmpty());
}

TEST_F(ActionsTest, CommandIsCarriedOutBeforeTheCallReturns) {
  host.Dialogs.WizardAnswer = "target Weg\r\n";
  actions.execute("importmails");
  EXPECT_EQ(platform->CountOf("ShowMessage"), 1);
}

TEST_F(ActionsTest, WizardThatCannotBeShownFails) {
  host.Log.FailOn("Dialogs.ShowWizard");
  EXPECT_EQ(SwallowedNumber([&] { actions.execute("importmails"); }), 440);
}

// --- Automatic topics -----------------------------------------------------------------------------------

class AutoTopicsTest : public ActionsTest {
 protected:
  AutoTopicsTest() {
    host.Global.TemporaryPath = folder.MakeFolder("temp") + "\\";
    host.Global.Objects["Archiv"] = host.MakeLocation("Archiv");
    host.AddTopics();
  }

  // The keywords that an item of that text gets by the setting.
  std::vector<std::string> Keywords(const std::string& setting, const std::string& text) {
    host.Log.Clear();
    host.Global.Options["autotopic"] = setting;
    host.Log.OnCall = [this, text](const std::string& line) {
      if (line.find(".SetConnected(false)") != std::string::npos) host.Items.back()->Full = text;
    };
    host.Dialogs.WizardAnswer = "target Archiv\nimport " + folder.Write("Inbox", OrdinaryMail().Bytes());
    actions.execute("importmails");
    std::vector<std::string> keywords;
    for (const std::string& line : host.Log.Lines()) {
      const std::string call = ".AddKeyword(\"";
      if (const auto at = line.find(call); at != std::string::npos) {
        keywords.push_back(line.substr(at + call.size(), line.size() - at - call.size() - 2));
      }
    }
    return keywords;
  }

  TemporaryFolder folder;
};

TEST_F(AutoTopicsTest, RuleAddsItsKeywordsIfTheTextHoldsTheWordExactly) {
  const std::string rule = "rechnung = Finanzen, Post";
  EXPECT_THAT(Keywords(rule, "Ihre rechnung vom 1.5."), ElementsAre("Finanzen", "Post"));
  EXPECT_THAT(Keywords(rule, "Abrechnungen"), ElementsAre("Finanzen", "Post"));
  EXPECT_THAT(Keywords(rule, "Rechnung"), IsEmpty());
  EXPECT_THAT(Keywords(rule, ""), IsEmpty());
}

TEST_F(AutoTopicsTest, EveryMatchingRuleApplies) {
  EXPECT_THAT(Keywords("a=1\r\nb=2\nc=3,4", "abc"), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(Keywords("a=1\r\nb=2\nc=3,4", "xc"), ElementsAre("3", "4"));
  EXPECT_THAT(Keywords("a=1\na=1", "a"), ElementsAre("1", "1"));
}

TEST_F(AutoTopicsTest, RuleWithAnEmptyWordMatchesEveryItem) {
  EXPECT_THAT(Keywords("=Post", "anything"), ElementsAre("Post"));
  EXPECT_THAT(Keywords("  =Post", ""), ElementsAre("Post"));
}

TEST_F(AutoTopicsTest, LineWithoutAnEqualsSignAddsNothing) {
  EXPECT_THAT(Keywords("Post", "Post"), IsEmpty());
  EXPECT_THAT(Keywords("\r\n\r\nPost=x", "Post"), ElementsAre("x"));
}

TEST_F(AutoTopicsTest, WordAndKeywordsAreTrimmedAndCutOnce) {
  EXPECT_THAT(Keywords("  zwei Worte  =  a b , c=d  ", "zwei Worte"), ElementsAre("a b", "c=d"));
  EXPECT_THAT(Keywords("w=a,,b", "w"), ElementsAre("a", "", "b"));
  EXPECT_THAT(Keywords("w=a,", "w"), ElementsAre("a"));
}

TEST_F(AutoTopicsTest, TextIsTakenOnceAndOnlyIfThereIsASetting) {
  host.Log.RecordReads = true;
  Keywords("", "text");
  EXPECT_THAT(host.Log.Lines(), testing::Not(testing::Contains(testing::HasSubstr(".FullText"))));
  Keywords("a=1\nb=2\nc=3", "text");
  EXPECT_EQ(std::count_if(host.Log.Lines().begin(), host.Log.Lines().end(),
                          [](const std::string& line) { return line.ends_with(".FullText"); }),
            1);
}

TEST_F(AutoTopicsTest, KeywordsComeBeforeTheFilesAreTaken) {
  Keywords("=Post", "");
  std::vector<std::string> calls;
  for (const std::string& line : host.Log.Lines()) {
    if (line.starts_with("item") && line.find(".ImportRecord") == std::string::npos) {
      calls.push_back(line.substr(line.find('.') + 1, line.find('(') - line.find('.') - 1));
    }
  }
  EXPECT_THAT(calls, ElementsAre("SetConnected", "AddKeyword", "TakeFile", "SetConnected"));
}

}  // namespace
}  // namespace vorlent
