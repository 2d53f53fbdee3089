#include "Common/JsonReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// "<name>=<text>" of each member of an object, "<name>" alone of one that is no text.
std::vector<std::string> Members(std::string_view text) {
  std::vector<std::string> members;
  JsonReader json(text);
  if (!json.EnterObject()) return {"no object"};
  for (std::string name; json.NextMember(name);) {
    const std::optional<std::string> value = json.TakeText();
    members.push_back(value ? name + "=" + *value : name);
  }
  return members;
}

TEST(JsonReaderTest, MembersComeInTheirOrder) {
  EXPECT_THAT(Members(R"({"b":"1","a":"2","b":"3"})"), ElementsAre("b=1", "a=2", "b=3"));
  EXPECT_THAT(Members(" {\r\n\t\"a\" : \"1\" ,\n \"b\" : \"2\" } "), ElementsAre("a=1", "b=2"));
  EXPECT_THAT(Members("\xEF\xBB\xBF{\"a\":\"1\"}"), ElementsAre("a=1"));
  EXPECT_THAT(Members("{}"), IsEmpty());
}

TEST(JsonReaderTest, OtherValuesArePassedOver) {
  EXPECT_THAT(Members(R"({"a":-1.5e3,"b":true,"c":null,"d":[1,"]",{"x":"}"}],"e":{"f":{"g":"h"}},"i":"j"})"),
              ElementsAre("a", "b", "c", "d", "e", "i=j"));
}

TEST(JsonReaderTest, ObjectsAreEnteredAndLeft) {
  JsonReader json(R"({"a":{"x":"1","y":{}},"b":2,"c":{"x":"3"}})");
  std::vector<std::string> found;
  std::string outer, inner;
  ASSERT_TRUE(json.EnterObject());
  while (json.NextMember(outer)) {
    if (!json.EnterObject()) continue;
    while (json.NextMember(inner))
      found.push_back(outer + inner + json.TakeText().value_or("?"));
  }
  EXPECT_THAT(found, ElementsAre("ax1", "ay?", "cx3"));
}

TEST(JsonReaderTest, TextsAreUtf8) {
  EXPECT_THAT(Members(R"({"a":"\"\\\/\b\f\n\r\t","b":"\u0041\u00e4\u20AC\ud83d\ude00"})"),
              ElementsAre("a=\"\\/\b\f\n\r\t", "b=Aä€😀"));
  EXPECT_THAT(Members("{\"ä\":\"Ω 😀\"}"), ElementsAre("ä=Ω 😀"));
  EXPECT_THAT(Members(R"({"a":"x\u0000y"})"), ElementsAre(std::string("a=x\0y", 5)));
}

TEST(JsonReaderTest, HalvesOfCharactersAreReplaced) {
  EXPECT_THAT(
      Members(R"({"a":"\ud83d","b":"\ude00x","c":"\ud83d\u0041","d":"\ud83d\ud83d\ude00","e":"\u00"})"),
      ElementsAre("a=\uFFFD", "b=\uFFFDx", "c=\uFFFDA", "d=\uFFFD😀", "e=\uFFFD00"));
}

TEST(JsonReaderTest, TextThatIsCutOffAnywhereGivesWhatIsWholeAndEnds) {
  const std::string text = R"({"a":"1","b":{"c":["\u00e4",2]},"d":"3"})";
  const std::vector<std::string> all = Members(text);
  for (std::size_t size = 0; size < text.size(); ++size) {
    const std::vector<std::string> some = Members(std::string_view(text).substr(0, size));
    ASSERT_LE(some.size(), all.size());
    if (size > 8) {
      EXPECT_EQ(some.front(), "a=1") << size;
    }
  }
}

TEST(JsonReaderTest, WhatIsNoJsonEndsTheReading) {
  for (const char* text : {"", "null", "[1]", "\"a\"", "}", "]", ",", "x", "12\"", "[[[[", "\\", "\""})
    EXPECT_THAT(Members(text), ElementsAre("no object")) << text;
  for (const char* text : {"{", "{a:1}", "{1:2}", "{\"a\"}", "{\"a\" \"b\"}", "{]", "{\"a", "{{}}", "{,}"})
    EXPECT_THAT(Members(text), IsEmpty()) << text;
  EXPECT_THAT(Members("{\"a\":\"1\"]}{\"b\":\"2\"}"), ElementsAre("a=1"));
  EXPECT_THAT(Members(std::string("{\"a\":\"1\",\0\"b\":\"2\"}", 18)), ElementsAre("a=1"));
}

TEST(JsonReaderTest, NoDepthIsTooGreatAndNoTextTooLong) {
  const std::size_t depth = 5'000'000;
  const std::string nested = "{\"a\":" + std::string(depth, '[') + std::string(depth, ']') + ",\"b\":\"" +
                             std::string(depth, 'x') + "\"}";
  EXPECT_THAT(Members(nested), ElementsAre("a", "b=" + std::string(depth, 'x')));
  std::string objects = "{";
  for (std::size_t i = 0; i < depth; ++i)
    objects += "\"a\":{";
  EXPECT_THAT(Members(objects), ElementsAre("a"));
}

}  // namespace
}  // namespace vorlent
