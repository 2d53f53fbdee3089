#include "Connectors/Mozilla/Location_Thunderbird.h"

#include <utility>

#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Connectors/Mozilla/RecordedMail.h"
#include "Connectors/Mozilla/Thunderbird_Module.h"
#include "Host/RecordKeys.h"

namespace vorlent {

Location_Thunderbird::~Location_Thunderbird() {
  if (!tempFolder_.empty()) Swallow([&] { DeleteFolder(tempFolder_, true, true); });
}

ParameterSettings Location_Thunderbird::Parameters() const {
  return {.condition = "$type=mail", .flags = "LogReadonly", .restrictsAccess = true};
}

std::unique_ptr<StdMail> Location_Thunderbird::GetMailObject() {
  auto mail = std::make_unique<StdMail>();
  if (tempFolder_.empty()) {
    tempFolder_ = HostObjects::Current().Global().TempPath() + NewGuidText() + "\\";
    MakePath(tempFolder_);
  }
  mail->Setmailtmppfad(tempFolder_);
  return mail;
}

void Location_Thunderbird::TellMissing(std::string_view text) {
  HostObjects::Current().Global().ErrorFactory()->Error()->Raise(HostError::kMissing, kProgId, false, text);
}

void Location_Thunderbird::TellMissingAccount(const std::string& profile, const std::string& account) {
  const std::string text = "Account '" + account + "' nicht gefunden!";
  if (profile == kDisks && IsAbsolutePath(account)) {
    HostObjects::Current().Global().ErrorFactory()->Error()->RaiseForDrive(kProgId, text);
  } else {
    TellMissing(text);
  }
}

void Location_Thunderbird::SourceInit(const TreePtr& tr, bool saveattachments) {
  PumpSource source = {[this] { return HostLocation().Name(); }, mailFiles_, mailAddresses_,
                       [this] { return GetMailObject(); }, teller_};
  auto pump = std::make_unique<MailPump>(std::move(source), tr, saveattachments);
  pump->Begin();
  pump_ = std::move(pump);
}

bool Location_Thunderbird::SourceGetNext(std::string& srcitm) {
  if (pump_ == nullptr) throw Failure(ErrorNumber::ObjectNotSet, "no run of the stream has begun");
  return pump_->GetNext(srcitm);
}

void Location_Thunderbird::SourceDelete() {
  if (pump_ != nullptr) pump_->Delete();
}

bool Location_Thunderbird::Withdraw(const ItemPtr& item) {
  const auto mail = GetMailObject();
  const std::string file = item->DataText(data_key::kSourceFile);
  mail->SetMailboxFile(file);
  const std::int64_t offset = Within32(ReadNumber(item->DataText(data_key::kSourceOffset)));
  const RecordedMail recorded(*item);
  // An item without a mailbox has no mail that could have gone from there, and raises.
  if (recorded.IsKnown() && !file.empty()) {
    teller_.Mark(*mail, offset, [&] { return recorded.Is(*mail); });
  } else {
    teller_.Mark(*mail, offset);
  }
  ItemStore().Remove(item->ID());
  return true;
}

std::string Location_Thunderbird::GetFile(const ItemPtr& itm, std::string_view key,
                                          GetFileOption getfileoption) {
  constexpr PartNumber kWholeMail = {-2};
  SetWaitCursor(false);
  const vorlent::Item& item = Require(itm);
  std::string lines = item.DataText(key);
  std::string name = CutLine(lines);
  std::string target = HostObjects::Current().Global().TempPath() + name;
  if (getfileoption == 0) {
    const auto mail = GetMailObject();
    const std::string offset = item.DataText(data_key::kSourceOffset);
    const std::string file = item.DataText(data_key::kSourceFile);
    // The name of an attachment is "<mail>#<number>_<file name>".
    PartNumber part = kWholeMail;
    if (name.find('#') != std::string::npos) {
      CutToken(name, "#");
      part = PartNumber::Of(CutToken(name, "_"));
    }
    mail->SetMailboxFile(file);
    mail->SavePart(target, Within32(ReadNumber(offset)), part, item.Date());
  }
  SetWaitCursor(true);
  return target;
}

}  // namespace vorlent
