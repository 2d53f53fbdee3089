// Thunderbird's own calendars, under the rules of today and through the standalone host's database.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <regex>

#include "Platform/EpochTime.h"
#include "SunbirdTest.h"
#include "Support/AsOrdinaryUser.h"
#include "Support/ForeignProgram.h"
#include "Support/LightningFile.h"
#include "Support/ScopedRules.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::int32_t kTitleChanged = 1;
constexpr std::int32_t kStartChanged = 2;
constexpr std::int32_t kDataChanged = 3;
constexpr std::int32_t kAdded = 37;
constexpr std::int32_t kRemoved = 38;

constexpr const char* kNine = "1781946000000000";  // 20 June 2026 09:00
constexpr const char* kTen = "1781949600000000";
constexpr const char* kMidsummer = "1782000000000000";  // 21 June 2026, midnight
constexpr const char* kTwoDaysLater = "1782172800000000";

class LightningTest : public SunbirdTest {
 protected:
  LightningTest() {
    WriteProfiles("Thunderbird", {"p"});
    folder_.MakeFolder(ProfileFolder("Thunderbird", "p") + "\\calendar-data");
    WritePreferences("Familie", "Arbeit");
    host_.MakeDatabase = [this]() -> HostDatabasePtr {
      return std::make_shared<test::RecordingDatabase>(host_.Log,
                                                       std::make_shared<StandaloneDatabase>(shelf_), false);
    };
  }

  void WritePreferences(std::string_view first, std::string_view second) {
    folder_.Write(ProfileFolder("Thunderbird", "p") + "\\prefs.js", LightningPreferences(first, second));
  }

  std::string FilePath() const {
    return folder_.Path(ProfileFolder("Thunderbird", "p") + "\\calendar-data\\local.sqlite");
  }
  std::filesystem::path NativeFile() const {
    return folder_.Native(ProfileFolder("Thunderbird", "p") + "\\calendar-data\\local.sqlite");
  }
  LightningFile File() const { return LightningFile(NativeFile()); }

  // The items as "ID title start - end [location]".
  Lines Shown() const {
    Lines lines;
    for (std::int32_t i = 1; i <= connector_->Count(); ++i) {
      std::string record = Stored(i).Record;
      const auto field = [&](const std::string& name) {
        const std::size_t at = ("|" + record).find("|" + name + "=");
        if (at == std::string::npos) return std::string();
        const std::string rest = record.substr(at + name.size() + 1);
        return rest.substr(0, rest.find('|'));
      };
      lines.push_back(field("ID") + " " + field("Text") + " " + field("Date") + " - " + field("DataDateEnd") +
                      " [" + field("DataLocation") + "] " + field("DataCalendar"));
    }
    return lines;
  }

  // What a change does to the rows: those that go with "-", those that come with "+".
  Lines Difference(const Lines& before, const Lines& after) const {
    Lines lines;
    for (const std::string& row : before)
      if (std::ranges::find(after, row) == after.end()) lines.push_back("-" + row);
    for (const std::string& row : after)
      if (std::ranges::find(before, row) == before.end()) lines.push_back("+" + row);
    return lines;
  }

  // Reads an address, does an action with the item of that ID, and gives what that did to the rows.
  template <class Edit>
  Lines Changed(std::string_view address, const std::string& id, std::int32_t msg, std::string_view value,
                Edit edit) {
    const Lines before = File().AllRows();
    const Lines schema = File().Schema();
    EXPECT_EQ(Read(address), LocationState::Read);
    auto item = host_.MakeItem();
    item->IdText = id;
    item->TypeText = "termin";
    item->Created = item->Modified = "22.11.2026 18:00:00";  // 1795366800
    edit(*item);
    connector_->RedoAction(item, "20261122180000", msg, value);
    EXPECT_EQ(File().Schema(), schema);
    return Difference(before, File().AllRows());
  }

  // Adds an event of nine o'clock under an ID that is an SQL expression.
  static void AddEventOfId(LightningFile& file, const char* calendar, const std::string& id,
                           const std::string& title) {
    file.Add("cal_events", "cal_id, id, title, event_start, event_end, event_start_tz, event_end_tz, flags",
             "'" + std::string(calendar) + "'," + id + ",'" + title + "'," + kNine + "," + kTen +
                 ",'UTC','UTC',4");
  }

  static void AddTask(LightningFile& file, const char* calendar, const std::string& id) {
    file.Add("cal_todos", "cal_id, id, title, flags", "'" + std::string(calendar) + "','" + id + "','Los',4");
  }

  Lines ShownIds() const {
    Lines ids;
    for (const std::string& line : Shown())
      ids.push_back(line.substr(0, line.find(' ')));
    return ids;
  }

  ScopedRules today_{Rules::Today()};
  std::shared_ptr<SnapshotShelf> shelf_ = std::make_shared<SnapshotShelf>();
};

TEST_F(LightningTest, CalendarsGoByTheNamesAndInTheOrderOfThePreferences) {
  File();
  ASSERT_EQ(Read("lightning://p/*"), LocationState::Read);
  EXPECT_THAT(Records(), testing::AllOf(HasSubstr("Text=Familie|"), HasSubstr("lightning://p/Arbeit/")));
  EXPECT_LT(Records().find("Familie"), Records().find("Arbeit"));
}

TEST_F(LightningTest, ByTheOtherRulesThereIsNothing) {
  const ScopedRules windows(Rules::Windows());
  File().AddEvent(LightningFile::kFirst, "a", "Essen", kNine, kTen);
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_THAT(Shown(), IsEmpty());
}

TEST_F(LightningTest, TimesAreThoseThatThunderbirdShows) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "utc", "UTC", kNine, kTen);
  file.AddEvent(LightningFile::kFirst, "zone", "Tokio", kNine, kTen, "Asia/Tokyo");
  file.AddEvent(LightningFile::kFirst, "float", "Ortszeit", kNine, kTen, "floating");
  file.AddEvent(LightningFile::kFirst, "days", "Zwei Tage", kMidsummer, kTwoDaysLater, "floating", 12);
  file.AddEvent(LightningFile::kFirst, "far", "Fern", "4102480800000000", "NULL");
  for (const char* zone : {"Europe/Berlin", "America/New_York", "Pacific/Kiritimati"}) {
    const ScopedTimeZone elsewhere(zone);
    ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
    EXPECT_EQ(Shown()[2], "float Ortszeit 20.06.2026 09:00 - 20.06.2026 10:00 [] Familie") << zone;
    EXPECT_EQ(Shown()[3], "days Zwei Tage 21.06.2026 00:00 - 22.06.2026 00:00 [] Familie") << zone;
  }
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("utc UTC 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie",
                                   "zone Tokio 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie",
                                   "float Ortszeit 20.06.2026 09:00 - 20.06.2026 10:00 [] Familie",
                                   "days Zwei Tage 21.06.2026 00:00 - 22.06.2026 00:00 [] Familie",
                                   "far Fern 01.01.2100 11:00 - 01.01.2100 11:00 [] Familie"));
}

TEST_F(LightningTest, OldTimesHaveTheRulesOfTheirDate) {
  File().AddEvent(LightningFile::kFirst, "old", "Alt", "-954691200000000", "-954687600000000");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("old Alt 01.10.1939 09:00 - 01.10.1939 10:00 [] Familie"));
}

TEST_F(LightningTest, WholeDayOfAZoneIsThatDay) {
  // Midnight in Tokyo is 15:00 of the day before in UTC.
  File().AddEvent(LightningFile::kFirst, "a", "Tag", "1781967600000000", "1782054000000000", "Asia/Tokyo",
                  12);
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("a Tag 21.06.2026 00:00 - 21.06.2026 00:00 [] Familie"));
}

TEST_F(LightningTest, WholeDayOfAFarZoneIsThatZonesDay) {
  if (!os::TryZoneOffsetAt("Pacific/Kiritimati", {})) GTEST_SKIP() << "the system doesn't know zones by name";
  LightningFile file = File();
  const auto addDay = [&](const std::string& zone, std::int64_t midnight) {
    constexpr std::int64_t kSecondsOfADay = 86400;
    const auto micro = [](std::int64_t seconds) { return std::to_string(seconds) + "000000"; };
    file.AddEvent(LightningFile::kFirst, "a", zone, micro(midnight), micro(midnight + kSecondsOfADay), zone,
                  12);
  };
  addDay("Pacific/Kiritimati", 1768384800);
  addDay("Pacific/Apia", 1768388400);
  addDay("Pacific/Auckland", 1768388400);
  addDay("/mozilla.org/20050126_1/Pacific/Auckland", 1768388400);
  addDay("Asia/Tokyo", 1768402800);
  addDay("Pacific/Pago_Pago", 1768474800);
  addDay("Etc/GMT+12", 1768478400);
  addDay("W. Europe Standard Time", 1768431600);
  for (const char* here : {"Europe/Berlin", "Pacific/Kiritimati", "America/New_York"}) {
    const ScopedTimeZone zone(here);
    ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
    EXPECT_THAT(Shown(), testing::AllOf(testing::SizeIs(8),
                                        testing::Each(HasSubstr(" 15.01.2026 00:00 - 15.01.2026 00:00 "))));
  }
}

TEST_F(LightningTest, WholeDayWhoseMidnightTheLocalClockSkipsIsThatDay) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "one", "x", "1788652800000000", "1788739200000000", "floating", 12);
  file.AddEvent(LightningFile::kFirst, "two", "x", "1788566400000000", "1788739200000000", "floating", 12);
  file.AddEvent(LightningFile::kFirst, "hour", "x", "1788656400000000", "1788660000000000", "floating");
  // As in Chile.
  const ScopedTimeZone atMidnight("CLT4CLST,M9.1.0/0,M4.1.0/0");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("one x 06.09.2026 00:00 - 06.09.2026 00:00 [] Familie",
                                   "two x 05.09.2026 00:00 - 06.09.2026 00:00 [] Familie",
                                   "hour x 06.09.2026 01:00 - 06.09.2026 02:00 [] Familie"));
  EXPECT_EQ(Changed("lightning://p/Familie", "two", kStartChanged, "",
                    [](auto& item) { item.DateText = "06.09.2026"; })
                .size(),
            2u);
  EXPECT_THAT(file.Rows("SELECT event_start/1000000 FROM cal_events"),
              ElementsAre("1788652800", "1788652800", "1788656400"));
  file.Run("UPDATE cal_events SET event_start=-199929600000000, event_end=-199843200000000");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_EQ(Shown().front(), "one x 01.09.1963 00:00 - 01.09.1963 00:00 [] Familie");
}

TEST_F(LightningTest, TimeThatTheLocalClockSkipsIsShownAsItIsKept) {
  File().AddEvent(LightningFile::kFirst, "gap", "x", "1774751400500000", "1774753200000000", "floating");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("gap x 29.03.2026 02:30 - 29.03.2026 03:00 [] Familie"));
}

TEST_F(LightningTest, TimesBefore1970AndAfter2038AreOfTheRulesOfToday) {
  WriteProfiles("Mozilla\\Sunbird", {"p"});
  Storage().Run(std::string(kCalendarTables) + R"(
      INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (2, 'name', 'Home');
      INSERT INTO cal_events
      VALUES (2, 'far', 1, 1, 'Fern', 4, 4102480800000000, 4102480800000000, '', '');)");
  ASSERT_EQ(Read("sunbird://p/Home"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("far Fern 01.01.2100 11:00 - 01.01.2100 11:00 [] Home"));
  const ScopedRules windows(Rules::Windows());
  EXPECT_THROW(Read("sunbird://p/Home"), Failure);
}

TEST_F(LightningTest, RepeatedEventIsShownOnceAndItsChangedOccurrenceStays) {
  LightningFile file = File();
  file.Run(
      "INSERT INTO cal_events(cal_id, id, title, flags, event_start, event_end, event_start_tz, "
      "event_end_tz, "
      "recurrence_id, recurrence_id_tz) SELECT '" +
      std::string(LightningFile::kFirst) +
      "', 'weekly', 'Verlegt', 4, 1782550800000000, 1782554400000000, 'UTC', 'UTC', 1782550800000000, 'UTC'");
  file.AddEvent(LightningFile::kFirst, "weekly", "Woche", kNine, kTen, "UTC", 52);
  file.Add("cal_properties", "item_id, cal_id, key, value, recurrence_id, recurrence_id_tz",
           "'weekly', '" + std::string(LightningFile::kFirst) +
               "', 'LOCATION', 'Anderswo', 1782550800000000, 'UTC'");
  file.Add("cal_recurrence", "item_id, cal_id, icalString",
           "'weekly', '" + std::string(LightningFile::kFirst) + "', 'RRULE:FREQ=WEEKLY'");
  const Lines difference = Changed("lightning://p/Familie", "weekly", kTitleChanged, "",
                                   [](auto& item) { item.DisplayText = "Jede Woche"; });
  EXPECT_THAT(Shown(), ElementsAre("weekly Woche 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie"));
  ASSERT_EQ(difference.size(), 2u);
  EXPECT_THAT(difference[1], testing::StartsWith("+cal_events|2|65089248-54be-4d44-a3fc-922ffc102e8d|weekly|"
                                                 "1795364577000000|1795366800000000|Jede Woche|"));
  // Its start can't be moved without its occurrences.
  EXPECT_THAT(Changed("lightning://p/Familie", "weekly", kStartChanged, "",
                      [](auto& item) { item.DateText = "20.06.2026 15:00"; }),
              IsEmpty());
  EXPECT_THAT(
      host_.Log.Only({"Global.Report(27"}),
      ElementsAre(HasSubstr("local.sqlite: a repeated event with changed or left out occurrences stays")));
  EXPECT_EQ(Changed("lightning://p/Familie", "weekly", kRemoved, "", [](auto&) {}).size(), 4u);
}

TEST_F(LightningTest, ItemsOfOneIdInTwoCalendarsAreTwo) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kSecond, "same", "Der zweite", kNine, kTen);
  file.AddEvent(LightningFile::kFirst, "same", "Der erste", kNine, kTen);
  file.Add("cal_properties", "item_id, cal_id, key, value",
           "'same', '" + std::string(LightningFile::kSecond) + "', 'LOCATION', 'Dort'");
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("same Der erste 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie",
                                   "same~2 Der zweite 20.06.2026 11:00 - 20.06.2026 12:00 [Dort] Arbeit"));
  // A change finds the one that is meant, whichever calendar was read last.
  const Lines first =
      Changed("lightning://p/", "same", kTitleChanged, "", [](auto& item) { item.DisplayText = "Neu"; });
  EXPECT_THAT(first, ElementsAre(HasSubstr("|Der erste|"), HasSubstr("+cal_events|2|65089248")));
  const Lines second = Changed("lightning://p/", "same~2", kRemoved, "", [](auto&) {});
  EXPECT_THAT(second, ElementsAre(HasSubstr("-cal_events|1|19cf1c7b"), HasSubstr("-cal_properties|1|same")));
}

TEST_F(LightningTest, CalendarsOfOneNameAreTwo) {
  WritePreferences("Privat", "Privat");
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "Eins", kNine, kTen);
  file.AddEvent(LightningFile::kSecond, "b", "Zwei", kNine, kTen);
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_EQ(connector_->Count(), 2);
  ASSERT_EQ(Read("lightning://p/Privat~2"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre(HasSubstr("b Zwei")));
}

TEST_F(LightningTest, NamesMayHoldWhatPartsAddressesAndRecords) {
  WritePreferences("A / B", "C|D's");
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "Eins", kNine, kTen);
  file.AddEvent(LightningFile::kSecond, "b", "Zwei", kNine, kTen);
  ASSERT_EQ(Read("lightning://p/A %2F B"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("a Eins 20.06.2026 11:00 - 20.06.2026 12:00 [] A / B"));
  WritePreferences("A%2FB", "A/B");
  ASSERT_EQ(Read("lightning://p/A%252FB"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("a Eins 20.06.2026 11:00 - 20.06.2026 12:00 [] A%2FB"));
  WritePreferences("A / B", "C|D's");
  ASSERT_EQ(Read("lightning://p/C|D's"), LocationState::Read);
  EXPECT_THAT(Records(), HasSubstr("|DataCalendar=C\\|D's|Log="));
  // By the other rules a name is what it is.
  const ScopedRules windows(Rules{.calendarFiles = CalendarFiles::OfThunderbird});
  EXPECT_EQ(Read("lightning://p/A %2F B"), LocationState::Unreadable);
  ASSERT_EQ(Read("lightning://p/C|D's"), LocationState::Read);
  EXPECT_THAT(Records(), HasSubstr("|DataCalendar=C|D's|Log="));
}

TEST_F(LightningTest, PreparingAnAddressReadsWhatItNames) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "Eins", kNine, kTen);
  file.AddEvent(LightningFile::kSecond, "b", "Zwei", kNine, kTen);
  EXPECT_TRUE(connector_->InitLocation("lightning://p/Arbeit"));
  EXPECT_EQ(connector_->Count(), 1);
}

TEST_F(LightningTest, StorageOfOldIsReadForWhatThunderbirdDoesNotHave) {
  File().AddEvent(LightningFile::kFirst, "a", "Neu", kNine, kTen);
  Storage("p", "Thunderbird").Run(std::string(kCalendarTables) + R"(
      INSERT INTO cal_calendars_prefs (calendar, name, value)
      VALUES (2, 'name', 'Familie'), (3, 'name', 'Verein');
      INSERT INTO cal_events VALUES (2, 'a', 1, 1, 'Stand von damals', 4, 1, 1, '', ''),
        (3, 'c', 1, 1, 'Fest', 4, 1781946000000000, 1781946000000000, '', '');)");
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("a Neu 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie",
                                   "c Fest 20.06.2026 11:00 - 20.06.2026 11:00 [] Verein"));
}

TEST_F(LightningTest, RowThatCanNotBeReadIsNamedAndTheNextOneComes) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "Ohne Anfang", "NULL", "NULL");
  file.AddEvent(LightningFile::kFirst, "b", "Bytes", "x'0102'", kTen);
  file.AddEvent(LightningFile::kFirst, "c", "Jahr 30000", "884541340800000000", "884541340800000000");
  file.AddEvent(LightningFile::kFirst, "d", "Jahr 1600", "-11670969600000000", "-11670966000000000");
  file.AddEvent(LightningFile::kFirst, "e", "Gut", kNine, kTen);
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("d Jahr 1600 29.02.1600 08:53 - 29.02.1600 09:53 [] Familie",
                                   "e Gut 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie"));
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(HasSubstr("local.sqlite: Kalender 'Familie', ID a: keine Zeit"),
                          HasSubstr("Kalender 'Familie', ID b: keine Zeit"),
                          HasSubstr("Kalender 'Familie', ID c: Zeit nach dem Jahr 9999")));
}

TEST_F(LightningTest, ItemWithoutATimeOfItsMakingIsShown) {
  LightningFile file = File();
  file.Add("cal_todos", "cal_id, id, title, flags",
           "'" + std::string(LightningFile::kFirst) + "', 't', 'Los', 4");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Records(), HasSubstr("ID=t|Type=task|Text=Los|DataCalendar=Familie|"));
}

TEST_F(LightningTest, IdOfAReadItemMeansThatItemWhateverIsRemoved) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "same", "Der erste", kNine, kTen);
  file.AddEvent(LightningFile::kSecond, "same", "Der zweite", kNine, kTen);
  file.Add("cal_alarms", "cal_id, item_id", "'" + std::string(LightningFile::kSecond) + "', 'same'");
  const auto remove = [&](const char* id) {
    return Changed("lightning://p/", id, kRemoved, "", [](auto&) {});
  };
  EXPECT_THAT(remove("same"), ElementsAre(HasSubstr("Der erste")));
  EXPECT_THAT(ShownIds(), ElementsAre("same", "same~2"));
  EXPECT_THAT(remove("same"), IsEmpty());
  EXPECT_THAT(ShownIds(), ElementsAre("same~2"));
  EXPECT_THAT(remove("same~2"), ElementsAre(HasSubstr("-cal_alarms"), HasSubstr("Der zweite")));
}

TEST_F(LightningTest, OrderOfTheCalendarsMayChangeBetweenReadingAndWriting) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "same", "Der erste", kNine, kTen);
  file.AddEvent(LightningFile::kSecond, "same", "Der zweite", kNine, kTen);
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  std::string preferences = LightningPreferences("Familie", "Arbeit");
  const std::size_t order = preferences.find(LightningFile::kFirst);
  const std::size_t length = std::string(LightningFile::kFirst).size();
  preferences.replace(order, 2 * length + 1,
                      std::string(LightningFile::kSecond) + " " + LightningFile::kFirst);
  folder_.Write(ProfileFolder("Thunderbird", "p") + "\\prefs.js", preferences);
  auto item = host_.MakeItem();
  item->IdText = "same";
  item->TypeText = "termin";
  connector_->RedoAction(item, "20261122180000", kRemoved, "");
  EXPECT_THAT(file.Rows("SELECT title FROM cal_events"), ElementsAre("Der zweite"));
}

TEST_F(LightningTest, MadeIdIsNoneThatAnItemHas) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "x", "Der erste", kNine, kTen);
  file.AddEvent(LightningFile::kFirst, "x~2", "Heißt so", kNine, kTen);
  file.AddEvent(LightningFile::kSecond, "x", "Der zweite", kNine, kTen);
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_THAT(ShownIds(), ElementsAre("x", "x~2", "x~3"));
  EXPECT_THAT(Changed("lightning://p/", "x~2", kRemoved, "", [](auto&) {}),
              ElementsAre(HasSubstr("Heißt so")));
}

TEST_F(LightningTest, ItemThatThunderbirdHasDeletedOfflineTakesNoId) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "x", "Gelöscht", kNine, kTen);
  file.Run("UPDATE cal_events SET offline_journal=4");
  file.AddEvent(LightningFile::kSecond, "x", "Der andere", kNine, kTen);
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_THAT(ShownIds(), ElementsAre("x"));
}

TEST_F(LightningTest, RowsWithoutAnIdAreNamedAndTheOthersCome) {
  LightningFile file = File();
  AddEventOfId(file, LightningFile::kFirst, "NULL", "Namenlos");
  AddEventOfId(file, LightningFile::kSecond, "NULL", "Auch");
  AddEventOfId(file, LightningFile::kFirst, "'a'", "Gut");
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_THAT(ShownIds(), ElementsAre("a"));
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(HasSubstr("local.sqlite: Kalender 'Familie', 'Namenlos': keine ID"),
                          HasSubstr("Kalender 'Arbeit', 'Auch': keine ID")));
}

TEST_F(LightningTest, ItemsOfOneCalendarHideNoOther) {
  LightningFile file = File();
  int number = 0;
  for (const char* id :
       {"'abc'", "'ABC'", "'p|q'", "'p'", "'i'||char(0)||'d'", "'n'||char(10)||'l'", "'both'"})
    AddEventOfId(file, LightningFile::kFirst, id, "T" + std::to_string(++number));
  AddTask(file, LightningFile::kFirst, "both");
  file.Add("cal_properties", "item_id, cal_id, key, value",
           "'both', '" + std::string(LightningFile::kFirst) + "', 'DESCRIPTION', 'Beider'");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_EQ(connector_->Count(), 8);
  EXPECT_THAT(Records(), HasSubstr("ID=p\\|q|Type=termin|Text=T3"));
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}), IsEmpty());
  const auto remove = [&](const char* id) {
    return Changed("lightning://p/Familie", id, kRemoved, "", [](auto&) {});
  };
  EXPECT_THAT(remove("ABC~2"), ElementsAre(HasSubstr("|T2|")));
  EXPECT_THAT(remove("p|q"), ElementsAre(HasSubstr("|T3|")));
  EXPECT_THAT(remove("i_d"), ElementsAre(HasSubstr("|T5|")));
  EXPECT_THAT(remove("n_l"), ElementsAre(HasSubstr("|T6|")));
  EXPECT_THAT(remove("both"), ElementsAre(HasSubstr("|T7|")));
  EXPECT_THAT(file.Rows("SELECT id FROM cal_todos"), ElementsAre("both"));
}

TEST_F(LightningTest, PropertiesOfAnotherCalendarAreItsOwn) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "x", "Mein", kNine, kTen);
  file.Add("cal_properties", "item_id, cal_id, key, value",
           "'x', '" + std::string(LightningFile::kSecond) + "', 'LOCATION', 'Fremd'");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("x Mein 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie"));
  EXPECT_THAT(Changed("lightning://p/Familie", "x", kRemoved, "", [](auto&) {}),
              ElementsAre(HasSubstr("Mein")));
}

// Thunderbird reads the properties of an item only if its flag tells that it has some.
TEST_F(LightningTest, PropertiesOfAnIdBelongToTheItemThatIsFlaggedForThem) {
  constexpr int kHasProperties = 4;
  LightningFile file = File();
  const std::string mine = "'" + std::string(LightningFile::kFirst) + "'";
  const auto addBoth = [&](const std::string& id, int flagsOfEvent, int flagsOfTask) {
    file.AddEvent(LightningFile::kFirst, id, "Termin", kNine, kTen, "UTC", flagsOfEvent);
    file.Add("cal_todos", "cal_id, id, title, flags",
             mine + ",'" + id + "','Los'," + std::to_string(flagsOfTask));
    file.Add("cal_properties", "item_id, cal_id, key, value", "'" + id + "'," + mine + ",'LOCATION','Hier'");
  };
  addBoth("event", kHasProperties, 0);
  addBoth("task", 0, kHasProperties);
  addBoth("both", kHasProperties, kHasProperties);
  addBoth("none", 0, 0);
  const auto properties = [&](const std::string& id) {
    return file.Rows("SELECT key, value FROM cal_properties WHERE item_id='" + id + "'");
  };
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_EQ(Shown()[0], "event Termin 20.06.2026 11:00 - 20.06.2026 12:00 [Hier] Familie");
  EXPECT_EQ(Shown()[1], "task Termin 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie");
  EXPECT_EQ(Shown()[2], "both Termin 20.06.2026 11:00 - 20.06.2026 12:00 [Hier] Familie");
  EXPECT_EQ(Shown()[3], "none Termin 20.06.2026 11:00 - 20.06.2026 12:00 [Hier] Familie");

  const auto locate = [](auto& item) { item.Data = {{"Location", "Dort"}}; };
  Changed("lightning://p/Familie", "event", kDataChanged, "Location=", locate);
  EXPECT_THAT(properties("event"), ElementsAre("LOCATION|Dort"));
  EXPECT_THAT(Changed("lightning://p/Familie", "task", kDataChanged, "Location=", locate), IsEmpty());
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(HasSubstr("local.sqlite: another item of this ID has the properties")));

  for (const char* id : {"event", "task", "both", "none"})
    Changed("lightning://p/Familie", id, kRemoved, "", [](auto&) {});
  EXPECT_THAT(properties("event"), IsEmpty());
  EXPECT_THAT(properties("task"), ElementsAre("LOCATION|Hier"));
  EXPECT_THAT(properties("both"), ElementsAre("LOCATION|Hier"));
  EXPECT_THAT(properties("none"), ElementsAre("LOCATION|Hier"));
}

TEST_F(LightningTest, ReplacedEventLeavesAnotherItemOfItsIdWhatTheyShare) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "both", "Termin", kNine, kTen);
  AddTask(file, LightningFile::kFirst, "both");
  file.Add("cal_properties", "item_id, cal_id, key, value",
           "'both', '" + std::string(LightningFile::kFirst) + "', 'DESCRIPTION', 'Beider'");
  Changed("lightning://p/Familie", "both", kAdded, "", [](auto& item) {
    item.DateText = "20.06.2026 11:00";
    item.Data = {{"DateEnd", "20.06.2026 12:00"}, {"Location", "Hier"}};
  });
  EXPECT_THAT(file.Rows("SELECT key, value FROM cal_properties"),
              ElementsAre("DESCRIPTION|Beider", "LOCATION|Hier"));
}

TEST_F(LightningTest, ItemsOfOneIdAskForEachSharedPropertyOnce) {
  LightningFile file = File();
  for (const char* place : {"Hier", "Dort", "Da"}) {
    file.AddEvent(LightningFile::kFirst, "same", place, kNine, kTen);
    file.Add("cal_properties", "item_id, cal_id, key, value",
             "'same', '" + std::string(LightningFile::kFirst) + "', 'LOCATION', '" + place + "'");
  }
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), testing::AllOf(testing::SizeIs(3), testing::Each(HasSubstr("[Hier]"))));
  StandaloneDatabase database;
  ASSERT_TRUE(database.Open("ODBC", "Database=" + FilePath() + ";Timeout=2000"));
  EXPECT_EQ(database.Query("SELECT value FROM cal_properties WHERE item_id='same~3'", 2)->RecordCount(), 1);
}

TEST_F(LightningTest, TimesWithoutASignOrWithFractionsAreTimes) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "old", "Alt", "18446744073709551616.0-954691200000000",
                "18446744073709551616.0-954687600000000");
  file.AddEvent(LightningFile::kFirst, "part", "Teil", "1781946000000000.5", kTen);
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("old Alt 01.10.1939 09:00 - 01.10.1939 10:00 [] Familie",
                                   "part Teil 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie"));
}

TEST_F(LightningTest, EventIsShownAsFarAsItCanBe) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "far", "Ewig", kNine, "884541340800000000");
  file.AddEvent(LightningFile::kFirst, "end", "Bytes", kNine, "x'0102'");
  file.AddEvent(LightningFile::kFirst, "made", "Später", kNine, kTen);
  file.Run("UPDATE cal_events SET time_created=884541340800000000, last_modified=x'0102' WHERE id='made'");
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("far Ewig 20.06.2026 11:00 - 20.06.2026 11:00 [] Familie",
                                   "end Bytes 20.06.2026 11:00 - 20.06.2026 11:00 [] Familie",
                                   "made Später 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie"));
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(HasSubstr("Kalender 'Familie', ID far: Ende: Zeit nach dem Jahr 9999"),
                          HasSubstr("Kalender 'Familie', ID end: Ende: keine Zeit")));
}

TEST_F(LightningTest, StorageOfOldStandsInForNothingThatIsThere) {
  folder_.Write(ProfileFolder("Thunderbird", "p") + "\\calendar-data\\local.sqlite", "no database at all");
  Storage("p", "Thunderbird").Run(std::string(kCalendarTables) + R"(
      INSERT INTO cal_calendars_prefs (calendar, name, value) VALUES (2, 'name', 'Familie');
      INSERT INTO cal_events VALUES (2, 'a', 1, 1, 'Stand von damals', 4, 1, 1, '', '');)");
  EXPECT_EQ(Read("lightning://p/Familie"), LocationState::Unreadable);
  EXPECT_EQ(connector_->Count(), 0);
  EXPECT_TRUE(connector_->DatabaseFile().ends_with("local.sqlite"));
}

TEST_F(LightningTest, EveryLookUpOfAnItemUsesAnIndex) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "x", kNine, kTen);
  // What is scanned is what a trigger is given: the rows that were found. Theirs are the views' names.
  StandaloneDatabase database;
  ASSERT_TRUE(database.Open("ODBC", "Database=" + FilePath() + ";Timeout=2000"));
  for (const char* statement :
       {"SELECT value FROM cal_properties WHERE item_id='id7~2' AND key='LOCATION'",
        "UPDATE cal_events SET title='x', last_modified=1 WHERE id='id7~2'",
        "DELETE FROM cal_properties WHERE item_id='id7~2'", "DELETE FROM cal_todos WHERE id='id7~2'"}) {
    const auto plan = database.Query("EXPLAIN QUERY PLAN " + std::string(statement), 2);
    for (plan->MoveFirst(); !plan->EndOfRows(); plan->MoveNext()) {
      const std::string step = plan->Field("detail");
      EXPECT_TRUE(!step.starts_with("SCAN") || step == "SCAN cal_events" || step == "SCAN cal_todos" ||
                  step == "SCAN cal_properties")
          << statement << ": " << step;
      EXPECT_THAT(step, testing::Not(HasSubstr("AUTOMATIC")));
    }
  }
}

// --- Writing back

TEST_F(LightningTest, CalendarThatThunderbirdOnlyReadsIsNotChanged) {
  File().AddEvent(LightningFile::kFirst, "a", "x", kNine, kTen);
  folder_.Write(ProfileFolder("Thunderbird", "p") + "\\prefs.js",
                LightningPreferences("Familie", "Arbeit") + "user_pref(\"calendar.registry." +
                    LightningFile::kFirst + ".readOnly\", true);\n");
  for (const std::int32_t change : {kTitleChanged, kStartChanged, kAdded, kRemoved}) {
    host_.Log.Clear();
    EXPECT_THAT(Changed("lightning://p/Familie", "a", change, "",
                        [](auto& item) {
                          item.DisplayText = "Neu";
                          item.DateText = "20.06.2026 10:00";
                          item.Data = {{"DateEnd", "20.06.2026 12:00"}};
                        }),
                IsEmpty());
    EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
                ElementsAre(HasSubstr("local.sqlite: the calendar is set to be read only")));
  }
}

TEST_F(LightningTest, AddedEventTakesTheIdOfNoOtherCalendar) {
  File().AddEvent(LightningFile::kFirst, "a", "x", kNine, kTen);
  EXPECT_THAT(Changed("lightning://p/Arbeit", "a", kAdded, "",
                      [](auto& item) {
                        item.DateText = "20.06.2026 10:00";
                        item.Data = {{"DateEnd", "20.06.2026 12:00"}};
                      }),
              IsEmpty());
}

TEST_F(LightningTest, WholeDaysTakeNoTimeOfDay) {
  File().AddEvent(LightningFile::kFirst, "a", "x", kMidsummer, kTwoDaysLater, "floating", 12);
  EXPECT_THAT(Changed("lightning://p/Familie", "a", kStartChanged, "",
                      [](auto& item) { item.DateText = "24.12.2026 10:00"; }),
              IsEmpty());
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(HasSubstr("an event of whole days has no time of day")));
}

TEST_F(LightningTest, AddedEventIsLaidOutAsThunderbirdDoes) {
  File();
  const Lines difference = Changed("lightning://p/Arbeit", "neu", kAdded, "", [](auto& item) {
    item.DisplayText = "Anna's Fest";
    item.DateText = "20.06.2026 11:00";
    item.Data = {{"DateEnd", "20.06.2026 12:00"}, {"Location", "O'Hara"}};
  });
  EXPECT_THAT(
      difference,
      ElementsAre("+cal_events|1|19cf1c7b-f359-4b80-8f47-e511ea4346d2|neu|1795366800000000|1795366800000000|"
                  "Anna's Fest|NULL|NULL|NULL|4|1781946000000000|1781949600000000|1795366800000000|"
                  "Europe/Berlin|Europe/Berlin|NULL|NULL|NULL|NULL",
                  "+cal_properties|1|neu|LOCATION|O'Hara|NULL|NULL|19cf1c7b-f359-4b80-8f47-e511ea4346d2"));
}

TEST_F(LightningTest, AddedTaskIsLaidOutAsThunderbirdDoes) {
  File();
  const Lines difference = Changed("lightning://p/Arbeit", "neu", kAdded, "", [](auto& item) {
    item.TypeText = "task";
    item.DisplayText = "Putzen";
  });
  EXPECT_THAT(difference,
              ElementsAre("+cal_todos|1|19cf1c7b-f359-4b80-8f47-e511ea4346d2|neu|1795366800000000|"
                          "1795366800000000|Putzen|NULL|NULL|NULL|4|NULL|NULL|NULL|NULL|NULL|NULL|NULL|"
                          "NULL|NULL|NULL|1795366800000000|NULL"));
}

TEST_F(LightningTest, QuoteOfATextSpoilsTheStatementByTheOtherRules) {
  File();
  const ScopedRules windows(Rules{.calendarFiles = CalendarFiles::OfThunderbird});
  EXPECT_THAT(Changed("lightning://p/Arbeit", "neu", kTitleChanged, "",
                      [](auto& item) { item.DisplayText = "Anna's Fest"; }),
              IsEmpty());
  EXPECT_THAT(host_.Log.Only({"Database.Execute"}), IsEmpty());
}

TEST_F(LightningTest, ChangedTimesAreKeptByTheClockOfTheEvent) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "float", "x", kNine, kTen, "floating");
  file.AddEvent(LightningFile::kFirst, "zone", "x", kNine, kTen, "Asia/Tokyo");
  file.AddEvent(LightningFile::kFirst, "days", "x", kMidsummer, kTwoDaysLater, "floating", 12);
  file.Add("cal_properties", "item_id, cal_id, key, value",
           "'zone', '" + std::string(LightningFile::kFirst) + "', 'DURATION', 'PT1H'");
  const auto moved = [](auto& item) {
    item.DateText = "01.07.2026 08:30";
    item.Data = {{"DateEnd", "02.07.2026 09:30"}};
  };
  const auto movedDays = [](auto& item) {
    item.DateText = "01.07.2026";
    item.Data = {{"DateEnd", "02.07.2026"}};
  };
  Changed("lightning://p/Familie", "days", kStartChanged, "", movedDays);
  Changed("lightning://p/Familie", "days", kDataChanged, "DateEnd=", movedDays);
  for (const char* id : {"float", "zone"}) {
    Changed("lightning://p/Familie", id, kStartChanged, "", moved);
    Changed("lightning://p/Familie", id, kDataChanged, "DateEnd=", moved);
  }
  EXPECT_THAT(file.Rows("SELECT id, event_start/1000000, event_start_tz, event_end/1000000, event_end_tz, "
                        "last_modified/1000000, event_stamp/1000000 FROM cal_events"),
              ElementsAre("float|1782894600|floating|1782984600|floating|1795366800|1795366800",
                          "zone|1782887400|Asia/Tokyo|1782977400|Asia/Tokyo|1795366800|1795366800",
                          "days|1782864000|floating|1783036800|floating|1795366800|1795366800"));
  EXPECT_THAT(file.Rows("SELECT * FROM cal_properties"), IsEmpty());
}

TEST_F(LightningTest, ChangedEventKeepsWhatTheTablesOfOldDoNotKnow) {
  constexpr int kHasEverything = 2 | 4 | 16 | 64 | 128 | 256;
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "Vorher", kNine, kTen, "Asia/Tokyo", kHasEverything);
  file.Run("UPDATE cal_events SET priority=5, privacy='PRIVATE', ical_status='TENTATIVE', alarm_last_ack=7");
  const auto add = [&](const char* table, const std::string& columns, const std::string& values) {
    file.Add(table, "cal_id, item_id, " + columns,
             "'" + std::string(LightningFile::kFirst) + "','a'," + values);
  };
  add("cal_attendees", "icalString", "'ATTENDEE;CN=Bert:mailto:bert@example.com'");
  add("cal_recurrence", "icalString", "'RRULE:FREQ=WEEKLY;COUNT=6'");
  add("cal_alarms", "icalString", "'BEGIN:VALARM' || char(13, 10) || 'TRIGGER:-PT15M'");
  add("cal_relations", "icalString", "'RELATED-TO:b'");
  add("cal_attachments", "icalString", "'ATTACH:https://example.com/'");
  add("cal_metadata", "value", "x'00FF'");
  add("cal_parameters", "key1, key2, value", "'LOCATION', 'LANGUAGE', 'de'");
  add("cal_properties", "key, value", "'LOCATION', 'Hier'");
  add("cal_properties", "key, value", "'DESCRIPTION', 'eins' || char(10) || 'zwei'");
  add("cal_properties", "key, value", "'X-OWN', x'01'");
  add("cal_properties", "key, value", "'SEQUENCE', '3'");

  const Lines before = file.AllRows();
  Changed("lightning://p/Familie", "a", kTitleChanged, "", [](auto& item) { item.DisplayText = "Nachher"; });
  Changed("lightning://p/Familie", "a", kStartChanged, "",
          [](auto& item) { item.DateText = "01.07.2026 08:30"; });
  Changed("lightning://p/Familie", "a", kDataChanged, "DateEnd=", [](auto& item) {
    item.Data = {{"DateEnd", "01.07.2026 09:30"}};
  });
  Changed("lightning://p/Familie", "a", kDataChanged, "Location=", [](auto& item) {
    item.Data = {{"Location", "Dort"}};
  });
  const std::string calendar = LightningFile::kFirst;
  EXPECT_THAT(
      Difference(before, file.AllRows()),
      ElementsAre("-cal_events|1|" + calendar +
                      "|a|1795364577000000|1795364577000000|Vorher|5|PRIVATE|TENTATIVE|470|1781946000000000|"
                      "1781949600000000|1795364577000000|Asia/Tokyo|Asia/Tokyo|NULL|NULL|7|NULL",
                  "-cal_properties|1|a|LOCATION|Hier|NULL|NULL|" + calendar,
                  "+cal_events|1|" + calendar +
                      "|a|1795364577000000|1795366800000000|Nachher|5|PRIVATE|TENTATIVE|470|1782887400000000|"
                      "1782891000000000|1795366800000000|Asia/Tokyo|Asia/Tokyo|NULL|NULL|7|NULL",
                  "+cal_properties|5|a|LOCATION|Dort|NULL|NULL|" + calendar));
}

TEST_F(LightningTest, ChangedTaskKeepsWhatTheTablesOfOldDoNotKnow) {
  LightningFile file = File();
  file.Add("cal_todos",
           "cal_id, id, title, flags, priority, todo_entry, todo_due, todo_completed, todo_complete, "
           "todo_entry_tz, todo_due_tz, todo_completed_tz, ical_status",
           "'" + std::string(LightningFile::kFirst) + "','a','Vorher',260,1," + kNine + "," + kTen + "," +
               kTen + ",50,'UTC','floating','UTC','IN-PROCESS'");
  file.Add("cal_alarms", "cal_id, item_id, icalString",
           "'" + std::string(LightningFile::kFirst) + "','a','x'");
  const Lines difference = Changed("lightning://p/Familie", "a", kTitleChanged, "", [](auto& item) {
    item.TypeText = "task";
    item.DisplayText = "Nachher";
  });
  const std::string kept =
      "1|NULL|IN-PROCESS|260|1781946000000000|1781949600000000|1781949600000000|50|UTC|"
      "floating|UTC|NULL|NULL|NULL|";
  EXPECT_THAT(difference,
              ElementsAre(HasSubstr("|Vorher|" + kept), HasSubstr("|1795366800000000|Nachher|" + kept)));
}

TEST_F(LightningTest, ChangedLocationTakesThePlaceOfTheOld) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "x", kNine, kTen, "UTC", 0);
  const auto at = [](const char* place) { return [=](auto& item) { item.Data = {{"Location", place}}; }; };
  Changed("lightning://p/Familie", "a", kDataChanged, "Location=", at("Hier"));
  Changed("lightning://p/Familie", "a", kDataChanged, "Location=", at("Dort"));
  EXPECT_THAT(file.Rows("SELECT key, value FROM cal_properties"), ElementsAre("LOCATION|Dort"));
  EXPECT_THAT(file.Rows("SELECT flags FROM cal_events"), ElementsAre("4"));
  Changed("lightning://p/Familie", "a", kDataChanged, "Location=", at(""));
  EXPECT_THAT(file.Rows("SELECT key, value FROM cal_properties"), IsEmpty());
}

TEST_F(LightningTest, RemovedEventTakesAllAlongThatTellsOfIt) {
  LightningFile file = File();
  const std::string mine = "'" + std::string(LightningFile::kFirst) + "'";
  const std::string others = "'" + std::string(LightningFile::kSecond) + "'";
  for (const char* id : {"stays", "goes"}) {
    file.AddEvent(LightningFile::kFirst, id, "x", kNine, kTen);
    for (const char* table : {"cal_properties", "cal_parameters", "cal_recurrence", "cal_attendees",
                              "cal_alarms", "cal_relations", "cal_attachments", "cal_metadata"})
      file.Add(table, "cal_id, item_id", mine + ",'" + id + "'");
  }
  file.Add("cal_alarms", "cal_id, item_id", others + ",'goes'");
  const Lines difference = Changed("lightning://p/Familie", "goes", kRemoved, "", [](auto&) {});
  EXPECT_EQ(difference.size(), 9u);
  EXPECT_THAT(difference, testing::Each(testing::AllOf(HasSubstr("goes"), testing::StartsWith("-"))));
  EXPECT_THAT(file.Rows("SELECT count(*) FROM cal_alarms"), ElementsAre("2"));
}

TEST_F(LightningTest, ReadingLeavesEveryByteWhereItIs) {
  { File().AddEvent(LightningFile::kFirst, "a", "x", kNine, kTen); }
  folder_.Write(ProfileFolder("Thunderbird", "p") + "\\calendar-data\\local.sqlite-wal", "");
  const auto before = FolderContent(NativeFile().parent_path());
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_EQ(connector_->Count(), 1);
  EXPECT_EQ(FolderContent(NativeFile().parent_path()), before);
}

TEST_F(LightningTest, FileThatIsNoDatabaseIsNamed) {
  folder_.Write(ProfileFolder("Thunderbird", "p") + "\\calendar-data\\local.sqlite",
                "no database at all, just text");
  EXPECT_EQ(Read("lightning://p/Familie"), LocationState::Unreadable);
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(HasSubstr("local.sqlite: file is not a database")));
}

TEST_F(LightningTest, FileThatMayNotBeWrittenIsReadAndNotSaidToBeInUse) {
  { File().AddEvent(LightningFile::kFirst, "a", "x", kNine, kTen); }
  const auto forbidWriting = [](const std::filesystem::path& path, unsigned mode) {
    std::filesystem::permissions(path, std::filesystem::perms(mode));
  };
  forbidWriting(NativeFile(), 0444);
  for (auto folder = NativeFile().parent_path(); folder != folder_.Native().parent_path();
       folder = folder.parent_path())
    forbidWriting(folder, 0555);
  const AsOrdinaryUser user;
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("a x 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie"));
  EXPECT_THAT(host_.Log.Only({"Global.Report(1001"}), IsEmpty());
  auto item = host_.MakeItem();
  item->IdText = "a";
  item->TypeText = "termin";
  item->DisplayText = "Neu";
  item->Modified = "22.11.2026 18:00:00";
  connector_->RedoAction(item, "20261122180000", kTitleChanged, "");
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(HasSubstr("local.sqlite: attempt to write a readonly database")));
}

TEST_F(LightningTest, ReadingAFileThatMayNotBeWrittenLeavesNothingBesideIt) {
  { File().AddEvent(LightningFile::kFirst, "a", "x", kNine, kTen); }
  const auto folder = NativeFile().parent_path();
  for (auto above = folder; above != folder_.Native().parent_path(); above = above.parent_path())
    std::filesystem::permissions(above, std::filesystem::perms(0777));
  std::filesystem::permissions(NativeFile(), std::filesystem::perms(0444));
  const auto before = FolderContent(folder);
  const AsOrdinaryUser user;
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre("a x 20.06.2026 11:00 - 20.06.2026 12:00 [] Familie"));
  EXPECT_EQ(FolderContent(folder), before);
}

TEST_F(LightningTest, LogThatWasLeftIsReadWhereNothingMayBeWritten) {
  File();
  {
    const ForeignProgram thunderbird(NativeFile());
    thunderbird.Run(
        std::string("INSERT INTO cal_events(cal_id, id, title, event_start, event_end, flags) VALUES('") +
        LightningFile::kFirst + "', 'a', 'Im Log', " + kNine + ", " + kTen + ", 4)");
  }
  std::filesystem::remove(NativeFile() += "-shm");
  for (const char* part : {"", "-wal"})
    std::filesystem::permissions(NativeFile() += part, std::filesystem::perms(0444));
  for (auto folder = NativeFile().parent_path(); folder != folder_.Native().parent_path();
       folder = folder.parent_path())
    std::filesystem::permissions(folder, std::filesystem::perms(0555));
  const AsOrdinaryUser user;
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre(HasSubstr("a Im Log ")));
}

// --- While Thunderbird runs

TEST_F(LightningTest, FileInUseIsReadAsOfAMomentAndNotChanged) {
  { File().AddEvent(LightningFile::kFirst, "a", "Vorher", kNine, kTen); }
  const ForeignProgram thunderbird(NativeFile());
  thunderbird.Run("PRAGMA locking_mode=EXCLUSIVE; UPDATE cal_events SET title='Nur im Log'");
  ASSERT_EQ(Read("lightning://p/"), LocationState::Read);
  EXPECT_THAT(Shown(), ElementsAre(HasSubstr("Nur im Log")));
  EXPECT_THAT(host_.Log.Only({"Global.Report(1001"}),
              testing::Each(HasSubstr("in Gebrauch; gelesen wird der Stand")));
  host_.Log.Clear();
  auto item = host_.MakeItem();
  item->IdText = "a";
  item->TypeText = "termin";
  item->DisplayText = "Neu";
  item->Modified = "22.11.2026 18:00:00";
  connector_->RedoAction(item, "20261122180000", kTitleChanged, "");
  // Not every system tells who holds a lock.
  const std::regex inUse(
      "local.sqlite: in Gebrauch durch (test_[a-z]+ .Prozess [0-9]+.|ein anderes Programm)");
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}),
              ElementsAre(testing::Truly([&](const auto& told) { return std::regex_search(told, inUse); })));
  EXPECT_THAT(host_.Log.Only({"Global.Report(30,\"5<-"}), testing::SizeIs(1));
  thunderbird.Run("UPDATE cal_events SET title='x' WHERE title='Nur im Log'");
}

TEST_F(LightningTest, ChangeWaitsForAProgramThatIsSoonDone) {
  { File().AddEvent(LightningFile::kFirst, "a", "Vorher", kNine, kTen); }
  ASSERT_EQ(Read("lightning://p/Familie"), LocationState::Read);
  std::optional<ForeignLock> other(std::in_place, NativeFile(), 300);
  auto item = host_.MakeItem();
  item->IdText = "a";
  item->TypeText = "termin";
  item->DisplayText = "Nachher";
  item->Modified = "22.11.2026 18:00:00";
  connector_->RedoAction(item, "20261122180000", kTitleChanged, "");
  other.reset();
  EXPECT_THAT(File().Rows("SELECT title FROM cal_events"), ElementsAre("Nachher"));
}

TEST_F(LightningTest, ChangeIsDoneWholeOrNotAtAll) {
  LightningFile file = File();
  file.AddEvent(LightningFile::kFirst, "a", "Vorher", kNine, kTen);
  file.Run("CREATE TRIGGER refuses BEFORE INSERT ON cal_events BEGIN SELECT raise(ABORT, 'not today'); END");
  EXPECT_THAT(Changed("lightning://p/Familie", "a", kAdded, "",
                      [](auto& item) {
                        item.DateText = "20.06.2026 11:00";
                        item.Data = {{"DateEnd", "20.06.2026 12:00"}};
                      }),
              IsEmpty());
  EXPECT_THAT(host_.Log.Only({"Global.Report(27"}), ElementsAre(HasSubstr("local.sqlite: not today")));
}

}  // namespace
}  // namespace vorlent
