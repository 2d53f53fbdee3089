// Measures the reading of mailboxes against the plain work that it can't do without: reading the file in
// blocks, looking for its line ends, and writing the same files in the pieces that the lines of the mailbox
// give. Exits with 1 if a required ratio or bound is missed.
//
//   bench_ReadMailbox [--size MB] [--runs N]   speed on mailboxes of that size (256, 5)
//   bench_ReadMailbox --memory [--size MB]     peak memory on mailboxes of that size (1024)
//
// --quick before them makes it 32 MB and 64 MB, with wider bounds.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Common/LineFile.h"
#include "Connectors/Mozilla/StdMail.h"
#include "MailboxGenerator.h"
#include "Measuring.h"
#include "Platform/Files.h"
#include "Support/RecordingHost.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr std::size_t kBlock = 256 * 1024;
constexpr std::size_t kPieceBytes = 57;  // what a base64 line of 76 characters holds
constexpr double kMemoryBoundMegabytes = 32;
constexpr Bound kAttachmentsOfScan = {0.5, 0.45};
constexpr Bound kTextOfScan = {0.25, 0.24};
constexpr Bound kSavingOfWriting = {0.6, 0.4};

// One line of the table: what is measured, and the times of its runs.
struct Measure {
  std::string name;
  std::function<void()> work;
  std::uint64_t bytes;  // that the speed is reckoned on
  std::vector<double> times = {};

  double Speed() const { return static_cast<double>(bytes) / kMegabyte / MedianOf(times); }
};

// Runs all measures in turn, so that a disturbance of the machine hits them alike.
void Run(std::vector<Measure*> measures, int runs) {
  for (int run = 0; run <= runs; ++run) {
    for (Measure* measure : measures) {
      const double time = Timed(measure->work).processor;
      if (run > 0) measure->times.push_back(time);  // the first run warms the caches
    }
  }
}

void Print(const Measure& measure) {
  std::printf("  %-34s %8.0f MB/s\n", measure.name.c_str(), measure.Speed());
}

bool PrintAgainst(const Measure& measure, const Measure& floor, double required) {
  const double ratio = RatioOf(floor.times, measure.times);
  const bool reached = ratio >= required;
  std::printf("  %-34s %8.0f MB/s   %.2f of %s, required %.2f: %s\n", measure.name.c_str(), measure.Speed(),
              ratio, floor.name.c_str(), required, reached ? "ok" : "MISSED");
  return reached;
}

std::uint64_t sink;  // keeps the floors from being optimised away

void ReadBlocks(const std::string& path, char* buffer) {
  os::File file = os::File::Open(path, os::File::Mode::Read);
  while (const std::size_t size = file.Read(buffer, kBlock))
    sink += static_cast<unsigned char>(buffer[size - 1]);
}

void ScanLines(const std::string& path, char* buffer) {
  os::File file = os::File::Open(path, os::File::Mode::Read);
  while (const std::size_t size = file.Read(buffer, kBlock)) {
    const char* at = buffer;
    const char* const end = buffer + size;
    while (const void* found = std::memchr(at, '\r', static_cast<std::size_t>(end - at))) {
      at = static_cast<const char*>(found) + 1;
      ++sink;
    }
  }
}

class Mailbox {
 public:
  Mailbox(MailboxKind kind, std::uint64_t size)
      : path_(folder_.Path("Inbox")), prefix_(folder_.MakeFolder("tmp") + "\\") {
    mails_ = GenerateMailbox(path_, kind, size);
    size_ = os::FileLength(path_);
  }

  const std::string& Path() const { return path_; }
  std::uint64_t Size() const { return size_; }
  int Mails() const { return mails_; }

  // Reads all mails as the connector does. Calls `behindMail` while the mail's files are there. The HTML file
  // is the host's to take away.
  void Read(bool saveattachments, const std::function<void()>& behindMail = {}) {
    StdMail mail;
    mail.SetMailboxFile(path_);
    mail.Setmailtmppfad(prefix_);
    mail.InitStream();
    int mails = 0;
    for (; mail.ReadHeader(saveattachments); ++mails) {
      sink += mail.GetData("Account=a,Inbox", saveattachments).size();
      if (behindMail) behindMail();
      mail.DeleteLastTempfiles();
      if (saveattachments) std::filesystem::remove(html_);
    }
    if (mails != mails_) throw Failure(ErrorNumber::Host, "not all mails were found");
  }

  // Reads once for the files that saving makes.
  void NoteFiles() {
    Read(true, [&] {
      std::vector<SavedFile> files;
      for (const auto& entry : std::filesystem::directory_iterator(folder_.Native("tmp"))) {
        files.push_back(Note(entry.path()));
        written_ += entry.file_size();
      }
      files_.push_back(std::move(files));
    });
  }

  std::uint64_t Written() const { return written_; }

  // Writes the same files as a plain program does, and removes them like the reader.
  void WriteSameFiles() const {
    const std::string bytes(kBlock, 'x');
    for (const std::vector<SavedFile>& mail : files_) {
      for (std::size_t i = 0; i < mail.size(); ++i) {
        std::ofstream file(folder_.Native("tmp") / std::to_string(i), std::ios::binary);
        for (const std::uint32_t piece : mail[i].pieces) {
          file.write(bytes.data(), piece);
          if (mail[i].isText) file.write("\r\n", 2);
        }
      }
      for (std::size_t i = 0; i < mail.size(); ++i)
        std::filesystem::remove(folder_.Native("tmp") / std::to_string(i));
    }
  }

 private:
  // A file that saving made: the lengths of its lines, if it is text, else of what each base64 line held.
  struct SavedFile {
    bool isText;
    std::vector<std::uint32_t> pieces = {};
  };

  static SavedFile Note(const std::filesystem::path& path) {
    SavedFile file{path.extension() == ".eml" || path.extension() == ".html"};
    if (file.isText) {
      LineFile lines(path.string(), os::File::Mode::Read);
      while (!lines.AtEnd())
        file.pieces.push_back(static_cast<std::uint32_t>(lines.ReadLine().size()));
    } else {
      const std::uint64_t size = std::filesystem::file_size(path);
      file.pieces.assign(size / kPieceBytes, kPieceBytes);
      file.pieces.push_back(static_cast<std::uint32_t>(size % kPieceBytes));
    }
    return file;
  }

  TemporaryFolder folder_;
  std::string path_;
  std::string prefix_;
  std::filesystem::path html_ = folder_.Native("tmp") / "mail.html";
  std::uint64_t size_ = 0;
  int mails_ = 0;
  std::uint64_t written_ = 0;
  std::vector<std::vector<SavedFile>> files_;
};

struct Required {
  double ofScan;
  double ofWriting;
  double todaysTime;
};

bool MeasureSpeed(const char* title, MailboxKind kind, std::uint64_t size, int runs,
                  const Required& required) {
  Mailbox mailbox(kind, size);
  mailbox.NoteFiles();
  const auto buffer = std::make_unique<char[]>(kBlock);
  Measure blocks{"read in blocks", [&] { ReadBlocks(mailbox.Path(), buffer.get()); }, mailbox.Size()};
  Measure scan{"scan for line ends", [&] { ScanLines(mailbox.Path(), buffer.get()); }, mailbox.Size()};
  Measure read{"ReadHeader and GetData", [&] { mailbox.Read(false); }, mailbox.Size()};
  Measure write{"write the same lines", [&] { mailbox.WriteSameFiles(); }, mailbox.Written()};
  Measure save{"ReadHeader and GetData with saving", [&] { mailbox.Read(true); }, mailbox.Written()};
  Measure todaysRead{"by today's rules", ByTodaysRules(read.work), mailbox.Size()};
  Measure todaysSave{"by today's rules", ByTodaysRules(save.work), mailbox.Written()};
  Run({&blocks, &scan, &read, &todaysRead, &write, &save, &todaysSave}, runs);

  std::printf("%s: %.0f MB, %d mails, median of %d runs, processor time\n", title,
              static_cast<double>(mailbox.Size()) / kMegabyte, mailbox.Mails(), runs);
  Print(blocks);
  Print(scan);
  bool isFast = PrintAgainst(read, scan, required.ofScan);
  Print(todaysRead);
  Print(write);
  isFast &= PrintAgainst(save, write, required.ofWriting);
  Print(todaysSave);
  isFast &= PrintTodays("reading", RatioOf(todaysRead.times, read.times), required.todaysTime);
  isFast &= PrintTodays("saving", RatioOf(todaysSave.times, save.times), required.todaysTime);
  std::printf("  peak memory so far %.1f MB\n\n", PeakMegabytes());
  return isFast;
}

bool MeasureMemory(const char* title, MailboxKind kind, std::uint64_t size) {
  Mailbox mailbox(kind, size);
  mailbox.Read(false);
  mailbox.Read(true);
  const double peak = PeakMegabytes();
  const bool kept = peak < kMemoryBoundMegabytes;
  std::printf("%s: %.0f MB, %d mails: peak memory %.1f MB, required below %.0f: %s\n", title,
              static_cast<double>(mailbox.Size()) / kMegabyte, mailbox.Mails(), peak, kMemoryBoundMegabytes,
              kept ? "ok" : "MISSED");
  return kept;
}

int Main(int argc, char** argv) {
  std::optional<std::uint64_t> megabytes;
  int runs = 5;
  bool memory = false;
  bool quick = false;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--quick") {
      quick = true;
    } else if (argument == "--memory") {
      memory = true;
    } else if (argument == "--size" && i + 1 < argc) {
      megabytes = std::stoull(argv[++i]);
    } else if (argument == "--runs" && i + 1 < argc) {
      runs = std::stoi(argv[++i]);
    } else {
      std::fprintf(stderr, "usage: %s [--quick] [--memory] [--size MB] [--runs N]\n", argv[0]);
      return 2;
    }
  }
  const test::RecordingHost host;
  const std::uint64_t size =
      megabytes.value_or(memory ? (quick ? 64 : 1024) : (quick ? 32 : 256)) * 1024 * 1024;
  bool ok = true;
  if (memory) {
    ok &= MeasureMemory("attachments", MailboxKind::Attachments, size);
    ok &= MeasureMemory("one mail", MailboxKind::SingleMail, size);
  } else {
    ok &= MeasureSpeed("attachment-heavy", MailboxKind::Attachments, size, runs,
                       {kAttachmentsOfScan.For(quick), kSavingOfWriting.For(quick), kTodaysTime.For(quick)});
    ok &= MeasureSpeed("text-heavy", MailboxKind::Text, size, runs,
                       {kTextOfScan.For(quick), kSavingOfWriting.For(quick), kTodaysTime.For(quick)});
  }
  return ok ? 0 : 1;
}

}  // namespace
}  // namespace vorlent

int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape): ends the program
  return vorlent::Main(argc, argv);
}
