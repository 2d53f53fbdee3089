#include "Standalone/StandaloneTree.h"

#include <gtest/gtest.h>

#include <chrono>

#include "Standalone/ItemOf.h"
#include "Standalone/StandaloneItem.h"

namespace vorlent {
namespace {

// The tree as indented lines of node texts, each with the IDs of its items after it.
std::string Drawn(const Tree& node, int depth = 0) {
  std::string lines(static_cast<std::size_t>(depth), ' ');
  lines += "'" + node.Text() + "'";
  for (const ItemPtr& item : node.Items())
    lines += " " + item->ID();
  lines += "\n";
  for (const TreePtr& child : node.Children())
    lines += Drawn(*child, depth + 1);
  return lines;
}

class StandaloneTreeTest : public ::testing::Test {
 protected:
  void Add(std::string_view record) { root_->AddItem(ItemOf(record)); }

  std::shared_ptr<StandaloneTree> root_ = std::make_shared<StandaloneTree>();
};

TEST_F(StandaloneTreeTest, ANewRootIsEmpty) {
  EXPECT_EQ(root_->Text(), "");
  EXPECT_EQ(root_->Description(), "");
  EXPECT_EQ(root_->ItemCount(), 0);
  EXPECT_EQ(root_->ChildCount(), 0);
}

TEST_F(StandaloneTreeTest, ItemsAreFiledUnderTheNodeOfTheirKeywordsElseTheNearestAbove) {
  const TreePtr account = root_->AddChild("Account 'x'", "Account=x");
  account->AddChild("Inbox", "Inbox")->AddChild("Sub", "Sub");
  Add("ID=1|Keywords=Account=x,Inbox,Sub");
  Add("ID=2|Keywords=Account=x,Inbox");
  Add("ID=3|Keywords=Account=x,Sent");
  Add("ID=4|Keywords=Account=x,Inbox,Sub,Deeper,Still");
  Add("ID=5|Keywords=Account=y,Inbox");
  Add("ID=6");
  EXPECT_EQ(Drawn(*root_), "'' 5 6\n 'Account 'x'' 3\n  'Inbox' 2\n   'Sub' 1 4\n");
}

TEST_F(StandaloneTreeTest, AnUnnamedTopNodeIsPassedThrough) {
  const TreePtr unnamed = root_->AddChild("", "");
  const TreePtr menu = unnamed->AddChild("Menu", "Menu");
  menu->AddChild("Sub", "Sub");
  Add("ID=1|Keywords=Menu,Sub");
  Add("ID=2|Keywords=Menu");
  Add("ID=3|Keywords=");
  Add("ID=4|Keywords=Elsewhere");
  EXPECT_EQ(Drawn(*root_), "''\n '' 3 4\n  'Menu' 2\n   'Sub' 1\n");
}

TEST_F(StandaloneTreeTest, AnUnnamedFolderFurtherDownIsAStepOfItsOwn) {
  const TreePtr menu = root_->AddChild("", "")->AddChild("Menu", "Menu");
  menu->AddChild("", "")->AddChild("Sub", "Sub");
  Add("ID=1|Keywords=Menu,,Sub");
  Add("ID=2|Keywords=Menu,");
  EXPECT_EQ(Drawn(*root_), "''\n ''\n  'Menu'\n   '' 2\n    'Sub' 1\n");
}

TEST_F(StandaloneTreeTest, AKeywordWithACommaIsFoundAgain) {
  root_->AddChild("", "")->AddChild("a,b", "a,b")->AddChild("c", "c");
  Add("ID=1|Keywords=a,b");
  Add("ID=2|Keywords=a,b,c");
  EXPECT_EQ(Drawn(*root_), "''\n ''\n  'a,b' 1\n   'c' 2\n");
}

TEST_F(StandaloneTreeTest, OfTwoNodesOfOnePathTheFirstGetsTheItems) {
  root_->AddChild("Dup", "Dup");
  root_->AddChild("Dup", "Dup");
  Add("ID=1|Keywords=Dup");
  EXPECT_EQ(Drawn(*root_), "''\n 'Dup' 1\n 'Dup'\n");
}

TEST_F(StandaloneTreeTest, ACalendarsNodeTakesTheItemsOfThatDataField) {
  root_->AddChild("Calendar 'Home'", "Calendar=Home");
  root_->AddChild("Calendar 'Work'", "Calendar=Work");
  Add("ID=1|Type=termin|DataCalendar=Work");
  Add("ID=2|Type=task|DataCalendar=Home");
  Add("ID=3|Type=task|DataCalendar=Else");
  EXPECT_EQ(Drawn(*root_), "'' 3\n 'Calendar 'Home'' 2\n 'Calendar 'Work'' 1\n");
}

TEST_F(StandaloneTreeTest, ItemsKeepTheOrderInWhichTheyWereFiled) {
  root_->AddChild("a", "a");
  for (const char* id : {"3", "1", "2"})
    Add("Keywords=a|ID=" + std::string(id));
  EXPECT_EQ(Drawn(*root_), "''\n 'a' 3 1 2\n");
}

TEST_F(StandaloneTreeTest, ClearItemsKeepsTheNodes) {
  root_->AddChild("a", "a")->AddChild("b", "b");
  Add("ID=1|Keywords=a,b");
  Add("ID=2");
  root_->ClearItems();
  EXPECT_EQ(Drawn(*root_), "''\n 'a'\n  'b'\n");
}

TEST_F(StandaloneTreeTest, ClearRemovesAllNodesForGood) {
  const TreePtr held = root_->AddChild("a", "a");
  root_->Clear();
  held->AddChild("b", "b");
  Add("ID=1|Keywords=a,b");
  EXPECT_EQ(Drawn(*root_), "'' 1\n");
  root_->AddChild("a", "a");
  Add("ID=2|Keywords=a");
  EXPECT_EQ(Drawn(*root_), "'' 1\n 'a' 2\n");
}

TEST_F(StandaloneTreeTest, ClearOfANodeLeavesTheOthers) {
  const TreePtr a = root_->AddChild("a", "a");
  a->AddChild("b", "b")->AddChild("c", "c");
  root_->AddChild("d", "d");
  a->Clear();
  Add("ID=1|Keywords=a,b,c");
  Add("ID=2|Keywords=d");
  EXPECT_EQ(Drawn(*root_), "''\n 'a' 1\n 'd' 2\n");
  a->AddChild("b", "b");
  Add("ID=3|Keywords=a,b");
  EXPECT_EQ(Drawn(*root_), "''\n 'a' 1\n  'b' 3\n 'd' 2\n");
}

TEST_F(StandaloneTreeTest, AKeywordPathMakesOnlyTheNodesThatAreMissing) {
  root_->AddChild("Account 'x'", "Account=x");
  root_->AddKeywordPath("Account=x,Inbox,Sub");
  root_->AddKeywordPath("Account=x,Inbox");
  root_->AddKeywordPath("");
  root_->AddKeywordPath(",Disk,,Dir");
  EXPECT_EQ(Drawn(*root_), "''\n 'Account 'x''\n  'Inbox'\n   'Sub'\n 'Disk'\n  'Dir'\n");
  Add("ID=1|Keywords=Account=x,Inbox,Sub");
  EXPECT_EQ(root_->Children().Item(1)->Children().Item(1)->Children().Item(1)->ItemCount(), 1);
}

TEST_F(StandaloneTreeTest, ANodeFilesItemsBelowItself) {
  const TreePtr a = root_->AddChild("a", "a");
  a->AddChild("b", "b");
  a->AddItem(ItemOf("ID=1|Keywords=b"));
  a->AddItem(ItemOf("ID=2|Keywords=x"));
  EXPECT_EQ(Drawn(*root_), "''\n 'a' 2\n  'b' 1\n");
}

TEST_F(StandaloneTreeTest, NothingCantBeFiled) {
  EXPECT_THROW(root_->AddItem(nullptr), Failure);
}

TEST_F(StandaloneTreeTest, TheDescriptionIsWhatTheHostWasTold) {
  root_->SetDescription("PERSONAL_TOOLBAR_FOLDER=\"true\"\r\nLeiste");
  EXPECT_EQ(root_->Description(), "PERSONAL_TOOLBAR_FOLDER=\"true\"\r\nLeiste");
}

TEST_F(StandaloneTreeTest, AHundredThousandItemsInFiveThousandNodesAreFiledFast) {
  for (int i = 0; i < 5000; ++i) {
    root_->AddKeywordPath("Top,Folder" + std::to_string(i / 50) + ",Leaf" + std::to_string(i));
  }
  std::vector<ItemPtr> items;
  for (int i = 0; i < 100000; ++i) {
    const int leaf = i % 5000;
    items.push_back(
        ItemOf("Keywords=Top,Folder" + std::to_string(leaf / 50) + ",Leaf" + std::to_string(leaf)));
  }
  const auto start = std::chrono::steady_clock::now();
  for (const ItemPtr& item : items)
    root_->AddItem(item);
  const auto took = std::chrono::steady_clock::now() - start;
  const TreePtr folder = root_->Children().Item(1)->Children().Item(100);
  EXPECT_EQ(folder->Children().Item(50)->ItemCount(), 20);
  EXPECT_EQ(folder->ItemCount(), 0);
  // A walk over all children at each level would take minutes.
  EXPECT_LT(took, std::chrono::seconds(5));
}

}  // namespace
}  // namespace vorlent
