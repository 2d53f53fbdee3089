// That the calls of the seam are seen and fail as a test wants it; tests of failures rest on that.

#include "Support/DiskOperations.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

class DiskOperationsTest : public testing::Test {
 protected:
  DiskOperationsTest() { folder_.Write("file", "abc"); }

  std::string Path() const { return folder_.Path("file"); }

  TemporaryFolder folder_;
};

TEST_F(DiskOperationsTest, EveryKindOfCallOfTheSeamCanFail) {
  os::File open = os::File::Open(Path(), os::File::Mode::ReadWrite);
  char byte;
  struct Row {
    const char* kind;
    DiskCall call;
    std::function<void()> operation;
  };
  const Row rows[] = {
      {"open", DiskCall::Open, [&] { os::File::Open(Path(), os::File::Mode::Read); }},
      {"read", DiskCall::Read, [&] { open.Read(&byte, 1); }},
      {"write", DiskCall::Write, [&] { open.Write("x", 1); }},
      {"seek", DiskCall::Seek, [&] { open.Seek(0); }},
      {"truncate", DiskCall::Truncate, [&] { os::File::Open(Path(), os::File::Mode::Create); }},
      {"status", DiskCall::Status, [&] { os::FileLength(Path()); }},
      {"status of an open file", DiskCall::Status, [&] { open.Length(); }},
      {"list", DiskCall::List, [&] { os::ListNames(folder_.Path(), "*", 0); }},
      {"sync", DiskCall::Sync, [&] { open.Sync(); }},
      {"rename", DiskCall::Rename, [&] { os::Rename(Path(), folder_.Path("other")); }},
      {"remove a file", DiskCall::Remove, [&] { os::RemoveFile(Path()); }},
      {"remove a folder", DiskCall::Remove, [&] { os::RemoveFolder(folder_.MakeFolder("empty")); }},
      {"make a folder", DiskCall::MakeFolder, [&] { os::CreateFolder(folder_.Path("new")); }},
      {"set permissions", DiskCall::SetMode, [&] { os::WriteAttributes(Path(), os::kReadOnly); }},
      {"set times", DiskCall::SetTimes, [&] { os::WriteTimes(Path(), os::ReadChangeTime(Path())); }},
      {"close", DiskCall::Close, [&] { open.Close(); }},
  };
  for (const Row& row : rows) {
    const DiskFault fault({.calls = row.call, .trouble = DiskTrouble::FromHere, .error = ENOSPC});
    EXPECT_EQ(SwallowedNumber(row.operation), static_cast<int>(ErrorNumber::DiskFull)) << row.kind;
    EXPECT_TRUE(fault.WasReached()) << row.kind;
  }
}

TEST_F(DiskOperationsTest, OnlyTheCallOfThatNumberFailsOnce) {
  os::File file = os::File::Open(Path(), os::File::Mode::ReadWrite);
  const DiskFault fault({.calls = DiskCall::Write, .number = 1});
  EXPECT_TRUE(Swallow([&] { file.Write("x", 1); }));
  EXPECT_FALSE(fault.WasReached());
  EXPECT_FALSE(Swallow([&] { file.Write("x", 1); }));
  EXPECT_TRUE(fault.WasReached());
  EXPECT_TRUE(Swallow([&] { file.Write("x", 1); }));
}

TEST_F(DiskOperationsTest, FromHereOnAllCallsFailUntilTheTroubleEnds) {
  os::File file = os::File::Open(Path(), os::File::Mode::ReadWrite);
  {
    const DiskFault fault(
        {.calls = DiskCall::Write | DiskCall::Seek, .number = 1, .trouble = DiskTrouble::FromHere});
    EXPECT_TRUE(Swallow([&] { file.Write("x", 1); }));
    EXPECT_FALSE(Swallow([&] { file.Write("x", 1); }));
    EXPECT_FALSE(Swallow([&] { file.Seek(0); }));
  }
  EXPECT_TRUE(Swallow([&] { file.Write("x", 1); }));
}

TEST_F(DiskOperationsTest, OtherFilesAreLeftInPeace) {
  folder_.Write("other", "");
  os::File file = os::File::Open(Path(), os::File::Mode::ReadWrite);
  os::File other = os::File::Open(folder_.Path("other"), os::File::Mode::ReadWrite);
  const DiskFault fault(
      {.calls = DiskCall::Write | DiskCall::Open, .trouble = DiskTrouble::FromHere, .pathEnd = "/file"});
  EXPECT_TRUE(Swallow([&] { other.Write("x", 1); }));
  EXPECT_FALSE(Swallow([&] { file.Write("x", 1); }));
  EXPECT_TRUE(Swallow([&] { os::File::Open(folder_.Path("other"), os::File::Mode::Read); }));
  EXPECT_FALSE(Swallow([&] { os::File::Open(Path(), os::File::Mode::Read); }));
}

TEST_F(DiskOperationsTest, CallsAreCountedByKindAndFile) {
  os::File file = os::File::Open(Path(), os::File::Mode::ReadWrite);
  const DiskCallCount count(DiskCall::Write, "/file");
  file.Write("x", 1);
  file.Seek(0);
  file.Write("x", 1);
  EXPECT_EQ(count.Count(), 2);
}

}  // namespace
}  // namespace vorlent
