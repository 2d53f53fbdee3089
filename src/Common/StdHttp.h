// The text codecs of mail, in spite of the name: URL, base64, quoted-printable, UTF-8, encoded words, header
// parameters, dates.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "Common/TextWriter.h"

namespace vorlent {

// --- URL (StdHttpUrl.cpp) ----------------------------------------------------------------------------------

// Unsafe characters as %XX.
std::string UrlEncode(std::string_view s);

// "+" as a blank, %XX as its character. A "%" after position 32,767 is an overflow.
std::string UrlDecode(std::string_view s);

// --- Transfer encodings (StdHttpEncodings.cpp) -------------------------------------------------------------

// 0 to 63, -1 for a character outside the alphabet.
int Base64Value(std::string_view character);

// No resynchronising: a foreign character is a group member without value. More than 32,767 characters are an
// overflow.
std::string Base64Decode(std::string_view s);

// Base64Decode that writes to an open file.
void Base64DecodeToFile(TextWriter& file, std::string_view s);

// Base64 text without line breaks.
std::string Base64Encode(std::string_view bytes);

// "_" as a blank, =XX as its byte. Anything but hexadecimal digits after "=" raises TypeMismatch.
std::string QuotedPrintableDecode(std::string_view s);

// QuotedPrintableDecode into a buffer that is reused: replaces `out`, which must not hold `s`.
void QuotedPrintableDecodeInto(std::string_view s, std::string& out);

// "=", "_" and the control characters encoded.
std::string QuotedPrintableEncode(std::string_view s);

// --- Characters and headers (StdHttpHeaders.cpp) -----------------------------------------------------------

// UTF-8 bytes as text is held. As code page lenient; characters that the page doesn't hold become "?".
std::string Utf8Decode(std::string_view s);

// Text as UTF-8 bytes. Of the code page only the euro sign is mapped, other characters are taken for their
// code.
std::string Utf8Encode(std::string_view s);

// A header value with its encoded words (RFC 2047) decoded and its line ends removed. By the standards
// nothing raises, here and in the next.
std::string DecodeEncodedWords(std::string_view s);

// The decoded value of a parameter of a header value; `name` in lower case.
std::string GetHeaderParam(std::string_view value, std::string_view name);

// Attachment file name of a part; "" means that the part is no attachment.
std::string GetPartName(std::string_view headerBlock);
// The same made safe for a file system.
std::string GetPartFileName(std::string_view headerBlock);

// Content type, disposition and transfer encoding up to the first ";", as written; by the standards
// (HeaderValues in Platform/Rules.h) in lower case and without comments, and a content type
// that is none is "".
std::string GetPartContentType(std::string_view headerBlock);
std::string GetPartDisposition(std::string_view headerBlock);
std::string GetPartEncoding(std::string_view headerBlock);

// The boundary of a part that is a multipart itself, "" for others.
std::string GetPartBoundary(std::string_view headerBlock);

// The charset of a part's content type, "" if it has none.
std::string GetPartCharset(std::string_view headerBlock);

// --- Dates (StdHttpMailDate.cpp) ---------------------------------------------------------------------------

// Display text of a mail date, whose zone is ignored; "" for a text that is none, of which the rules of old
// make some date.
std::string MailDateToDisplay(std::string s);

// Display text of a mail date as a person is shown it: the same, or by the person's own clock (MailTimes in
// Platform/Rules.h).
std::string ShownMailDate(std::string s);

}  // namespace vorlent
