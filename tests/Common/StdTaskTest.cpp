#include "Common/StdTask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/RecordingPlatform.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

class StdTaskTest : public testing::Test {
 protected:
  void SetUp() override {
    platform_->processes = {{4, "System"},
                            {1234, std::string("thunderbird.exe\0rest", 20)},
                            {99, "a|b.exe"},
                            {5000, "Thunderbird.EXE"},
                            {4294967295u, "last.exe"}};
  }

  ScopedRecordingPlatform platform_;
};

TEST_F(StdTaskTest, ListHoldsIdAndNameUpToItsZero) {
  const auto list = GetProcessList();
  ASSERT_NE(list, nullptr);
  std::vector<std::string> entries;
  for (const std::string& entry : *list)
    entries.push_back(entry);
  EXPECT_THAT(entries, ElementsAre("4|System", "1234|thunderbird.exe", "99|a|b.exe", "5000|Thunderbird.EXE",
                                   "4294967295|last.exe"));
}

TEST_F(StdTaskTest, WithoutASnapshotThereIsNoList) {
  platform_->processes.reset();
  EXPECT_EQ(GetProcessList(), nullptr);
  EXPECT_EQ(FindProcessId("thunderbird.exe"), 0u);
}

TEST_F(StdTaskTest, EmptySnapshotIsAnEmptyList) {
  platform_->processes->clear();
  ASSERT_NE(GetProcessList(), nullptr);
  EXPECT_EQ(GetProcessList()->Count(), 0);
}

TEST_F(StdTaskTest, FirstProcessOfTheNameIsFoundInAnyCase) {
  struct Row {
    std::string_view name;
    std::uint32_t id;
  };
  const Row rows[] = {{"THUNDERBIRD.EXE", 1234}, {"thunderbird.exe", 1234}, {"system", 4}, {"a|b.exe", 99},
                      {"last.exe", 4294967295u}, {"thunderbird", 0},        {"b.exe", 0},  {"", 0}};
  for (const Row& row : rows)
    EXPECT_EQ(FindProcessId(row.name), row.id) << row.name;
}

TEST_F(StdTaskTest, EmptyNameIsNoProcessEvenIfOneHasNone) {
  platform_->processes = {{7, ""}};
  EXPECT_EQ(FindProcessId(""), 0u);
}

TEST_F(StdTaskTest, ClosingAndKillingReachThePlatformAndNothingElse) {
  CloseProcessWindows(1234);
  KillProcess(1234);
  KillProcess(1);
  EXPECT_THAT(platform_->calls, ElementsAre("CloseWindows(1234)", "Terminate(1234)", "Terminate(1)"));
  EXPECT_EQ(FindProcessId("thunderbird.exe"), 5000u);
}

}  // namespace
}  // namespace vorlent
