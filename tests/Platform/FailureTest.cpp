#include "Platform/Failure.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "Platform/Files.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

std::optional<Failure> FailureOf(const std::function<void()>& step) {
  try {
    step();
  } catch (const Failure& failure) {
    return failure;
  }
  return std::nullopt;
}

TEST(FailureTest, TellsPathReasonAndHintApartAndItsTextIsBoth) {
  const Failure failure(ErrorNumber::DiskFull, "C:\\a: b\\c", "no room: none", Hint::MakeRoom);
  EXPECT_TRUE(failure.Is(ErrorNumber::DiskFull));
  EXPECT_EQ(failure.Path(), "C:\\a: b\\c");
  EXPECT_EQ(failure.Reason(), "no room: none");
  EXPECT_EQ(failure.Why().hint, Hint::MakeRoom);
  EXPECT_STREQ(failure.what(), "C:\\a: b\\c: no room: none");
}

TEST(FailureTest, OfNoFileIsItsReasonAlone) {
  const Failure failure(ErrorNumber::TypeMismatch, "not a date: 'x: y'");
  EXPECT_EQ(failure.Path(), "");
  EXPECT_EQ(failure.Reason(), "not a date: 'x: y'");
  EXPECT_EQ(failure.Why().hint, Hint::None);
  EXPECT_STREQ(failure.what(), "not a date: 'x: y'");
}

TEST(FailureTest, ACauseWithoutAReasonIsEmpty) {
  EXPECT_TRUE(Cause().IsEmpty());
  EXPECT_EQ(Cause().Text(), "");
  EXPECT_FALSE(Cause{.reason = "torn"}.IsEmpty());
}

TEST(FailureTest, TheSystemsRefusalsTellWhatToDo) {
  const auto hintFor = [](int error) { return HintFor({error, std::generic_category()}); };
  EXPECT_EQ(hintFor(EACCES), Hint::AllowAccess);
  EXPECT_EQ(hintFor(EROFS), Hint::MakeWritable);
  EXPECT_EQ(hintFor(ENOSPC), Hint::MakeRoom);
  EXPECT_EQ(hintFor(EBUSY), Hint::CloseOther);
  EXPECT_EQ(hintFor(EIO), Hint::None);
  EXPECT_EQ(hintFor(ENOENT), Hint::None);
}

TEST(FailureTest, AFileOperationNamesItsFileAndTheRemedy) {
  const TemporaryFolder folder;
  const std::string missing = folder.Path("none") + "\\x";
  const auto noFolder = FailureOf([&] { os::File::Open(missing, os::File::Mode::Read); });
  ASSERT_TRUE(noFolder);
  EXPECT_EQ(noFolder->Why(), (Cause{missing, "No such file or directory", Hint::MakeFolder}));

  const auto noFile = FailureOf([&] { os::File::Open(folder.Path("x"), os::File::Mode::Read); });
  ASSERT_TRUE(noFile);
  EXPECT_EQ(noFile->Why(), (Cause{folder.Path("x"), "No such file or directory", Hint::None}));

  folder.Write("fixed", "x");
  std::filesystem::permissions(folder.Native("fixed"), std::filesystem::perms::owner_read);
  const auto fixed = FailureOf([&] { os::File::Open(folder.Path("fixed"), os::File::Mode::Change); });
  ASSERT_TRUE(fixed);
  EXPECT_EQ(fixed->Why(), (Cause{folder.Path("fixed"), "is read-only", Hint::MakeWritable}));
}

}  // namespace
}  // namespace vorlent
