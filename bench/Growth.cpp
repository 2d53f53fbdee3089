// Measures work that once grew with the square of its input: each piece with its input and with four times as
// much. Exits with 1 if each doubling takes more than 2.5 times as long. Over two of them what a busy machine
// adds weighs half as much, while work that grows with the square takes 4 times as long each time.
//
//   bench_Growth [--rounds N]   the median of so many rounds counts (9)
//   bench_Growth --quick        5 rounds, and up to 2.9 times as long
#include <stdlib.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/ThunderbirdTree.h"
#include "Host/HostObjects.h"
#include "Measuring.h"
#include "Platform/NativePaths.h"
#include "Platform/Settings.h"
#include "Standalone/ItemFinder.h"
#include "Standalone/StandaloneHost.h"
#include "Support/MailboxBuilder.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

constexpr Bound kAllowedGrowth = {2.5, 2.9};

using Work = std::function<void()>;

// What a benchmark finds must be what it made, or its time tells nothing.
void Require(bool isTrue, const char* what) {
  if (isTrue) return;
  std::fprintf(stderr, "%s\n", what);
  std::exit(2);
}

// --- The pieces of work, each on files and objects of its own -------------------------------------------

std::string MailHeader(int number = 1) {
  return OrdinaryMail{.id = std::to_string(number)}.Head();
}

struct MailFolder {
  explicit MailFolder(const std::string& bytes)
      : mailbox(folder.Write("Inbox", bytes)), prefix(folder.MakeFolder("tmp") + "\\") {}

  TemporaryFolder folder;
  std::string mailbox;
  std::string prefix;
};

template <class Name>
Work SplitFilesOf(int count, Name&& name) {
  std::string mail =
      MailHeader() + "MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"b\"\r\n\r\n";
  for (int i = 1; i <= count; ++i) {
    mail +=
        "--b\r\nContent-Type: application/pdf\r\nContent-Transfer-Encoding: base64\r\n"
        "Content-Disposition: attachment; filename=\"" +
        name(i) + "\"\r\n\r\nAAAA\r\n";
  }
  const auto place = std::make_shared<MailFolder>(mail + "--b--\r\n\r\n");
  return [place, count] {
    StdMail reader;
    reader.SetMailboxFile(place->mailbox);
    reader.Setmailtmppfad(place->prefix);
    reader.InitStream();
    Require(reader.ReadHeader(true), "the mail wasn't found");
    const std::string record = reader.GetData("", true);
    Require(record.find("DataFileAttach" + std::to_string(count) + "=") != std::string::npos,
            "not all attachments were found");
    Require(reader.Ledger().IsWhole(), "not all attachments were written");
    reader.DeleteLastTempfiles();
  };
}

Work SplitAttachments(int count) {
  return SplitFilesOf(count, [](int number) { return "report " + std::to_string(number) + ".pdf"; });
}

// By the rules of today, by which all of them are kept.
Work SplitAttachmentsOfOneName(int count) {
  const Work work = SplitFilesOf(count, [](int) { return std::string("image.png"); });
  return [work] {
    const ScopedRules today(Rules::Today());
    work();
  };
}

Work ReadMailboxes(int count) {
  const auto tree = std::make_shared<ThunderbirdTree>();
  tree->AddProfile("p", {"a"});
  for (int i = 0; i < count; ++i)
    tree->AddMailbox("p", "a", "Box " + std::to_string(i), MailHeader(i) + "\r\ntext\r\n\r\n");
  return [tree, count] {
    os::SetAppDataFolder(tree->Folder().Native().string());
    HostObserver nobody;
    const auto host = std::make_shared<StandaloneHost>(nobody);
    const auto before = HostObjects::Install(host);
    const StandaloneLocationPtr location = host->MakeLocation();
    location->Open("thunderbird://p/a");
    location->Load();
    Require(location->ItemCount() == count, "not all mailboxes were read");
    location->Close();
    HostObjects::Install(before);
    os::SetAppDataFolder("");
  };
}

Work ReadHeaders(int count) {
  constexpr int kBits = 16;
  std::string mail = MailHeader();
  for (int i = 0; i < count; ++i) {
    for (int bit = 0; bit < kBits; ++bit)
      mail += (i >> bit) % 2 == 0 ? '@' : '`';
    mail += ": x\r\n";
  }
  const auto place = std::make_shared<MailFolder>(mail + "\r\ntext\r\n\r\n");
  return [place, count] {
    StdMail reader;
    reader.SetMailboxFile(place->mailbox);
    reader.Setmailtmppfad(place->prefix);
    reader.InitStream();
    Require(reader.ReadHeader(false), "the mail wasn't found");
    Require(reader.Headers()->Count() > count, "not all headers were found");
  };
}

Work ResolveMissingPath(int names) {
  const auto folder = std::make_shared<TemporaryFolder>();
  std::string path = folder->Path("missing");
  std::string native = folder->Native("missing").string();
  for (int i = 0; i < names; ++i) {
    path += "\\a";
    native += "/a";
  }
  return [folder, path, native] {
    // Once is too short for the clock.
    for (int i = 0; i < 20; ++i) {
      Require(!FileExists(path), "the path is there");
      Require(os::ToNativePath(path) == native, "the path didn't stay as written");
    }
  };
}

Work LookUpItems(int count) {
  const auto idOf = [](int i) { return "20260112081528-" + std::to_string(i) + "@example.org"; };
  std::vector<StandaloneItemPtr> items;
  for (int i = 0; i < count; ++i) {
    items.push_back(std::make_shared<StandaloneItem>());
    items.back()->SetID(idOf(i));
  }
  return [items, idOf] {
    // Few, as a cache that holds n and not 4n would be measured else, and so more than once.
    for (int round = 0; round < 10; ++round) {
      const ItemFinder finder(items);
      for (std::size_t i = 0; i < items.size(); ++i)
        Require(finder.Find(idOf(static_cast<int>(i))) == items[i], "not all items were found");
    }
  };
}

// --- Measuring ------------------------------------------------------------------------------------------

struct Piece {
  const char* name;
  int size;
  Work (*prepare)(int size);
};

constexpr Piece kPieces[] = {
    {"attachments in one mail, split", 1'000, SplitAttachments},
    {"attachments of one name, split", 1'000, SplitAttachmentsOfOneName},
    {"mailboxes in one folder, found and read", 1'000, ReadMailboxes},
    {"header names of @ and grave accents, read", 5'000, ReadHeaders},
    {"names in a path that isn't there, resolved", 6'250, ResolveMissingPath},
    {"items, each looked up by its ID", 1'000, LookUpItems},
};

double Seconds(const Piece& piece, int size) {
  const Work work = piece.prepare(size);
  return Timed(work).processor;
}

bool Measure(const Piece& piece, int rounds, double allowed) {
  std::vector<double> once;
  std::vector<double> fourfold;
  for (int round = 0; round <= rounds; ++round) {
    const double ofOnce = Seconds(piece, piece.size);
    const double ofFourfold = Seconds(piece, 4 * piece.size);
    // No other finds the memory as untouched as the first.
    if (round == 0) continue;
    once.push_back(ofOnce);
    fourfold.push_back(ofFourfold);
  }
  const double factor = std::sqrt(RatioOf(fourfold, once));
  const bool kept = factor <= allowed;
  std::printf("%-44s %7d %9.1f %9.1f %7.2f   %s\n", piece.name, piece.size, MedianOf(once) * 1000,
              MedianOf(fourfold) * 1000, factor, kept ? "ok" : "MISSED");
  return kept;
}

int Run(int rounds, double allowed) {
  std::printf("%-44s %7s %9s %9s %7s   at most %.1f\n", "milliseconds of processor time", "n", "of n",
              "of 4n", "factor", allowed);
  bool kept = true;
  for (const Piece& piece : kPieces)
    kept &= Measure(piece, rounds, allowed);
  return kept ? 0 : 1;
}

}  // namespace
}  // namespace vorlent

int main(int argc, char** argv) {  // NOLINT(bugprone-exception-escape): ends the program
  int rounds = 9;
  bool quick = false;
  if (argc == 3 && std::string(argv[1]) == "--rounds") {
    rounds = std::max(1, std::atoi(argv[2]));
  } else if (argc == 2 && std::string(argv[1]) == "--quick") {
    quick = true;
    rounds = 5;
  } else if (argc != 1) {
    std::fprintf(stderr, "usage: %s [--rounds N | --quick]\n", argv[0]);
    return 2;
  }
  // A disk's own time for thousands of small files isn't what is measured.
  if (std::filesystem::is_directory("/dev/shm")) setenv("TMPDIR", "/dev/shm", 0);
  return vorlent::Run(rounds, vorlent::kAllowedGrowth.For(quick));
}
