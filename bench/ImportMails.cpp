// Measures the import of mailboxes into an archive against the plain work that it can't do without: splitting
// the same mailbox into files. Exits with 1 if a required ratio or bound is missed.
//
//   bench_ImportMails [--size MB] [--runs N]   import against splitting, on mailboxes of that size (256, 3)
//   bench_ImportMails --growth [--mails N] [--runs N]
//                                              cost per mail as an archive grows, copied and moved (100000)
//   bench_ImportMails --memory [--size MB]     peak memory of the stream (1024)
//
// --quick before them makes it 32 MB, 10000 mails and 64 MB, with wider bounds.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/ImportCommand.h"
#include "Connectors/Mozilla/ImportRun.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "MailboxGenerator.h"
#include "Measuring.h"
#include "Platform/Files.h"
#include "Standalone/Archive.h"
#include "Standalone/StandaloneHost.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr Bound kAttachmentsOfSplitting = {0.5, 0.6};
constexpr Bound kTextOfSplitting = {0.5, 0.38};
constexpr Bound kAllowedGrowth = {1.3, 1.8};
constexpr double kAllowedMemoryGrowthMegabytes = 2;
constexpr std::uint64_t kSmallMailbox = 8 * 1024 * 1024;

// Notes when the mails of a run came in.
class MailClock : public HostObserver {
 public:
  void ProgressMoved(double) override { times_.push_back(Now()); }
  // The processor time in each tenth of so many mails, from the beginning of the first.
  std::vector<double> Tenths(std::size_t mails) const {
    std::vector<double> tenths;
    for (std::size_t i = 0; i < 10; ++i)
      tenths.push_back(times_[mails * (i + 1) / 10 - 1] - (i == 0 ? start_ : times_[mails * i / 10 - 1]));
    return tenths;
  }
  void Begin() {
    times_.clear();
    start_ = Now();
  }

 private:
  static double Now() { return static_cast<double>(std::clock()) / CLOCKS_PER_SEC; }

  double start_ = 0;
  std::vector<double> times_;
};

// A mailbox and an archive on one disk, as it is with a user, and the host that brings them together.
class Bench {
 public:
  Bench() : host_(std::make_shared<StandaloneHost>(clock_)) {
    HostObjects::Install(host_);
    host_->Global().SetLogEnabled(false);
  }
  ~Bench() { HostObjects::Install(nullptr); }
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  // Makes the mailbox anew.
  int Generate(MailboxKind kind, std::uint64_t size) { return GenerateMailbox(mailbox_, kind, size); }
  double Size() const { return static_cast<double>(os::FileLength(mailbox_)); }
  MailClock& Clock() { return clock_; }
  const std::string& Mailbox() const { return mailbox_; }
  StandaloneHost& Host() { return *host_; }

  // Reads all mails into files and removes them, without a host's Location.
  void Split() {
    StdMail mail;
    mail.SetMailboxFile(mailbox_);
    mail.Setmailtmppfad(folder_.MakeFolder("split") + "\\");
    mail.InitStream();
    while (mail.ReadHeader(true)) {
      sink_ += mail.GetData("Account=a,Inbox", true).size();
      mail.DeleteLastTempfiles();
    }
  }

  // Into a fresh archive, which is closed and safe on the disk at the end.
  void Import(bool move) {
    const ArchivePtr archive = host_->Global().OpenArchive(target_);
    ImportCommand command;
    command.target = target_;
    command.move = move;
    command.mailboxes = {mailbox_};
    std::optional<Archive::Portions> portions;
    if (!move) portions.emplace(*archive);
    clock_.Begin();
    ImportRun(command.Text()).Run();
    if (portions) portions->Finish();
    archive->Close();
  }

  void RemoveArchive() { DeleteFolder(target_, true, true); }

  // The first search in the archive, which makes its index.
  void Search() {
    const ArchivePtr archive = host_->Global().OpenArchive(target_);
    sink_ += archive->Search("Quartalsbericht").size();
    archive->Close();
  }

 private:
  TemporaryFolder folder_;
  std::string mailbox_ = folder_.Path("Inbox");
  std::string target_ = folder_.Path("archive");
  MailClock clock_;
  std::shared_ptr<StandaloneHost> host_;
  std::size_t sink_ = 0;
};

// The times of one kind of work, a pair for each round.
struct Times {
  std::vector<double> processor, wall;

  void Add(const Time& time) {
    processor.push_back(time.processor);
    wall.push_back(time.wall);
  }
};

bool MeasureSpeed(const char* title, MailboxKind kind, std::uint64_t size, int runs, double required,
                  double todaysTime) {
  Bench bench;
  const int mails = bench.Generate(kind, size);
  Times splitting, importing, todays;
  // In turn, so that a disturbance of the machine hits both alike; the first round warms the caches.
  for (int run = 0; run <= runs; ++run) {
    const Time split = Timed([&] { bench.Split(); });
    bench.RemoveArchive();
    const Time import = Timed([&] { bench.Import(false); });
    bench.RemoveArchive();
    const Time today = Timed(ByTodaysRules([&] { bench.Import(false); }));
    if (run == 0) continue;
    splitting.Add(split);
    importing.Add(import);
    todays.Add(today);
  }
  const Time search = Timed([&] { bench.Search(); });
  const double megabytes = bench.Size() / kMegabyte;
  std::printf("%s: %.0f MB, %d mails, median of %d runs\n", title, megabytes, mails, runs);
  const auto print = [&](const char* name, const Times& times) {
    std::printf("  %-24s %6.0f MB/s processor, %6.0f MB/s wall\n", name,
                megabytes / MedianOf(times.processor), megabytes / MedianOf(times.wall));
  };
  print("split", splitting);
  print("import", importing);
  print("import by today's rules", todays);
  std::printf("  first search after it    %6.1f microseconds per mail, once\n",
              search.processor * 1e6 / mails);
  const double ratio = RatioOf(splitting.processor, importing.processor);
  const bool reached = ratio >= required;
  std::printf("  import has %.2f of the speed of splitting (wall %.2f), required %.2f: %s\n", ratio,
              RatioOf(splitting.wall, importing.wall), required, reached ? "ok" : "MISSED");
  const bool isTodaysFast = PrintTodays("import", RatioOf(todays.processor, importing.processor), todaysTime);
  std::printf("\n");
  return reached && isTodaysFast;
}

bool MeasureGrowth(const char* title, std::size_t mails, bool move, int runs, double allowed) {
  Bench bench;
  Times times;
  std::vector<std::vector<double>> tenths(10);
  for (int run = 0; run < runs; ++run) {
    bench.RemoveArchive();
    GenerateSmallMails(bench.Mailbox(), static_cast<int>(mails));
    times.Add(Timed([&] { bench.Import(move); }));
    const std::vector<double> measured = bench.Clock().Tenths(mails);
    for (std::size_t i = 0; i < tenths.size(); ++i)
      tenths[i].push_back(measured[i]);
  }
  std::printf(
      "%s %zu small mails, median of %d runs: %.1f s processor, %.1f s wall; microseconds per mail in "
      "each tenth:\n ",
      title, mails, runs, MedianOf(times.processor), MedianOf(times.wall));
  for (const std::vector<double>& tenth : tenths)
    std::printf(" %.0f", MedianOf(tenth) * 10e6 / static_cast<double>(mails));
  const double growth = RatioOf(tenths.back(), tenths.front());
  const bool kept = growth <= allowed;
  std::printf("\n  the last tenth costs %.2f of the first, allowed %.2f: %s\n\n", growth, allowed,
              kept ? "ok" : "MISSED");
  return kept;
}

// Streams the mailbox with the files of its mails, one mail at a time.
int Stream(Bench& bench) {
  const StandaloneLocationPtr location = bench.Host().MakeLocation();
  std::string address = bench.Mailbox();
  std::replace(address.begin(), address.end(), '\\', '/');
  address.erase(1, 1);
  location->Open("thunderbird://./" + address + "/-");
  const auto connector = RequireAs<Location_Thunderbird>(location->Connector());
  connector->SourceInit(nullptr, true);
  int mails = 0;
  for (std::string record; connector->SourceGetNext(record);)
    ++mails;
  location->Close();
  return mails;
}

bool MeasureMemory(const char* title, MailboxKind kind, std::uint64_t size) {
  Bench bench;
  double peaks[2];
  for (const bool whole : {false, true}) {
    const int mails = bench.Generate(kind, whole ? size : kSmallMailbox);
    if (Stream(bench) != mails) throw Failure(ErrorNumber::Host, "not all mails were streamed");
    peaks[whole] = PeakMegabytes();
    std::printf("%s: %.0f MB, %d mails streamed: peak memory %.1f MB\n", title, bench.Size() / kMegabyte,
                mails, peaks[whole]);
  }
  const bool kept = peaks[1] - peaks[0] <= kAllowedMemoryGrowthMegabytes;
  std::printf("  %.1f MB more, allowed %.0f: %s\n\n", peaks[1] - peaks[0], kAllowedMemoryGrowthMegabytes,
              kept ? "ok" : "MISSED");
  return kept;
}

int Main(int argc, char** argv) {
  std::optional<std::uint64_t> megabytes;
  int runs = 3;
  std::optional<std::size_t> mails;
  bool quick = false;
  bool growth = false;
  bool memory = false;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--quick") {
      quick = true;
    } else if (argument == "--growth") {
      growth = true;
    } else if (argument == "--memory") {
      memory = true;
    } else if (argument == "--size" && i + 1 < argc) {
      megabytes = std::stoull(argv[++i]);
    } else if (argument == "--runs" && i + 1 < argc) {
      runs = std::max(1, std::stoi(argv[++i]));
    } else if (argument == "--mails" && i + 1 < argc) {
      mails = std::stoul(argv[++i]);
    } else {
      std::fprintf(stderr, "usage: %s [--quick] [--growth | --memory] [--size MB] [--runs N] [--mails N]\n",
                   argv[0]);
      return 2;
    }
  }
  const std::uint64_t size =
      megabytes.value_or(memory ? (quick ? 64 : 1024) : (quick ? 32 : 256)) * 1024 * 1024;
  bool ok = true;
  if (memory) {
    ok &= MeasureMemory("attachments", MailboxKind::Attachments, size);
    ok &= MeasureMemory("text", MailboxKind::Text, size);
  } else if (growth) {
    const std::size_t count = mails.value_or(quick ? 10'000 : 100'000);
    ok &= MeasureGrowth("copying", count, false, runs, kAllowedGrowth.For(quick));
    ok &= MeasureGrowth("moving", count, true, runs, kAllowedGrowth.For(quick));
  } else {
    ok &= MeasureSpeed("attachment-heavy", MailboxKind::Attachments, size, runs,
                       kAttachmentsOfSplitting.For(quick), kTodaysTime.For(quick));
    ok &= MeasureSpeed("text-heavy", MailboxKind::Text, size, runs, kTextOfSplitting.For(quick),
                       kTodaysTime.For(quick));
  }
  return ok ? 0 : 1;
}

}  // namespace
}  // namespace vorlent

int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape): ends the program
  return vorlent::Main(argc, argv);
}
