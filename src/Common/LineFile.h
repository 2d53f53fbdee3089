// A binary file read by lines, with byte-exact positions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "Platform/Files.h"
#include "Platform/LineEnds.h"
#include "Platform/Rules.h"

namespace vorlent {

// A closed file raises BadFileNumber wherever it is asked for bytes.
class LineFile {
 public:
  LineFile() = default;
  // Opens in the mode given. Raises the failures of os::File::Open.
  LineFile(std::string_view path, os::File::Mode mode, LineRule rule = CurrentRules().lines);

  bool IsOpen() const { return file_.IsOpen(); }
  const std::string& Path() const { return file_.Path(); }
  // Does nothing on a closed file.
  void Close();

  // Bytes in the file at present.
  std::uint64_t Length() const { return file_.Length(); }

  // Position of the next byte to be read or written, from 1.
  std::uint64_t Position() const { return bufferStart_ + next_ + 1; }

  // Goes to a position from 1; beyond the end is allowed and is the end for reading. Position 0 raises
  // InvalidCall.
  void Seek(std::uint64_t position);

  // Whether nothing is left to be read. Once reached, the end stays where it is until Seek or WriteByte.
  bool AtEnd() { return next_ == filled_ && !Fill(); }

  // The next line without its line end, "" at the end of the file. The view is valid until the next call of
  // ReadLine, Seek, WriteByte or Close. A failed read raises and leaves the position where it was.
  //
  // By the Native rule a line of more than kLongestPiece bytes comes in pieces of so many, and the rest of it
  // as the last one, so that no file takes memory of its size.
  std::string_view ReadLine() {
    std::string_view line;
    return TakeBufferedLine(line) ? line : ReadAnyLine();
  }

  // As ReadLine, but nothing at the end of the file.
  std::optional<std::string_view> NextLine() {
    if (AtEnd()) return std::nullopt;
    return ReadLine();
  }

  static constexpr std::size_t kLongestPiece = std::size_t{64} * 1024 * 1024;

  // What the end of the line read last counts for: CR LF by the Windows rule; by the Native rule what stands
  // there, "" if the file ended without one or if more of the line comes. Outlives Close, as a line that was
  // kept does.
  std::string_view LineEnd() const { return lineEnd_; }

  // Whether the line read last is a piece, and more of it comes. Leaves the line valid.
  bool LineGoesOn() { return lineEnd_.empty() && !AtEnd(); }

  // Writes one byte at Position and moves past it.
  void WriteByte(char byte);

 private:
  bool TakeBufferedLine(std::string_view& line);
  std::string_view ReadAnyLine();
  bool Fill();
  void MakeRoom();
  const char* FindLineEnd(const char* from, const char* to) const;
  void TakeLineEnd(std::size_t length);
  std::string_view CountedEnd(char first, std::size_t length) const;

  static constexpr std::string_view kLongestLineEnd = "\r\n";

  os::File file_;
  LineRule rule_ = LineRule::Windows;
  std::uint64_t bufferStart_ = 0;  // file position of the buffer's first byte, from 0
  std::unique_ptr<char[]> buffer_;
  std::size_t capacity_ = 0;
  std::size_t filled_ = 0;
  std::size_t next_ = 0;
  std::string_view lineEnd_;
  bool ended_ = false;  // the last read found nothing more
};

// The first byte that ends a line; `to` if there is none before that.
inline const char* LineFile::FindLineEnd(const char* from, const char* to) const {
  if (from == to) return to;
  if (rule_ == LineRule::Native) return os::FindLineEnd(from, to);
  const void* const found = std::memchr(from, '\r', static_cast<std::size_t>(to - from));
  return found == nullptr ? to : static_cast<const char*>(found);
}

// The way of nearly all lines: one that ends in front of what else is buffered.
inline bool LineFile::TakeBufferedLine(std::string_view& line) {
  if (next_ == filled_) return false;
  const char* const start = buffer_.get() + next_;
  const char* const filled = buffer_.get() + filled_;
  const char* const end = FindLineEnd(start, filled);
  const auto rest = static_cast<std::size_t>(filled - end);
  if (rest <= kLongestLineEnd.size() || static_cast<std::size_t>(end - start) > kLongestPiece) return false;
  line = {start, end};
  const std::size_t endLength = end[0] == '\r' && end[1] == '\n' ? 2 : 1;
  next_ += line.size() + endLength;
  lineEnd_ = CountedEnd(*end, endLength);
  return true;
}

// The line end of that length which begins so, as it counts.
inline std::string_view LineFile::CountedEnd(char first, std::size_t length) const {
  if (rule_ == LineRule::Windows) return kLongestLineEnd;
  return kLongestLineEnd.substr(first == '\n' ? 1 : 0, length);
}

}  // namespace vorlent
