// A mailbox on the disk with a reader, for the tests of the mail engine.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "Common/LineFile.h"
#include "Common/StdHttp.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Platform/Failure.h"
#include "Platform/Files.h"
#include "Platform/Rules.h"
#include "Support/MailboxBuilder.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/TemporaryFolder.h"

namespace vorlent {

// The header lines that every ordinary mail has.
inline constexpr std::string_view kPlainHeaders =
    "X-Mozilla-Status: 0001\n"
    "Date: Sun, 9 May 2010 14:30:05 +0200\n"
    "Message-ID: <m1@host>\n"
    "From: a@b.c\n"
    "To: d@e.f\n"
    "Subject: Hello\n";

// Headers of a multipart mail of boundary "B".
inline const std::string kMixedHeaders =
    std::string(kPlainHeaders) + "Content-Type: multipart/mixed; boundary=\"B\"\n";

class StdMailTest : public testing::Test {
 protected:
  StdMailTest() {
    mail_.SetMailboxFile(folder_.Path("Inbox"));
    mail_.Setmailtmppfad(folder_.MakeFolder("tmp") + "\\");
    NoThunderbirdCheck() = false;
  }
  ~StdMailTest() override { ChooseRules(Rules::Windows()); }

  // Writes the mailbox and opens it. Line feeds in the text stay what they are.
  StdMail& Open(std::string_view mailbox, std::int16_t saveflag = 0) {
    folder_.Write("Inbox", mailbox);
    mail_.InitStream(saveflag);
    return mail_;
  }

  // As above, with line feeds in the text standing for CR LF.
  StdMail& OpenLines(std::string_view mailbox, std::int16_t saveflag = 0) {
    return Open(Crlf(mailbox), saveflag);
  }

  std::string TempFile(std::string_view name) { return folder_.Read("tmp\\" + std::string(name)); }
  bool HasTempFile(std::string_view name) { return folder_.Exists("tmp\\" + std::string(name)); }
  std::string Mailbox() { return folder_.Read("Inbox"); }

  // The header lines of the store, in order.
  std::vector<std::string> Stored() { return Texts(mail_.Headers()); }
  static std::vector<std::string> Texts(const StdMail::TextListPtr& list) {
    std::vector<std::string> texts;
    for (const std::string& text : *list)
      texts.push_back(text);
    return texts;
  }

  TemporaryFolder folder_;
  ScopedRecordingPlatform platform_;
  test::RecordingHost host_;
  StdMail mail_;
};

// The number of the failure that a step raises, 0 if it succeeds.
inline int NumberOf(const std::function<void()>& step) {
  return SwallowedNumber(step);
}

}  // namespace vorlent
