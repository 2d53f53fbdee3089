#include "Host/HostObjects.h"

#include <gtest/gtest.h>

#include "Support/RecordingHost.h"

namespace vorlent {
namespace {

TEST(HostObjectsTest, NoHostIsAFailureUntilOneIsInstalled) {
  const std::shared_ptr<HostObjects> before = HostObjects::Install(nullptr);
  EXPECT_EQ(SwallowedNumber([] { HostObjects::Current(); }), static_cast<int>(ErrorNumber::ObjectNotSet));
  {
    const test::RecordingHost host;
    EXPECT_NE(HostObjects::Current().NewItem(), nullptr);
  }
  EXPECT_EQ(SwallowedNumber([] { HostObjects::Current(); }), static_cast<int>(ErrorNumber::ObjectNotSet));
  HostObjects::Install(before);
}

TEST(HostObjectsTest, InstallingGivesBackTheHostBefore) {
  const test::RecordingHost host;
  HostObjects& installed = HostObjects::Current();
  const std::shared_ptr<HostObjects> taken = HostObjects::Install(nullptr);
  EXPECT_EQ(taken.get(), &installed);
  EXPECT_EQ(HostObjects::Install(taken), nullptr);
  EXPECT_EQ(&HostObjects::Current(), &installed);
}

}  // namespace
}  // namespace vorlent
