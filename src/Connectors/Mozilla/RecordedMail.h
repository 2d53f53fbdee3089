// The mail that an item was made of.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "Connectors/Mozilla/StdMail.h"
#include "Host/Item.h"

namespace vorlent {

// The ID of the mail of a number, from 1, among those of one ID: the first one has the ID itself.
std::string NumberedId(const std::string& id, std::int32_t number);

// Whether the mails of one ID are items of their own.
bool IdsAreNumbered();

// Gives mails that are read one after the other IDs of their own, where IDs are numbered.
class MailIds {
 public:
  // Nothing was read.
  void Clear() { mails_.clear(); }
  void BeginMailbox() { expunged_.clear(); }
  // These came in the mailbox since the mail before.
  void NoteExpunged(const std::vector<std::string>& ids);
  // The record of the next mail with an ID that isn't taken. The ID is the record's first field.
  using IsTaken = std::function<bool(std::string_view)>;
  std::string WithIdOfItsOwn(std::string record, const IsTaken& isTaken);

 private:
  // How many mails were read, by the ID in lower case; none of an ID that only one mail has had.
  std::unordered_map<std::string, std::int32_t> mails_;
  // As mails_, all expunged ones of the mailbox at hand that no mail of their ID has followed.
  std::unordered_map<std::string, std::int32_t> expunged_;
};

// A mail among those of one ID.
struct NumberedMail {
  std::string id;
  std::int32_t number;
};
// The one that a numbered ID names; nothing for another ID, and where IDs aren't numbered.
std::optional<NumberedMail> MailOfNumberedId(std::string_view numbered);

// Known again by what an item keeps of the mail's record.
class RecordedMail {
 public:
  static constexpr std::size_t kFields = 7;

  explicit RecordedMail(const Item& item);

  // Whether the item was made of a mail's record, which tells the size of each.
  bool IsKnown() const { return !size_.empty(); }

  // Whether it is the mail that a reader has at hand. One that grew is another, as it may have been on its
  // way still when the record was made.
  bool Is(StdMail& mail) const;

 private:
  std::array<std::string, kFields> fields_;
  std::string size_;
};

// Where the mail of an item stands, as the item tells.
enum class Standing {
  AtItsPlace,
  HidesItsPlace,  // a header Address of its own takes the item to another place
  NotThere,       // it has changed, was marked as deleted, or has gone
};

// A mailbox that can't be opened or read raises; one that is missing has no mail.
Standing StandingOf(const Item& item);

}  // namespace vorlent
