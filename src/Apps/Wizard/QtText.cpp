#include "Apps/Wizard/QtText.h"

#include "Platform/CodePage.h"

namespace vorlent::wizard {

QString ToQt(std::string_view text) {
  QString shown = QString::fromStdString(DisplayUtf8(text));
  return shown.replace("\r\n", "\n");
}

std::string FromQt(const QString& text) {
  QString lines = text;
  const std::string utf8 = lines.replace("\n", "\r\n").toStdString();
  return ExactUtf8ToCodePage(utf8).value_or(utf8);
}

}  // namespace vorlent::wizard
