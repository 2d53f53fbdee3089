// What the header of an attachment's part says: as much of it as an archive keeps, and the one that is
// written when the attachment goes back into a mailbox.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Common/KeyedList.h"

namespace vorlent {

// Plain, which is the component's own: an archive is told no content type, and every attachment goes back as
// "application/octet-stream" under the name of its "file=" line. AsSent: the descriptions of attachments that
// are archived get a line "type=", and attachments go back with that type and under the name that the sender
// gave them.
enum class AttachmentHeaders { Plain, AsSent };

// What the host has chosen for all imports and restores; Plain before.
AttachmentHeaders ChosenAttachmentHeaders();
void ChooseAttachmentHeaders(AttachmentHeaders headers);

// The lines "type=" of a mail's attachments in order, each after a line end, made of its parts' raw headers;
// "" where a header tells none. Nothing at all while the choice is Plain.
std::vector<std::string> ContentTypeLines(const KeyedList<std::string>& parts);

// The values of the two headers that name an attachment; long ones are folded.
struct PartNaming {
  std::string contentType;
  std::string disposition;
};

// Made of an attachment's description as the host keeps it, according to the choice.
PartNaming NamingOf(std::string_view description);

}  // namespace vorlent
