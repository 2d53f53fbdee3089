// Charsets other than those that text is held in.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlent {

// What bytes in a charset say, as text is held inside. "" and a charset that isn't known stand for UTF-8, and
// bytes that fit no character for Windows-1252, so that nothing is lost. Where text is held in Windows-1252,
// bytes of every charset are taken for that and stay.
std::string FromCharset(std::string_view bytes, std::string_view charset);

namespace os {

// Bytes in a charset as UTF-8, by the system's converter; those that fit no character are taken for
// Windows-1252. Nothing if the system doesn't know the charset.
std::optional<std::string> CharsetToUtf8(std::string_view bytes, const std::string& charset);

}  // namespace os

}  // namespace vorlent
