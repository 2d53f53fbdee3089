#include "Connectors/Mozilla/RecordedMail.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "Common/StdModul.h"
#include "Common/TextWriter.h"
#include "Common/Width.h"
#include "Host/RecordKeys.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

constexpr char kNumberMark = '~';

// What two mails differ in, while it stays with a mail that is read again: as an item has it, and in the same
// order as a record has it. The ID tells the date, which is shown in the zone that the system is in.
using MailFields = std::array<std::string, RecordedMail::kFields>;

MailFields FieldsOf(const Item& item) {
  return {item.ID(),
          item.Text(),
          item.DataText(data_key::kFrom),
          item.DataText(data_key::kTo),
          item.DataText(data_key::kCc),
          item.DataText(data_key::kBcc),
          item.DataText(data_key::kEnvelopeTo)};
}

MailFields FieldsIn(std::string_view record) {
  const auto field = [&](std::string_view key) { return GetParam(record, key); };
  const auto data = [&](std::string_view name) {
    return GetParam(record, std::string(record_key::kDataPrefix).append(name));
  };
  return {field(record_key::kId), field(record_key::kText), data(data_key::kFrom),      data(data_key::kTo),
          data(data_key::kCc),    data(data_key::kBcc),     data(data_key::kEnvelopeTo)};
}

// Whether an ID is that of a later mail of one ID.
bool IsNumbered(std::string_view numbered, std::string_view id) {
  if (!numbered.starts_with(id)) return false;
  numbered.remove_prefix(id.size());
  return numbered.size() > 1 && numbered.front() == kNumberMark &&
         numbered.find_first_not_of("0123456789", 1) == std::string_view::npos;
}

}  // namespace

std::string NumberedId(const std::string& id, std::int32_t number) {
  return number == 1 ? id : id + kNumberMark + std::to_string(number);
}

bool IdsAreNumbered() {
  return CurrentRules().equalIds == EqualIds::Numbered;
}

void MailIds::NoteExpunged(const std::vector<std::string>& ids) {
  for (const std::string& id : ids)
    ++expunged_[LowerCase(id)];
}

std::string MailIds::WithIdOfItsOwn(std::string record, const IsTaken& isTaken) {
  if (!IdsAreNumbered()) return record;
  const std::size_t begin = record_key::kId.size() + 1;
  const std::string id = record.substr(begin, record.find('|') - begin);
  const std::string key = LowerCase(id);
  const bool hasOther = isTaken(id);
  if (!hasOther && !mails_.contains(key) && !expunged_.contains(key)) return record;
  // The mail that has the ID itself may not have been counted yet.
  std::int32_t& number = mails_.try_emplace(key, hasOther ? 1 : 0).first->second;
  // A number stays with its mail when one before it in the mailbox is marked as deleted.
  if (const auto expunged = expunged_.extract(key)) number += expunged.mapped();
  std::string own;
  do {
    own = NumberedId(id, ++number);
  } while (isTaken(own));
  return record.replace(begin, id.size(), own);
}

std::optional<NumberedMail> MailOfNumberedId(std::string_view numbered) {
  const std::size_t mark = std::min(numbered.rfind(kNumberMark), numbered.size());
  NumberedMail mail = {std::string(numbered.substr(0, mark)), 0};
  if (!IdsAreNumbered() || !IsNumbered(numbered, mail.id)) return std::nullopt;
  if (!Swallow([&] { mail.number = ParseInt32(numbered.substr(mark + 1)); }) || mail.number < 1)
    return std::nullopt;
  return mail;
}

RecordedMail::RecordedMail(const Item& item)
    : fields_(FieldsOf(item)), size_(item.DataText(data_key::kSize)) {}

bool RecordedMail::Is(StdMail& mail) const {
  MailFields fields = FieldsIn(mail.GetData("", false));
  if (IsNumbered(fields_.front(), fields.front())) fields.front() = fields_.front();
  if (fields != fields_) return false;
  // By the rules of old the recorded size counts the separator of the next mail, if there was one. That may
  // have gone since, or another have come after an empty line.
  const double ownSize = mail.ReadCount() - mail.Ledger().nextSeparatorCount;
  return ownSize <= ReadNumber(size_) + static_cast<double>(kLineEnd.size());
}

Standing StandingOf(const Item& item) {
  const std::string file = item.DataText(data_key::kSourceFile);
  if (!FileExists(file)) return Standing::NotThere;
  const RecordedMail recorded(item);
  StdMail mail;
  mail.SetMailboxFile(file);
  std::int64_t offset = 0;
  if (Swallow([&] { offset = Within32(ParseNumber(item.DataText(data_key::kSourceOffset))); })) {
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
