#include "Standalone/ArchiveIndex.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "Common/StdModul.h"
#include "Platform/Failure.h"
#include "Standalone/MemoryFolder.h"
#include "Support/DiskOperations.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ArchiveIndexTest : public ::testing::Test {
 protected:
  static ItemRecord RecordFrom(std::string_view text) {
    ItemRecord record;
    record.Import(text);
    return record;
  }

  std::int64_t Add(const std::string& record) { return store_.Insert(RecordFrom("ID=1|" + record), 7, {}); }
  // An item with a mail file of that text.
  std::int64_t AddMail(const std::string& record, const std::string& text) {
    const std::int64_t number = store_.Insert(RecordFrom("ID=1|" + record), 7, {{"File", "mail.eml", false}});
    files_.Take(folder_.Write("temp\\mail.eml", "From: a\r\n\r\n" + text), number, "mail.eml", true);
    return number;
  }
  // Many items at once, each with that word.
  void AddMany(int count, const std::string& word) {
    SqliteTransaction transaction(store_.Database());
    for (int i = 0; i < count; ++i)
      Add("Text=" + word);
    transaction.Commit();
  }

  bool ReachAll(ArchiveIndex& index) {
    return index.Reach(store_.HighestNumber(), [](double) { return true; });
  }

  MemoryFolder folder_;
  ArchiveStore store_{folder_.Path("archive.sqlite")};
  ArchiveFiles files_{folder_.Path("files\\")};
  ArchiveIndex index_{store_, files_};
};

TEST_F(ArchiveIndexTest, AnItemIsFoundByWhatAPersonKnowsOfIt) {
  const std::int64_t number = AddMail(
      "Text=Einladung|Keywords=Verein,Feste|DataFrom=anna@example.org|DataSize=4711|DataAttribute=Rot"
      "|Data_SourceFile=versteckt|DataFile=" +
          EscapeValue("C:\\temp\\x\r\nfile=Lageplan.png\r\nsize=815"),
      "Wir grillen am See.");
  EXPECT_TRUE(ReachAll(index_));
  for (const std::string word : {"Einladung", "Verein", "Feste", "anna", "Lageplan", "grillen", "See"})
    EXPECT_THAT(index_.Find(word), ElementsAre(number)) << word;
  for (const std::string word : {"4711", "Rot", "versteckt", "815", "ID", "Einladungen", "grill"})
    EXPECT_THAT(index_.Find(word), IsEmpty()) << word;
}

TEST_F(ArchiveIndexTest, AllWordsMustBeThereWhereverTheyStand) {
  const std::int64_t both = AddMail("Text=Sommer", "Regen");
  const std::int64_t one = AddMail("Text=Sommer", "Sonne");
  EXPECT_TRUE(ReachAll(index_));
  EXPECT_THAT(index_.Find("Sommer"), ElementsAre(both, one));
  EXPECT_THAT(index_.Find("Sommer Regen"), ElementsAre(both));
  EXPECT_THAT(index_.Find("Regen  Sommer "), ElementsAre(both));
  EXPECT_THAT(index_.Find("Sommer Schnee"), IsEmpty());
  EXPECT_THAT(index_.Find(""), IsEmpty());
  EXPECT_THAT(index_.Find(" * "), IsEmpty());
}

TEST_F(ArchiveIndexTest, LetterCaseAndAccentsAreOfNoMatterAndAStarIsAnyEnding) {
  const std::int64_t number =
      Add("Text=Gr\xFC\xDF"
          "e aus Orl\xE9"
          "ans");
  EXPECT_TRUE(ReachAll(index_));
  for (const std::string word : {"gr\xFC\xDF"
                                 "e",
                                 "orleans",
                                 "ORL\xC9"
                                 "ANS",
                                 "orl*", "gru*", "aus*"})
    EXPECT_THAT(index_.Find(word), ElementsAre(number)) << word;
  EXPECT_THAT(index_.Find("orl"), IsEmpty());
  EXPECT_THAT(index_.Find("*ans"), IsEmpty());
}

TEST_F(ArchiveIndexTest, SignsOfTheDatabasesOwnQueriesMeanNothing) {
  const std::int64_t number = Add("Text=sag \"ja\" NOT text");
  EXPECT_TRUE(ReachAll(index_));
  EXPECT_THAT(index_.Find("\"ja\""), ElementsAre(number));
  EXPECT_THAT(index_.Find("NOT"), ElementsAre(number));
  EXPECT_THAT(index_.Find("text:sag"), IsEmpty());
  for (const std::string words : {"\"", "(", "ja) OR (nein", "sag AND nein", "-ja nein"})
    EXPECT_THAT(index_.Find(words), IsEmpty()) << words;
}

TEST_F(ArchiveIndexTest, ItCanBeInterruptedAndGoesOnWhereItWas) {
  AddMany(5000, "wort");
  std::vector<double> heard;
  EXPECT_FALSE(index_.Reach(store_.HighestNumber(), [&](double done) {
    heard.push_back(done);
    return false;
  }));
  ASSERT_THAT(heard, SizeIs(1));
  EXPECT_GT(heard.front(), 0);
  EXPECT_LT(heard.front(), 1);
  const std::size_t reached = index_.Find("wort").size();
  EXPECT_GT(reached, 0u);
  EXPECT_LT(reached, 5000u);
  // As after the next opening.
  ArchiveIndex next(store_, files_);
  EXPECT_TRUE(next.Reach(store_.HighestNumber(), [&](double done) {
    heard.push_back(done);
    return true;
  }));
  EXPECT_EQ(heard.back(), 1);
  EXPECT_THAT(next.Find("wort"), SizeIs(5000));
}

TEST_F(ArchiveIndexTest, ItFollowsChangesOfWhatItReached) {
  const std::int64_t first = AddMail("Text=alt", "Brief");
  EXPECT_TRUE(ReachAll(index_));
  const std::int64_t second = Add("Text=alt");
  for (const std::int64_t number : {first, second}) {
    const std::vector<StoredFile> files;
    store_.Update(number, RecordFrom("ID=1|Text=neu"), files);
    index_.Update(number, RecordFrom("ID=1|Text=neu"));
  }
  EXPECT_THAT(index_.Find("neu"), ElementsAre(first));
  EXPECT_TRUE(ReachAll(index_));
  EXPECT_THAT(index_.Find("neu"), ElementsAre(first, second));
  EXPECT_THAT(index_.Find("alt"), IsEmpty());
  EXPECT_THAT(index_.Find("neu Brief"), ElementsAre(first)) << "the mail itself has not changed";
}

TEST_F(ArchiveIndexTest, WhatIsRemovedIsNotFound) {
  const std::int64_t first = AddMail("Text=wort", "Brief");
  const std::int64_t second = AddMail("Text=wort", "Brief");
  EXPECT_TRUE(ReachAll(index_));
  store_.Remove(first);
  index_.Remove(first);
  EXPECT_THAT(index_.Find("wort"), ElementsAre(second));
  EXPECT_THAT(index_.Find("Brief"), ElementsAre(second));
  store_.Remove(second);
  index_.Remove(second);
  EXPECT_TRUE(ReachAll(index_)) << "nothing more to take up";
  EXPECT_THAT(index_.Find("Brief"), IsEmpty());
}

TEST_F(ArchiveIndexTest, AMailWhoseFileIsGoneIsFoundByItsFields) {
  const std::int64_t number = AddMail("Text=wort", "Brief");
  files_.Remove(number, "mail.eml");
  EXPECT_TRUE(ReachAll(index_));
  EXPECT_THAT(index_.Find("wort"), ElementsAre(number));
  EXPECT_THAT(index_.Find("Brief"), IsEmpty());
}

TEST_F(ArchiveIndexTest, AStepThatFailsIsAsIfItHadNotBegun) {
  AddMany(100, "wort");
  AddMail("Text=wort", "Brief");
  long failed = 0;
  for (bool reached = true; reached; ++failed) {
    const DiskFault fault({.calls = DiskCall::Write | DiskCall::Sync,
                           .number = failed,
                           .trouble = DiskTrouble::Once,
                           .error = ENOSPC,
                           .pathEnd = "archive.sqlite-wal"});
    const bool worked = Swallow([&] { ReachAll(index_); });
    reached = fault.WasReached();
    EXPECT_EQ(worked, !reached);
    EXPECT_THAT(index_.Find("wort"), SizeIs(reached ? 0 : 101));
  }
  EXPECT_GT(failed, 1);
  EXPECT_THAT(index_.Find("Brief"), SizeIs(1));
}

}  // namespace
}  // namespace vorlent
