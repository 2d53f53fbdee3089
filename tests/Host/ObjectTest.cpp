#include "Host/Object.h"

#include <gtest/gtest.h>

#include <memory>

#include "Support/ErrorNumbers.h"

namespace vorlent {
namespace {

class First : public Object {};
class Second : public Object {};

TEST(ObjectTest, ObjectIsTheSameAsItselfOnly) {
  const First one;
  const First other;
  EXPECT_TRUE(one.IsSame(one));
  EXPECT_FALSE(one.IsSame(other));
}

TEST(ObjectTest, ObjectIsSeenAsItsOwnClassOnly) {
  const ObjectPtr object = std::make_shared<First>();
  EXPECT_EQ(RequireAs<First>(object), object);
  EXPECT_EQ(SwallowedNumber([&] { RequireAs<Second>(object); }), static_cast<int>(ErrorNumber::NoSuchMember));
}

TEST(ObjectTest, NothingIsRefused) {
  EXPECT_EQ(SwallowedNumber([] { RequireAs<First>(nullptr); }), kObjectNotSet);
  EXPECT_EQ(SwallowedNumber([] { Require(std::shared_ptr<First>()); }), kObjectNotSet);
  const auto object = std::make_shared<First>();
  EXPECT_EQ(&Require(object), object.get());
}

TEST(ObjectTest, NumbersAreThoseOfTheRuntime) {
  EXPECT_EQ(kObjectNotSet, 91);
  EXPECT_EQ(static_cast<int>(ErrorNumber::NoSuchMember), 438);
}

}  // namespace
}  // namespace vorlent
