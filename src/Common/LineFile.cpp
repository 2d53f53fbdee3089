#include "Common/LineFile.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "Platform/Failure.h"

namespace vorlent {

namespace {

// Reading starts small, since a file is often opened for a few lines at one place, and grows to a size at
// which the calls of the system no longer count.
constexpr std::size_t kFirstBlock = 16 * 1024;
constexpr std::size_t kBlock = 64 * 1024;

}  // namespace

LineFile::LineFile(std::string_view path, os::File::Mode mode, LineRule rule)
    : file_(os::File::Open(path, mode)), rule_(rule) {}

void LineFile::Close() {
  if (!IsOpen()) return;
  os::File file = std::move(file_);
  const std::string_view lineEnd = lineEnd_;
  *this = LineFile();
  lineEnd_ = lineEnd;
  file.Close();
}

void LineFile::Seek(std::uint64_t position) {
  if (position == 0) throw Failure(ErrorNumber::InvalidCall, "no position 0 in '" + Path() + "'");
  const std::uint64_t target = position - 1;
  if (target >= bufferStart_ && target - bufferStart_ <= filled_) {
    next_ = static_cast<std::size_t>(target - bufferStart_);
  } else {
    file_.Seek(target);
    bufferStart_ = target;
    next_ = filled_ = 0;
  }
  ended_ = false;
}

std::string_view LineFile::ReadAnyLine() {
  // Reads on until a byte after the line end is there: so an LF that belongs to the CR isn't missed, and
  // AtEnd has no need to touch the buffer, which would cost the caller the line.
  const std::size_t longest =
      rule_ == LineRule::Windows ? std::numeric_limits<std::size_t>::max() : kLongestPiece;
  std::size_t length = 0;
  do {
    const char* const at = buffer_.get() + next_;
    length = static_cast<std::size_t>(FindLineEnd(at + length, buffer_.get() + filled_) - at);
  } while (length <= longest && next_ + length + kLongestLineEnd.size() >= filled_ && Fill());
  const char* const start = buffer_.get() + next_;
  if (length > longest) {
    next_ += longest;
    lineEnd_ = {};
    return {start, longest};
  }
  TakeLineEnd(length);
  return {start, length};
}

// Moves past a line of that length and its end.
void LineFile::TakeLineEnd(std::size_t length) {
  const std::size_t end = next_ + length;
  std::size_t endLength = 0;
  if (end < filled_) {
    const bool both = buffer_[end] == '\r' && end + 1 < filled_ && buffer_[end + 1] == '\n';
    endLength = both ? 2 : 1;
  }
  next_ = end + endLength;
  lineEnd_ = CountedEnd(endLength == 0 ? '\r' : buffer_[end], endLength);
}

void LineFile::WriteByte(char byte) {
  const std::uint64_t target = bufferStart_ + next_;
  file_.Seek(target);
  // What was read ahead is given up, the more so if the write fails.
  bufferStart_ = target;
  next_ = filled_ = 0;
  ended_ = false;
  file_.Write(&byte, 1);
  ++bufferStart_;
}

// Reads on after what the buffer holds from next_ on. Returns whether anything came.
bool LineFile::Fill() {
  if (!IsOpen()) throw Failure(ErrorNumber::BadFileNumber, "file is not open");
  if (ended_) return false;
  MakeRoom();
  const std::size_t count = file_.Read(buffer_.get() + filled_, capacity_ - filled_);
  filled_ += count;
  ended_ = count == 0;
  return !ended_;
}

// Moves what is still to be read to the buffer's front. At least as much again fits after it, so a line of
// any length is copied only a few times; after such a line the buffer shrinks again.
void LineFile::MakeRoom() {
  const std::size_t kept = filled_ - next_;
  const std::size_t wanted = std::max(std::clamp(capacity_ * 2, kFirstBlock, kBlock), kept * 2);
  const char* const from = buffer_.get() + next_;
  if (wanted > capacity_ || wanted < capacity_ / 2) {
    auto buffer = std::make_unique_for_overwrite<char[]>(wanted);
    std::copy_n(from, kept, buffer.get());
    buffer_ = std::move(buffer);
    capacity_ = wanted;
  } else if (next_ > 0) {
    std::memmove(buffer_.get(), from, kept);
  }
  bufferStart_ += next_;
  next_ = 0;
  filled_ = kept;
}

}  // namespace vorlent
