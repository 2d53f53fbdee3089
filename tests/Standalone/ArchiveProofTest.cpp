// What an import that moves does if its archive goes away before the mails are marked.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "Standalone/Archive.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/MovingImport.h"
#include "Support/MailboxBuilder.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedTemporaryPlace.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

// Something happens to the archive when all mails of a mailbox are in.
class DisturbedImport : public ArchiveImport {
 public:
  DisturbedImport(std::function<void()> disturb, std::function<void()> look)
      : disturb_(std::move(disturb)), look_(std::move(look)) {}

  void MarkingBegins(const std::string& mailbox) override {
    disturb_();
    ArchiveImport::MarkingBegins(mailbox);
    look_();
  }

 private:
  std::function<void()> disturb_;
  std::function<void()> look_;  // at what the archive has proved
};

class ArchiveProofTest : public testing::Test {
 protected:
  ArchiveProofTest() { NoThunderbirdCheck() = false; }

  static std::string MailOf(const std::string& subject, char status) {
    return OrdinaryMail{.subject = subject, .id = subject, .status = std::string("000") + status}.Bytes();
  }
  static std::string Mailbox(char status) { return MailOf("one", status) + MailOf("two", status); }

  // Imports both mails and moves them. What ended the run, "" if nothing did.
  std::string Import(
      const std::function<void()>& disturb, const std::function<void()>& look = [] {}) {
    folder_.Write("Inbox", Mailbox('1'));
    DisturbedImport import(disturb, look);
    return MoveMails({folder_.Path("Inbox")}, folder_.Path("archive"), import);
  }

  fs::path Native(const std::string& name) { return fs::path(folder_.Native("archive")) / name; }

  // The place is taken by a copy of what was there.
  void Replace(const fs::path& path) {
    const fs::path old = path.string() + ".old";
    fs::rename(path, old);
    fs::copy(old, path, fs::copy_options::recursive);
  }

  void ExpectNothingIsMarked(const std::string& failure, const std::string& path) {
    EXPECT_THAT(failure, HasSubstr(folder_.Path(path)));
    EXPECT_EQ(folder_.Read("Inbox"), Mailbox('1'));
    fs::remove_all(folder_.Native("archive"));
    fs::remove_all(folder_.Native("archive").string() + ".old");
  }

  ScopedRecordingPlatform platform_;
  TemporaryFolder folder_;
  ScopedTemporaryPlace temporary_{folder_.Native()};
};

TEST_F(ArchiveProofTest, ArchiveThatIsThereLetsTheMailsGo) {
  EXPECT_EQ(Import([] {}), "");
  EXPECT_EQ(folder_.Read("Inbox"), Mailbox('9'));
}

TEST_F(ArchiveProofTest, ArchiveThatIsDeletedKeepsTheMailsInTheirMailbox) {
  ExpectNothingIsMarked(Import([&] { fs::remove_all(folder_.Native("archive")); }), "archive");
  ExpectNothingIsMarked(Import([&] { fs::remove(Native("archive.sqlite")); }), "archive\\archive.sqlite");
  ExpectNothingIsMarked(Import([&] { fs::remove_all(Native("files")); }), "archive\\files");
}

TEST_F(ArchiveProofTest, SoDoesOneThatIsReplaced) {
  ExpectNothingIsMarked(Import([&] { Replace(folder_.Native("archive")); }), "archive");
  ExpectNothingIsMarked(Import([&] { Replace(Native("archive.sqlite")); }), "archive\\archive.sqlite");
  ExpectNothingIsMarked(Import([&] { Replace(Native("files")); }), "archive\\files");
}

TEST_F(ArchiveProofTest, FolderMadeInThePlaceOfARemovedOneIsAnother) {
  ExpectNothingIsMarked(Import([&] {
                          fs::remove_all(Native("files"));
                          fs::create_directories(Native("files"));
                        }),
                        "archive\\files");
}

TEST_F(ArchiveProofTest, EachFileOfTheMailsMustBeThere) {
  const auto removeOne = [&] {
    for (const auto& entry : fs::recursive_directory_iterator(Native("files"))) {
      if (!entry.is_regular_file()) continue;
      fs::remove(entry.path());
      return;
    }
    FAIL() << "there is no file";
  };
  ExpectNothingIsMarked(Import(removeOne), "archive\\files\\000000\\");
  // Mails that were there before are what is left of those that come in.
  ASSERT_EQ(Import([] {}), "");
  ExpectNothingIsMarked(Import(removeOne), "archive\\files\\000000\\");
}

TEST_F(ArchiveProofTest, WhatStoodInALogThatIsGoneIsInTheDatabase) {
  // As a crash would leave it.
  const auto keepDatabase = [&] {
    fs::create_directory(folder_.Native("crashed"));
    fs::copy(Native("archive.sqlite"), fs::path(folder_.Native("crashed")) / "archive.sqlite");
  };
  EXPECT_EQ(Import([&] { fs::remove(Native("archive.sqlite-wal")); }, keepDatabase), "");
  EXPECT_EQ(folder_.Read("Inbox"), Mailbox('9'));
  Archive crashed{std::weak_ptr<StandaloneGlobal>()};
  crashed.Open(folder_.Path("crashed"));
  EXPECT_EQ(crashed.ItemCount(), 2);
}

}  // namespace
}  // namespace vorlent
