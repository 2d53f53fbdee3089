#include "Apps/Wizard/QtText.h"

#include <algorithm>

#include "Platform/CodePage.h"
#include "Platform/NativePaths.h"

namespace vorlent::wizard {

namespace {

constexpr std::string_view kLineEnds = "\r\n";

bool IsLetter(char c) {
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'z';
}

bool BeginsWithDrive(std::string_view text) {
  return text.size() > 2 && IsLetter(text[0]) && text.substr(1, 2) == ":\\";
}

// Where the next path of a text begins, its end if there is none.
std::size_t FindPath(std::string_view text, std::size_t from) {
  for (std::size_t at = from; at < text.size(); ++at) {
    if (BeginsWithDrive(text.substr(at)) && (at == 0 || !IsLetter(text[at - 1]))) return at;
  }
  return text.size();
}

// A path reaches to the end of its line, or to the next one there.
std::size_t PathLength(std::string_view text) {
  return std::min(text.find_first_of(kLineEnds), FindPath(text, 1));
}

}  // namespace

QString ToQt(std::string_view text) {
  QString shown = QString::fromStdString(DisplayUtf8(text));
  return shown.replace("\r\n", "\n");
}

QString WithNativePaths(std::string_view text) {
  QString shown;
  while (!text.empty()) {
    const std::size_t start = FindPath(text, 0);
    shown += ToQt(text.substr(0, start));
    text.remove_prefix(start);
    const std::size_t length = PathLength(text);
    shown += NativePaths().Of(text.substr(0, length));
    text.remove_prefix(length);
  }
  return shown;
}

QString NativePaths::Of(std::string_view path) {
  if (!BeginsWithDrive(path)) return ToQt(path);
  const std::size_t name = path.rfind('\\') + 1;
  if (path.substr(0, name) != folder_) {
    folder_ = path.substr(0, name);
    native_ = os::ToNativePath(folder_);
  }
  if (native_.empty()) return ToQt(path);
  return QString::fromStdString(native_) + ToQt(path.substr(name));
}

QString ShownCause(const Cause& why) {
  if (why.path.empty()) return ToQt(why.reason);
  return NativePaths().Of(why.path) + ": " + ToQt(why.reason);
}

QString ShownWithHint(const Cause& why) {
  const QString shown = ShownCause(why);
  return why.hint == Hint::None ? shown : shown + "\n\n" + ToQt(GermanTextOf(why.hint));
}

std::string FromQt(const QString& text) {
  QString lines = text;
  const std::string utf8 = lines.replace("\n", "\r\n").toStdString();
  return ExactTextFromUtf8(utf8).value_or(utf8);
}

}  // namespace vorlent::wizard
