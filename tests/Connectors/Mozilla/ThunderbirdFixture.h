// What the tests of the mail connector share: profiles on the disk, a recording host, and mails to put there.
#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Common/StdModul.h"
#include "Connectors/Mozilla/Location_Thunderbird.h"
#include "Connectors/Mozilla/ThunderbirdTree.h"
#include "Support/Lines.h"
#include "Support/MailboxBuilder.h"
#include "Support/RecordingHost.h"
#include "Support/RecordingPlatform.h"
#include "Support/RecordingRunObserver.h"

namespace vorlent {

// A mail as it stands in a mailbox, read and dated 09.05.2010 14:30:05.
inline std::string MailOf(const std::string& id, const std::string& subject = "S") {
  return OrdinaryMail{.subject = subject, .id = id, .body = "Text of " + id + "\r\n"}.Bytes();
}

// The status digit of a mail in a mailbox.
inline char StatusOf(const std::string& mailbox, std::size_t offset) {
  constexpr std::string_view kStatus = "X-Mozilla-Status: 000";
  return mailbox[mailbox.find(kStatus, offset) + kStatus.size()];
}

class ThunderbirdFixture : public testing::Test {
 protected:
  ThunderbirdFixture() {
    platform->SetAppData(tree.Path());
    host.Global.TemporaryPath = temporary.Path() + "\\";
  }

  // A connector at an address, before anything is called on it. The one before it is released.
  void Connect(const std::string& address) {
    location = host.MakeLocation(address);
    connector = std::make_shared<Location_Thunderbird>();
    connector->SetLocObject(location);
  }

  // Reads an address.
  LocationState Read(const std::string& address) {
    Connect(address);
    return connector->Einlesen();
  }

  // Runs the stream to its end and gives the records.
  std::vector<std::string> Stream(const TreePtr& keywords = nullptr, bool saveAttachments = false) {
    connector->SourceInit(keywords, saveAttachments);
    std::vector<std::string> records;
    for (std::string record; connector->SourceGetNext(record);) {
      records.push_back(record);
    }
    return records;
  }

  // The record of a mail of MailOf that was read without its files. `size` counts the separator after it,
  // too.
  static std::string RecordOf(const std::string& id, const std::string& subject, const std::string& keywords,
                              std::size_t size, const std::string& file, std::size_t offset) {
    const std::string identity = "20100509143005-" + id + "@x";
    return "ID=" + identity + "|Type=mail|Text=" + subject + "|Keywords=" + keywords +
           "|DataFrom=a@b.c|DataTo=d@e.f|DataAttribute=R|DataSize=" + std::to_string(size) +
           "|Date=09.05.2010 14:30:05|DataFile=" + identity +
           ".eml\\ndate=09.05.2010 14:30:05|Data_SourceFile=" + EscapeValue(file) +
           "|Data_SourceOffset=" + std::to_string(offset) + "|Owner=tester|Log=20100509143005";
  }

  static std::string Report(int code, const std::string& text) {
    return "Global.Report(" + std::to_string(code) + "," + test::Quoted(text) + ",nothing)";
  }

  static std::string Raised(const std::string& text) {
    return "Error.Raise(3,\"VorlentMozilla.Location_Thunderbird\",false," + test::Quoted(text) + ")";
  }

  // What the host hears of a paste, in order. The n-th item is the n-th that was made at all.
  std::vector<std::string> PasteCalls(int number, int counter, const std::string& record) const {
    const std::string item = "item" + std::to_string(number);
    const std::string at = "Location(" + test::Quoted(location->Address) + ")";
    return {item + ".SetLocation(connector)", at + ".SetItemCounter(" + std::to_string(counter) + ")",
            at + ".SetLastItemTimer(52205)", item + ".ImportRecord(" + test::Quoted(record) + ")",
            item + ".SetConnected(true)"};
  }

  // The names in the host's temporary folder.
  std::vector<std::string> TemporaryNames() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(temporary.Native())) {
      names.push_back(entry.path().filename().string());
    }
    return names;
  }

  ScopedRecordingPlatform platform;
  ThunderbirdTree tree;
  TemporaryFolder temporary;
  test::RecordingHost host;
  std::shared_ptr<test::RecordingLocation> location;
  std::shared_ptr<Location_Thunderbird> connector;
};

}  // namespace vorlent
