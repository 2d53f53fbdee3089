#include <algorithm>
#include <string>
#include <string_view>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/Width.h"

namespace vorlent {

std::string UrlEncode(std::string_view s) {
  constexpr std::string_view reserved = "+%/:&=#\\*?<>|\"";
  std::string out;
  out.reserve(s.size());
  for (const char c : s) {
    const auto code = static_cast<unsigned char>(c);
    if (code < 33 || code > 'z' || reserved.find(c) != std::string_view::npos) {
      out += '%';
      out += HexPad(code, 2);
    } else {
      out += c;
    }
  }
  return out;
}

std::string UrlDecode(std::string_view s) {
  std::string blanked(s);
  std::replace(blanked.begin(), blanked.end(), '+', ' ');
  std::string_view rest = blanked;
  std::string out;
  out.reserve(s.size());
  for (;;) {
    const std::size_t percent = rest.find('%');
    out += rest.substr(0, percent);
    if (percent == std::string_view::npos) return out;
    ToInt16(out.size() + 1);
    rest.remove_prefix(percent + 1);
    const std::string_view digits = rest.substr(0, 2);
    out += static_cast<char>(static_cast<unsigned char>(ReadNumber("&H" + std::string(digits))));
    rest.remove_prefix(digits.size());
  }
}

}  // namespace vorlent
