#include "Common/TextWriter.h"

#include <algorithm>
#include <utility>

#include "Platform/Failure.h"

namespace vorlent {

namespace {

// Several writers at a time stay below the size at which the C library gives freed memory back to the system,
// to be cleared by that for the next ones.
constexpr std::size_t kCapacity = 32 * 1024;
constexpr std::string_view kLineEnd = "\r\n";

}  // namespace

TextWriter::TextWriter(std::string_view path, os::File::Mode mode)
    : file_(os::File::Open(path, mode)), buffer_(std::make_unique_for_overwrite<char[]>(kCapacity)) {}

TextWriter::TextWriter(TextWriter&& other) noexcept
    : file_(std::move(other.file_)),
      buffer_(std::move(other.buffer_)),
      filled_(std::exchange(other.filled_, 0)),
      hasFailed_(std::exchange(other.hasFailed_, false)) {}

TextWriter& TextWriter::operator=(TextWriter&& other) noexcept {
  if (this != &other) {
    Swallow([&] { Close(); });
    file_ = std::move(other.file_);
    buffer_ = std::move(other.buffer_);
    filled_ = std::exchange(other.filled_, 0);
    hasFailed_ = std::exchange(other.hasFailed_, false);
  }
  return *this;
}

TextWriter::~TextWriter() {
  Swallow([&] { Close(); });
}

void TextWriter::Write(std::string_view text) {
  RequireOpen();
  Put(text);
}

void TextWriter::WriteLine(std::string_view text) {
  RequireOpen();
  if (text.size() + kLineEnd.size() <= kCapacity - filled_) {
    char* const out = std::copy(text.begin(), text.end(), buffer_.get() + filled_);
    std::copy(kLineEnd.begin(), kLineEnd.end(), out);
    filled_ += text.size() + kLineEnd.size();
  } else {
    Put(text);
    Put(kLineEnd);
  }
}

void TextWriter::Close() {
  if (!IsOpen()) return;
  os::File file = std::move(file_);
  const std::size_t size = std::exchange(filled_, 0);
  const auto buffer = std::move(buffer_);
  const bool failedBefore = std::exchange(hasFailed_, true);
  if (size > 0) file.Write(buffer.get(), size);
  file.Close();
  hasFailed_ = failedBefore;
}

void TextWriter::RequireOpen() const {
  if (!IsOpen()) throw Failure(ErrorNumber::BadFileNumber, "file is not open");
}

// A place for so many bytes in a row.
char* TextWriter::Room(std::size_t size) {
  RequireOpen();
  if (size > kCapacity - filled_) Flush();
  return buffer_.get() + filled_;
}

void TextWriter::Flush() {
  const std::size_t size = std::exchange(filled_, 0);
  const bool failedBefore = std::exchange(hasFailed_, true);
  if (size > 0) file_.Write(buffer_.get(), size);
  hasFailed_ = failedBefore;
}

// Fills the buffer to its brim before it is written, since the system is quickest with whole pages.
void TextWriter::Put(std::string_view text) {
  while (text.size() > kCapacity - filled_) {
    const std::size_t taken = text.copy(buffer_.get() + filled_, kCapacity - filled_);
    filled_ = kCapacity;
    Flush();
    text.remove_prefix(taken);
  }
  filled_ += text.copy(buffer_.get() + filled_, text.size());
}

}  // namespace vorlent
