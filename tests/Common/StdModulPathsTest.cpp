#include <gtest/gtest.h>

#include "Common/StdModul.h"

namespace vorlent {
namespace {

struct OnePath {
  std::string_view path, result;
};

struct TwoPaths {
  std::string_view base, rel, result;
};

TEST(StdModulPathsTest, AddPathSepClosesAPathOrAnAddress) {
  const OnePath rows[] = {
      {"  C:\\x  ", "C:\\x\\"},
      {"C:\\x\\", "C:\\x\\"},
      {"C:", "C:\\"},
      {"x", "x\\"},
      {"x://a", "x://a/"},
      {"x://a/", "x://a/"},
      {"x://", "x://"},
      {"x://a\\", "x://a\\/"},
      {"", ""},
      {"   ", ""},
      {"a/b", "a/b\\"},
      {"a/", "a/\\"},
      {"\t", "\t\\"},
      {"\\", "\\"},
  };
  for (const OnePath& row : rows)
    EXPECT_EQ(AddPathSep(row.path), row.result) << row.path;
}

TEST(StdModulPathsTest, RemovePathSepLeavesRootsTheirSeparator) {
  const OnePath rows[] = {
      {"C:\\", "C:\\"},   {"C:", "C:\\"}, {"C:\\x\\", "C:\\x"}, {"a/", "a"},         {"C:/", "C:"},
      {"C:\\x", "C:\\x"}, {"", ""},       {"\\", ""},           {"/", ""},           {"x\\\\", "x\\"},
      {"x//", "x/"},      {":\\", ":"},   {"CC:\\", "CC:"},     {"x://a/", "x://a"}, {" C:\\ ", " C:\\ "},
      {"::", "::\\"},  // what stands from the second character on decides
  };
  for (const OnePath& row : rows)
    EXPECT_EQ(RemovePathSep(row.path), row.result) << row.path;
}

TEST(StdModulPathsTest, AddPathResolvesAgainstTheBase) {
  const TwoPaths rows[] = {
      {"C:\\a\\b", "..\\c", "C:\\a\\c"},
      {"C:\\a\\b\\", "..\\c", "C:\\a\\c"},
      {"C:\\a", "b", "C:\\a\\b"},
      {"C:\\a", " b ", "C:\\a\\b"},
      {" C:\\a ", "b", "C:\\a\\b"},
      {"C:\\a", "b\\", "C:\\a\\b\\"},
      {"C:\\a", "", "C:\\a\\"},
      {"", "b", "b"},
      {"", "", ""},
      {"C:\\a\\b\\c", "..\\..\\d", "C:\\a\\d"},
      {"C:\\a\\b", "x\\..\\y", "C:\\a\\b\\y"},
      {"C:\\a", "Profiles/abc.default", "C:\\a\\Profiles/abc.default"},
  };
  for (const TwoPaths& row : rows)
    EXPECT_EQ(AddPath(row.base, row.rel), row.result) << row.base << " + " << row.rel;
}

TEST(StdModulPathsTest, AddPathTakesAnAbsolutePathAsItIs) {
  const TwoPaths rows[] = {
      {"C:\\a", "D:\\b", "D:\\b"},
      {"C:\\a", "D:\\b ", "D:\\b"},
      {"C:\\a", "\\\\server\\x", "\\\\server\\x"},
      {"C:\\a", " x://b ", "x://b"},
      {"x://y", "C:\\b ", "C:\\b"},
      {"x://y", "z://b", "z://b"},
      {"C:\\a", "D:\\b\\..\\c", "D:\\b\\..\\c"},
      {"C:\\a", "D:", "D:"},
  };
  for (const TwoPaths& row : rows)
    EXPECT_EQ(AddPath(row.base, row.rel), row.result) << row.base << " + " << row.rel;
}

TEST(StdModulPathsTest, AddPathToAnAddressJoinsAndNothingElse) {
  const TwoPaths rows[] = {
      {"x://y", "z", "x://yz"},
      {"x://y/", "..\\z ", "x://y/..\\z "},
      {"x://y", "\\z", "x://y\\z"},
      {" x://y ", " z", " x://y  z"},
  };
  for (const TwoPaths& row : rows)
    EXPECT_EQ(AddPath(row.base, row.rel), row.result) << row.base << " + " << row.rel;
}

TEST(StdModulPathsTest, AddPathOfALeadingSeparatorBeginsAtTheRootOfTheBase) {
  const TwoPaths rows[] = {
      {"C:\\a", "\\b", "C:\\b"}, {" C:\\a", "\\b ", "C:\\b"}, {"a", "\\b", "\\b"},
      {"", "\\b", "\\b"},        {"C:", "\\b", "C:\\b"},      {"C:\\a", "\\b\\..\\c", "C:\\c"},
      {"a", "\\..\\c", "..\\c"},
  };
  for (const TwoPaths& row : rows)
    EXPECT_EQ(AddPath(row.base, row.rel), row.result) << row.base << " + " << row.rel;
}

TEST(StdModulPathsTest, AddPathDropsStepsInPlace) {
  const TwoPaths rows[] = {
      {"C:\\a", ".\\b", "C:\\a\\b"},
      {"C:\\a", ".\\.\\b", "C:\\a\\b"},
      {"C:\\a", "b\\.", "C:\\a\\b"},
      {"C:\\a", ".", "C:\\a"},
      {"", ".\\b", "b"},
      {"", ".\\.\\b", "b"},
      {"C:\\a\\.\\b", "c\\.\\d", "C:\\a\\b\\c\\d"},
      {"", ".\\", ""},
  };
  for (const TwoPaths& row : rows)
    EXPECT_EQ(AddPath(row.base, row.rel), row.result) << row.base << " + " << row.rel;
}

TEST(StdModulPathsTest, AddPathLeavesLeadingParentStepsAlone) {
  const TwoPaths rows[] = {
      {"", "..\\a\\..\\b", "..\\a\\..\\b"},
      {"..\\x", "..\\y", "..\\x\\..\\y"},
      {"", "..", ".."},
      {"..", "a", "..\\a"},
  };
  for (const TwoPaths& row : rows)
    EXPECT_EQ(AddPath(row.base, row.rel), row.result) << row.base << " + " << row.rel;
}

TEST(StdModulPathsTest, AddPathBeyondTheRootLosesTheDrive) {
  const TwoPaths rows[] = {
      {"C:\\", "..\\x", "x"},
      {"C:\\a", "..\\..\\x", "x"},
      {"C:\\a", "..", "C:\\a\\.."},
      {"a", "..\\..\\x", "..\\x"},
  };
  // A step up takes the name in front of it, be that the drive. One at the very end is none.
  for (const TwoPaths& row : rows)
    EXPECT_EQ(AddPath(row.base, row.rel), row.result) << row.base << " + " << row.rel;
}

TEST(StdModulPathsTest, AbsoluteAreDrivesSharesAndAddresses) {
  for (const char* path : {"C:\\x", "C:", "1:x", "\\\\server", "\\\\", "x://", "a/x://b", "::"}) {
    EXPECT_TRUE(IsAbsolutePath(path)) << path;
  }
  for (const char* path : {"", "C", "x", "\\x", "/x", " C:\\x", "xy:\\", "//x", "x//y"}) {
    EXPECT_FALSE(IsAbsolutePath(path)) << path;
  }
}

TEST(StdModulPathsTest, GetPathIsTheFolderWithItsSeparator) {
  const OnePath rows[] = {
      {"a\\b/c", "a\\b/"},     {"a/b\\c", "a/b\\"},    {"c", ""},         {"", ""},
      {"C:\\x\\y", "C:\\x\\"}, {"C:\\x\\", "C:\\x\\"}, {"C:x", ""},       {"x://a/b", "x://a/"},
      {" a\\b", "a\\"},        {"\\x", "\\"},          {"a \\b", "a \\"},
  };
  for (const OnePath& row : rows)
    EXPECT_EQ(GetPath(row.path), row.result) << row.path;
}

TEST(StdModulPathsTest, GetFileNameIsWhatFollowsTheLastSeparator) {
  const OnePath rows[] = {
      {"a\\b/c", "c"}, {"a/b\\c", "c"}, {"c", "c"}, {"", ""}, {"C:\\x\\", ""}, {"C:\\x\\ y.txt ", "y.txt"},
      {"C:x", "C:x"},
  };
  for (const OnePath& row : rows)
    EXPECT_EQ(GetFileName(row.path), row.result) << row.path;
}

TEST(StdModulPathsTest, PathAndNameOfAPathMakeItAgain) {
  for (const char* path : {"C:\\a\\b.txt", "a/b\\c", "x://a/b", "bare", "\\x"}) {
    EXPECT_EQ(GetPath(path) + GetFileName(path), path);
  }
}

}  // namespace
}  // namespace vorlent
