#include "Common/StdModul.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Support/RecordingPlatform.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using ::testing::ElementsAre;

// What a cutting routine returned and what it left, as "token[rest]".
template <class Cut>
std::string Cutting(Cut&& cut, std::string s) {
  const std::string token = cut(s);
  return token + "[" + s + "]";
}

std::string AfterReplace(std::string s, std::string_view find, std::string_view repl, bool ignoreCase = false,
                         bool wholeWord = false) {
  ReplaceText(s, find, repl, ignoreCase, wholeWord);
  return s;
}

// --- Cutting and finding ---

TEST(CutToken, CutsAtTheFirstSeparator) {
  const auto cut = [](std::string_view sep) { return [sep](std::string& s) { return CutToken(s, sep); }; };
  EXPECT_EQ(Cutting(cut("="), "a=b=c"), "a[b=c]");
  EXPECT_EQ(Cutting(cut("=?"), "x?=y=?z"), "x?=y[z]");
  EXPECT_EQ(Cutting(cut("a"), "a"), "[]");
  EXPECT_EQ(Cutting(cut("a"), ""), "[]");
  EXPECT_EQ(Cutting(cut("="), "no separator"), "no separator[]");
  EXPECT_EQ(Cutting(cut("="), "ends with="), "ends with[]");
  EXPECT_EQ(Cutting(cut("A"), "bab"), "bab[]") << "the search knows letter case";
  EXPECT_EQ(Cutting(cut("aa"), "aaa"), "[a]");
  EXPECT_EQ(Cutting(cut(" "), "  "), "[ ]");
}

TEST(CutToken, CutsAViewWithoutCopying) {
  const std::string text = "a=b=c";
  std::string_view rest = text;
  EXPECT_EQ(CutToken(rest, "="), "a");
  EXPECT_EQ(rest.data(), text.data() + 2);
  EXPECT_EQ(CutToken(rest, ";"), "b=c");
  EXPECT_TRUE(rest.empty());
  EXPECT_EQ(CutToken(rest, ";"), "");
}

TEST(PeekToken, LeavesTheText) {
  const std::string text = "a=b";
  EXPECT_EQ(PeekToken(text, "="), "a");
  EXPECT_EQ(PeekToken(text, ";"), "a=b");
  EXPECT_EQ(PeekToken("", ";"), "");
  EXPECT_EQ(text, "a=b");
}

TEST(CutTrimmedToken, TrimsBlanksOfTokenAndRest) {
  const auto cut = [](std::string& s) { return CutTrimmedToken(s, ":"); };
  EXPECT_EQ(Cutting(cut, "  key :  value  "), "key[value]");
  EXPECT_EQ(Cutting(cut, "  all  "), "all[]");
  EXPECT_EQ(Cutting(cut, "\tkey\t:\tvalue"), "\tkey\t[\tvalue]") << "a tab is no blank";
  EXPECT_EQ(Cutting(cut, " : "), "[]");
}

TEST(CutLine, DropsOneCarriageReturn) {
  const auto cut = [](std::string& s) { return CutLine(s); };
  EXPECT_EQ(Cutting(cut, "x\r\ny\r\n"), "x[y\r\n]");
  EXPECT_EQ(Cutting(cut, "x\ny"), "x[y]");
  EXPECT_EQ(Cutting(cut, "x\r\r\n"), "x\r[]");
  EXPECT_EQ(Cutting(cut, "x\r"), "x[]") << "the last line ends without a line feed";
  EXPECT_EQ(Cutting(cut, "x\ry"), "x\ry[]") << "a carriage return alone ends no line";
  EXPECT_EQ(Cutting(cut, "\r\n"), "[]");
  EXPECT_EQ(Cutting(cut, ""), "[]");

  std::string_view rest = "x\r\ny";
  EXPECT_EQ(CutLine(rest), "x");
  EXPECT_EQ(CutLine(rest), "y");
  EXPECT_TRUE(rest.empty());
}

TEST(CutWord, ReadsQuotedAndPlainWords) {
  const auto cut = [](std::string& s) { return CutWord(s); };
  EXPECT_EQ(Cutting(cut, R"("a""b" c)"), R"(a"b[c])");
  EXPECT_EQ(Cutting(cut, R"("""" c)"), R"("[c])");
  EXPECT_EQ(Cutting(cut, R"("a b";x)"), "a b[;x]") << "what follows the quote need not be a blank";
  EXPECT_EQ(Cutting(cut, R"("open end)"), "open end[]");
  EXPECT_EQ(Cutting(cut, R"("a""open)"), R"(a"open[])");
  EXPECT_EQ(Cutting(cut, R"("")"), "[]");
  EXPECT_EQ(Cutting(cut, "'a b' c"), "a b[c]");
  EXPECT_EQ(Cutting(cut, "'a''b' c"), "a['b' c]") << "doubling means nothing between single quotes";
  EXPECT_EQ(Cutting(cut, "'open"), "open[]");
  EXPECT_EQ(Cutting(cut, "plain words here"), "plain[words here]");
  EXPECT_EQ(Cutting(cut, "a   b  "), "a[b]");
  EXPECT_EQ(Cutting(cut, " a"), "[a]") << "a leading blank ends an empty word";
  EXPECT_EQ(Cutting(cut, "a\tb c"), "a\tb[c]");
  EXPECT_EQ(Cutting(cut, "\"a\" \t\r\n\x01 b "), "a[b ]") << "all control characters after the word go";
  EXPECT_EQ(Cutting(cut, "a \t\r\nb"), "a[b]");
  EXPECT_EQ(Cutting(cut, ""), "[]");
}

TEST(FindUnescaped, CountsTheBackslashesBeforeTheSeparator) {
  EXPECT_EQ(FindUnescaped("a|b", "|"), 2);
  EXPECT_EQ(FindUnescaped("|", "|"), 1);
  EXPECT_EQ(FindUnescaped(R"(a\|b)", "|"), 0);
  EXPECT_EQ(FindUnescaped(R"(a\\|b)", "|"), 4);
  EXPECT_EQ(FindUnescaped(R"(a\\\|b)", "|"), 0);
  EXPECT_EQ(FindUnescaped(R"(\|)", "|"), 0);
  EXPECT_EQ(FindUnescaped(R"(\\|)", "|"), 3);
  EXPECT_EQ(FindUnescaped(R"(a\|b|c)", "|"), 5);
  EXPECT_EQ(FindUnescaped(R"(a\||c)", "|"), 4);
  EXPECT_EQ(FindUnescaped("abc", "|"), 0);
  EXPECT_EQ(FindUnescaped("", "|"), 0);
  EXPECT_EQ(FindUnescaped(R"(a\::b::)", "::"), 6);
}

TEST(CutEscapedToken, KeepsTheBackslashes) {
  const auto cut = [](std::string& s) { return CutEscapedToken(s, "|"); };
  EXPECT_EQ(Cutting(cut, R"(b=x\|y|c=3)"), R"(b=x\|y[c=3])");
  EXPECT_EQ(Cutting(cut, R"(a\\|b)"), R"(a\\[b])");
  EXPECT_EQ(Cutting(cut, R"(a\|b)"), R"(a\|b[])");
  EXPECT_EQ(Cutting(cut, "|b"), "[b]");
  EXPECT_EQ(Cutting(cut, ""), "[]");
}

TEST(DropRight, ShortensAtTheRightEnd) {
  const auto dropped = [](std::string s, std::int16_t n) {
    DropRight(s, n);
    return s;
  };
  EXPECT_EQ(dropped("abc", 1), "ab");
  EXPECT_EQ(dropped("abc", 3), "");
  EXPECT_EQ(dropped("abc", 4), "");
  EXPECT_EQ(dropped("abc", 32767), "");
  EXPECT_EQ(dropped("abc", 0), "abc");
  EXPECT_EQ(dropped("", 1), "");
}

TEST(Trim, TakesBlanksOnly) {
  EXPECT_EQ(Trim("  a b  "), "a b");
  EXPECT_EQ(Trim("\t a \n"), "\t a \n");
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(Trim(""), "");
}

TEST(TrimBlank, TakesAllControlCharacters) {
  EXPECT_EQ(TrimBlank(" \t\r\n\x01 a\tb \x1F\n"), "a\tb");
  EXPECT_EQ(TrimBlank(std::string("\0\x1F\t\r\n ", 6)), "");
  EXPECT_EQ(TrimBlank("!"), "!");
  EXPECT_EQ(TrimBlank("\xA0 \xFF"), "\xA0 \xFF") << "characters above 127 are no control characters";
  EXPECT_EQ(TrimBlank(""), "");
}

TEST(GetLineValue, FindsTheFirstLineOfAKey) {
  const std::string text = "a=1\r\nb = 2\nB=3\r\na=4\nempty=\nbare\nlast=x=y";
  EXPECT_EQ(GetLineValue(text, "a"), "1");
  EXPECT_EQ(GetLineValue(text, "b"), "") << "the blank belongs to the key";
  EXPECT_EQ(GetLineValue(text, "b "), " 2");
  EXPECT_EQ(GetLineValue(text, "B"), "3");
  EXPECT_EQ(GetLineValue(text, "empty"), "");
  EXPECT_EQ(GetLineValue(text, "bare"), "");
  EXPECT_EQ(GetLineValue(text, "last"), "x=y");
  EXPECT_EQ(GetLineValue(text, "missing"), "");
  EXPECT_EQ(GetLineValue("", "a"), "");
  EXPECT_EQ(GetLineValue("a\na=1", "a"), "") << "a line without a sign has the key, and an empty value";
}

// --- Records ---

TEST(GetParam, ReadsTheValueOfAKey) {
  const std::string record = R"(a=1|b=x\|y|c=3|b=again|d=p=q|e=|bare)";
  EXPECT_EQ(GetParam(record, "a"), "1");
  EXPECT_EQ(GetParam(record, "b"), "x|y");
  EXPECT_EQ(GetParam(record, "d"), "p=q");
  EXPECT_EQ(GetParam(record, "e"), "");
  EXPECT_EQ(GetParam(record, "bare"), "");
  EXPECT_EQ(GetParam(record, "A"), "") << "keys know letter case";
  EXPECT_EQ(GetParam(record, "y"), "");
  EXPECT_EQ(GetParam("", "a"), "");
  EXPECT_EQ(GetParam(R"(a=x\\|b=2)", "a"), R"(x\)");
  EXPECT_EQ(GetParam(R"(a=x\\|b=2)", "b"), "2");
  EXPECT_EQ(GetParam("||a=1", "a"), "1") << "empty fields are passed over";
  EXPECT_EQ(GetParam(R"(a=one\ntwo)", "a"), "one\r\ntwo");
}

TEST(GetParam, GivesBackWhatWasEscaped) {
  const std::string value = "a|b\\|c\r\nd=e\\";
  const std::string record = "x=1|k=" + EscapeValue(value) + "|z=2";
  EXPECT_EQ(record, R"(x=1|k=a\|b\\\|c\nd=e\\|z=2)");
  EXPECT_EQ(GetParam(record, "k"), value);
  EXPECT_EQ(GetParam(record, "z"), "2");
  EXPECT_EQ(GetParam("k=" + EscapeValue("a\nb"), "k"), "a\r\nb")
      << "a lone line feed becomes a whole line end";
}

TEST(GetParam, StaysLinearInALongRecord) {
  std::string record;
  for (int i = 0; i < 200000; ++i)
    record += "k" + std::to_string(i) + "=v|";
  record += "last=found";
  EXPECT_EQ(GetParam(record, "last"), "found");
}

TEST(EscapeValue, EscapesWhatARecordCantHold) {
  EXPECT_EQ(EscapeValue("a\r\nb"), "a\\nb");
  EXPECT_EQ(EscapeValue(R"(a\b|c)"), R"(a\\b\|c)");
  EXPECT_EQ(EscapeValue("\r\r\n\n\r"), "\\n\\n");
  EXPECT_EQ(EscapeValue(R"(\|)"), R"(\\\|)");
  EXPECT_EQ(EscapeValue(""), "");
  EXPECT_EQ(EscapeValue("tab\tand =;"), "tab\tand =;");
}

TEST(EscapeValue, EscapesFurtherCharactersOneAfterAnother) {
  EXPECT_EQ(EscapeValue("a\tb;c", ";\t"), R"(a\009b\;c)");
  EXPECT_EQ(EscapeValue(std::string("\0\x1F", 2), std::string("\0\x1F", 2)), R"(\000\031)");
  EXPECT_EQ(EscapeValue("a;b", ";;"), R"(a\\;b)") << "a repeated character is escaped once more";
  EXPECT_EQ(EscapeValue("a|b", "\\"), R"(a\\|b)") << "so is a backslash that an earlier step put in";
  EXPECT_EQ(EscapeValue("\t", "\t0"), R"(\\0\09)") << "and a digit of a code";
  EXPECT_EQ(EscapeValue("\n", "n"), R"(\\n)");
  EXPECT_EQ(EscapeValue("\r", "\r"), "") << "carriage returns are gone before";
  EXPECT_EQ(EscapeValue("A\x7F", "A\x7F"), "\\A\\\x7F");
}

TEST(EscapeValue, OverflowsOnTooManyFurtherCharacters) {
  EXPECT_EQ(EscapeValue("a", std::string(32767, ';')), "a");
  EXPECT_EQ(SwallowedNumber([] { EscapeValue("a", std::string(32768, ';')); }), 6);
  EXPECT_EQ(EscapeValue(std::string(40000, '|')).size(), 80000U) << "the value itself may be long";
}

TEST(UnescapeValue, UndoesEachEscape) {
  EXPECT_EQ(UnescapeValue(R"(a\nb)"), "a\r\nb");
  EXPECT_EQ(UnescapeValue(R"(\065)"), "A");
  EXPECT_EQ(UnescapeValue(R"(\q)"), "q");
  EXPECT_EQ(UnescapeValue(R"(x\)"), R"(x\)");
  EXPECT_EQ(UnescapeValue(R"(\)"), R"(\)");
  EXPECT_EQ(UnescapeValue(R"(\\)"), R"(\)");
  EXPECT_EQ(UnescapeValue(R"(\\\)"), R"(\\)") << "the lone one at the end stays";
  EXPECT_EQ(UnescapeValue(R"(\\n)"), R"(\n)") << "what came out of an escape starts none";
  EXPECT_EQ(UnescapeValue(R"(\|\=)"), "|=");
  EXPECT_EQ(UnescapeValue(R"(\N)"), "N") << "only the small letter is a line end";
  EXPECT_EQ(UnescapeValue("plain"), "plain");
  EXPECT_EQ(UnescapeValue(""), "");
}

TEST(UnescapeValue, ReadsCodesOfThreeDigits) {
  EXPECT_EQ(UnescapeValue(R"(\255x)"), "\xFFx");
  EXPECT_EQ(UnescapeValue(R"(\256x)"), R"(\256x)") << "no character has that code";
  EXPECT_EQ(UnescapeValue(R"(\999)"), R"(\999)");
  EXPECT_EQ(UnescapeValue(R"(\999\065)"), R"(\999A)") << "the scan goes on after the backslash";
  EXPECT_EQ(UnescapeValue(R"(\0651)"), "A1");
  EXPECT_EQ(UnescapeValue(R"(\65)"), "A") << "fewer than three characters are left";
  EXPECT_EQ(UnescapeValue(R"(a\6)"), "a\x06");
  EXPECT_EQ(UnescapeValue(R"(\6xyz)"), "\x06z") << "three characters go even where one was the number";
  EXPECT_EQ(UnescapeValue(R"(\9\\z)"), "\tz");
  EXPECT_EQ(UnescapeValue(R"(\000)"), std::string(1, '\0'));
  EXPECT_EQ(UnescapeValue(R"(\092n)"), R"(\n)") << "a backslash by its code starts no escape";
  EXPECT_EQ(UnescapeValue(R"(\1e9)"), R"(\1e9)");
}

TEST(UnescapeValue, GivesBackWhatEscapeValueTook) {
  std::string all;
  for (int code = 0; code < 256; ++code)
    all += static_cast<char>(code);
  std::string expected = all;
  ReplaceText(expected, "\r", "");
  ReplaceText(expected, "\n", "\r\n");
  EXPECT_EQ(UnescapeValue(EscapeValue(all)), expected);
  EXPECT_EQ(UnescapeValue(EscapeValue(all, "=;\t")), expected);
}

// --- Replacing ---

TEST(ReplaceText, ReplacesEveryOccurrence) {
  EXPECT_EQ(AfterReplace("aXa", "a", "aa"), "aaXaa") << "replacements are not looked at again";
  EXPECT_EQ(AfterReplace("aXa", "a", "b"), "bXb");
  EXPECT_EQ(AfterReplace("aXa", "a", ""), "X");
  EXPECT_EQ(AfterReplace("aaa", "aa", "b"), "ba");
  EXPECT_EQ(AfterReplace("aaa", "aa", "ba"), "baa") << "the search goes on after what was put in";
  EXPECT_EQ(AfterReplace("abc", "x", "y"), "abc");
  EXPECT_EQ(AfterReplace("abc", "", "y"), "abc");
  EXPECT_EQ(AfterReplace("", "a", "y"), "");
  EXPECT_EQ(AfterReplace("abcabc", "bc", ""), "aa");
  EXPECT_EQ(AfterReplace("abc", "abc", ""), "");
  EXPECT_EQ(AfterReplace("aAa", "a", "b"), "bAb");
}

TEST(ReplaceText, IgnoresCaseInTheWholeCodePage) {
  EXPECT_EQ(AfterReplace("xAbCx", "aBc", "-", true), "x-x");
  EXPECT_EQ(AfterReplace("AaA", "a", "b", true), "bbb");
  EXPECT_EQ(AfterReplace(std::string("GRÖSSE größe"_cp), "Ö"_cp, "oe", true),
            std::string("GRoeSSE groeße"_cp));
  EXPECT_EQ(AfterReplace("KEEPs Case", "case", "CaSe", true), "KEEPs CaSe");
  EXPECT_EQ(AfterReplace("ab", "B", "BB", true), "aBB") << "the replacement keeps its case";
}

TEST(ReplaceText, ReplacesWholeWordsOnly) {
  EXPECT_EQ(AfterReplace("a1 a", "a", "b", false, true), "b1 b") << "a digit is no word character";
  EXPECT_EQ(AfterReplace("cat concat cat_ cat", "cat", "dog", false, true), "dog concat cat_ dog");
  EXPECT_EQ(AfterReplace("Cat CATS cat", "cat", "x", true, true), "x CATS x");
  EXPECT_EQ(AfterReplace("aa a", "a", "b", false, true), "aa b");
  EXPECT_EQ(AfterReplace(std::string("äaä"_cp), "a", "b", false, true), std::string("äbä"_cp))
      << "letters with diacritics are no word characters";
}

TEST(ReplaceText, JudgesWordsByTheTextAsItStands) {
  // The first replacement puts a letter in front of the second hit, which so is no whole word any more.
  EXPECT_EQ(AfterReplace("--", "-", "x", false, true), "x-");
  EXPECT_EQ(AfterReplace("--", "-", "xy", false, true), "xy-");
  EXPECT_EQ(AfterReplace("a--", "-", "", false, true), "a-") << "the letter refuses the first hit only";
  EXPECT_EQ(AfterReplace("--", "-", "", false, true), "");
}

TEST(ReplaceText, RebuildsALongTextInOnePass) {
  const std::string longer = AfterReplace(std::string(500000, 'a'), "a", "bb");
  EXPECT_EQ(longer.size(), 1000000U);
  EXPECT_EQ(longer.find_first_not_of('b'), std::string::npos);
}

TEST(FindWholeWord, FindsFromAStartPosition) {
  EXPECT_EQ(FindWholeWord(1, "cat", "cat"), 1);
  EXPECT_EQ(FindWholeWord(1, "concat cat", "cat"), 8);
  EXPECT_EQ(FindWholeWord(2, "cat cat", "cat"), 5);
  EXPECT_EQ(FindWholeWord(4, "concat", "cat"), 0) << "the character before the start counts too";
  EXPECT_EQ(FindWholeWord(1, "cats", "cat"), 0);
  EXPECT_EQ(FindWholeWord(1, "cat9", "cat"), 1);
  EXPECT_EQ(FindWholeWord(1, "_cat", "cat"), 0);
  EXPECT_EQ(FindWholeWord(1, "Cat", "cat"), 0);
  EXPECT_EQ(FindWholeWord(1, "aaa", "aa"), 0);
  EXPECT_EQ(FindWholeWord(9, "cat", "cat"), 0);
  EXPECT_EQ(FindWholeWord(1, "", "cat"), 0);
}

TEST(IsWordChar, KnowsPlainLettersAndTheUnderscore) {
  std::string wordChars;
  for (int code = 0; code < 256; ++code) {
    if (IsWordChar(static_cast<char>(code))) wordChars += static_cast<char>(code);
  }
  EXPECT_EQ(wordChars, "ABCDEFGHIJKLMNOPQRSTUVWXYZ_abcdefghijklmnopqrstuvwxyz");
}

// --- File names, hexadecimal text, GUIDs ---

TEST(EncodeFileName, EncodesForbiddenCharacters) {
  EXPECT_EQ(EncodeFileName("a/b"), "a%2Fb");
  EXPECT_EQ(EncodeFileName("100%"), "100%25");
  EXPECT_EQ(EncodeFileName("Größe.txt"_cp), std::string("Größe.txt"_cp));
  EXPECT_EQ(EncodeFileName("%\\/:*?\"<>|"), "%25%5C%2F%3A%2A%3F%22%3C%3E%7C");
  EXPECT_EQ(EncodeFileName("äöüÄÖÜß"_cp), std::string("äöüÄÖÜß"_cp));
  EXPECT_EQ(EncodeFileName("é€"_cp), "%E9%80");
  EXPECT_EQ(EncodeFileName("\t\x1F \x7F"), "%09%1F \x7F") << "the bounds are 32 and 128";
  EXPECT_EQ(EncodeFileName("a b;c", "; "), "a%20b%3Bc");
  EXPECT_EQ(EncodeFileName("ä"_cp, "ä"_cp), "%E4");
  EXPECT_EQ(EncodeFileName("2a2", "2"), "%32a%32") << "inserted text is not looked at again";
  EXPECT_EQ(EncodeFileName(std::string(1, '\0')), "%00");
  EXPECT_EQ(EncodeFileName(""), "");
}

TEST(EncodeFileName, KeepsEveryCharacterOfUnicode) {
  const ScopedRules today(Rules::Today());
  EXPECT_EQ(EncodeFileName("Größe é € Ж 你好 😀 e\u0301"), "Größe é € Ж 你好 😀 e\u0301");
  EXPECT_EQ(EncodeFileName("Ж/你:😀%\t"), "Ж%2F你%3A😀%25%09");
  EXPECT_EQ(EncodeFileName("a\xE4\xE2\x82z"), "a%E4%E2%82z") << "bytes that are no UTF-8";
  EXPECT_EQ(EncodeFileName("äЖ", "Ж"), "ä%D0%96");
}

TEST(EncodeFileName, OverflowsOnALongName) {
  EXPECT_EQ(EncodeFileName(std::string(32767, 'a')).size(), 32767U);
  EXPECT_EQ(SwallowedNumber([] { EncodeFileName(std::string(32768, 'a')); }), 6);
}

TEST(HexPad, PadsToTheWidth) {
  EXPECT_EQ(HexPad(10, 2), "0A");
  EXPECT_EQ(HexPad(0, 2), "00");
  EXPECT_EQ(HexPad(0, 0), "0");
  EXPECT_EQ(HexPad(0x1AB, 2), "1AB") << "a longer number keeps its digits";
  EXPECT_EQ(HexPad(0x1AB, 6), "0001AB");
  EXPECT_EQ(HexPad(-1, 2), "FFFF");
  EXPECT_EQ(HexPad(-32768, 4), "8000");
  EXPECT_EQ(HexPad(32767, 1), "7FFF");
}

TEST(NewGuidText, IsBracedAndNew) {
  const std::regex form("\\{[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}\\}");
  std::set<std::string> seen;
  for (int i = 0; i < 100; ++i) {
    const std::string guid = NewGuidText();
    ASSERT_EQ(guid.size(), 38U);
    ASSERT_TRUE(std::regex_match(guid, form)) << guid;
    seen.insert(guid);
  }
  EXPECT_EQ(seen.size(), 100U);
}

TEST(SetWaitCursor, ShowsTheHourglassUntilDone) {
  const ScopedRecordingPlatform platform;
  SetWaitCursor(false);
  SetWaitCursor(true);
  EXPECT_THAT(platform->calls, ElementsAre("SetPointer(busy)", "SetPointer(default)"));
}

// --- Small helpers ---

TEST(ClearCollection, EmptiesAList) {
  KeyedList<int> list;
  ClearCollection(list);
  EXPECT_EQ(list.Count(), 0);
  list.Add(1, "a");
  list.Add(2);
  ClearCollection(list);
  EXPECT_EQ(list.Count(), 0);
  list.Add(3, "a");
  EXPECT_EQ(list.Item("a"), 3) << "its keys are free again";
}

TEST(HasObject, TellsWhetherAReferenceIsSet) {
  const std::shared_ptr<int> none;
  const auto some = std::make_shared<int>(1);
  EXPECT_FALSE(HasObject(none));
  EXPECT_TRUE(IsNothing(none));
  EXPECT_TRUE(HasObject(some));
  EXPECT_FALSE(IsNothing(some));
}

}  // namespace
}  // namespace vorlent
