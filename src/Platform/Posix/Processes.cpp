#include <dirent.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "Platform/Posix/System.h"
#include "Platform/SystemPlatform.h"

namespace vorlent {

namespace {

namespace fs = std::filesystem;

// The kernel cuts a process's own name off after so many characters.
constexpr std::size_t kLongestOwnName = 15;

struct OwnName {
  std::string name;
  char state = 'X';
};

// /proc/N/stat reads "N (name) S ...", where the name may hold blanks and brackets itself.
std::optional<OwnName> ReadOwnName(const fs::path& process) {
  const os::Descriptor file(open((process / "stat").c_str(), O_RDONLY | O_CLOEXEC));
  if (file.Get() < 0) return std::nullopt;
  char buffer[512];
  const ssize_t count = os::Retry([&] { return read(file.Get(), buffer, sizeof buffer); });
  if (count <= 0) return std::nullopt;
  const std::string_view text(buffer, static_cast<std::size_t>(count));
  const std::size_t begin = text.find('(');
  const std::size_t end = text.rfind(')');
  if (begin == std::string_view::npos || end == std::string_view::npos || end + 2 >= text.size())
    return std::nullopt;
  return OwnName{std::string(text.substr(begin + 1, end - begin - 1)), text[end + 2]};
}

// Name of the file that a process runs; "" if that may not be seen.
std::string ReadFileName(const fs::path& process) {
  std::error_code hidden;
  std::string name = fs::read_symlink(process / "exe", hidden).filename().string();
  // What an update has replaced meanwhile is marked so.
  constexpr std::string_view kDeleted = " (deleted)";
  if (name.ends_with(kDeleted)) name.resize(name.size() - kDeleted.size());
  return name;
}

std::string NameOnWindows(std::string name) {
  constexpr std::string_view kBinary = "-bin";
  if (name.ends_with(kBinary)) name.resize(name.size() - kBinary.size());
  return name.find('.') == std::string::npos ? name + ".exe" : name;
}

void AppendProcess(std::vector<ProcessEntry>& processes, std::uint32_t id) {
  const fs::path process = fs::path("/proc") / std::to_string(id);
  const auto own = ReadOwnName(process);
  // A process may end between the listing and here; one that has ended and waits for its parent runs no more.
  if (!own || own->state == 'Z' || own->state == 'X') return;
  const std::string file = ReadFileName(process);
  const bool differs = !file.empty() && file != own->name;
  const bool isCutOff = differs && own->name.size() == kLongestOwnName && file.starts_with(own->name);
  if (!isCutOff) processes.push_back({id, NameOnWindows(own->name)});
  if (differs) processes.push_back({id, NameOnWindows(file)});
}

std::optional<std::vector<ProcessEntry>> TakeSnapshot() {
  const os::Listing listing(opendir("/proc"));
  if (!listing) return std::nullopt;
  std::vector<std::uint32_t> ids;
  while (const dirent* entry = readdir(listing.get())) {
    const std::string_view name = entry->d_name;
    std::uint32_t id = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), id);
    if (parsed.ec == std::errc() && parsed.ptr == name.data() + name.size()) ids.push_back(id);
  }
  std::sort(ids.begin(), ids.end());
  std::vector<ProcessEntry> processes;
  for (const std::uint32_t id : ids)
    AppendProcess(processes, id);
  return processes;
}

// The id as the system's calls take it. There 0 and negative numbers stand for groups and for all processes.
std::optional<pid_t> CheckedId(std::uint32_t processId) {
  if (processId == 0 || processId > INT_MAX) return std::nullopt;
  return static_cast<pid_t>(processId);
}

}  // namespace

std::optional<std::vector<ProcessEntry>> SystemPlatform::Processes() {
  const auto now = std::chrono::steady_clock::now();
  if (!snapshot_ || now >= snapshotEnd_) {
    snapshot_ = TakeSnapshot();
    snapshotEnd_ = now + kSnapshotTime;
  }
  return snapshot_;
}

void SystemPlatform::CloseWindows(std::uint32_t processId) {
  snapshot_.reset();
  const auto id = CheckedId(processId);
  if (!id) return;
  // The descriptor stands for this very process, even if its number is given anew meanwhile.
  const os::Descriptor process(static_cast<int>(syscall(SYS_pidfd_open, *id, 0)));
  if (kill(*id, SIGTERM) != 0 || process.Get() < 0) return;
  pollfd ended = {process.Get(), POLLIN, 0};
  os::Retry([&] { return poll(&ended, 1, kCloseTime); });
}

void SystemPlatform::Terminate(std::uint32_t processId) {
  snapshot_.reset();
  if (const auto id = CheckedId(processId)) kill(*id, SIGKILL);
}

}  // namespace vorlent
