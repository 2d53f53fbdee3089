#include "Standalone/SameMail.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "Common/LineFile.h"
#include "Platform/CodePage.h"
#include "Platform/Files.h"

namespace vorlent {

namespace {

bool IsClientsMark(std::string_view line) {
  constexpr std::array<std::string_view, 3> kMarks = {"x-mozilla-status", "x-mozilla-status2",
                                                      "x-mozilla-keys"};
  std::string_view name = line.substr(0, line.find(':'));
  name = name.substr(0, name.find_last_not_of(" \t") + 1);
  return name.size() < line.size() &&
         std::ranges::any_of(kMarks, [&](std::string_view mark) { return EqualNoCase(name, mark); });
}

bool IsSeparatorOfMailbox(std::string_view line) {
  return line.starts_with("From ") || line.starts_with(">From ");
}

// The lines of a mail's header that are its own.
class OwnHeader {
 public:
  explicit OwnHeader(std::string_view path) : file_(path, os::File::Mode::Read, LineRule::Native) {
    const bool hasSeparator = !file_.AtEnd() && IsSeparatorOfMailbox(file_.ReadLine());
    if (!hasSeparator) file_.Seek(1);
  }

  // The next one, nothing at the end of the header.
  std::optional<std::string_view> Next() {
    while (!ended_ && !file_.AtEnd()) {
      const std::string_view line = file_.ReadLine();
      const bool isPiece = std::exchange(goesOn_, file_.LineGoesOn());
      ended_ = line.empty() && !isPiece;
      if (ended_) break;
      const bool continues = isPiece || line.starts_with(' ') || line.starts_with('\t');
      if (!continues) isMark_ = IsClientsMark(line);
      if (!isMark_) return line;
    }
    return std::nullopt;
  }

  // After the end: where the text begins, from 0.
  std::uint64_t TextStart() const { return file_.Position() - 1; }

 private:
  LineFile file_;
  bool ended_ = false;
  bool goesOn_ = false;
  bool isMark_ = false;
};

bool IsLineEnd(char c) {
  return c == '\r' || c == '\n';
}

// A mail's text from a position on, without the empty lines at its end.
class OwnText {
 public:
  OwnText(std::string_view path, std::uint64_t start) : file_(os::File::Open(path, os::File::Mode::Read)) {
    FindEnd(start);
    file_.Seek(start);
    left_ = end_ - start;
  }

  std::uint64_t Left() const { return left_; }

  // The next bytes, valid until the next call; none at the end.
  std::string_view Next() {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(left_, kBlock));
    const std::size_t count = file_.Read(block_.get(), wanted);
    left_ = count < wanted ? 0 : left_ - count;
    return {block_.get(), count};
  }

 private:
  static constexpr std::size_t kBlock = std::size_t{256} * 1024;

  void FindEnd(std::uint64_t start) {
    end_ = std::max(file_.Length(), start);
    while (end_ > start) {
      const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(end_ - start, kStep));
      file_.Seek(end_ - count);
      const std::string_view bytes(block_.get(), file_.Read(block_.get(), count));
      const auto ends = static_cast<std::size_t>(std::find_if_not(bytes.rbegin(), bytes.rend(), IsLineEnd) -
                                                 bytes.rbegin());
      end_ -= ends;
      if (ends < count) return;
    }
  }

  // Nearly all mails end in one or two.
  static constexpr std::size_t kStep = 256;

  os::File file_;
  std::unique_ptr<char[]> block_ = std::make_unique<char[]>(kBlock);
  std::uint64_t end_ = 0;
  std::uint64_t left_ = 0;
};

}  // namespace

bool HoldSameMail(std::string_view path, std::string_view otherPath) {
  OwnHeader header(path);
  OwnHeader otherHeader(otherPath);
  for (bool goesOn = true; goesOn;) {
    const auto line = header.Next();
    if (line != otherHeader.Next()) return false;
    goesOn = line.has_value();
  }
  OwnText text(path, header.TextStart());
  OwnText otherText(otherPath, otherHeader.TextStart());
  if (text.Left() != otherText.Left()) return false;
  while (text.Left() > 0) {
    if (text.Next() != otherText.Next()) return false;
  }
  return true;
}

void AddMail(TextHash& hash, std::string_view path) {
  OwnHeader header(path);
  for (auto line = header.Next(); line; line = header.Next())
    hash.Add(*line);
  OwnText text(path, header.TextStart());
  while (text.Left() > 0)
    hash.Add(text.Next());
}

}  // namespace vorlent
