// Text between the component and Qt.
#pragma once

#include <QLocale>
#include <QString>
#include <string>
#include <string_view>

#include "Platform/Failure.h"
#include "Standalone/Phrases.h"

namespace vorlent::wizard {

// What a person should read; CR LF becomes the line feed of Qt.
QString ToQt(std::string_view text);

// The same for a text that may hold paths: each that begins with a drive is written as this system has it.
QString QtWithNativePaths(std::string_view text);

// The same for what the component or the system tells, in the language of the windows.
QString QtTold(std::string_view text);

// The windows' own texts, and how they write numbers.
QString Worded(Phrase phrase, PhraseValues values = {});
QLocale FormLocale();

// A caption of the component's form, or a title.
QString CaptionText(std::string_view caption);

// Why something failed, with the path as this system has it.
QString ShownCause(const Cause& why);
// The same, and below it what a person can do about it.
QString ShownWithHint(const Cause& why);

// The text as the component holds it: code page, or UTF-8 where the page doesn't hold a character; line feeds
// become CR LF.
std::string FromQt(const QString& text);

}  // namespace vorlent::wizard
