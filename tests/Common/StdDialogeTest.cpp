#include "Common/StdDialoge.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "Platform/Failure.h"
#include "Support/RecordingPlatform.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

TEST(ExpandFilterTest, ShortFormBecomesLabelsAndPatterns) {
  struct Row {
    std::string_view filter, expanded;
  };
  const Row rows[] = {
      {"#txt", "Text-Dateien|*.txt"},
      {"#doc#foo#*", "Word-Dateien|*.doc|foo-Dateien|*.foo|Alle Dateien|*.*"},
      {"#doc#xls#*", "Word-Dateien|*.doc|Excel-Dateien|*.xls|Alle Dateien|*.*"},
      {"#*", "Alle Dateien|*.*"},
      {"#", ""},
      {"#doc#", "Word-Dateien|*.doc"},
      {"#DOC", "DOC-Dateien|*.DOC"},
      {"##doc", "-Dateien|*.|Word-Dateien|*.doc"},
      {"", ""},
      {"MBOX-Datei|*.mbox|Alle Dateien|*.*", "MBOX-Datei|*.mbox|Alle Dateien|*.*"},
      {"x#doc", "x#doc"},
  };
  for (const Row& row : rows)
    EXPECT_EQ(ExpandFilter(row.filter), row.expanded) << row.filter;
}

TEST(ExpandFilterTest, EveryKnownExtensionHasItsLabel) {
  struct Row {
    std::string extension, label;
  };
  const Row rows[] = {
      {"doc", "Word"},
      {"xls", "Excel"},
      {"ppt", "Powerpoint"},
      {"html", "Web"},
      {"mht", "Webarchiv"},
      {"bmp", "Bitmap"},
      {"jpg", "Jpeg"},
      {"csv", "CSV"},
      {"log", "Log"},
      {"vorlent", "Vor-LENT"},
      {"mdb", "Access-Datenbank"},
      {"ini", "Ini"},
      {"txt", "Text"},
      {"exe", "Anwendungs"},
      {"dat", "Vorlent-Daten"},
      {"sndr", "Sendarium"},
      {"tree", "Quorvan Baum"},
      {"quorvan", "Quorvan"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(ExpandFilter("#" + row.extension), row.label + "-Dateien|*." + row.extension);
  }
}

class ShowFileDialogTest : public testing::Test {
 protected:
  std::string Show(std::string& folder, std::string_view file, std::int16_t mode) {
    return ShowFileDialog(7, "Datei wählen", folder, file, "#txt#*", "txt", mode);
  }

  ScopedRecordingPlatform platform_;
};

TEST_F(ShowFileDialogTest, RequestCarriesEveryField) {
  std::string folder = "C:\\Mail";
  Show(folder, "a.txt", 0);
  const FileDialogRequest& request = platform_->fileDialogRequests.at(0);
  EXPECT_EQ(request.structureSize, 76);
  EXPECT_EQ(request.owner, 7);
  EXPECT_EQ(request.filter, std::string("Text-Dateien\0*.txt\0Alle Dateien\0*.*\0\0", 37));
  EXPECT_EQ(request.filterIndex, 1);
  EXPECT_EQ(request.nameBuffer, "a.txt" + std::string(295, '\0'));
  EXPECT_EQ(request.nameBufferSize, 300);
  EXPECT_EQ(request.initialFolder, "C:\\Mail");
  EXPECT_EQ(request.title, "Datei wählen");
  EXPECT_EQ(request.flags, 6148);
  EXPECT_EQ(request.defaultExtension, "txt");
  EXPECT_FALSE(request.save);
}

TEST_F(ShowFileDialogTest, ModeChoosesDialogAndFlags) {
  struct Row {
    std::int16_t mode;
    std::int32_t flags;
    bool save;
  };
  const Row rows[] = {{0, 6148, false}, {1, 2054, true}, {2, 2052, true}, {3, 0, true}, {-1, 0, true}};
  for (const Row& row : rows) {
    std::string folder;
    Show(folder, "", row.mode);
    EXPECT_EQ(platform_->fileDialogRequests.back().flags, row.flags) << row.mode;
    EXPECT_EQ(platform_->fileDialogRequests.back().save, row.save) << row.mode;
  }
}

TEST_F(ShowFileDialogTest, OpenDialogIsModeZero) {
  std::string folder;
  ShowOpenDialog(1, "t", folder, "f", "a|*.a", "a");
  EXPECT_EQ(platform_->fileDialogRequests.at(0).flags, 6148);
  EXPECT_EQ(platform_->fileDialogRequests.at(0).filter, std::string("a\0*.a\0\0", 7));
}

TEST_F(ShowFileDialogTest, WithoutAFolderItBeginsInTheCurrentOne) {
  platform_->currentFolder = "D:\\here";
  std::string folder;
  Show(folder, "", 0);
  EXPECT_EQ(platform_->fileDialogRequests.at(0).initialFolder, "D:\\here");
}

TEST_F(ShowFileDialogTest, FolderGivenMeansNameAndFolderApart) {
  platform_->fileDialogAnswers = {RecordingPlatform::Chosen("D:\\Post\\Inbox")};
  std::string folder = "C:\\Mail";
  EXPECT_EQ(Show(folder, "", 0), "Inbox");
  EXPECT_EQ(folder, "D:\\Post\\");
}

TEST_F(ShowFileDialogTest, WithoutAFolderTheWholePathComes) {
  platform_->fileDialogAnswers = {RecordingPlatform::Chosen("D:\\Post\\Inbox")};
  std::string folder;
  EXPECT_EQ(Show(folder, "", 0), "D:\\Post\\Inbox");
  EXPECT_EQ(folder, "");
}

TEST_F(ShowFileDialogTest, ChoiceEndsAtItsFirstZero) {
  FileDialogAnswer answer = RecordingPlatform::Chosen("D:\\a\\b");
  answer.nameBuffer += std::string_view("rest\0rest", 9);
  platform_->fileDialogAnswers = {answer};
  std::string folder = "x";
  EXPECT_EQ(Show(folder, "", 0), "b");
}

TEST_F(ShowFileDialogTest, OffsetOutsideTheChoiceLosesNothing) {
  FileDialogAnswer answer = RecordingPlatform::Chosen("D:\\a");
  answer.fileNameOffset = 99;
  platform_->fileDialogAnswers = {answer};
  std::string folder = "x";
  EXPECT_EQ(Show(folder, "", 0), "");
  EXPECT_EQ(folder, "D:\\a");
}

TEST_F(ShowFileDialogTest, CancelGivesNothingAndKeepsTheFolder) {
  std::string folder = "C:\\Mail";
  EXPECT_EQ(Show(folder, "proposed", 0), "");
  EXPECT_EQ(folder, "C:\\Mail");
}

TEST_F(ShowFileDialogTest, CurrentFolderIsTheSameAfterwards) {
  platform_->currentFolder = "C:\\before";
  platform_->onFileDialog = [&](const FileDialogRequest&) { platform_->currentFolder = "D:\\elsewhere"; };
  std::string folder = "C:\\Mail";
  Show(folder, "", 0);
  EXPECT_EQ(platform_->currentFolder, "C:\\before");
  EXPECT_THAT(platform_->calls, ElementsAre("CurrentFolder() -> \"C:\\before\"",
                                            "ShowFileDialog(open,\"Datei wählen\",\"C:\\Mail\") -> cancelled",
                                            "SetCurrentFolder(\"C:\\before\")"));
}

TEST_F(ShowFileDialogTest, LongestProposedNameFits) {
  std::string folder = "x";
  Show(folder, std::string(300, 'n'), 0);
  EXPECT_EQ(platform_->fileDialogRequests.at(0).nameBuffer, std::string(300, 'n'));
}

TEST_F(ShowFileDialogTest, LongerProposedNameLeavesTheBufferEmpty) {
  std::string folder = "x";
  Show(folder, std::string(301, 'n'), 0);
  EXPECT_EQ(platform_->fileDialogRequests.at(0).nameBuffer, "");
  EXPECT_EQ(platform_->fileDialogRequests.at(0).nameBufferSize, 0);
}

TEST_F(ShowFileDialogTest, EveryFailureIsPassedOver) {
  platform_->folderExists = [](std::string_view) { return false; };
  platform_->fileDialogAnswers = {RecordingPlatform::Chosen("D:\\Post\\Inbox")};
  std::string folder;
  EXPECT_EQ(Show(folder, "", 0), "D:\\Post\\Inbox");
  platform_->onFileDialog = [](const FileDialogRequest&) {
    throw Failure(ErrorNumber::DeviceIo, "no screen");
  };
  EXPECT_EQ(Show(folder, "", 0), "");
  EXPECT_EQ(platform_->CountOf("SetCurrentFolder"), 2);
}

// The current folder may be one that was removed.
class PlatformWithoutCurrentFolder : public RecordingPlatform {
 public:
  std::string CurrentFolder() override { throw Failure(ErrorNumber::PathNotFound, "no current folder"); }
};

TEST(FileDialogWithoutCurrentFolderTest, ComesWithItsChoiceNevertheless) {
  const auto platform = std::make_shared<PlatformWithoutCurrentFolder>();
  const ScopedPlatform installed(platform);
  platform->fileDialogAnswers.push_back(RecordingPlatform::Chosen("C:\\x\\a.txt"));
  std::string folder;
  EXPECT_EQ(ShowOpenDialog(0, "Titel", folder, "", "#txt", ""), "C:\\x\\a.txt");
  EXPECT_EQ(platform->fileDialogRequests.front().initialFolder, "");
}

}  // namespace
}  // namespace vorlent
