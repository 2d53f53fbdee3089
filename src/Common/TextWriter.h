// Buffered output of text lines, each ended by CR LF.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/Files.h"

namespace vorlent {

// What ends every line that is written.
inline constexpr std::string_view kLineEnd = "\r\n";

// Raises the failures of os::File, which name the path; a closed writer raises BadFileNumber. A failure of
// Close can only be seen by calling it; the destructor writes what is buffered and keeps silent. What a
// failed write could not bring to the file is given up.
class TextWriter {
 public:
  TextWriter() = default;
  // Opens with os::File::Mode Create or Append.
  TextWriter(std::string_view path, os::File::Mode mode);
  TextWriter(TextWriter&& other) noexcept;
  TextWriter& operator=(TextWriter&& other) noexcept;
  ~TextWriter();

  bool IsOpen() const { return file_.IsOpen(); }
  const std::string& Path() const { return file_.Path(); }
  // Whether something that was written since the file was opened didn't come to it.
  bool HasFailed() const { return hasFailed_; }

  // Writes the text as it stands.
  void Write(std::string_view text);
  // Writes text that is made in place: `make` puts up to kMostMade bytes where it is told, and returns their
  // end.
  template <class Make>
  void WriteMade(Make&& make) {
    RequireOpen();
    filled_ = static_cast<std::size_t>(std::forward<Make>(make)(buffer_.get() + filled_) - buffer_.get());
    if (filled_ > kCapacity) Flush(kCapacity);
  }
  static constexpr std::size_t kMostMade = 25 * 1024;

  // Writes the text and a line end.
  void WriteLine(std::string_view text);
  // Writes what is buffered and closes. Does nothing on a closed writer.
  void Close();

 private:
  // Several writers at a time stay below the size at which the C library gives freed memory back to the
  // system, to be cleared by that for the next ones.
  static constexpr std::size_t kCapacity = 32 * 1024;

  void RequireOpen() const {
    if (!IsOpen()) RaiseClosed();
  }
  [[noreturn]] static void RaiseClosed();
  void Flush(std::size_t size);
  void Put(std::string_view text);

  os::File file_;
  std::unique_ptr<char[]> buffer_;
  std::size_t filled_ = 0;
  bool hasFailed_ = false;
};

}  // namespace vorlent
