#include "Common/StdRegistry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Support/RecordingPlatform.h"

namespace vorlent {
namespace {

using testing::ElementsAre;

constexpr std::uint32_t kUser = 0x80000001;

TEST(StdRegistryTest, HivesAreKnownByTheirExactNames) {
  struct Row {
    std::string_view name;
    std::int32_t number;
  };
  const Row rows[] = {
      {"HKEY_CLASSES_ROOT", 0},
      {"HKCR", 0},
      {"HKEY_CURRENT_USER", 1},
      {"HKCU", 1},
      {"HKEY_LOCAL_MACHINE", 2},
      {"HKLM", 2},
      {"HKEY_USERS", 3},
      {"HKEY_PERFORMANCE_DATA", 4},
      {"HKEY_CURRENT_CONFIG", 5},
      {"HKEY_DYN_DATA", 6},
      {"hkcu", -1},
      {"HKU", -1},
      {"HKCU ", -1},
      {"", -1},
      {"HKEY_CURRENT_USE", -1},
  };
  for (const Row& row : rows)
    EXPECT_EQ(HiveFromName(row.name), row.number) << row.name;
}

TEST(StdRegistryTest, HiveMayStandInFrontOfTheKey) {
  struct Row {
    std::int32_t hive;
    std::string key;
    std::uint32_t handle;
    std::int32_t hiveAfter;
    std::string keyAfter;
  };
  const Row rows[] = {
      {1, "Software\\x", 0x80000001, 1, "Software\\x"},
      {0, "a/b", 0x80000000, 0, "a/b"},
      {6, "", 0x80000006, 6, ""},
      {7, "x", 7, 7, "x"},
      {4711, "x", 4711, 4711, "x"},
      {-2, "HKCU\\x", 0xFFFFFFFE, -2, "HKCU\\x"},
      {-1, "HKCU/Software/x", 0x80000001, 1, "Software\\x"},
      {-1, "HKCU\\Software\\x", 0x80000001, 1, "Software\\x"},
      {-1, "HKEY_CURRENT_USER:\\Software\\x", 0x80000001, 1, "Software\\x"},
      {-1, "HKLM:/Software", 0x80000002, 2, "Software"},
      {-1, "HKEY_USERS", 0x80000003, 3, ""},
      {-1, "hkcu\\Software", 0xFFFFFFFF, -1, "Software"},
      {-1, "HKCU\\a:\\b", 0xFFFFFFFF, -1, "b"},  // cut at ":\" wherever it stands
  };
  for (Row row : rows) {
    const std::string given = row.key;
    EXPECT_EQ(ResolveHive(row.hive, row.key), row.handle) << given;
    EXPECT_EQ(row.hive, row.hiveAfter) << given;
    EXPECT_EQ(row.key, row.keyAfter) << given;
  }
}

class GetRegistryValueTest : public testing::Test {
 protected:
  std::string Read(std::uint32_t type, std::uint32_t size, std::optional<std::string> bytes) {
    RegistryValue value;
    value.type = type;
    value.size = size;
    value.bytes = std::move(bytes);
    platform_->registry[{kUser, {"key", "value"}}] = value;
    return GetRegistryValue(1, "key", "value", "default");
  }

  ScopedRecordingPlatform platform_;
};

TEST_F(GetRegistryValueTest, TextLosesItsClosingZero) {
  EXPECT_EQ(Read(1, 4, std::string("abc\0", 4)), "abc");
  EXPECT_EQ(Read(2, 4, std::string("%x%\0", 4)), "%x%");
  EXPECT_EQ(Read(1, 1, std::string("\0", 1)), "");
  EXPECT_EQ(Read(1, 0, ""), "");
  EXPECT_EQ(Read(1, 3, "abc"), "ab");  // a text stored without its zero loses its end
}

TEST_F(GetRegistryValueTest, BinaryKeepsAllBytes) {
  EXPECT_EQ(Read(3, 4, std::string("a\0b\xFF", 4)), std::string("a\0b\xFF", 4));
  EXPECT_EQ(Read(3, 0, ""), "");
}

TEST_F(GetRegistryValueTest, NumberIsDecimal) {
  EXPECT_EQ(Read(4, 4, std::string("\5\0\0\0", 4)), "5");
  EXPECT_EQ(Read(4, 4, std::string("\0\1\0\0", 4)), "256");
  EXPECT_EQ(Read(4, 4, "\xFF\xFF\xFF\x7F"), "2147483647");
  EXPECT_EQ(Read(4, 4, "\xFF\xFF\xFF\xFF"), "-1");
  EXPECT_EQ(Read(4, 4, std::string("\0\0\0\0", 4)), "0");
}

TEST_F(GetRegistryValueTest, SeveralTextsBecomeLines) {
  EXPECT_EQ(Read(7, 9, std::string("ab\0cd\0e\0\0", 9)), "ab\r\ncd\r\ne\r\n");
  EXPECT_EQ(Read(7, 0, ""), "");
}

TEST_F(GetRegistryValueTest, FailedSecondReadIsEmptyAndNotTheDefault) {
  EXPECT_EQ(Read(1, 4, std::nullopt), "");
  EXPECT_EQ(Read(4, 4, std::nullopt), "");
}

TEST_F(GetRegistryValueTest, MissingKeyOrValueIsTheDefault) {
  EXPECT_EQ(GetRegistryValue(1, "none", "value", "default"), "default");
  EXPECT_EQ(GetRegistryValue(1, "none", "value", ""), "");
}

TEST_F(GetRegistryValueTest, AtSignNamesTheKeysOwnValue) {
  platform_->SetRegistryText(kUser, "Software\\x", "", "own");
  EXPECT_EQ(GetRegistryValue(-1, "HKCU/Software/x", "@", "default"), "own");
  EXPECT_THAT(platform_->calls, ElementsAre("QueryRegistry(80000001,\"Software\\x\",\"\") -> \"own\\0\""));
}

TEST_F(GetRegistryValueTest, ApplicationDataFolderIsAShellFolderOfTheUser) {
  EXPECT_EQ(AppDataFolder(), "");
  platform_->SetAppData("C:\\Users\\u\\AppData\\Roaming");
  EXPECT_EQ(AppDataFolder(), "C:\\Users\\u\\AppData\\Roaming");
  EXPECT_EQ(
      platform_->calls.back(),
      "QueryRegistry(80000001,\"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders\","
      "\"AppData\") -> \"C:\\Users\\u\\AppData\\Roaming\\0\"");
}

}  // namespace
}  // namespace vorlent
