// The mail that an item was made of.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Connectors/Mozilla/StdMail.h"
#include "Host/Item.h"

namespace vorlent {

// The ID of the mail of a number, from 1, among those of one ID: the first one has the ID itself.
std::string NumberedId(const std::string& id, std::int32_t number);

// Whether the mails of one ID are items of their own.
bool IdsAreNumbered();

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
