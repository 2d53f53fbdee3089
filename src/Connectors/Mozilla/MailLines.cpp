#include "Connectors/Mozilla/MailLines.h"

namespace vorlent {

// --- Stores of lines

void MailLines::Store::Add(std::string_view line, std::uint64_t position, std::uint32_t lineEndLength) {
  text += line;
  lines.push_back({text.size(), position, lineEndLength});
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
  lineEndLength_ = line.lineEndLength;
  return line_;
}

std::string_view MailLines::Hold() {
  if (line_.data() != held_.data()) held_ = line_;
  line_ = held_;
  return line_;
}

void MailLines::PutBack() {
  Hold();
  DropReadAgain();
  again_.Add(line_, position_, lineEndLength_);
}

void MailLines::PutBackAsText() {
  Hold();
  DropReadAgain();
  AddAsText(line_, position_, lineEndLength_);
}

void MailLines::PutBackKept() {
  DropReadAgain();
  for (std::size_t i = 0; i < kept_.lines.size(); ++i)
    AddAsText(kept_.At(i), kept_.lines[i].position, kept_.lines[i].lineEndLength);
  kept_.Clear();
}

// Gives up the lines that have come again, once all have.
void MailLines::DropReadAgain() {
  if (HasPutBack()) return;
  again_.Clear();
  next_ = 0;
}

void MailLines::AddAsText(std::string_view text, std::uint64_t position, std::uint32_t lineEndLength) {
  for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
    again_.Add(text.substr(0, end), position, 1);
    text.remove_prefix(end + 1);
    position += end + 1;
  }
  again_.Add(text, position, lineEndLength);
}

}  // namespace vorlent
