#include "Common/TextWriter.h"

#include <algorithm>
#include <utility>

#include "Platform/Failure.h"

namespace vorlent {

TextWriter::TextWriter(std::string_view path, os::File::Mode mode)
    : file_(os::File::Open(path, mode)),
      buffer_(std::make_unique_for_overwrite<char[]>(kCapacity + kMostMade)) {}

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

void TextWriter::RaiseClosed() {
  throw Failure(ErrorNumber::BadFileNumber, "file is not open");
}

// Writes so many bytes of the buffer; those after them stay for later, as the system is quickest with whole
// pages.
void TextWriter::Flush(std::size_t size) {
  const std::size_t kept = std::exchange(filled_, 0) - size;
  const bool failedBefore = std::exchange(hasFailed_, true);
  file_.Write(buffer_.get(), size);
  hasFailed_ = failedBefore;
  std::copy_n(buffer_.get() + size, kept, buffer_.get());
  filled_ = kept;
}

// Fills the buffer to its brim before it is written.
void TextWriter::Put(std::string_view text) {
  while (text.size() > kCapacity - filled_) {
    const std::size_t taken = text.copy(buffer_.get() + filled_, kCapacity - filled_);
    filled_ = kCapacity;
    Flush(kCapacity);
    text.remove_prefix(taken);
  }
  filled_ += text.copy(buffer_.get() + filled_, text.size());
}

}  // namespace vorlent
