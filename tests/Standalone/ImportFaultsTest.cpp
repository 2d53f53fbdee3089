// What trouble leaves of an import that moves mails: the run is killed, or finds the disk full, at every
// single operation on the disk, and then mailbox and archive are looked at.

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "Platform/NativePaths.h"
#include "Standalone/Archive.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/MemoryFolder.h"
#include "Standalone/MovingImport.h"
#include "Support/ChildProcess.h"
#include "Support/DiskOperations.h"
#include "Support/MailboxBuilder.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedTemporaryPlace.h"

namespace vorlent {
namespace {

// The mails of the mailbox: its bytes up to the digit that marks it as deleted, and those after that.
struct Part {
  std::string key;    // of the data field
  std::string bytes;  // that must be in the archive, or among them
};
struct TestMail {
  std::string subject;
  std::string text;
  std::vector<Part> parts;
};

const std::vector<TestMail>& LivingMails() {
  static const std::vector<TestMail> mails = [] {
    const std::string plain = OrdinaryMail{.subject = "plain", .id = "plain"}.Bytes();
    const std::string page(9000, 'x');
    const std::string attached = OrdinaryMail{.subject = "attached", .id = "attached"}.Head() +
                                 "Content-Type: multipart/mixed; boundary=b\r\n\r\n"
                                 "--b\r\nContent-Type: text/html\r\n\r\n<p>" +
                                 page +
                                 "\r\n--b\r\nContent-Type: application/pdf\r\n"
                                 "Content-Transfer-Encoding: base64\r\n"
                                 "Content-Disposition: attachment; filename=\"a.pdf\"\r\n\r\n"
                                 "SGVsbG8=\r\n--b--\r\n\r\n";
    return std::vector<TestMail>{
        {"plain", plain, {{"File", plain}}},
        {"attached", attached, {{"FileHTML", "<p>" + page + "\r\n"}, {"FileAttach1", "Hello"}}}};
  }();
  return mails;
}

class ImportFaultsTest : public testing::Test {
 protected:
  ImportFaultsTest() { NoThunderbirdCheck() = false; }

  // The mailbox with the marks of the living mails, in order.
  static std::string MailboxWith(const std::vector<bool>& marked) {
    std::string text = OrdinaryMail{.subject = "gone", .id = "gone", .status = "0009"}.Bytes();
    for (std::size_t i = 0; i < LivingMails().size(); ++i) {
      std::string mail = LivingMails()[i].text;
      if (marked[i]) mail[mail.find("Status: 0001") + 11] = '9';
      text += mail;
    }
    return text;
  }

  void Prepare() {
    std::filesystem::remove_all(folder_.Native("archive"));
    std::filesystem::remove_all(folder_.Native("tmp"));
    folder_.MakeFolder("tmp");
    folder_.Write("Inbox", MailboxWith({false, false}));
  }

  // What the import command does. "" if it came to its end, otherwise what ended it.
  std::string Import() {
    ArchiveImport import;
    return Import(import);
  }
  std::string Import(ArchiveImport& import) {
    return MoveMails({folder_.Path("Inbox")}, folder_.Path("archive"), import);
  }

  ArchivePtr OpenArchive() {
    auto archive = std::make_shared<Archive>(std::weak_ptr<StandaloneGlobal>());
    archive->Open(folder_.Path("archive"));
    return archive;
  }

  // Whether the archive has the mail with all its bytes.
  static bool IsWhole(Archive& archive, const TestMail& mail) {
    for (std::int32_t pos = 1; pos <= archive.ItemCount(); ++pos) {
      const ItemPtr item = archive.ItemAt(pos);
      if (item->Text() != mail.subject) continue;
      bool whole = true;
      for (const Part& part : mail.parts) {
        const std::string file = item->DataFile(part.key, 0);
        whole = whole && FileExists(file) && ReadBytes(file) == part.bytes;
      }
      if (whole) return true;
    }
    return false;
  }

  static bool FileExists(const std::string& file) {
    return !file.empty() && std::filesystem::is_regular_file(os::ToNativePath(file));
  }

  // Every mail is in the mailbox or, whole, in the archive, and no byte of the mailbox has changed but marks.
  void ExpectNoMailIsLost() {
    const ArchivePtr archive = OpenArchive();
    const std::string inbox = folder_.Read("Inbox");
    std::vector<bool> marked;
    for (const TestMail& mail : LivingMails())
      marked.push_back(inbox.find("Status: 0009\r\n" + mail.text.substr(mail.text.find("Message-ID:"))) !=
                       std::string::npos);
    EXPECT_EQ(inbox, MailboxWith(marked));
    for (std::size_t i = 0; i < marked.size(); ++i) {
      const TestMail& mail = LivingMails()[i];
      if (marked[i]) {
        EXPECT_TRUE(IsWhole(*archive, mail)) << mail.subject;
      }
    }
    archive->Close();
  }

  // The next run brings all mails in. `left` is how many broken items the archive may keep.
  void ExpectNextImportCompletesIt(std::int32_t left = 0) {
    EXPECT_EQ(Import(), "");
    EXPECT_EQ(folder_.Read("Inbox"), MailboxWith({true, true}));
    const ArchivePtr archive = OpenArchive();
    for (const TestMail& mail : LivingMails())
      EXPECT_TRUE(IsWhole(*archive, mail)) << mail.subject;
    EXPECT_LE(archive->ItemCount(), 2 + left);
    EXPECT_LE(archive->IncompleteItems().size(), static_cast<std::size_t>(left));
    archive->Close();
  }

  void ExpectErrorIsTold(const std::string& failure, const RunTally& tally) {
    const bool namesFile = failure.find(folder_.Path()) != std::string::npos;
    const bool namesReason = failure.find("No space left") != std::string::npos ||
                             failure.find("disk is full") != std::string::npos ||
                             failure.find("disk I/O error") != std::string::npos ||
                             failure.find("a.pdf: No such file") != std::string::npos;
    const bool namesAttachment = failure == "the attachment 'a.pdf' could not be saved";
    EXPECT_TRUE((namesFile && namesReason) || namesAttachment) << failure;
    EXPECT_LE(tally.Found(), 3);
  }

  ScopedRecordingPlatform platform_;
  MemoryFolder folder_;
  ScopedTemporaryPlace temporary_{folder_.Native("tmp")};
};

TEST_F(ImportFaultsTest, DeathAtAnyOperationLosesNoMail) {
  long operation = 0;
  for (;; ++operation) {
    SCOPED_TRACE("killed before operation " + std::to_string(operation));
    Prepare();
    const auto wasKilled = WasKilledInCopy([&] {
      const DiskFault death({kChangingTheDisk, operation, DiskTrouble::Death});
      Import();
    });
    if (!wasKilled) GTEST_SKIP() << "a process can't be copied here";
    ExpectNoMailIsLost();
    if (!*wasKilled) break;
    ExpectNextImportCompletesIt();
    if (HasFailure()) break;
  }
  // Far fewer would mean that the operations aren't seen.
  EXPECT_GT(operation, 30);
}

class FullDiskTest : public ImportFaultsTest, public testing::WithParamInterface<DiskTrouble> {
 protected:
  // The import's failure, and whether it came to that operation.
  std::pair<std::string, bool> ImportOnFullDisk(long operation, ArchiveImport& import) {
    const DiskFault full({kTakingSpace, operation, GetParam(), ENOSPC});
    std::string failure = Import(import);
    return {std::move(failure), full.WasReached()};
  }
};

TEST_P(FullDiskTest, AtAnyOperationIsToldAndLosesNoMail) {
  for (long operation = 0;; ++operation) {
    SCOPED_TRACE("full at operation " + std::to_string(operation));
    Prepare();
    ArchiveImport import;
    const auto [failure, reached] = ImportOnFullDisk(operation, import);
    if (!failure.empty()) ExpectErrorIsTold(failure, import);
    for (const auto& [mail, why] : import.Failed()) {
      EXPECT_EQ(mail.mailbox, folder_.Path("Inbox"));
      ExpectErrorIsTold(why.Text(), import);
    }
    if (failure.empty()) {
      EXPECT_EQ(import.Found(), 3);
    }
    ExpectNoMailIsLost();
    if (!reached) break;
    // What could be written of a mail that failed stays in the archive, beside the whole one of the next run.
    ExpectNextImportCompletesIt(import.Failed().empty() ? 0 : 1);
    if (HasFailure()) break;
  }
}

INSTANTIATE_TEST_SUITE_P(OnceOrFromThenOn, FullDiskTest,
                         testing::Values(DiskTrouble::Once, DiskTrouble::FromHere));

}  // namespace
}  // namespace vorlent
