#include "Platform/Failure.h"

#include <algorithm>
#include <array>

#include "Platform/CodePage.h"

namespace vorlent {

namespace {

struct HintRow {
  Hint hint;
  std::string_view english;
  TextLiteral german;
};

constexpr std::array kHints = {
    HintRow{Hint::AllowAccess, "Check who may read and write it, and its folder.",
            "Bitte prüfen, wer die Datei und ihren Ordner lesen und schreiben darf."_table},
    HintRow{Hint::MakeWritable, "Take its write protection away, or choose another place.",
            "Bitte den Schreibschutz aufheben oder einen anderen Ort wählen."_table},
    HintRow{Hint::MakeRoom, "Make room on that disk, and try again.",
            "Bitte auf diesem Datenträger Platz schaffen und es noch einmal versuchen."_table},
    HintRow{Hint::MakeFolder, "Make its folder first, or check how the path is written.",
            "Bitte zuerst den Ordner anlegen oder die Schreibweise des Pfads prüfen."_table},
    HintRow{Hint::CloseOther, "Close the program that has it open, and try again.",
            "Bitte das Programm schließen, das die Datei offen hat, und es noch einmal versuchen."_table},
    HintRow{
        Hint::CompactMailbox,
        "Mailboxes can be read up to 2 GB: compact the folder in Thunderbird, or divide it.",
        "Postfächer sind bis 2 GB lesbar: bitte den Ordner in Thunderbird komprimieren oder teilen."_table},
};

// The system's reasons that a person can do something about.
struct ReasonRow {
  std::errc reason;
  Hint hint;
};

constexpr std::array kReasons = {
    ReasonRow{std::errc::permission_denied, Hint::AllowAccess},
    ReasonRow{std::errc::operation_not_permitted, Hint::AllowAccess},
    ReasonRow{std::errc::read_only_file_system, Hint::MakeWritable},
    ReasonRow{std::errc::no_space_on_device, Hint::MakeRoom},
    ReasonRow{std::errc::not_a_directory, Hint::MakeFolder},
    ReasonRow{std::errc::device_or_resource_busy, Hint::CloseOther},
    ReasonRow{std::errc::text_file_busy, Hint::CloseOther},
};

HintRow RowOf(Hint hint) {
  const auto* found = std::ranges::find(kHints, hint, &HintRow::hint);
  return found == kHints.end() ? HintRow{} : *found;
}

}  // namespace

std::string_view EnglishTextOf(Hint hint) {
  return RowOf(hint).english;
}

std::string_view GermanTextOf(Hint hint) {
  return RowOf(hint).german;
}

Hint HintFor(const std::error_code& error) {
  for (const auto& [reason, hint] : kReasons) {
    if (error == reason) return hint;
  }
  return Hint::None;
}

}  // namespace vorlent
