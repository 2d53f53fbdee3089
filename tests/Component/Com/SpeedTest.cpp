// What the way over COM costs a reader of mails.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <string>

#include "Component/Com/HostedTest.h"
#include "Component/Component.h"
#include "Host/Connector.h"
#include "Support/MailboxBuilder.h"
#include "Support/RecordingHost.h"

namespace vorlent::com {
namespace {

// How many mails are read in each way: the usual run is a short one.
int Mails() {
  constexpr int kUsual = 1000;
  const char* const given = std::getenv("VORLENT_MAILS");
  return given == nullptr ? kUsual : std::atoi(given);
}

double SecondsOf(const std::function<void()>& step) {
  const auto start = std::chrono::steady_clock::now();
  step();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

class SpeedTest : public HostedTest {
 protected:
  void SetUp() override {
    std::string body;
    for (int line = 0; line < 30; ++line)
      body += "A line of a text as long as most lines are in mails\r\n";
    std::string mailbox;
    for (int mail = 0; mail < Mails(); ++mail)
      mailbox += OrdinaryMail{.id = std::to_string(mail), .body = body}.Bytes();
    const std::string path = folder_.Write("Inbox", mailbox);
    std::string below = path.substr(3);
    std::replace(below.begin(), below.end(), '\\', '/');
    address_ = "thunderbird://./" + path.substr(0, 1) + "/" + below;
  }

  std::string address_;
};

// A stream of mails that is read without COM, beside a host without it.
class DirectStream {
 public:
  DirectStream(const std::string& address, const std::string& temp) {
    host_.Global.TemporaryPath = temp;
    connector_ =
        std::dynamic_pointer_cast<MailConnector>(CreateObject("VorlentMozilla.Location_Thunderbird"));
    connector_->SetLocObject(host_.MakeLocation(address));
    connector_->InitLocation(address);
    connector_->SourceInit(nullptr, false);
  }

  bool Next() {
    std::string record;
    return connector_->SourceGetNext(record) && !record.empty();
  }

 private:
  test::RecordingHost host_;
  std::shared_ptr<MailConnector> connector_;
};

// One that is read over COM, beside a host over COM.
class ComStream {
 public:
  ComStream(const ComPtr<_Location_Thunderbird>& connector, const ComPtr<ScriptedObject>& location,
            const std::string& address)
      : connector_(connector) {
    connector_->putref_LocObject(reinterpret_cast<_Location*>(static_cast<IDispatch*>(location.Get())));
    BSTR file = NewBstr(address);
    VARIANT_BOOL isWhole = VARIANT_FALSE, saves = VARIANT_FALSE;
    connector_->InitLocation(&file, &isWhole);
    SysFreeString(file);
    _Tree* noTree = nullptr;
    connector_->SourceInit(&noTree, &saves);
  }
  ComStream(const ComStream&) = delete;
  ComStream& operator=(const ComStream&) = delete;
  ~ComStream() { connector_->putref_LocObject(nullptr); }

  bool Next() {
    BSTR record = nullptr;
    VARIANT_BOOL isThere = VARIANT_FALSE;
    const HRESULT status = connector_->SourceGetNext(&record, &isThere);
    const bool isWhole = status == S_OK && isThere != VARIANT_FALSE && SysStringLen(record) > 0;
    SysFreeString(record);
    return isWhole;
  }

 private:
  ComPtr<_Location_Thunderbird> connector_;
};

// Both are read in turn, some mails at a time, so that whatever else the machine does slows both.
TEST_F(SpeedTest, StreamOverComTakesAtMostAThirdLonger) {
  constexpr int kAtATime = 50;
  DirectStream direct(address_, folder_.Path("temp") + "\\");
  ComStream com(New<_Location_Thunderbird>(__uuidof(::Location_Thunderbird)), host_->NewLocation(address_),
                address_);
  double directly = 0, overCom = 0;
  for (int mails = 0; mails < Mails(); mails += kAtATime) {
    host_->calls.clear();
    directly += SecondsOf([&] {
      for (int i = 0; i < kAtATime; ++i)
        EXPECT_TRUE(direct.Next());
    });
    overCom += SecondsOf([&] {
      for (int i = 0; i < kAtATime; ++i)
        EXPECT_TRUE(com.Next());
    });
  }
  EXPECT_FALSE(direct.Next());
  EXPECT_FALSE(com.Next());
  std::cout << Mails() << " mails: direct " << directly << " s, over COM " << overCom << " s\n";
  EXPECT_LT(overCom, directly * 4 / 3);
}

}  // namespace
}  // namespace vorlent::com
