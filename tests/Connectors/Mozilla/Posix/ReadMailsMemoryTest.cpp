#include <gtest/gtest.h>
#include <malloc.h>

#include "Connectors/Mozilla/ReadMails.h"

namespace vorlent {
namespace {

TEST(ReadMailsTest, MailTakesAtMost16Bytes) {
  constexpr std::size_t kMails = 100'000;
  const std::size_t before = mallinfo2().uordblks;
  ReadMails mails;
  for (std::size_t i = 0; i < kMails; ++i) {
    mails.Add(static_cast<std::int32_t>(i), i);
    // Whenever that is asked, beside a first piece.
    if (i % 1000 == 0) {
      EXPECT_LE(mallinfo2().uordblks, before + 2048 + 16 * i);
    }
  }
  EXPECT_LE(mallinfo2().uordblks, before + 16 * kMails);
}

}  // namespace
}  // namespace vorlent
