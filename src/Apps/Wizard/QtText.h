// Text between the component and Qt.
#pragma once

#include <QString>
#include <string>
#include <string_view>

namespace vorlent::wizard {

// What a person should read; CR LF becomes the line feed of Qt.
QString ToQt(std::string_view text);

// The text as the component holds it: code page, or UTF-8 where the page doesn't hold a character; line feeds
// become CR LF.
std::string FromQt(const QString& text);

}  // namespace vorlent::wizard
