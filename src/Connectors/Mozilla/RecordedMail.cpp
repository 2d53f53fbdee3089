#include "Connectors/Mozilla/RecordedMail.h"

#include <cstdint>
#include <string_view>

#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Common/Width.h"
#include "Platform/Failure.h"

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

}  // namespace

RecordedMail::RecordedMail(const Item& item) : size_(item.DataText("Size")) {
  static_assert(kFields == kMailFields.size());
  for (std::size_t i = 0; i < fields_.size(); ++i)
    fields_[i] = FieldOf(item, kMailFields[i]);
}

bool RecordedMail::Is(StdMail& mail) const {
  const std::string record = mail.GetData("", false);
  for (std::size_t i = 0; i < fields_.size(); ++i) {
    if (GetParam(record, kMailFields[i]) != fields_[i]) return false;
  }
  // The recorded size counts the separator of the next mail, if there was one; that may have gone since, or
  // another have come after an empty line.
  const double ownSize = mail.ReadCount() - mail.Ledger().nextSeparatorCount;
  return ownSize <= ReadNumber(size_) + static_cast<double>(kLineEnd.size());
}

Standing StandingOf(const Item& item) {
  const std::string file = item.DataText("_SourceFile");
  if (!FileExists(file)) return Standing::NotThere;
  const RecordedMail recorded(item);
  StdMail mail;
  mail.SetMailboxFile(file);
  std::int32_t offset = 0;
  if (Swallow([&] { offset = ParseInt32(item.DataText("_SourceOffset")); })) {
    const bool isThere = ReadHeaderAt(mail, offset) && !mail.Ledger().hidesOffset && recorded.Is(mail);
    if (!mail.Ledger().IsWhole()) throw Failure(static_cast<int>(ErrorNumber::DeviceIo), mail.Ledger().loss);
    if (isThere) return Standing::AtItsPlace;
  }
  mail.InitStream();
  while (mail.ReadHeader(false)) {
    if (mail.Ledger().hidesOffset && recorded.Is(mail)) return Standing::HidesItsPlace;
  }
  return Standing::NotThere;
}

}  // namespace vorlent
