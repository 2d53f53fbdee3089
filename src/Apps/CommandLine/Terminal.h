// What is shown to people: widths, columns, sizes, and the progress bar.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace vorlent::app {

// Columns of the terminal behind standard output or error, `otherwise` where there is none.
std::size_t TerminalWidth(std::size_t otherwise);

// Brings all that was printed to standard output. Raises AppError with ExitCode::Unreadable if some of it
// didn't get there, and Interrupted if that is because the program was asked to end.
void FlushResults();

// Print one line, or lines with a line feed after each, to standard output. Raise as FlushResults does once
// it takes no more, and Interrupted before the next line once the program was asked to end.
void PrintLine(std::string_view line);
void PrintLines(std::string_view lines);

// Code-page or UTF-8 text of the component as one line of UTF-8 that can't move the cursor: control
// characters become blanks.
std::string Shown(std::string_view text);

// A size in bytes as "1.2 MB".
std::string ShownSize(std::uint64_t bytes);

// Rows of UTF-8 cells in aligned columns. The column that may be cut is shortened with an ellipsis if the
// rows don't fit the width; 0 means no limit.
class Columns {
 public:
  explicit Columns(std::vector<std::string> headings) { rows_.push_back(std::move(headings)); }

  // Right-aligns a column, from 0.
  void AlignRight(std::size_t column) { right_.push_back(column); }
  // Lets a column be cut, from 0.
  void AllowCut(std::size_t column) { cut_.push_back(column); }
  void Add(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  bool IsEmpty() const { return rows_.size() == 1; }

  // The rows, each with a line feed.
  std::string Text(std::size_t width) const;

 private:
  std::vector<std::vector<std::string>> rows_;  // the first holds the headings
  std::vector<std::size_t> right_;
  std::vector<std::size_t> cut_;
};

// A bar on standard error, drawn only if that is a terminal. Percent, what is worked on, rate and time left.
class ProgressBar {
 public:
  ProgressBar();
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  void Open(std::string title);
  void Title(std::string title);
  void Percent(double percent);
  // Counts one mail for the rate.
  void CountMail() { ++mails_; }
  void Close();

  // Takes the bar off the screen, so that a message can be written; the next Percent draws it again.
  void Hide();

 private:
  using Clock = std::chrono::steady_clock;

  void Draw();

  bool enabled_;
  bool open_ = false;
  bool drawn_ = false;
  std::string title_;
  double percent_ = 0;
  std::uint64_t mails_ = 0;
  Clock::time_point started_;
  Clock::time_point lastDrawn_;
};

}  // namespace vorlent::app
