// What people read, in their language.
#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

#include "Host/MailRunObserver.h"
#include "Platform/Failure.h"

namespace vorlent {

enum class Language { English, German };

// The language of a locale's name, such as "de_AT.UTF-8": German, or English for every other one.
Language LanguageOf(std::string_view locale);

// The language of the programs' own texts: the one chosen for this process, before that the user's.
Language ProgramLanguage();
// Nothing brings back the user's own.
void ChooseLanguage(std::optional<Language> language);

// The language of a window that shows the component's form: German where the rules in force leave its texts
// as they are.
Language FormLanguage();

// The programs' own texts.
enum class Phrase {
#define PHRASE(name, english, german) name,
#include "Standalone/Phrases.def"
};

// A text with its values, as UTF-8.
using PhraseValues = std::initializer_list<std::string_view>;
std::string InWords(Phrase phrase, PhraseValues values = {}, Language language = ProgramLanguage());

// What a person can do about a failure, one line; "" for None.
std::string_view InWords(Hint hint, Language language = ProgramLanguage());
// Why a mail isn't marked as deleted; "" for one that is.
std::string_view InWords(Marking why, Language language = ProgramLanguage());

// A text that the component or the system told, as UTF-8. What isn't known stays, and so does all where the
// rules in force leave texts as they are.
std::string Translated(std::string_view text);
// The same for the name of something listed, and for a caption of the form or a title.
std::string TranslatedName(std::string_view name);
std::string TranslatedCaption(std::string_view caption);
// The same for what is wrong with a command line, by all rules.
std::string TranslatedUsage(std::string_view text);

}  // namespace vorlent
