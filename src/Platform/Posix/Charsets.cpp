#include "Platform/Charsets.h"

#include <iconv.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "Platform/CodePage.h"

namespace vorlent::os {

namespace {

// How many bytes the parts of a charset's characters have.
std::size_t UnitOf(std::string_view charset) {
  const auto isOf = [&](std::string_view family) {
    return EqualNoCase(charset.substr(0, family.size()), family);
  };
  return isOf("UTF-32") || isOf("UCS-4") ? 4 : isOf("UTF-16") || isOf("UCS-2") ? 2 : 1;
}

// An open converter.
class Converter {
 public:
  explicit Converter(const std::string& charset)
      : handle_(iconv_open("UTF-8", charset.c_str())), unit_(UnitOf(charset)) {}
  ~Converter() {
    if (IsOpen()) iconv_close(handle_);
  }
  Converter(const Converter&) = delete;
  Converter& operator=(const Converter&) = delete;

  // NOLINTNEXTLINE(performance-no-int-to-ptr): the system's own mark of failure
  bool IsOpen() const { return handle_ != reinterpret_cast<iconv_t>(-1); }

  std::string Convert(std::string_view bytes) {
    std::string text;
    while (!bytes.empty()) {
      if (Step(bytes, text)) continue;
      text += codepage::ToUtf8(bytes.substr(0, unit_));
      bytes.remove_prefix(std::min(bytes.size(), unit_));
    }
    // A character that waits for one to combine with.
    Flush(text);
    return text;
  }

 private:
  // Converts as much as there is room for at a time. Returns false at bytes that fit no character.
  bool Step(std::string_view& bytes, std::string& text) {
    std::array<char, 4096> room;
    // The interface is older than const; nothing is written there.
    char* in = const_cast<char*>(bytes.data());
    std::size_t left = bytes.size();
    char* out = room.data();
    std::size_t space = room.size();
    const std::size_t result = iconv(handle_, &in, &left, &out, &space);
    const bool fits = result != static_cast<std::size_t>(-1) || errno == E2BIG;
    text.append(room.data(), out);
    bytes.remove_prefix(bytes.size() - left);
    return fits;
  }

  void Flush(std::string& text) {
    std::array<char, 64> room;
    char* out = room.data();
    std::size_t space = room.size();
    iconv(handle_, nullptr, nullptr, &out, &space);
    text.append(room.data(), out);
  }

  iconv_t handle_;
  std::size_t unit_;
};

// To the converter a slash begins an instruction, and an empty name is the user's own charset.
bool IsName(std::string_view charset) {
  return !charset.empty() && std::ranges::all_of(charset, [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' ||
           c == '_' || c == '.' || c == ':' || c == '+' || c == '(' || c == ')';
  });
}

}  // namespace

std::optional<std::string> CharsetToUtf8(std::string_view bytes, const std::string& charset) {
  if (!IsName(charset)) return std::nullopt;
  Converter converter(charset);
  if (!converter.IsOpen()) return std::nullopt;
  return converter.Convert(bytes);
}

}  // namespace vorlent::os
