// The applications' own JSON files, of which only a few texts are wanted.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace vorlent {

// Reads a text from front to back and holds none of it. Each value is taken by exactly one of EnterObject,
// TakeText and Skip. What isn't JSON, or is cut off, ends the reading: from there on nothing is found any
// more, whatever is asked. Where that does no harm more is taken than the format allows.
class JsonReader {
 public:
  // The text must outlive this.
  explicit JsonReader(std::string_view text);

  // Goes into the value if it is an object; else skips it and is false.
  bool EnterObject();
  // Goes on to the next member of the object entered last, so that its value is next. False after the last
  // one, which leaves the object.
  bool NextMember(std::string& name);
  // The value as UTF-8 if it is a string; else skips it and gives nothing. Halves of characters become the
  // replacement character.
  std::optional<std::string> TakeText();
  // No depth of nesting is too great.
  void Skip();

 private:
  void PassBlanks();
  bool Passes(char c);
  std::optional<std::string> PassString();
  char32_t PassEscape();
  std::optional<char32_t> PassHexDigits();

  std::string_view rest_;
};

}  // namespace vorlent
