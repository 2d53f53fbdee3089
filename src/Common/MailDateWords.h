// The date of a mail as whatever program wrote it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vorlent {

// The fields of a mail date as they are written, the month as a number, and "hh:mm:ss zone" for the time.
struct MailDateFields {
  std::string day;
  std::string month;
  std::string year;
  std::string time;
};

// Reads a date word by word: a month's name in any case and length, numbers in any order in which they mean
// something, the forms of ISO 8601 and with slashes, the clocks of 12 and 24 hours. Other words are passed
// over. Nothing for a text that tells no day.
std::optional<MailDateFields> ReadDateWords(std::string_view text);

}  // namespace vorlent
