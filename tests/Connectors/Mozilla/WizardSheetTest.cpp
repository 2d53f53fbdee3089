#include "Connectors/Mozilla/WizardSheet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "Platform/Failure.h"

namespace vorlent {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> Texts(const Sheet& sheet) {
  std::vector<std::string> texts;
  for (std::int32_t i = 1; i <= sheet.RowCount(); ++i)
    texts.push_back(sheet.Row(i).Text());
  return texts;
}

SheetRow& Add(Sheet& sheet, std::string_view text, std::int16_t indent = 0,
              std::int32_t position = Sheet::kAppend) {
  return sheet.AddRow(text, "file", indent, false, position, "");
}

TEST(WizardSheetTest, RowKeepsWhatItWasAddedWith) {
  Sheet sheet;
  const SheetRow& row = sheet.AddRow("text", "icon", 3, false, -1, "a\nb", CheckState::Ticked);
  EXPECT_EQ(row.Text(), "text");
  EXPECT_EQ(row.Icon(), "icon");
  EXPECT_EQ(row.Indent(), 3);
  EXPECT_EQ(row.Tag(), "a\nb");
  EXPECT_EQ(row.State(), CheckState::Ticked);
  EXPECT_FALSE(row.Expanded());
  EXPECT_EQ(row.Index(), 1);
  EXPECT_EQ(&sheet.Row(1), &row);
}

TEST(WizardSheetTest, CheckStateLeftOutIsNotTicked) {
  Sheet sheet;
  EXPECT_EQ(Add(sheet, "a").State(), CheckState::Clear);
  EXPECT_EQ(static_cast<int>(CheckState::Clear), 1);
  EXPECT_EQ(static_cast<int>(CheckState::Ticked), 2);
}

TEST(WizardSheetTest, PositionMinusOneAppendsAndAnyOtherInsertsInFront) {
  Sheet sheet;
  Add(sheet, "b");
  Add(sheet, "d");
  Add(sheet, "a", 0, 1);
  Add(sheet, "c", 0, 3);
  Add(sheet, "e", 0, 5);
  EXPECT_THAT(Texts(sheet), ElementsAre("a", "b", "c", "d", "e"));
  for (std::int32_t i = 1; i <= 5; ++i)
    EXPECT_EQ(sheet.Row(i).Index(), i);
}

TEST(WizardSheetTest, PositionsWithoutARowAreRefused) {
  Sheet sheet;
  const auto refused = [](const std::function<void()>& step) { return SwallowedNumber(step) == 9; };
  EXPECT_TRUE(refused([&] { sheet.Row(1); }));
  EXPECT_TRUE(refused([&] { sheet.RemoveRow(1); }));
  EXPECT_TRUE(refused([&] { Add(sheet, "x", 0, 2); }));
  Add(sheet, "a");
  EXPECT_TRUE(refused([&] { sheet.Row(0); }));
  EXPECT_TRUE(refused([&] { sheet.Row(2); }));
  EXPECT_TRUE(refused([&] { sheet.RemoveRow(0); }));
  EXPECT_TRUE(refused([&] { sheet.RemoveRow(2); }));
  EXPECT_TRUE(refused([&] { Add(sheet, "x", 0, 0); }));
  EXPECT_TRUE(refused([&] { Add(sheet, "x", 0, -2); }));
  EXPECT_TRUE(refused([&] { Add(sheet, "x", 0, 3); }));
  EXPECT_THAT(Texts(sheet), ElementsAre("a"));
}

TEST(WizardSheetTest, RemovalClosesTheRanks) {
  Sheet sheet;
  for (const char* text : {"a", "b", "c", "d"})
    Add(sheet, text);
  sheet.RemoveRow(2);
  EXPECT_THAT(Texts(sheet), ElementsAre("a", "c", "d"));
  EXPECT_EQ(sheet.Row(3).Index(), 3);
  sheet.RemoveRow(3);
  sheet.RemoveRow(1);
  sheet.RemoveRow(1);
  EXPECT_THAT(Texts(sheet), IsEmpty());
  Add(sheet, "z");
  EXPECT_THAT(Texts(sheet), ElementsAre("z"));
}

TEST(WizardSheetTest, ClearRowsEmptiesTheSheet) {
  Sheet sheet;
  for (const char* text : {"a", "b", "c"})
    Add(sheet, text);
  sheet.RemoveRow(1);
  sheet.ClearRows();
  EXPECT_EQ(sheet.RowCount(), 0);
  Add(sheet, "d");
  Add(sheet, "e", 0, 1);
  EXPECT_THAT(Texts(sheet), ElementsAre("e", "d"));
}

TEST(WizardSheetTest, FirstChildIsTheNextRowIfIndentedDeeper) {
  Sheet sheet;
  SheetRow& root = Add(sheet, "root", 0);
  SheetRow& child = Add(sheet, "child", 1);
  SheetRow& deep = Add(sheet, "deep", 4);
  SheetRow& other = Add(sheet, "other", 0);
  EXPECT_EQ(root.FirstChild(), &child);
  EXPECT_EQ(child.FirstChild(), &deep);
  EXPECT_EQ(deep.FirstChild(), nullptr);
  EXPECT_EQ(other.FirstChild(), nullptr);
}

TEST(WizardSheetTest, SerialsTellARowFromOneThatTookItsPlace) {
  Sheet sheet;
  const auto first = Add(sheet, "a").Serial();
  sheet.RemoveRow(1);
  EXPECT_NE(Add(sheet, "a").Serial(), first);
  sheet.ClearRows();
  EXPECT_NE(Add(sheet, "a").Serial(), first);
}

TEST(WizardSheetTest, TickingTellsTheRowAndItsNewState) {
  Sheet sheet;
  SheetRow& row = Add(sheet, "a");
  std::vector<std::string> events;
  sheet.OnCheckChanged = [&](SheetRow& ticked, SheetRow*, CheckState state) {
    EXPECT_EQ(ticked.State(), state);
    events.push_back(ticked.Text() + std::to_string(static_cast<int>(state)));
  };
  sheet.UserTicks(row, CheckState::Ticked);
  sheet.UserTicks(row, CheckState::Ticked);
  sheet.UserTicks(row, CheckState::Clear);
  EXPECT_THAT(events, ElementsAre("a2", "a1"));
}

TEST(WizardSheetTest, OpeningTellsTheRowAndClosingDoesNot) {
  Sheet sheet;
  SheetRow& row = Add(sheet, "a");
  int opened = 0;
  sheet.OnRowExpanded = [&](SheetRow& expanded) {
    EXPECT_TRUE(expanded.Expanded());
    ++opened;
  };
  sheet.UserOpens(row);
  sheet.UserOpens(row);
  EXPECT_EQ(opened, 1);
  sheet.UserCloses(row);
  EXPECT_FALSE(row.Expanded());
  EXPECT_EQ(opened, 1);
  sheet.UserOpens(row);
  EXPECT_EQ(opened, 2);
}

TEST(WizardSheetTest, DisabledSheetTakesNothingFromTheUser) {
  Sheet sheet;
  SheetRow& row = Add(sheet, "a");
  row.SetExpanded(true);
  int events = 0;
  sheet.OnCheckChanged = [&](SheetRow&, SheetRow*, CheckState) { ++events; };
  sheet.OnRowExpanded = [&](SheetRow&) { ++events; };
  sheet.SetEnabled(false);
  sheet.UserTicks(row, CheckState::Ticked);
  sheet.UserCloses(row);
  sheet.UserOpens(row);
  EXPECT_EQ(row.State(), CheckState::Clear);
  EXPECT_TRUE(row.Expanded());
  EXPECT_EQ(events, 0);
}

TEST(WizardSheetTest, ViewHearsOfEveryChangeOfRows) {
  Sheet sheet;
  int changes = 0;
  sheet.OnRowsChange = [&] { ++changes; };
  SheetRow& row = Add(sheet, "a");
  EXPECT_EQ(changes, 1);
  row.SetExpanded(true);
  row.SetExpanded(true);
  EXPECT_EQ(changes, 2);
  sheet.UserTicks(row, CheckState::Ticked);
  EXPECT_EQ(changes, 3);
  sheet.RefreshRows();
  EXPECT_EQ(changes, 4);
  sheet.RemoveRow(1);
  EXPECT_EQ(changes, 5);
  sheet.ClearRows();
  EXPECT_EQ(changes, 6);
}

TEST(WizardSheetTest, LayoutIsTheControlsOwnAndNoMatterOfRows) {
  Sheet sheet;
  int controlChanges = 0;
  int rowChanges = 0;
  sheet.OnChange = [&] { ++controlChanges; };
  sheet.OnRowsChange = [&] { ++rowChanges; };
  sheet.SetRowLayout(260);
  EXPECT_EQ(sheet.RowLayout(), 260);
  EXPECT_EQ(controlChanges, 1);
  Add(sheet, "a");
  EXPECT_EQ(controlChanges, 1);
  EXPECT_EQ(rowChanges, 1);
}

TEST(WizardSheetTest, ShapeTellsWhetherRowsCameOrWent) {
  Sheet sheet;
  const std::uint64_t empty = sheet.Shape();
  SheetRow& row = Add(sheet, "a");
  const std::uint64_t one = sheet.Shape();
  EXPECT_NE(one, empty);
  sheet.UserTicks(row, CheckState::Ticked);
  row.SetExpanded(true);
  sheet.RefreshRows();
  EXPECT_EQ(sheet.Shape(), one);
  sheet.RemoveRow(1);
  EXPECT_NE(sheet.Shape(), one);
  EXPECT_NE(sheet.Shape(), empty);
}

// The gap buffer against the obvious list.
TEST(WizardSheetTest, AnyMixOfInsertionsAndRemovalsKeepsTheOrder) {
  std::mt19937 random(20100509);
  for (int round = 0; round < 20; ++round) {
    Sheet sheet;
    std::vector<std::string> model;
    for (int step = 0; step < 300; ++step) {
      const auto pick = [&](std::size_t count) { return static_cast<std::size_t>(random() % count); };
      if (!model.empty() && random() % 3 == 0) {
        const std::size_t at = pick(model.size());
        sheet.RemoveRow(static_cast<std::int32_t>(at) + 1);
        model.erase(model.begin() + static_cast<std::ptrdiff_t>(at));
      } else {
        const std::size_t at = random() % 4 == 0 ? model.size() : pick(model.size() + 1);
        const std::string text = std::to_string(step);
        Add(sheet, text, 0, at == model.size() && step % 2 == 0 ? -1 : static_cast<std::int32_t>(at) + 1);
        model.insert(model.begin() + static_cast<std::ptrdiff_t>(at), text);
      }
    }
    ASSERT_EQ(Texts(sheet), model) << "round " << round;
    for (std::int32_t i = 1; i <= sheet.RowCount(); ++i)
      ASSERT_EQ(sheet.Row(i).Index(), i);
  }
}

TEST(WizardSheetTest, ThousandsOfRowsBelowOneComeAndGoAtOnce) {
  Sheet sheet;
  for (int i = 0; i < 5000; ++i)
    Add(sheet, "top");
  SheetRow& parent = sheet.Row(2500);
  const auto start = std::chrono::steady_clock::now();
  std::int32_t position = parent.Index() + 1;
  for (int i = 0; i < 5000; ++i) {
    Add(sheet, "folder", 1, position++);
    Add(sheet, "...", 2, position++);
  }
  EXPECT_EQ(sheet.RowCount(), 15000);
  while (SheetRow* child = parent.FirstChild())
    sheet.RemoveRow(child->Index());
  EXPECT_EQ(sheet.RowCount(), 5000);
  // Quadratic work would take seconds; the bound leaves room for a busy machine and a sanitizer.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
  EXPECT_EQ(parent.Index(), 2500);
}

}  // namespace
}  // namespace vorlent
