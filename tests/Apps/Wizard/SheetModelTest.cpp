#include "Apps/Wizard/SheetModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <random>

namespace vorlent::wizard {
namespace {

using testing::ElementsAre;

SheetRow& Add(Sheet& sheet, std::string_view text, std::int16_t indent,
              std::int32_t position = Sheet::kAppend, CheckState state = CheckState::Clear) {
  return sheet.AddRow(text, "file", indent, false, position, "", state);
}

// The tree as "text(child,child)".
std::string Show(const SheetModel& model, const QModelIndex& parent = {}) {
  std::string shown;
  for (int row = 0; row < model.rowCount(parent); ++row) {
    const QModelIndex index = model.index(row, 0, parent);
    if (row > 0) shown += ',';
    shown += model.data(index, Qt::DisplayRole).toString().toStdString();
    if (model.rowCount(index) > 0) shown += "(" + Show(model, index) + ")";
  }
  return shown;
}

class SheetModelTest : public testing::Test {
 protected:
  Sheet sheet;
};

TEST_F(SheetModelTest, RowsStandBelowTheNearestRowThatIsIndentedLess) {
  Add(sheet, "a", 0);
  Add(sheet, "b", 1);
  Add(sheet, "c", 4);
  Add(sheet, "d", 2);
  Add(sheet, "e", 1);
  Add(sheet, "f", 0);
  const SheetModel model(sheet, {}, nullptr);
  EXPECT_EQ(Show(model), "a(b(c,d),e),f");
}

TEST_F(SheetModelTest, RowShowsTextTickAndIcon) {
  sheet.AddRow("B\xFCro", "file", 0, false, -1, "", CheckState::Ticked);
  sheet.AddRow("...", "", 0, false, -1, "");
  QPixmap pixmap(16, 16);
  const SheetModel model(sheet, QIcon(pixmap), nullptr);
  const QModelIndex first = model.index(0, 0);
  const QModelIndex second = model.index(1, 0);
  EXPECT_EQ(model.data(first, Qt::DisplayRole).toString(), QString("Büro"));
  EXPECT_EQ(model.data(first, Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_EQ(model.data(second, Qt::CheckStateRole).toInt(), Qt::Unchecked);
  EXPECT_TRUE(model.data(first, Qt::DecorationRole).isValid());
  EXPECT_FALSE(model.data(second, Qt::DecorationRole).isValid());
  EXPECT_TRUE(model.flags(first) & Qt::ItemIsUserCheckable);
}

TEST_F(SheetModelTest, RowsBelowOneComeAndGoInOneRun) {
  SheetRow& parent = Add(sheet, "a", 0);
  Add(sheet, "...", 1);
  Add(sheet, "z", 0);
  SheetModel model(sheet, {}, nullptr);
  QSignalSpy inserted(&model, &QAbstractItemModel::rowsInserted);
  QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
  sheet.RemoveRow(2);
  for (int i = 0; i < 3; ++i)
    Add(sheet, std::to_string(i), 1, i + 2);
  EXPECT_EQ(Show(model), "a(...),z") << "nothing is shown before it is taken over";
  model.Sync();
  EXPECT_EQ(Show(model), "a(0,1,2),z");
  ASSERT_EQ(inserted.count(), 1);
  EXPECT_EQ(inserted[0][1].toInt(), 0);
  EXPECT_EQ(inserted[0][2].toInt(), 2);
  EXPECT_EQ(removed.count(), 1);
  while (SheetRow* child = parent.FirstChild())
    sheet.RemoveRow(child->Index());
  model.Sync();
  EXPECT_EQ(Show(model), "a,z");
  EXPECT_EQ(removed.count(), 2);
}

TEST_F(SheetModelTest, TickIsHandedOnAndShownOnceTheSheetHasIt) {
  SheetRow& row = Add(sheet, "a", 0);
  SheetModel model(sheet, {}, nullptr);
  QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
  std::vector<CheckState> ticks;
  model.OnTick = [&](SheetRow& ticked, CheckState state) {
    EXPECT_EQ(&ticked, &row);
    ticks.push_back(state);
  };
  const QModelIndex index = model.index(0, 0);
  EXPECT_TRUE(model.setData(index, Qt::Checked, Qt::CheckStateRole));
  EXPECT_THAT(ticks, ElementsAre(CheckState::Ticked));
  EXPECT_EQ(model.data(index, Qt::CheckStateRole).toInt(), Qt::Unchecked);
  sheet.UserTicks(row, CheckState::Ticked);
  model.Sync();
  EXPECT_EQ(model.data(index, Qt::CheckStateRole).toInt(), Qt::Checked);
  EXPECT_EQ(changed.count(), 1);
  EXPECT_FALSE(model.setData(index, "x", Qt::EditRole));
  EXPECT_FALSE(model.setData({}, Qt::Checked, Qt::CheckStateRole));
}

TEST_F(SheetModelTest, RowsThatOpenAndCloseAreTold) {
  SheetRow& row = Add(sheet, "a", 0);
  Add(sheet, "b", 1);
  SheetModel model(sheet, {}, nullptr);
  std::vector<std::string> told;
  model.OnExpanded = [&](const QModelIndex& index, bool expanded) {
    told.push_back(index.data().toString().toStdString() + (expanded ? " open" : " closed"));
  };
  row.SetExpanded(true);
  model.Sync();
  model.Sync();
  row.SetExpanded(false);
  model.Sync();
  EXPECT_THAT(told, ElementsAre("a open", "a closed"));
}

TEST_F(SheetModelTest, AnyMixOfChangesIsFollowed) {
  std::mt19937 engine(42);
  const auto random = [&engine](int below) {
    return std::uniform_int_distribution<int>(0, below - 1)(engine);
  };
  SheetModel model(sheet, {}, nullptr);
  const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
  for (int round = 0; round < 200; ++round) {
    for (int step = random(6); step > 0; --step) {
      const std::int32_t count = sheet.RowCount();
      if (count > 0 && random(5) < 2) {
        sheet.RemoveRow(random(count) + 1);
      } else {
        Add(sheet, std::to_string(round), static_cast<std::int16_t>(random(4)), random(count + 1) + 1);
      }
    }
    if (random(40) == 0) sheet.ClearRows();
    model.Sync();
    const SheetModel fresh(sheet, {}, nullptr);
    ASSERT_EQ(Show(model), Show(fresh)) << "round " << round;
  }
}

}  // namespace
}  // namespace vorlent::wizard
