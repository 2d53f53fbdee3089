#include "Platform/Base64Blocks.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlent {
namespace {

// A processor without the instructions does nothing.
std::size_t Expected(std::size_t done) {
  std::string out(24 + os::kBase64Overhang, '\0');
  static const bool canDecode = os::DecodeBase64Blocks("VGhlIHF1aWNrIGJyb3duIGZveCBqdW1w", out.data()) == 32;
  return canDecode ? done : 0;
}

TEST(Base64BlocksTest, GroupsAreDecodedFromOneBlockOn) {
  const std::string text = "VGhlIHF1aWNrIGJyb3duIGZveCBqdW1wcyBvdmVyIHRoZSBsYXp5IGRvZw==";
  const std::string bytes = "The quick brown fox jumps over the lazy dog";
  struct Row {
    std::size_t given, done;
  };
  for (const Row& row :
       {Row{0, 0}, {16, 0}, {31, 0}, {32, 32}, {35, 32}, {36, 36}, {44, 44}, {59, 56}, {60, 32}}) {
    const std::size_t done = Expected(row.done);
    std::string out(row.given / 4 * 3 + os::kBase64Overhang, '?');
    EXPECT_EQ(os::DecodeBase64Blocks(text.substr(0, row.given), out.data()), done) << row.given;
    EXPECT_EQ(out.substr(0, done / 4 * 3), bytes.substr(0, done / 4 * 3)) << row.given;
  }
}

TEST(Base64BlocksTest, ForeignCharacterEndsTheWorkBeforeItsBlock) {
  const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const std::string text = alphabet.substr(0, 52);
  for (std::size_t place = 0; place < text.size(); ++place) {
    for (int code = 0; code < 256; ++code) {
      std::string changed = text;
      changed[place] = static_cast<char>(code);
      const bool isForeign = alphabet.find(changed[place]) == std::string::npos;
      std::string out(39 + os::kBase64Overhang, '?');
      ASSERT_EQ(os::DecodeBase64Blocks(changed, out.data()), Expected(isForeign ? place / 32 * 32 : 52))
          << place << " " << code;
    }
  }
}

}  // namespace
}  // namespace vorlent
