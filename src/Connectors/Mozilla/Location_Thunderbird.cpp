#include "Connectors/Mozilla/Location_Thunderbird.h"

#include <array>

#include "Common/NumberText.h"
#include "Common/StdModul.h"
#include "Common/Width.h"

namespace vorlent {

namespace {

// The fields of a record in which two mails differ, while they stay with a mail that is read again.
constexpr std::array<std::string_view, 8> kMailFields = {"ID",     "Text",   "Date",    "DataFrom",
                                                         "DataTo", "DataCC", "DataBCC", "DataEnvelopeTo"};

std::string FieldOf(const Item& item, std::string_view field) {
  if (field == "ID") return item.ID();
  if (field == "Text") return item.Text();
  if (field == "Date") return item.Date();
  return item.DataText(field.substr(4));
}

// What an item keeps of its mail.
class KeptMail {
 public:
  explicit KeptMail(const Item& item) : size_(item.DataText("Size")) {
    for (std::size_t i = 0; i < fields_.size(); ++i)
      fields_[i] = FieldOf(item, kMailFields[i]);
  }

  // Whether the item was made of a mail's record, which tells the size of each.
  bool IsThere() const { return !size_.empty(); }

  // Whether it is the mail that a reader has at hand. The size counts the separator of the mail behind, and
  // there may be one only now.
  bool Is(StdMail& mail) const {
    const std::string record = mail.GetData("", false);
    for (std::size_t i = 0; i < fields_.size(); ++i) {
      if (GetParam(record, kMailFields[i]) != fields_[i]) return false;
    }
    return size_ == NumberText(mail.ReadCount()) ||
           size_ == NumberText(mail.ReadCount() - mail.NextSeparatorCount());
  }

 private:
  std::array<std::string, kMailFields.size()> fields_;
  std::string size_;
};

}  // namespace

Location_Thunderbird::~Location_Thunderbird() {
  if (!tempFolder_.empty()) DeleteFolder(tempFolder_, true, true);
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
  constexpr std::int32_t kMissing = 3;
  HostObjects::Current().Global().ErrorFactory()->Error()->Raise(kMissing, kProgId, false, text);
}

bool Location_Thunderbird::Withdraw(const ItemPtr& item) {
  const auto mail = GetMailObject();
  mail->SetMailboxFile(item->DataText("_SourceFile"));
  const std::int32_t offset = ToInt32(ReadNumber(item->DataText("_SourceOffset")));
  const KeptMail kept(*item);
  if (kept.IsThere()) {
    teller_.Mark(*mail, offset, [&] { return kept.Is(*mail); });
  } else {
    teller_.Mark(*mail, offset);
  }
  ItemStore().Remove(item->ID());
  return true;
}

std::string Location_Thunderbird::GetFile(const ItemPtr& itm, std::string_view key,
                                          GetFileOption getfileoption) {
  constexpr std::int16_t kWholeMail = -2;
  SetWaitCursor(false);
  const vorlent::Item& item = Require(itm);
  std::string lines = item.DataText(key);
  std::string name = CutLine(lines);
  std::string target = HostObjects::Current().Global().TempPath() + name;
  if (getfileoption == 0) {
    const auto mail = GetMailObject();
    const std::string offset = item.DataText("_SourceOffset");
    const std::string file = item.DataText("_SourceFile");
    // The name of an attachment is "<mail>#<number>_<file name>".
    std::int16_t attachment = kWholeMail;
    if (name.find('#') != std::string::npos) {
      CutToken(name, "#");
      attachment = ToInt16(ReadNumber(CutToken(name, "_")));
    }
    mail->SetMailboxFile(file);
    mail->SaveAttachmentFile(target, ToInt32(ReadNumber(offset)), attachment, item.Date());
  }
  SetWaitCursor(true);
  return target;
}

}  // namespace vorlent
