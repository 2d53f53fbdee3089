// Which sections of a profiles.ini are profiles by today's rules, and which of them comes first.
#include "Connectors/Mozilla/Profiles.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "Support/RecordingPlatform.h"
#include "Support/ScopedRules.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::string_view kApp = "Thunderbird";

class ProfilesTest : public testing::Test {
 protected:
  ProfilesTest() { platform_->SetAppData(folder_.Path()); }

  // The names of the profiles of a file, in order.
  std::vector<std::string> Names(std::string_view ini) const {
    folder_.Write("Thunderbird/profiles.ini", ini);
    std::vector<std::string> names;
    for (const MozillaProfile& profile : ReadMozillaProfiles(kApp))
      names.push_back(profile.name);
    return names;
  }

  TemporaryFolder folder_;
  ScopedRecordingPlatform platform_;
  ScopedRules today_{{.profiles = ProfileSections::ByName}};
};

TEST_F(ProfilesTest, SectionsAreProfilesByTheirNamesInAnyOrder) {
  const std::string ini =
      "[Profile1]\nName=one\nIsRelative=1\nPath=p/one\n\n[Install4F96D1932A9F858E]\nDefault=p/other\n\n"
      "[Profile0]\nName=zero\nIsRelative=0\nPath=C:\\elsewhere\n\n[General]\nStartWithLastProfile=1\n";
  EXPECT_THAT(Names(ini), ElementsAre("one", "zero"));
  const auto profiles = ReadMozillaProfiles(kApp);
  EXPECT_EQ(profiles[0].path, folder_.Path() + "\\Thunderbird\\p\\one");
  EXPECT_EQ(profiles[1].path, "C:\\elsewhere");

  const ScopedRules windows(Rules::Windows());
  EXPECT_THAT(Names(ini), ElementsAre("", "zero", ""));
}

TEST_F(ProfilesTest, OnlyProfileNeedsNoGeneralSection) {
  EXPECT_THAT(Names("[Profile0]\r\nName=p\r\nPath=p\r\n"), ElementsAre("p"));
  EXPECT_THAT(Names("[profile12]\r\nname=p\r\npath=p\r\n"), ElementsAre("p"));
}

TEST_F(ProfilesTest, NothingElseIsAProfile) {
  EXPECT_THAT(Names("[General]\nName=a\nPath=a\n[Profile]\nName=b\nPath=b\n[Profile1x]\nName=c\nPath=c\n"
                    "[ProfileX]\nName=d\nPath=d\n[Backup0]\nName=e\nPath=e\n[Profile2]\nName=\nPath=f\n"
                    "[Profile3]\nPath=g\n[Profile4]\nName=h\n[Profile5]\nName=i\nPath=i\n"),
              ElementsAre("i"));
  EXPECT_THAT(Names(""), IsEmpty());
  EXPECT_THAT(Names("Name=a\nPath=a\n"), IsEmpty());
}

TEST_F(ProfilesTest, BlanksAndTheMarkOfTheEncodingDoNotCount) {
  EXPECT_THAT(Names("\xEF\xBB\xBF[Profile0]\r\nName=a\r\nPath=a\r\n"), ElementsAre("a"));
  EXPECT_THAT(Names("; one\n# two\n  [Profile0] \n Name = b c \n\tPath =b\n"), ElementsAre("b c"));
}

TEST_F(ProfilesTest, TwoOfANameHaveNamesOfTheirOwnWhicheverIsInUse) {
  const std::string profiles =
      "[Profile0]\nName=same\nPath=a\n[Profile1]\nName=same\nPath=b\n[Profile2]\nName=x/y\nPath=c\n";
  EXPECT_THAT(Names(profiles), ElementsAre("same", "same~2", "x/y"));
  EXPECT_EQ(ReadMozillaProfiles(kApp)[2].segment, "x%2Fy");
  EXPECT_THAT(Names(profiles + "[Install1]\nDefault=b\n"), ElementsAre("same~2", "same", "x/y"));
  const ScopedRules windows(Rules::Windows());
  EXPECT_THAT(Names("[General]\n" + profiles), ElementsAre("same", "same", "x/y"));
}

TEST_F(ProfilesTest, FirstOfTwoSectionsOfOneNameCounts) {
  EXPECT_THAT(Names("[Profile0]\nName=a\nPath=a\n[Profile0]\nName=b\nPath=b\n"), ElementsAre("a"));
}

struct InUse {
  const char* name;
  const char* sections;  // beside the profiles a, b and c, of which c is marked as default
  const char* first;
};

class ProfileInUse : public ProfilesTest, public testing::WithParamInterface<InUse> {};

TEST_P(ProfileInUse, ComesFirstAndTheOthersStayInOrder) {
  const auto names = Names(
      "[Profile0]\nName=a\nPath=P/a\n[Profile1]\nName=b\nPath=P/b\n"
      "[Profile2]\nName=c\nPath=P/c\nDefault=1\n" +
      std::string(GetParam().sections));
  std::vector<std::string> expected = {GetParam().first};
  for (const char* name : {"a", "b", "c"}) {
    if (expected.front() != name) expected.push_back(name);
  }
  EXPECT_EQ(names, expected);
}

INSTANTIATE_TEST_SUITE_P(
    By, ProfileInUse,
    testing::Values(InUse{"MarkAlone", "", "c"}, InUse{"Installation", "[Install1]\nDefault=P/b\n", "b"},
                    InUse{"LockedInstallation",
                          "[Install1]\nDefault=P/a\n[Install2]\nDefault=P/b\nLocked=1\n", "b"},
                    InUse{"FirstOfTwoInstallations",
                          "[Install1]\nDefault=P/b\nLocked=1\n[Install2]\nDefault=P/a\nLocked=1\n", "b"},
                    InUse{"MarkWhereTheInstallationNamesNoProfile",
                          "[Install1]\nDefault=P/gone\nLocked=1\n[Install2]\nLocked=1\n", "c"}),
    [](const auto& each) { return each.param.name; });

TEST_F(ProfilesTest, ProfileInUseComesFirst) {
  const std::string ini =
      "[General]\n[Profile0]\nName=old\nPath=old\nDefault=1\n[Profile1]\nName=new\nPath=new\n"
      "[InstallX]\nDefault=new\nLocked=1\n";
  EXPECT_THAT(Names(ini), ElementsAre("new", "old"));
  const ScopedRules windows(Rules::Windows());
  EXPECT_THAT(Names(ini), ElementsAre("old", "new", ""));
}

}  // namespace
}  // namespace vorlent
