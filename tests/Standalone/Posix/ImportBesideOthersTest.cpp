// An import that moves mails beside another program that changes mailboxes and archive under its hands, at
// moments of chance. Whatever that does, every mail that it leaves is, whole, in the archive, or unmarked in
// the mailbox.
//
// VORLENT_RANDOM_ROUNDS says how many rounds to play, each with a seed of its own; VORLENT_RANDOM_SEED plays
// one again and tells its steps.

#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "Connectors/Mozilla/ImportCommand.h"
#include "Connectors/Mozilla/ImportRun.h"
#include "Platform/Failure.h"
#include "Standalone/Archive.h"
#include "Standalone/ArchiveImport.h"
#include "Standalone/Chance.h"
#include "Standalone/MadeMails.h"
#include "Standalone/MemoryFolder.h"
#include "Standalone/StandaloneHost.h"
#include "Support/DiskOperations.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedTemporaryPlace.h"
#include "Support/SqliteFile.h"

namespace vorlent {
namespace {

namespace fs = std::filesystem;

// --- What there is

// What a look at an archive finds, without a hand on it: the bytes of the files that its items have.
class ArchiveSight {
 public:
  ArchiveSight(const fs::path& archive, const fs::path& scratch) {
    fs::remove_all(scratch);
    fs::create_directories(scratch);
    // The database and its log are copied, as they are another's alone while it has them open.
    for (const char* suffix : {"", "-wal", "-journal"}) {
      std::error_code ignored;
      fs::copy_file(archive / (std::string("archive.sqlite") + suffix),
                    scratch / (std::string("archive.sqlite") + suffix), ignored);
    }
    if (!fs::exists(scratch / "archive.sqlite")) return;
    try {
      SqliteFile database(scratch / "archive.sqlite");
      for (const std::string& row :
           database.Rows("SELECT item, count(*) FROM files WHERE NOT missing GROUP BY item")) {
        const std::size_t bar = row.find('|');
        items_[std::stol(row)].count = std::stoul(row.substr(bar + 1));
      }
    } catch (const std::runtime_error&) {
      items_.clear();  // no database, or none of an archive
    }
    ReadFiles(archive / "files");
  }

  // Whether an item has all these files.
  bool Has(const std::vector<std::string>& files) const {
    return std::any_of(items_.begin(), items_.end(), [&](const auto& entry) {
      const StoredFiles& stored = entry.second;
      return stored.count >= files.size() &&
             std::all_of(files.begin(), files.end(),
                         [&](const std::string& file) { return stored.contents.contains(file); });
    });
  }

  // Whether an item has a mail that begins so.
  bool HasMore(std::string_view mail) const {
    while (mail.ends_with('\r') || mail.ends_with('\n'))
      mail.remove_suffix(1);
    return std::any_of(items_.begin(), items_.end(), [&](const auto& entry) {
      const auto at = entry.second.contents.lower_bound(std::string(mail));
      return at != entry.second.contents.end() && at->starts_with(mail);
    });
  }

  bool HasHeaderBlock(std::string_view block) const { return headerBlocks_.contains(std::string(block)); }

 private:
  struct StoredFiles {
    std::size_t count = 0;  // that the database tells of
    std::set<std::string> contents;
  };

  void ReadFiles(const fs::path& folder) {
    if (!fs::is_directory(folder)) return;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      const std::string name = entry.path().filename();
      if (!entry.is_regular_file() || name.ends_with("  part")) continue;
      const auto item = items_.find(atol(name.c_str()));
      if (item == items_.end()) continue;
      const std::string bytes = Comparable(ReadBytes("C:" + entry.path().string()));
      headerBlocks_.insert(std::string(HeaderBlock(bytes)));
      item->second.contents.insert(bytes);
    }
  }

  std::map<long, StoredFiles> items_;
  std::set<std::string> headerBlocks_;
};

// --- What happens

// Which moments are counted.
enum class Clock {
  Disk,  // operations on the disk
  Mail,  // mails imported
  Host,  // what the host is told
  Mark,  // mails about to be marked
};
constexpr std::array<const char*, 4> kClockNames = {"disk", "mail", "host", "mark"};

enum class Deed {
  Append,
  AppendHalf,
  AppendRest,
  CompactByRename,
  CompactInPlace,
  ReplaceByRename,
  ReplaceInPlace,
  Truncate,
  DeleteMailbox,
  RewriteStatuses,
  MakeReadOnly,
  // From here on it is the archive that is touched.
  DeleteArchive,
  MoveArchive,
  ReplaceArchive,
  DeleteDatabase,
  ReplaceDatabase,
  DeleteLog,
  DeleteFiles,
  MoveFiles,
  DeleteOneFile,
  // And from here on neither.
  Cancel,
  Kill,
};
constexpr std::array<const char*, 22> kDeedNames = {"append",
                                                    "append half",
                                                    "append the rest",
                                                    "compact by rename",
                                                    "compact in place",
                                                    "replace by rename",
                                                    "replace in place",
                                                    "truncate",
                                                    "delete mailbox",
                                                    "rewrite statuses",
                                                    "make read-only",
                                                    "delete archive",
                                                    "move archive away",
                                                    "replace archive",
                                                    "delete database",
                                                    "replace database",
                                                    "delete log",
                                                    "delete files",
                                                    "move files away",
                                                    "delete one file",
                                                    "cancel",
                                                    "kill"};

bool TouchesArchive(Deed deed) {
  return deed >= Deed::DeleteArchive && deed < Deed::Cancel;
}
bool WritesInPlace(Deed deed) {
  return deed == Deed::CompactInPlace || deed == Deed::ReplaceInPlace || deed == Deed::Truncate ||
         deed == Deed::RewriteStatuses;
}

struct PlannedDeed {
  Clock clock;
  std::uint64_t moment;
  Deed deed;
};

// --- A round

class Round {
 public:
  explicit Round(std::uint64_t seed) : chance_(seed), maker_(seed) {
    folder_.MakeFolder("tmp");
    folder_.MakeFolder("other");
    const std::uint64_t mailboxes = chance_.OneIn(4) ? 2 : 1;
    for (std::uint64_t i = 0; i < mailboxes; ++i)
      MakeMailbox(i == 0 ? "Inbox" : "Sent");
    Plan();
  }

  void Play() {
    if (HasKill()) {
      PlayInChild();
    } else {
      Import();
      LookAtEnd();
      ExpectFinished();
    }
    if (CanBeFinished()) Finish();
  }

  // One line for each thing that went wrong, and for each that happened.
  std::vector<std::string> Problems() const { return LinesOf("problems"); }
  std::vector<std::string> Steps() const { return LinesOf("steps"); }

  // The mails that were there before, and those that the mailboxes have in the end and that aren't marked.
  std::uint64_t MailCount() const { return mailCount_; }
  long UnmarkedCount() const {
    long count = 0;
    for (const std::string& mailbox : mailboxes_) {
      const std::vector<PlacedMail> mails = MailsIn(Expected(mailbox).value_or(""));
      count +=
          std::count_if(mails.begin(), mails.end(), [](const PlacedMail& mail) { return !mail.isExpunged; });
    }
    return count;
  }

 private:
  // --- What is there before

  void MakeMailbox(const std::string& name) {
    std::string text;
    const std::uint64_t count = chance_.OneIn(8) ? 20 + chance_.Below(41) : 3 + chance_.Below(12);
    for (std::uint64_t i = 0; i < count; ++i)
      text += maker_.Make(nextMail_++).bytes;
    folder_.Write(name, text);
    if (chance_.OneIn(2)) folder_.Write(name + ".msf", "summary");
    mailboxes_.push_back(name);
    sizes_[name] = text.size();
    SetExpected(name, text);
    mailCount_ += count;
  }

  void Plan() {
    for (std::uint64_t count = 1 + chance_.Below(4); count > 0; --count) {
      const Clock clock = DrawClock();
      const Deed deed = static_cast<Deed>(chance_.Below(kDeedNames.size()));
      const std::uint64_t moment = chance_.Below(MomentsOf(clock));
      if (deed != Deed::AppendRest) plan_.push_back({clock, moment, deed});
      if (deed == Deed::AppendHalf) {
        const Clock restClock = DrawClock();
        plan_.push_back({restClock, chance_.Below(MomentsOf(restClock)), Deed::AppendRest});
      }
    }
  }

  Clock DrawClock() {
    constexpr std::array<Clock, 6> kClocks = {Clock::Disk, Clock::Disk, Clock::Mail,
                                              Clock::Host, Clock::Mark, Clock::Mark};
    return kClocks[chance_.Below(kClocks.size())];
  }

  // About as many moments as a run has.
  std::uint64_t MomentsOf(Clock clock) const {
    switch (clock) {
      case Clock::Disk:
        return 40 + 25 * mailCount_;
      case Clock::Host:
        return 8 + 3 * mailCount_;
      default:
        return mailCount_ + 1;
    }
  }

  bool HasKill() const {
    return std::any_of(plan_.begin(), plan_.end(),
                       [](const PlannedDeed& planned) { return planned.deed == Deed::Kill; });
  }

  // --- The run

  class Observer : public HostObserver {
   public:
    explicit Observer(Round& round) : round_(round) {}
    void ProgressMoved(double) override { round_.AtMoment(Clock::Host); }
    void LogLine(std::string_view) override { round_.AtMoment(Clock::Host); }
    void ItemPasted(std::string_view, const ItemPtr&) override { round_.AtMoment(Clock::Host); }
    void StatusChanged(std::string_view text) override {
      round_.BeginsMailbox(text);
      round_.AtMoment(Clock::Host);
    }

   private:
    Round& round_;
  };

  class WatchedImport : public ArchiveImport {
   public:
    explicit WatchedImport(Round& round) : round_(round) {}
    void MarkingBegins(const std::string& mailbox) override {
      round_.isMarking_ = true;
      ArchiveImport::MarkingBegins(mailbox);
    }

   private:
    Round& round_;
  };

  // "" if the run came to its end, otherwise what ended it.
  std::string Import() {
    Observer observer(*this);
    const auto host = std::make_shared<StandaloneHost>(observer);
    HostObjects::Install(host);
    platform_->onYield = [&, yields = 0]() mutable {
      platform_->calls.clear();
      if (++yields % 100 == 1) AtMoment(Clock::Mail);
    };
    std::string failure;
    try {
      ImportCommand command;
      command.target = folder_.Path("archive");
      command.move = true;
      for (const std::string& mailbox : mailboxes_)
        command.mailboxes.push_back(folder_.Path(mailbox));
      const ArchivePtr archive = host->Global().OpenArchive(command.target);
      cancel_ = &host->Global().CancelFlag();
      const DiskWatch watch(kChangingTheDisk | DiskCall::Open,
                            [&](DiskCall call, const std::string& path) { AtOperation(call, path); });
      WatchedImport import(*this);
      ImportRun(command.Text(), &import).Run();
      archive->Close();
    } catch (const Failure& raised) {
      failure = raised.what();
    }
    platform_->onYield = nullptr;
    cancel_ = nullptr;
    HostObjects::Install(nullptr);
    return failure;
  }

  void PlayInChild() {
    const pid_t child = fork();
    if (child == 0) {
      inChild_ = true;
      Import();
      LookAtEnd();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFSIGNALED(status)) LookAtEnd();
  }

  // --- Moments

  void AtOperation(DiskCall call, const std::string& path) {
    const bool isMailbox = path == folder_.Native(current_).string();
    if (isMailbox && call == DiskCall::Open && isMarking_) AtMoment(Clock::Mark);
    // Between the look at a mail and the touch of its digit nobody can be asked.
    isTouching_ = isMailbox && call == DiskCall::Write;
    AtMoment(Clock::Disk);
    isTouching_ = false;
  }

  void BeginsMailbox(std::string_view path) {
    if (path.empty()) return;
    LookMeanwhile();
    for (const std::string& mailbox : mailboxes_) {
      if (folder_.Path(mailbox) == path) current_ = mailbox;
    }
    isMarking_ = false;
    proven_.reset();
  }

  // The look's own calls are no moments.
  void LookMeanwhile() {
    const bool wasActing = std::exchange(isActing_, true);
    Look();
    isActing_ = wasActing;
  }

  void AtMoment(Clock clock) {
    if (isActing_ || isFinishing_) return;
    const std::uint64_t moment = moments_[static_cast<std::size_t>(clock)]++;
    isActing_ = true;
    for (PlannedDeed& planned : plan_) {
      if (planned.clock != clock || planned.moment != moment) continue;
      if (isTouching_ && WritesInPlace(planned.deed)) {
        ++planned.moment;
      } else {
        Do(planned);
      }
    }
    isActing_ = false;
  }

  void Do(const PlannedDeed& planned) {
    if (inChild_ && isMarking_ && TouchesArchive(planned.deed)) return;
    Look();
    const std::string& mailbox = mailboxes_[chance_.Below(mailboxes_.size())];
    std::string step = std::string(kDeedNames[static_cast<std::size_t>(planned.deed)]);
    step += ", at " + std::string(kClockNames[static_cast<std::size_t>(planned.clock)]) + " " +
            std::to_string(planned.moment) + (isMarking_ ? " while marking " : " while reading ") + current_ +
            (planned.deed < Deed::DeleteArchive ? ": " + mailbox : "");
    Note("steps", step);
    if (TouchesArchive(planned.deed)) {
      // What was there when the marks began was there; that it goes now is another's doing.
      if (isMarking_ && !proven_) proven_.emplace(Sight());
      folder_.Write("archive touched", "");
      TouchArchive(planned.deed);
    } else if (planned.deed == Deed::Cancel) {
      *cancel_ = true;
    } else if (planned.deed == Deed::Kill) {
      kill(getpid(), SIGKILL);
    } else {
      TouchMailbox(planned.deed, mailbox);
    }
  }

  // --- What the other program does to a mailbox

  void TouchMailbox(Deed deed, const std::string& mailbox) {
    const fs::path path = folder_.Native(mailbox);
    const std::string before = fs::exists(path) ? folder_.Read(mailbox) : "";
    switch (deed) {
      case Deed::Append:
        return Replace(mailbox, Appendable(before) + NewMails(1 + chance_.Below(3)), false);
      case Deed::AppendHalf:
        return AppendHalf(mailbox, Appendable(before));
      case Deed::AppendRest:
        if (rest_.empty() || restMailbox_ != mailbox || !before.ends_with(half_)) return;
        return Replace(mailbox, before + std::exchange(rest_, ""), false);
      case Deed::CompactByRename:
      case Deed::CompactInPlace:
        return Replace(mailbox, Compacted(before), deed == Deed::CompactByRename);
      case Deed::ReplaceByRename:
      case Deed::ReplaceInPlace:
        return Replace(mailbox, OfLengthLike(before.size(), NewMails(1 + chance_.Below(8))),
                       deed == Deed::ReplaceByRename);
      case Deed::Truncate:
        return Replace(mailbox, Truncated(before), false);
      case Deed::DeleteMailbox:
        fs::remove(path);
        return SetExpected(mailbox, std::nullopt);
      case Deed::RewriteStatuses:
        return Replace(mailbox, WithOtherStatuses(before), false);
      default:
        if (fs::exists(path)) fs::permissions(path, fs::perms::owner_read);
    }
  }

  void Replace(const std::string& mailbox, const std::string& text, bool byRename) {
    SetExpected(mailbox, text);
    const fs::path path = folder_.Native(mailbox);
    if (byRename) {
      folder_.Write(mailbox + ".new", text);
      fs::rename(folder_.Native(mailbox + ".new"), path);
      return;
    }
    if (fs::exists(path)) fs::permissions(path, fs::perms::owner_write, fs::perm_options::add);
    folder_.Write(mailbox, text);
  }

  // A program that adds a mail begins after an empty line.
  static std::string Appendable(std::string text) {
    if (!text.empty() && !text.ends_with("\r\n")) text += "\r\n";
    if (!text.empty() && !text.ends_with("\r\n\r\n")) text += "\r\n";
    return text;
  }

  std::string NewMails(std::uint64_t count) {
    std::string text;
    for (; count > 0; --count)
      text += maker_.Make(nextMail_++).bytes;
    return text;
  }

  void AppendHalf(const std::string& mailbox, const std::string& before) {
    MadeMail mail;
    do {
      mail = maker_.Make(nextMail_++);
    } while (!mail.isPlain);
    const std::size_t cut = CutIn(mail.bytes);
    half_ = mail.bytes.substr(0, cut);
    rest_ = mail.bytes.substr(cut);
    restMailbox_ = mailbox;
    Replace(mailbox, before + half_, false);
  }

  // A place inside, but not within its separator, a line end or a status line.
  std::size_t CutIn(const std::string& mail) {
    constexpr std::size_t kSeparator = std::string_view(">From - ").size();
    const PlacedMail place = MailsIn(mail).front();
    for (;;) {
      const std::size_t cut = kSeparator + chance_.Below(mail.size() - kSeparator);
      const bool isInStatus =
          place.status != std::string::npos && cut < place.status + 3 && cut + 25 > place.status;
      if (mail[cut - 1] != '\r' && !isInStatus) return cut;
    }
  }

  // Without the mails that are marked as deleted and others that the user deletes, and perhaps with new ones.
  std::string Compacted(const std::string& before) {
    const std::uint64_t deletesOneIn = 1 + chance_.Below(5);
    const bool deletes = chance_.OneIn(2);
    std::string text;
    for (const PlacedMail& mail : MailsIn(before)) {
      if (!mail.isExpunged && !(deletes && chance_.OneIn(deletesOneIn))) text += mail.In(before);
    }
    if (chance_.OneIn(2)) return text;
    return OfLengthLike(before.size(), Appendable(text) + NewMails(chance_.Below(6)));
  }

  // Makes a mailbox shorter than a length, of the same, or longer, as chance will have it.
  std::string OfLengthLike(std::size_t length, std::string text) {
    const std::uint64_t relation = chance_.Below(3);
    while (relation == 2 && text.size() <= length)
      text += NewMails(1);
    while (relation < 2 && text.size() > length)
      text.resize(MailsIn(text).back().begin);
    if (relation == 1) text += maker_.MakeFiller(nextMail_++, length - text.size());
    return text;
  }

  std::string Truncated(const std::string& before) {
    const std::vector<PlacedMail> mails = MailsIn(before);
    if (mails.empty()) return before;
    const PlacedMail& last = mails[chance_.Below(mails.size())];
    const std::string mail(last.In(before));
    const bool isPlain = mail.find("boundary=") == std::string::npos;
    return before.substr(0, last.begin + (isPlain && chance_.OneIn(2) ? CutIn(mail) : 0));
  }

  // Mails are read, marked with a star, given keys, deleted and brought back.
  std::string WithOtherStatuses(std::string text) {
    constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
    constexpr std::string_view kKeyLine = "X-Mozilla-Keys:";
    for (const PlacedMail& mail : MailsIn(text)) {
      if (mail.status != std::string::npos && chance_.OneIn(2))
        text[mail.status] = kDigits[chance_.Below(kDigits.size())];
      const std::size_t keys = text.find(kKeyLine, mail.begin);
      if (keys < mail.end && keys < mail.begin + 300 && chance_.OneIn(2))
        text.replace(keys + kKeyLine.size(), 6, " $star");
    }
    return text;
  }

  // --- What it does to the archive

  void TouchArchive(Deed deed) {
    const fs::path archive = folder_.Native("archive");
    const fs::path database = archive / "archive.sqlite";
    const fs::path other = folder_.Native("other");
    const std::string away = "away" + std::to_string(awayCount_++);
    std::error_code ignored;
    switch (deed) {
      case Deed::DeleteArchive:
        fs::remove_all(archive);
        return;
      case Deed::MoveArchive:
      case Deed::ReplaceArchive:
        fs::rename(archive, other / away, ignored);
        if (deed == Deed::ReplaceArchive) MakeOtherArchive(archive);
        return;
      case Deed::DeleteDatabase:
        fs::remove(database);
        return;
      case Deed::ReplaceDatabase:
        MakeOtherArchive(other / away);
        fs::rename(other / away / "archive.sqlite", database, ignored);
        return;
      case Deed::DeleteLog:
        fs::remove(archive / "archive.sqlite-wal");
        return;
      case Deed::DeleteFiles:
        fs::remove_all(archive / "files");
        return;
      case Deed::MoveFiles:
        fs::rename(archive / "files", other / away, ignored);
        return;
      default:
        DeleteOneFile(archive / "files");
    }
  }

  void DeleteOneFile(const fs::path& folder) {
    if (!fs::exists(folder)) return;
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
      if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    if (!files.empty()) fs::remove(files[chance_.Below(files.size())]);
  }

  // An archive of no mails, made by this program too.
  static void MakeOtherArchive(const fs::path& folder) {
    Archive archive{std::weak_ptr<StandaloneGlobal>()};
    std::string path = "C:" + folder.string();
    std::replace(path.begin(), path.end(), '/', '\\');
    archive.Open(path);
    archive.Close();
  }

  // --- What is there afterwards

  ArchiveSight Sight() { return {folder_.Native("archive"), folder_.Native("sight")}; }

  // Once the run is over, or dead: the archive puts itself in order when it is opened.
  void LookAtEnd() {
    if (fs::exists(folder_.Native("archive"))) {
      try {
        Archive archive{std::weak_ptr<StandaloneGlobal>()};
        archive.Open(folder_.Path("archive"));
        archive.Close();
      } catch (const Failure& failure) {
        Note("problems", "the archive doesn't open: " + std::string(failure.what()));
      }
    }
    Look();
  }

  // Judges what the run has done to the mailboxes since the other program touched them last.
  void Look() {
    std::optional<ArchiveSight> sight;
    for (const std::string& mailbox : mailboxes_)
      LookAt(mailbox, sight);
  }

  void LookAt(const std::string& mailbox, std::optional<ArchiveSight>& sight) {
    const bool isThere = fs::exists(folder_.Native(mailbox));
    const std::optional<std::string> expected = Expected(mailbox);
    const std::string found = isThere ? folder_.Read(mailbox) : "";
    if (expected.value_or("") == found && (isThere || !expected)) return;
    if (!isThere || found.size() != expected.value_or("").size()) {
      Note("problems", mailbox + ": changed more than marks");
    } else {
      for (const PlacedMail& mail : MailsIn(*expected))
        LookAtMail(mailbox, *expected, found, mail, sight);
    }
    SetExpected(mailbox, found);
  }

  void LookAtMail(const std::string& mailbox, const std::string& expected, const std::string& found,
                  const PlacedMail& place, std::optional<ArchiveSight>& sight) {
    const std::string_view mail = place.In(expected);
    if (mail == place.In(found)) return;
    std::string marked = expected;
    if (place.status != std::string::npos) marked[place.status] = MarkedDigit(marked[place.status]);
    if (place.In(found) != place.In(marked)) {
      return Note("problems", mailbox + ": another byte than the mark has changed in " + Named(mail, place));
    }
    Note("steps", "marked " + Named(mail, place) + " of " + mailbox);
    if (!proven_ && !sight) sight.emplace(Sight());
    const ArchiveSight& archive = proven_ ? *proven_ : *sight;
    const std::vector<std::string> files = maker_.FilesOf(mail);
    if (!files.empty() && archive.Has(files)) return;
    // Of one that was cut off since it was read there is no byte that isn't in the archive.
    if (files.size() == 1 && archive.HasMore(files.front())) return;
    // Of two mails with one header block nobody can tell by that which stands there.
    const bool isTwin = maker_.HasTwin(mail) && archive.HasHeaderBlock(HeaderBlock(Comparable(mail)));
    Note(isTwin ? "steps" : "problems", std::string(isTwin ? "twin" : "lost") + ": " + Named(mail, place) +
                                            " of " + mailbox + " is marked and not in the archive");
  }

  static std::string Named(std::string_view mail, const PlacedMail& place) {
    const std::size_t subject = std::min(mail.find("Subject: "), mail.size());
    return "the mail at " + std::to_string(place.begin) + " '" +
           std::string(mail.substr(subject, mail.find('\r', subject) - subject)) + "'";
  }

  // Where nothing happened but that mails came, all those before them are done.
  void ExpectFinished() {
    const std::vector<std::string> steps = Steps();
    const bool isUndisturbed = std::all_of(steps.begin(), steps.end(), [](const std::string& step) {
      return step.starts_with("append") || step.starts_with("marked ");
    });
    if (!isUndisturbed) return;
    for (const auto& [mailbox, size] : sizes_)
      ExpectMarked(mailbox, size);
  }

  // --- The next run

  bool CanBeFinished() const {
    return !folder_.Exists("archive touched") && Problems().empty() &&
           std::all_of(mailboxes_.begin(), mailboxes_.end(),
                       [&](const std::string& mailbox) { return fs::exists(folder_.Native(mailbox)); });
  }

  // Undisturbed, it has all mails in the archive and marked that can be.
  void Finish() {
    isFinishing_ = true;
    for (const std::string& mailbox : mailboxes_)
      fs::permissions(folder_.Native(mailbox), fs::perms::owner_write, fs::perm_options::add);
    const std::string failure = Import();
    if (!failure.empty()) Note("problems", "the next run ends before its time: " + failure);
    LookAtEnd();
    for (const std::string& mailbox : mailboxes_)
      ExpectMarked(mailbox, std::string::npos);
  }

  // Whether the mails that begin before a place are marked, all that can be.
  void ExpectMarked(const std::string& mailbox, std::size_t end) {
    const std::string text = folder_.Read(mailbox);
    for (const PlacedMail& place : MailsIn(text)) {
      const std::string_view mail = place.In(text);
      const bool canBe = place.status != std::string::npos && !maker_.FilesOf(mail).empty() &&
                         mail.find("\r\nAddress:") == std::string::npos;
      if (place.begin < end && canBe && !place.isExpunged)
        Note("problems", mailbox + ": the run leaves " + Named(mail, place));
    }
  }

  // --- What a child that dies leaves to its parent

  void SetExpected(const std::string& mailbox, const std::optional<std::string>& text) {
    folder_.Write("expected/" + mailbox, text.value_or(""));
    const fs::path absent = folder_.Native("expected/" + mailbox + ".absent");
    if (text) {
      fs::remove(absent);
    } else {
      folder_.Write("expected/" + mailbox + ".absent", "");
    }
  }

  std::optional<std::string> Expected(const std::string& mailbox) const {
    if (folder_.Exists("expected/" + mailbox + ".absent")) return std::nullopt;
    return folder_.Read("expected/" + mailbox);
  }

  void Note(const std::string& list, const std::string& line) {
    folder_.Write(list, (folder_.Exists(list) ? folder_.Read(list) : "") + line + "\n");
  }

  std::vector<std::string> LinesOf(const std::string& list) const {
    std::vector<std::string> lines;
    std::istringstream text(folder_.Exists(list) ? folder_.Read(list) : "");
    for (std::string line; std::getline(text, line);)
      lines.push_back(line);
    return lines;
  }

  Chance chance_;
  MailMaker maker_;
  MemoryFolder folder_;
  ScopedTemporaryPlace temporary_{folder_.Native("tmp")};
  ScopedRecordingPlatform platform_;
  std::vector<std::string> mailboxes_;
  std::map<std::string, std::size_t> sizes_;  // of the mailboxes before
  std::uint64_t nextMail_ = 0;
  std::uint64_t mailCount_ = 0;
  std::vector<PlannedDeed> plan_;

  // Of the run at hand.
  std::array<std::uint64_t, kClockNames.size()> moments_ = {};
  std::atomic<bool>* cancel_ = nullptr;
  std::string current_;  // mailbox
  bool isMarking_ = false;
  bool isTouching_ = false;
  bool isActing_ = false;
  bool isFinishing_ = false;
  bool inChild_ = false;

  std::optional<ArchiveSight> proven_;  // what the archive had when the marks began, if it was touched since
  int awayCount_ = 0;
  std::string half_, rest_, restMailbox_;
};

// --- Many rounds

std::uint64_t NumberFromEnvironment(const char* name, std::uint64_t otherwise) {
  const char* const text = getenv(name);
  return text == nullptr ? otherwise : strtoull(text, nullptr, 10);
}

class ImportBesideOthersTest : public testing::Test {
 protected:
  ImportBesideOthersTest() { NoThunderbirdCheck() = false; }

  void Play(std::uint64_t seed) {
    Round round(seed);
    round.Play();
    const std::vector<std::string> problems = round.Problems();
    const std::string told = Told(seed, round.Steps(), problems);
    if (!problems.empty()) ADD_FAILURE() << told;
    if (isTold_) std::printf("%s", told.c_str());
    Count(round, problems);
  }

  static std::string Told(std::uint64_t seed, const std::vector<std::string>& steps,
                          const std::vector<std::string>& problems) {
    std::string told = "VORLENT_RANDOM_SEED=" + std::to_string(seed) + "\n";
    for (const std::string& step : steps)
      told += "  " + step + "\n";
    for (const std::string& problem : problems)
      told += "  PROBLEM " + problem + "\n";
    return told;
  }

  void Count(const Round& round, const std::vector<std::string>& problems) {
    ++table_["rounds"];
    table_["mails"] += static_cast<long>(round.MailCount());
    table_["mails not marked"] += round.UnmarkedCount();
    for (const std::string& step : round.Steps()) {
      if (step.starts_with("marked ")) {
        ++table_["mails marked"];
      } else if (step.starts_with("twin: ")) {
        ++table_["mails marked in place of their twins"];
      } else {
        ++table_[step.substr(0, step.find(", at "))];
      }
    }
    table_["lost"] += std::count_if(problems.begin(), problems.end(),
                                    [](const std::string& problem) { return problem.starts_with("lost: "); });
    table_["problems"] += static_cast<long>(problems.size());
  }

  void TellTable() {
    for (const auto& [name, count] : table_)
      std::printf("%8ld  %s\n", count, name.c_str());
  }

  bool isTold_ = false;
  std::map<std::string, long> table_;
};

TEST_F(ImportBesideOthersTest, EveryMailIsInTheArchiveOrUnmarkedInTheMailbox) {
  if (getenv("VORLENT_RANDOM_SEED") != nullptr) {
    isTold_ = true;
    return Play(NumberFromEnvironment("VORLENT_RANDOM_SEED", 0));
  }
  const std::uint64_t rounds = NumberFromEnvironment("VORLENT_RANDOM_ROUNDS", 100);
  for (std::uint64_t seed = 1; seed <= rounds; ++seed)
    Play(seed);
  if (getenv("VORLENT_RANDOM_ROUNDS") != nullptr) TellTable();
}

}  // namespace
}  // namespace vorlent
