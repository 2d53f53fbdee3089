#include "Connectors/Mozilla/MailLines.h"

#include <utility>

namespace vorlent {

// --- Stores of lines

void MailLines::Store::Add(std::string_view line, std::uint64_t position, std::string_view lineEnd) {
  text += line;
  lines.push_back({text.size(), position, lineEnd});
}

void MailLines::Store::AddAsText(std::string_view line, std::uint64_t position, std::string_view lineEnd) {
  for (std::size_t end = line.find('\n'); end != std::string_view::npos; end = line.find('\n')) {
    Add(line.substr(0, end), position, "\n");
    line.remove_prefix(end + 1);
    position += end + 1;
  }
  Add(line, position, lineEnd);
}

void MailLines::Store::Clear() {
  text.clear();
  lines.clear();
}

std::string_view MailLines::Store::At(std::size_t index) const {
  const std::size_t begin = index == 0 ? 0 : lines[index - 1].end;
  return std::string_view(text).substr(begin, lines[index].end - begin);
}

// --- The file

void MailLines::Open(std::string_view path, os::File::Mode mode) {
  *this = MailLines();
  file_ = LineFile(path, mode);
}

void MailLines::Seek(std::uint64_t position) {
  file_.Seek(position);
  again_.Clear();
  next_ = 0;
}

// --- Putting back

std::string_view MailLines::ReadAgain() {
  const Line& line = again_.lines[next_];
  line_ = again_.At(next_++);
  position_ = line.position;
  lineEnd_ = line.lineEnd;
  return line_;
}

std::string_view MailLines::Hold() {
  if (line_.data() != held_.data()) held_ = line_;
  line_ = held_;
  return line_;
}

std::optional<std::string_view> MailLines::Peek() {
  const std::string_view line = Hold();
  if (AtEnd()) return std::nullopt;
  const std::uint64_t position = position_;
  const std::string_view lineEnd = lineEnd_;
  Read();
  first_.Add(line_, position_, lineEnd_);
  LetComeAgain();
  line_ = line;
  position_ = position;
  lineEnd_ = lineEnd;
  return again_.At(next_);
}

void MailLines::PutBack() {
  Hold();
  first_.Add(line_, position_, lineEnd_);
  LetComeAgain();
}

void MailLines::PutBackAsText() {
  Hold();
  first_.AddAsText(line_, position_, lineEnd_);
  LetComeAgain();
}

void MailLines::PutBackKept() {
  for (std::size_t i = 0; i < kept_.lines.size(); ++i)
    first_.AddAsText(kept_.At(i), kept_.lines[i].position, kept_.lines[i].lineEnd);
  kept_.Clear();
  LetComeAgain();
}

// Puts first_ in front of what was put back before and hasn't come again yet.
void MailLines::LetComeAgain() {
  for (; HasPutBack(); ++next_)
    first_.Add(again_.At(next_), again_.lines[next_].position, again_.lines[next_].lineEnd);
  std::swap(again_, first_);
  first_.Clear();
  next_ = 0;
}

}  // namespace vorlent
