// What a crash leaves of an archive: a child process imports mails and is killed, at every single operation
// on the disk that the import consists of and at moments of chance, and then the archive is looked at.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <random>
#include <set>
#include <string>

#include "Common/StdModul.h"
#include "Platform/Failure.h"
#include "Standalone/Archive.h"
#include "Standalone/MemoryFolder.h"
#include "Standalone/Sqlite.h"
#include "Support/DiskOperations.h"

namespace vorlent {
namespace {

constexpr int kMails = 2;
constexpr std::array<const char*, 2> kKeys = {"File", "FileAttach1"};

std::string NameOf(const std::string& key) {
  return key == "File" ? "mail.eml" : "Anhang.pdf";
}

// What the child has been told is done, in memory that outlives it.
struct Acknowledged {
  bool pasted[kMails];
  bool taken[kMails][kKeys.size()];
  bool connected[kMails];
};

class ArchiveCrashTest : public ::testing::Test {
 protected:
  ArchiveCrashTest() {
    void* shared =
        mmap(nullptr, sizeof(Acknowledged), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    acknowledged_ = static_cast<Acknowledged*>(shared);
  }
  ~ArchiveCrashTest() override { munmap(acknowledged_, sizeof(Acknowledged)); }

  std::string SourceName(int mail, const std::string& key) {
    return "mailbox" + std::to_string(mail) + "/" + NameOf(key);
  }

  std::string BytesOf(int mail, const std::string& key) {
    return "From - \r\n\r\ninhalt" + std::to_string(mail) + key + " " + std::string(5000, 'x');
  }

  // All as it is before the import: no archive, and the mails' files where the reader has put them.
  void Prepare() {
    std::filesystem::remove_all(folder_.Native("archive"));
    *acknowledged_ = {};
    for (int mail = 0; mail < kMails; ++mail) {
      for (const char* key : kKeys)
        sources_->Write(SourceName(mail, key), BytesOf(mail, key));
    }
  }

  std::string RecordOf(int mail) {
    std::string record = "ID=" + std::to_string(mail) + "|Type=mail|Text=Betreff" + std::to_string(mail);
    for (const std::string key : kKeys) {
      record +=
          "|Data" + key + "=" + EscapeValue(sources_->Path(SourceName(mail, key)) + "\nfile=" + NameOf(key));
    }
    return record + "|Log=" + NowStamp();
  }

  // The archive must be open in the process that works with it alone.
  ArchivePtr OpenArchive() {
    auto archive = std::make_shared<Archive>(std::weak_ptr<StandaloneGlobal>());
    archive->Open(folder_.Path("archive"));
    return archive;
  }

  // What the import does, with `move`.
  void Import(Archive& archive) {
    for (int mail = 0; mail < kMails; ++mail) {
      const ItemPtr item = archive.PasteRecord(RecordOf(mail));
      acknowledged_->pasted[mail] = true;
      item->SetConnected(false);
      for (std::size_t i = 0; i < kKeys.size(); ++i) {
        std::string description = item->DataText(kKeys[i]);
        const std::string path = CutLine(description);
        item->TakeFile(kKeys[i], path, "move|nofileattribute", description);
        acknowledged_->taken[mail][i] = true;
      }
      item->SetConnected(true);
      acknowledged_->connected[mail] = true;
    }
    archive.Close();
  }

  // Runs the import in a child that dies before its operation number `operation`, counted from 0. False if it
  // had fewer and came to its end.
  bool RunAndKillAt(long operation) {
    const pid_t child = fork();
    if (child == 0) {
      const DiskFault death({kChangingTheDisk, operation, DiskTrouble::Death});
      Swallow([&] { Import(*OpenArchive()); });
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status);
  }

  void RunAndKillAfter(unsigned microseconds) {
    const pid_t child = fork();
    if (child == 0) {
      Swallow([&] { Import(*OpenArchive()); });
      _exit(0);
    }
    usleep(microseconds);
    kill(child, SIGKILL);
    int status = 0;
    waitpid(child, &status, 0);
  }

  // Whether a file of a mail is whole where it came from.
  bool IsAtSource(int mail, const std::string& key) {
    return sources_->Exists(SourceName(mail, key)) &&
           sources_->Read(SourceName(mail, key)) == BytesOf(mail, key);
  }

  void ExpectNothingLost(Archive& archive) {
    for (int mail = 0; mail < kMails; ++mail) {
      const std::string id = std::to_string(mail);
      const auto items = archive.ItemsOf(id);
      if (acknowledged_->pasted[mail]) {
        ASSERT_EQ(items.size(), 1u) << "mail " << mail;
      }
      for (std::size_t i = 0; i < kKeys.size(); ++i) {
        const std::string stored = items.empty() ? "" : items.front()->DataFile(kKeys[i], 0);
        const bool isInArchive = FileExists(stored) && ReadBytes(stored) == BytesOf(mail, kKeys[i]);
        EXPECT_TRUE(isInArchive || IsAtSource(mail, kKeys[i])) << "mail " << mail << " " << kKeys[i];
        if (acknowledged_->taken[mail][i]) {
          EXPECT_TRUE(isInArchive) << "mail " << mail << " " << kKeys[i];
        }
      }
      if (acknowledged_->connected[mail]) {
        EXPECT_FALSE(items.front()->IsIncomplete());
      }
    }
  }

  // The database is sound, every file that it names is there unless it is marked, and no other is.
  void ExpectConsistent() {
    SqliteDatabase database(folder_.Path("archive\\archive.sqlite"), 0);
    SqliteStatement check(database, "PRAGMA integrity_check");
    ASSERT_TRUE(check.Step());
    EXPECT_EQ(check.Text(0), "ok");
    check.Reset();
    database.Execute("INSERT INTO search (search) VALUES ('integrity-check')");
    database.Execute("INSERT INTO bodies (bodies) VALUES ('integrity-check')");
    std::set<std::string> named;
    SqliteStatement files(database, "SELECT item, name, missing FROM files");
    while (files.Step()) {
      const std::string name =
          "archive/files/000000/" + std::to_string(files.Number(0)) + " " + std::string(files.Text(1));
      EXPECT_EQ(folder_.Exists(name), files.Number(2) == 0) << name;
      named.insert(name);
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.Native("archive/files"))) {
      if (!entry.is_regular_file()) continue;
      const std::string name = std::filesystem::relative(entry.path(), folder_.Native()).string();
      EXPECT_TRUE(named.contains(name)) << name << " belongs to no item";
    }
  }

  void ExpectImportCompletesIt() {
    for (int mail = 0; mail < kMails; ++mail) {
      for (const char* key : kKeys)
        sources_->Write(SourceName(mail, key), BytesOf(mail, key));
    }
    const ArchivePtr archive = OpenArchive();
    Import(*archive);
    archive->Open(folder_.Path("archive"));
    EXPECT_EQ(archive->ItemCount(), kMails);
    EXPECT_TRUE(archive->IncompleteItems().empty());
    ExpectFound(*archive);
    archive->Close();
  }

  // Each mail once by what it shows and by what it says.
  void ExpectFound(Archive& archive) {
    for (int mail = 0; mail < kMails; ++mail) {
      EXPECT_EQ(archive.Search("Betreff" + std::to_string(mail)).size(), 1u);
      EXPECT_EQ(archive.Search("inhalt" + std::to_string(mail) + "File").size(), 1u);
    }
  }

  void ExpectArchiveSurvived() {
    const ArchivePtr archive = OpenArchive();
    ExpectNothingLost(*archive);
    archive->Close();
    ExpectConsistent();
    ExpectImportCompletesIt();
    ExpectConsistent();
  }

  MemoryFolder folder_;
  TemporaryFolder otherFileSystem_;
  const TemporaryFolder* sources_ = &folder_;
  Acknowledged* acknowledged_;
};

TEST_F(ArchiveCrashTest, NoOperationOnTheDiskIsAPointWhereMailIsLost) {
  long operation = 0;
  for (;; ++operation) {
    SCOPED_TRACE("killed before operation " + std::to_string(operation));
    Prepare();
    const bool died = RunAndKillAt(operation);
    ExpectArchiveSurvived();
    if (!died || HasFatalFailure()) break;
  }
  // Far fewer would mean that the operations aren't seen.
  EXPECT_GT(operation, 10 * kMails);
}

TEST_F(ArchiveCrashTest, NeitherWithFilesThatMustBeCopied) {
  sources_ = &otherFileSystem_;
  for (long operation = 0;; ++operation) {
    SCOPED_TRACE("killed before operation " + std::to_string(operation));
    Prepare();
    OpenArchive()->Close();
    const bool died = RunAndKillAt(operation);
    ExpectArchiveSurvived();
    if (!died || HasFatalFailure()) break;
  }
}

TEST_F(ArchiveCrashTest, NoMomentIsOneWhereMailIsLost) {
  std::minstd_rand random(20100509);
  for (int round = 0; round < 10; ++round) {
    SCOPED_TRACE("round " + std::to_string(round));
    Prepare();
    RunAndKillAfter(std::uniform_int_distribution<unsigned>(0, 30000)(random));
    ExpectArchiveSurvived();
  }
}

// Opening is where things are put in order, and it may be interrupted itself.
TEST_F(ArchiveCrashTest, PuttingInOrderCanBeInterruptedToo) {
  Prepare();
  // The first mail is in, the second half.
  ASSERT_TRUE(RunAndKillAt(60));
  folder_.Write("archive/files/000000/77 orphan.txt", "x");
  folder_.Write("archive/files/000000/1  part", "x");
  for (long operation = 0;; ++operation) {
    const pid_t child = fork();
    if (child == 0) {
      const DiskFault death({kChangingTheDisk, operation, DiskTrouble::Death});
      Swallow([&] { OpenArchive()->Close(); });
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (!WIFSIGNALED(status)) break;
  }
  ExpectArchiveSurvived();
}

TEST_F(ArchiveCrashTest, FirstSearchMayDieAnywhereAndTheNextFindsAll) {
  long operation = 0;
  for (;; ++operation) {
    SCOPED_TRACE("killed before operation " + std::to_string(operation));
    Prepare();
    Import(*OpenArchive());
    const pid_t child = fork();
    if (child == 0) {
      const ArchivePtr archive = OpenArchive();
      const DiskFault death({kChangingTheDisk, operation, DiskTrouble::Death});
      Swallow([&] { archive->Search("Betreff0"); });
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const ArchivePtr archive = OpenArchive();
    ExpectFound(*archive);
    archive->Close();
    ExpectConsistent();
    if (!WIFSIGNALED(status)) break;
  }
  EXPECT_GT(operation, 0);
}

TEST_F(ArchiveCrashTest, FirstSearchOnAFullDiskTellsItAndTheNextFindsAll) {
  long operation = 0;
  for (;; ++operation) {
    SCOPED_TRACE("no space at operation " + std::to_string(operation));
    Prepare();
    Import(*OpenArchive());
    const ArchivePtr archive = OpenArchive();
    int number = 0;
    {
      const DiskFault full({kTakingSpace, operation, DiskTrouble::Once, ENOSPC});
      number = SwallowedNumber([&] { archive->Search("Betreff0"); });
      if (!full.WasReached()) break;
    }
    // No space to sync to is an error of the device in SQLite's eyes.
    EXPECT_TRUE(number == static_cast<int>(ErrorNumber::DiskFull) ||
                number == static_cast<int>(ErrorNumber::DeviceIo))
        << number;
    ExpectFound(*archive);
    archive->Close();
    ExpectConsistent();
  }
  EXPECT_GT(operation, 0);
}

TEST_F(ArchiveCrashTest, ACrashInPortionsLosesNoMailThatTheMailboxKeeps) {
  for (long operation = 0;; operation += 3) {
    SCOPED_TRACE("killed before operation " + std::to_string(operation));
    Prepare();
    const pid_t child = fork();
    if (child == 0) {
      const DiskFault death({kChangingTheDisk, operation, DiskTrouble::Death});
      Swallow([&] {
        const ArchivePtr archive = OpenArchive();
        Archive::Portions portions(*archive);
        Import(*archive);
      });
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const ArchivePtr archive = OpenArchive();
    archive->Close();
    ExpectConsistent();
    ExpectImportCompletesIt();
    if (!WIFSIGNALED(status)) break;
  }
}

}  // namespace
}  // namespace vorlent
