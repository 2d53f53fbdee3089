#include "Platform/AtEnd.h"

#include <gtest/gtest.h>

namespace vorlent {
namespace {

TEST(AtEndTest, RunsItsStepWhenTheScopeEnds) {
  int setting = 1;
  {
    const AtEnd takeBack([&] { setting = 0; });
    EXPECT_EQ(setting, 1);
  }
  EXPECT_EQ(setting, 0);
}

TEST(AtEndTest, RunsItsStepWhenAFailureRises) {
  int setting = 1;
  const bool succeeded = Swallow([&] {
    const AtEnd takeBack([&] { setting = 0; });
    throw Failure(ErrorNumber::Host, "raised");
  });
  EXPECT_FALSE(succeeded);
  EXPECT_EQ(setting, 0);
}

TEST(AtEndTest, LetsNoFailureOfItsStepOut) {
  const AtEnd fails([] { throw Failure(ErrorNumber::Host, "can't be taken back"); });
}

}  // namespace
}  // namespace vorlent
