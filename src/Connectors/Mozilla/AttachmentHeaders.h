// What the header of an attachment's part says: as much of it as an archive keeps, and the one that is
// written when the attachment goes back into a mailbox.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Common/KeyedList.h"

namespace vorlent {

// The lines "type=" of a mail's attachments in order, each after a line end, made of its parts' raw headers;
// "" where a header tells none. None at all by AttachmentHeaders::Plain (Rules.h).
std::vector<std::string> ContentTypeLines(const KeyedList<std::string>& parts);

// How an attachment's part is headed: the values of the two headers that name it, of which long ones are
// folded, and whether it is a mail, which stands in the part as it is.
struct PartNaming {
  std::string contentType;
  std::string disposition;
  bool isMail = false;
};

// Made of an attachment's description as the host keeps it, by the rules in force. A mail that can't stand as
// it is goes as bytes.
enum class MailForm { AsItIs, AsBytes };
PartNaming NamingOf(std::string_view description, MailForm form = MailForm::AsItIs);

}  // namespace vorlent
