#include "Apps/CommandLine/Terminal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <system_error>

#include "Apps/CommandLine/AppError.h"
#include "Apps/CommandLine/EndingSignals.h"
#include "Apps/CommandLine/System.h"
#include "Platform/Characters.h"
#include "Platform/CodePage.h"
#include "Standalone/Phrases.h"

namespace vorlent::app {

namespace {

constexpr std::string_view kGap = "  ";
constexpr std::string_view kEllipsis = "\u2026";
constexpr std::size_t kNarrowest = 8;  // a column is never cut below this

std::string Cut(std::string_view text, std::size_t width) {
  if (TerminalColumns(text) <= width) return std::string(text);
  return std::string(FittingColumns(text, width - 1)).append(kEllipsis);
}

bool Holds(const std::vector<std::size_t>& columns, std::size_t column) {
  return std::find(columns.begin(), columns.end(), column) != columns.end();
}

// Takes what is too much away from the widest of the columns that may be cut.
void Narrow(std::vector<std::size_t>& widths, const std::vector<std::size_t>& cut, std::size_t total) {
  if (cut.empty()) return;
  const auto sum = [&] {
    std::size_t all = kGap.size() * (widths.size() - 1);
    for (const std::size_t width : widths)
      all += width;
    return all;
  };
  for (std::size_t all = sum(); all > total; --all) {
    const std::size_t widest = *std::max_element(
        cut.begin(), cut.end(), [&](std::size_t a, std::size_t b) { return widths[a] < widths[b]; });
    if (widths[widest] <= kNarrowest) return;
    --widths[widest];
  }
}

[[noreturn]] void RaiseUnwritten(int error) {
  if (IsOfNoReader(error)) NoteEndingSignal(kNoReader);
  StopIfAsked();
  const std::string reason =
      error == 0 ? "" : ": " + Shown(Translated(std::generic_category().message(error)));
  throw AppError(ExitCode::Unreadable, InWords(Phrase::OutputUnwritten, {reason}));
}

std::string ShownDuration(double seconds) {
  const auto whole = static_cast<long>(std::lround(seconds));
  if (whole >= 3600) return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
  return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

}  // namespace

std::size_t TerminalWidth(std::size_t otherwise) {
  for (std::FILE* const stream : {stdout, stderr}) {
    if (const auto columns = ColumnsOfTerminal(stream)) return *columns;
  }
  return otherwise;
}

void FlushResults() {
  errno = 0;
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) RaiseUnwritten(errno);
}

void PrintLine(std::string_view line) {
  StopIfAsked();
  errno = 0;
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fputc('\n', stdout);
  if (std::ferror(stdout) != 0) RaiseUnwritten(errno);
}

void PrintLines(std::string_view lines) {
  while (!lines.empty()) {
    const std::string_view line = lines.substr(0, lines.find('\n'));
    PrintLine(line);
    lines.remove_prefix(std::min(lines.size(), line.size() + 1));
  }
}

std::string Shown(std::string_view text) {
  std::string out = DisplayUtf8(text);
  for (char& c : out) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = ' ';
  }
  // The control characters of the upper half, C2 80 to C2 9F in UTF-8, move the cursor on some terminals too.
  for (std::size_t i = 0; i + 1 < out.size(); ++i) {
    if (out[i] == '\xC2' && static_cast<unsigned char>(out[i + 1]) < 0xA0) out.replace(i, 2, " ");
  }
  return out;
}

std::string ShownSize(std::uint64_t bytes) {
  constexpr double kStep = 1024;
  double value = static_cast<double>(bytes);
  if (value < kStep) return fmt::format("{} B", bytes);
  for (const char* unit : {"KB", "MB", "GB"}) {
    value /= kStep;
    if (value < kStep) return fmt::format("{:.1f} {}", value, unit);
  }
  return fmt::format("{:.1f} TB", value / kStep);
}

std::string Columns::Text(std::size_t width) const {
  std::vector<std::size_t> widths(rows_.front().size());
  for (const auto& row : rows_) {
    for (std::size_t i = 0; i < row.size(); ++i)
      widths[i] = std::max(widths[i], TerminalColumns(row[i]));
  }
  if (width > 0) Narrow(widths, cut_, width);
  std::string out;
  for (const auto& row : rows_) {
    std::string line;
    for (std::size_t i = 0; i < row.size(); ++i) {
      const std::string cell = Holds(cut_, i) ? Cut(row[i], widths[i]) : row[i];
      const std::string padding(widths[i] - std::min(widths[i], TerminalColumns(cell)), ' ');
      if (i > 0) line += kGap;
      line += Holds(right_, i) ? padding + cell : cell + padding;
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out += line + '\n';
  }
  return out;
}

ProgressBar::ProgressBar() : enabled_(IsTerminal(stderr)) {}

ProgressBar::~ProgressBar() {
  Hide();
}

void ProgressBar::Open(std::string title) {
  title_ = std::move(title);
  percent_ = 0;
  mails_ = 0;
  open_ = true;
  started_ = Clock::now();
  Draw();
}

void ProgressBar::Title(std::string title) {
  title_ = std::move(title);
  if (open_) Draw();
}

void ProgressBar::Percent(double percent) {
  constexpr auto kRedraw = std::chrono::milliseconds(100);
  percent_ = std::clamp(percent, 0.0, 100.0);
  if (open_ && Clock::now() - lastDrawn_ >= kRedraw) Draw();
}

void ProgressBar::Close() {
  Hide();
  open_ = false;
}

void ProgressBar::Hide() {
  if (!drawn_) return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  drawn_ = false;
}

void ProgressBar::Draw() {
  if (!enabled_) return;
  constexpr std::size_t kBarWidth = 24;
  constexpr double kEnoughToGuess = 1;  // percent done before a time left is told
  lastDrawn_ = Clock::now();
  const double seconds = std::chrono::duration<double>(lastDrawn_ - started_).count();
  const auto filled = static_cast<std::size_t>(percent_ / 100 * kBarWidth);
  std::string line = fmt::format("[{}{}] {:5.1f} %", std::string(filled, '#'),
                                 std::string(kBarWidth - filled, ' '), percent_);
  if (mails_ > 0 && seconds > 0)
    line += "  " +
            InWords(Phrase::MailsPerSecond, {fmt::format("{:.0f}", static_cast<double>(mails_) / seconds)});
  if (percent_ >= kEnoughToGuess && percent_ < 100) {
    line += "  " + InWords(Phrase::TimeLeft, {ShownDuration(seconds / percent_ * (100 - percent_))});
  }
  if (!title_.empty()) line += "  " + title_;
  std::fputs(("\r\x1b[K" + Cut(line, TerminalWidth(80) - 1)).c_str(), stderr);
  std::fflush(stderr);
  drawn_ = true;
}

}  // namespace vorlent::app
