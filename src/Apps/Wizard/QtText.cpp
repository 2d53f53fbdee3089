#include "Apps/Wizard/QtText.h"

#include "Platform/CodePage.h"
#include "Standalone/ShownPaths.h"

namespace vorlent::wizard {

QString ToQt(std::string_view text) {
  QString shown = QString::fromStdString(DisplayUtf8(text));
  return shown.replace("\r\n", "\n");
}

QString QtWithNativePaths(std::string_view text) {
  return ToQt(WithNativePaths(text));
}

QString QtTold(std::string_view text) {
  return ToQt(Translated(WithNativePaths(text)));
}

QString Worded(Phrase phrase, PhraseValues values) {
  return QString::fromStdString(InWords(phrase, values, FormLanguage()));
}

QLocale FormLocale() {
  return FormLanguage() == Language::German ? QLocale::German : QLocale::English;
}

QString CaptionText(std::string_view caption) {
  return ToQt(TranslatedCaption(WithNativePaths(caption)));
}

QString ShownCause(const Cause& why) {
  if (why.path.empty()) return ToQt(Translated(why.reason));
  return ToQt(NativePaths().Of(why.path)) + ": " + ToQt(Translated(why.reason));
}

QString ShownWithHint(const Cause& why) {
  const QString shown = ShownCause(why);
  return why.hint == Hint::None ? shown : shown + "\n\n" + ToQt(InWords(why.hint, FormLanguage()));
}

std::string FromQt(const QString& text) {
  QString lines = text;
  const std::string utf8 = lines.replace("\n", "\r\n").toStdString();
  return ExactTextFromUtf8(utf8).value_or(utf8);
}

}  // namespace vorlent::wizard
