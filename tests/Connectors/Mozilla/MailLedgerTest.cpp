#include "Connectors/Mozilla/MailLedger.h"

#include <gtest/gtest.h>

namespace vorlent {
namespace {

TEST(MailLedgerTest, MailIsWholeUntilALossIsNotedAndTheFirstReasonIsKept) {
  MailLedger ledger;
  EXPECT_TRUE(ledger.IsWhole());
  ledger.NoteLoss({.reason = "first"});
  ledger.NoteLoss({.reason = "second"});
  EXPECT_FALSE(ledger.IsWhole());
  EXPECT_EQ(ledger.loss.Text(), "first");
}

TEST(MailLedgerTest, FileOfAFieldLiesWhereItsDescriptionSaysUnlessItStayed) {
  MailLedger ledger;
  ledger.unmoved["FileAttach2"] = "C:\\tmp\\att2";
  EXPECT_EQ(ledger.FileAt("FileAttach1", "C:\\tmp\\a"), "C:\\tmp\\a");
  EXPECT_EQ(ledger.FileAt("FileAttach2", "C:\\tmp\\.."), "C:\\tmp\\att2");
}

}  // namespace
}  // namespace vorlent
