// What the header of an attachment's part says: as much of it as an archive keeps, and the one that is
// written when the attachment goes back into a mailbox.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Common/KeyedList.h"

namespace vorlent {

// The lines of a mail's attachments, in order, that tell a host what its description of each is to keep
// beside what the record tells: each begins with a line end, and "" is one of which nothing is kept. Made of
// the parts' raw headers and of the boundaries of the multiparts that they stand in. They are "type=", the
// content type; "contentid=", by which another part refers to it; "disposition=inline", if it is shown with
// the mail; "boundary=". None at all by AttachmentHeaders::Plain (Rules.h).
std::vector<std::string> KeptHeaderLines(const KeyedList<std::string>& parts,
                                         const std::vector<std::string>& boundaries);

// How an attachment's part is headed: the values of the headers, of which long ones are folded and those that
// are "" aren't written, and whether it is a mail, which stands in the part as it is.
struct PartNaming {
  std::string contentType;
  std::string disposition;
  std::string contentId;
  bool isMail = false;
};

// Made of an attachment's description as the host keeps it, by the rules in force. A mail that can't stand as
// it is goes as bytes.
enum class MailForm { AsItIs, AsBytes };
PartNaming NamingOf(std::string_view description, MailForm form = MailForm::AsItIs);

// Whether attachments go back into the multiparts that they stood in.
bool HomesAreKept();
// The boundary of the multipart that an attachment stood in, by its description; "" if that isn't known.
std::string HomeOf(std::string_view description);

}  // namespace vorlent
