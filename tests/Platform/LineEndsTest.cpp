#include "Platform/LineEnds.h"

#include <gtest/gtest.h>

#include <string>

namespace vorlent::os {
namespace {

constexpr std::size_t kLongest = 100;

// The position of the first line end in so many bytes of a text; their number if they have none.
std::size_t Found(const std::string& text, std::size_t count) {
  return static_cast<std::size_t>(FindLineEnd(text.data(), text.data() + count) - text.data());
}

TEST(LineEndsTest, FirstOneIsFoundWhereverItStands) {
  for (const char end : {'\r', '\n'}) {
    for (std::size_t at = 0; at < kLongest; ++at) {
      std::string text(kLongest, 'x');
      text[at] = end;
      EXPECT_EQ(Found(text, kLongest), at);
      text.replace(at + 1, std::string::npos, kLongest - at - 1, end == '\r' ? '\n' : '\r');
      EXPECT_EQ(Found(text, kLongest), at);
    }
  }
}

TEST(LineEndsTest, WhatComesAfterTheTextIsNotLookedAt) {
  const std::string text(kLongest, 'x');
  for (std::size_t count = 0; count < kLongest; ++count)
    EXPECT_EQ(Found(std::string(text).replace(count, 1, "\n"), count), count);
}

TEST(LineEndsTest, NoOtherByteIsOne) {
  std::string text;
  for (int code = 0; code < 256; ++code) {
    if (code != '\r' && code != '\n') text += static_cast<char>(code);
  }
  EXPECT_EQ(Found(text, text.size()), text.size());
}

}  // namespace
}  // namespace vorlent::os
