#include "Standalone/Phrases.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "Platform/CodePage.h"
#include "Platform/Locale.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

struct PhraseRow {
  std::string_view english, german;

  std::string_view In(Language language) const { return language == Language::German ? german : english; }
};

// The rows of each kind, in the order of the table.
constexpr PhraseRow kPhrases[] = {
#define PHRASE(name, english, german) {english, german},
#include "Standalone/Phrases.def"
};
constexpr PhraseRow kTold[] = {
#define TOLD(english, german) {english, german},
#include "Standalone/Phrases.def"
};
constexpr PhraseRow kNames[] = {
#define NAME(english, german) {english, german},
#include "Standalone/Phrases.def"
};
constexpr PhraseRow kCaptions[] = {
#define CAPTION(english, german) {english, german},
#include "Standalone/Phrases.def"
};
constexpr PhraseRow kUsage[] = {
#define USAGE(english, german) {english, german},
#include "Standalone/Phrases.def"
};

PhraseRow RowOf(Hint hint) {
  switch (hint) {
    case Hint::None:
      break;
#define HINT(name, english, german) \
  case Hint::name:                  \
    return {english, german};
#include "Standalone/Phrases.def"
  }
  return {};
}

PhraseRow RowOf(Marking why) {
  switch (why) {
    case Marking::Marked:
      break;
#define MARKING(name, english, german) \
  case Marking::name:                  \
    return {english, german};
#include "Standalone/Phrases.def"
  }
  return {};
}

// Values by their numbers from 1.
constexpr std::size_t kMostValues = 6;
using ValueTexts = std::array<std::string, kMostValues>;

// "{1}" or "{1*}" in a form.
struct PhrasePlace {
  std::size_t value = 0;  // from 0
  bool isText = false;    // of the table itself
};

// Takes a place off the front of a form.
PhrasePlace CutPlace(std::string_view& form) {
  const PhrasePlace place = {static_cast<std::size_t>(form[1] - '1'), form[2] == '*'};
  form.remove_prefix(form.find('}') + 1);
  return place;
}

// Takes what stands up to the next place off the front of a form.
std::string_view CutToPlace(std::string_view& form) {
  const std::string_view words = form.substr(0, form.find('{'));
  form.remove_prefix(words.size());
  return words;
}

std::string Filled(std::string_view form, const ValueTexts& values, auto&& textOf) {
  std::string text(CutToPlace(form));
  while (!form.empty()) {
    const PhrasePlace place = CutPlace(form);
    text += place.isText ? textOf(values.at(place.value)) : values.at(place.value);
    text += CutToPlace(form);
  }
  return text;
}

// The values with which a form is that text; nothing if it can't be. Each reaches to where the words after it
// stand first, the last one to those that end the text.
std::optional<ValueTexts> ValuesIn(std::string_view text, std::string_view form) {
  ValueTexts values;
  const std::string_view front = CutToPlace(form);
  if (!text.starts_with(front) || (form.empty() && text != front)) return std::nullopt;
  text.remove_prefix(front.size());
  while (!form.empty()) {
    const PhrasePlace place = CutPlace(form);
    const std::string_view words = CutToPlace(form);
    const std::size_t end = !form.empty()           ? text.find(words)
                            : text.ends_with(words) ? text.size() - words.size()
                                                    : std::string_view::npos;
    if (end == std::string_view::npos) return std::nullopt;
    values.at(place.value) = text.substr(0, end);
    text.remove_prefix(end + words.size());
  }
  return values;
}

// A text in another language, if a row of the table has it in one.
std::string TranslatedBy(std::span<const PhraseRow> rows, const std::string& text, Language language) {
  const auto translated = [&](const std::string& value) { return TranslatedBy(rows, value, language); };
  for (const PhraseRow& row : rows) {
    for (const std::string_view form : {row.german, row.english}) {
      if (const auto values = ValuesIn(text, form)) return Filled(row.In(language), *values, translated);
    }
  }
  return text;
}

bool AreTextsTranslated() {
  return CurrentRules().toldTexts == ToldTexts::InUsersLanguage;
}

std::string TranslatedByRules(std::span<const PhraseRow> rows, std::string_view text) {
  std::string utf8 = DisplayUtf8(text);
  return AreTextsTranslated() ? TranslatedBy(rows, utf8, ProgramLanguage()) : utf8;
}

std::optional<Language> chosenLanguage;

}  // namespace

Language LanguageOf(std::string_view locale) {
  const std::string_view language = locale.substr(0, locale.find_first_of("_.@"));
  return language == "de" ? Language::German : Language::English;
}

Language ProgramLanguage() {
  return chosenLanguage ? *chosenLanguage : LanguageOf(os::MessageLocale());
}

void ChooseLanguage(std::optional<Language> language) {
  chosenLanguage = language;
}

Language FormLanguage() {
  return AreTextsTranslated() ? ProgramLanguage() : Language::German;
}

std::string InWords(Phrase phrase, PhraseValues values, Language language) {
  ValueTexts texts;
  std::copy(values.begin(), values.end(), texts.begin());
  return Filled(kPhrases[static_cast<std::size_t>(phrase)].In(language), texts, Translated);
}

std::string_view InWords(Hint hint, Language language) {
  return RowOf(hint).In(language);
}

std::string_view InWords(Marking why, Language language) {
  return RowOf(why).In(language);
}

std::string Translated(std::string_view text) {
  return TranslatedByRules(kTold, text);
}

std::string TranslatedName(std::string_view name) {
  return TranslatedByRules(kNames, name);
}

std::string TranslatedCaption(std::string_view caption) {
  return TranslatedByRules(kCaptions, caption);
}

std::string TranslatedUsage(std::string_view text) {
  return TranslatedBy(kUsage, std::string(text), ProgramLanguage());
}

}  // namespace vorlent
