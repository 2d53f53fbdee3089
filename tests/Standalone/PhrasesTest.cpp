#include "Standalone/Phrases.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <vector>

#include "Connectors/Mozilla/WizardForm.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using testing::EndsWith;

struct BothLanguages {
  std::string english, german;
};

const std::vector<BothLanguages> kOwnRows = {
#define PHRASE(name, english, german) {english, german},
#define HINT(name, english, german) {english, german},
#define MARKING(name, english, german) {english, german},
#include "Standalone/Phrases.def"
};
const std::vector<BothLanguages> kToldRows = {
#define TOLD(english, german) {english, german},
#include "Standalone/Phrases.def"
};
const std::vector<BothLanguages> kNameRows = {
#define NAME(english, german) {english, german},
#include "Standalone/Phrases.def"
};
const std::vector<BothLanguages> kCaptionRows = {
#define CAPTION(english, german) {english, german},
#include "Standalone/Phrases.def"
};
const std::vector<BothLanguages> kUsageRows = {
#define USAGE(english, german) {english, german},
#include "Standalone/Phrases.def"
};

// The places of a form, such as "{1}" and "{2*}".
std::set<std::string> PlacesIn(const std::string& form) {
  std::set<std::string> places;
  for (std::size_t at = form.find('{'); at != std::string::npos; at = form.find('{', at + 1))
    places.insert(form.substr(at, form.find('}', at) + 1 - at));
  return places;
}

// A form with a word in each of its places.
std::string Filled(std::string form) {
  for (const std::string& place : PlacesIn(form)) {
    while (form.find(place) != std::string::npos)
      form.replace(form.find(place), place.size(), "x'y z" + place.substr(1, 1));
  }
  return form;
}

class PhrasesTest : public testing::Test {
 protected:
  PhrasesTest() { SpeakEnglish(); }
  ~PhrasesTest() override { ChooseLanguage(std::nullopt); }

  static void SpeakEnglish() { ChooseLanguage(Language::English); }
  static void SpeakGerman() { ChooseLanguage(Language::German); }

  ScopedRules rules_{Rules::Today()};
};

TEST_F(PhrasesTest, EveryRowHasBothLanguagesAndTheirPlaces) {
  for (const auto& rows : {kOwnRows, kToldRows, kNameRows, kCaptionRows, kUsageRows}) {
    for (const auto& [english, german] : rows) {
      EXPECT_FALSE(english.empty() || german.empty()) << english << german;
      EXPECT_EQ(PlacesIn(english), PlacesIn(german)) << english;
    }
  }
}

TEST_F(PhrasesTest, EveryKindOfGermanIsGerman) {
  for (const char* locale : {"de", "de_DE.UTF-8", "de_CH@euro", "de.ISO-8859-1"})
    EXPECT_EQ(LanguageOf(locale), Language::German) << locale;
  for (const char* locale : {"", "C", "en_US.UTF-8", "den_CA", "nds_DE"})
    EXPECT_EQ(LanguageOf(locale), Language::English) << locale;
}

TEST_F(PhrasesTest, OwnTextsHoldTheirValues) {
  EXPECT_EQ(InWords(Phrase::NoItem, {"3", "thunderbird://p"}), "no item 3 at thunderbird://p");
  EXPECT_EQ(InWords(Phrase::NoItem, {"{2}", "{1}"}), "no item {2} at {1}") << "values are no forms";
  SpeakGerman();
  EXPECT_EQ(InWords(Phrase::NoItem, {"3", "thunderbird://p"}), "kein Eintrag 3 an thunderbird://p");
  EXPECT_EQ(InWords(Phrase::HeadDate, {}, Language::English), "Date");
}

TEST_F(PhrasesTest, WhatIsToldIsKnownInEitherLanguage) {
  const auto expectAll = [](const std::vector<BothLanguages>& rows, auto&& translated) {
    for (const auto& [english, german] : rows) {
      for (const std::string& told : {Filled(english), Filled(german)}) {
        SpeakEnglish();
        EXPECT_EQ(translated(told), Filled(english));
        SpeakGerman();
        EXPECT_EQ(translated(told), Filled(german));
      }
    }
  };
  expectAll(kToldRows, Translated);
  expectAll(kNameRows, TranslatedName);
  expectAll(kCaptionRows, TranslatedCaption);
  expectAll(kUsageRows, TranslatedUsage);
}

TEST_F(PhrasesTest, TextsInTextsAreTranslatedAndNamesAreNot) {
  EXPECT_EQ(Translated("Mail an Stelle 12: is a folder"), "mail at offset 12: is a folder");
  EXPECT_EQ(Translated("Account 'is a folder' nicht gefunden!"), "Account 'is a folder' not found");
  SpeakGerman();
  EXPECT_EQ(Translated("Mail an Stelle 12: is a folder"), "Mail an Stelle 12: ist ein Ordner");
  EXPECT_EQ(Translated("Account 'is a folder' nicht gefunden!"), "Account 'is a folder' nicht gefunden!");
}

TEST_F(PhrasesTest, WhatIsNotKnownStays) {
  for (const char* text : {"", "Grüße", "finished", "Lokale Laufwerke, andere"}) {
    EXPECT_EQ(Translated(text), text);
    EXPECT_EQ(TranslatedName(text), text);
  }
}

TEST_F(PhrasesTest, ByTheOtherRulesTextsStayAsTheyWereTold) {
  const ScopedRules windows(Rules::Windows());
  EXPECT_EQ(FormLanguage(), Language::German);
  EXPECT_EQ(Translated("ung\xFCltige Location!"), "ungültige Location!");
  EXPECT_EQ(TranslatedName("Lokale Laufwerke"), "Lokale Laufwerke");
  EXPECT_EQ(TranslatedCaption("Neu"), "Neu");
  EXPECT_EQ(InWords(Phrase::HeadDate), "Date") << "own texts are the user's by all rules";
  SpeakGerman();
  EXPECT_EQ(Translated("is a folder"), "is a folder");
}

TEST_F(PhrasesTest, TodayTheFormIsInTheUsersLanguage) {
  EXPECT_EQ(FormLanguage(), Language::English);
  EXPECT_EQ(Translated("ungültige Location!"), "invalid Location");
  SpeakGerman();
  EXPECT_EQ(FormLanguage(), Language::German);
}

TEST_F(PhrasesTest, EveryCaptionOfTheFormHasARow) {
  const std::set<std::string_view> withoutWords = {"", "..."};
  for (const ControlSpec& control : WizardControlTable()) {
    if (withoutWords.contains(control.caption)) continue;
    EXPECT_NE(TranslatedCaption(control.caption), control.caption);
  }
}

TEST_F(PhrasesTest, EveryHintIsASentence) {
  EXPECT_EQ(InWords(Hint::None), "");
  for (const Language language : {Language::English, Language::German}) {
    for (const Hint hint : {Hint::AllowAccess, Hint::MakeWritable, Hint::MakeRoom, Hint::MakeFolder,
                            Hint::CloseOther, Hint::CompactMailbox}) {
      EXPECT_THAT(std::string(InWords(hint, language)), EndsWith("."));
    }
  }
  EXPECT_EQ(InWords(Hint::MakeWritable, Language::German),
            "Bitte den Schreibschutz aufheben oder einen anderen Ort wählen.");
}

TEST_F(PhrasesTest, EveryMailThatStaysHasItsReason) {
  EXPECT_EQ(InWords(Marking::Marked), "");
  EXPECT_EQ(InWords(Marking::KeptByUser), "Thunderbird is running");
  EXPECT_EQ(InWords(Marking::KeptByUser, Language::German), "Thunderbird läuft");
}

}  // namespace
}  // namespace vorlent
