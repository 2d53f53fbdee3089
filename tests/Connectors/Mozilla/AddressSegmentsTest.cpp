#include "Connectors/Mozilla/AddressSegments.h"

#include <gtest/gtest.h>

namespace vorlent {
namespace {

TEST(AddressSegmentTest, OrdinaryNamesStayAsTheyAre) {
  for (const char* name :
       {"default", "anna@example.org", "Lokale Ordner", "50%", "100% sure", "a*b", "..", "-x"})
    EXPECT_EQ(AddressSegment(name), name);
}

TEST(AddressSegmentTest, WhatWouldMisleadIsEscaped) {
  EXPECT_EQ(AddressSegment("a/b"), "a%2Fb");
  EXPECT_EQ(AddressSegment("*"), "%2A");
  EXPECT_EQ(AddressSegment("all*"), "all%2A");
  EXPECT_EQ(AddressSegment("."), "%2E");
  EXPECT_EQ(AddressSegment("-"), "%2D");
  EXPECT_EQ(AddressSegment("a%2Fb"), "a%252Fb") << "not the segment of a/b";
}

TEST(OwnNamesTest, SecondOneOfANameIsNumbered) {
  OwnNames names;
  EXPECT_EQ(names.Take("x~2"), "x~2");
  EXPECT_EQ(names.Take("x"), "x");
  EXPECT_EQ(names.Take("x"), "x~3") << "a name of one that has it is not given again";
  EXPECT_EQ(names.Take("X"), "X");
}

}  // namespace
}  // namespace vorlent
