#include "Connectors/Mozilla/StdMailPart.h"

#include <algorithm>
#include <utility>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/CodePage.h"

namespace vorlent {

HeaderLine SplitHeaderLine(std::string_view line) {
  const std::size_t colon = line.find(':');
  if (colon == std::string_view::npos) return {TrimView(line), {}};
  return {TrimView(line.substr(0, colon)), TrimView(line.substr(colon + 1))};
}

bool BeginsNoCase(std::string_view line, std::string_view prefix) {
  return line.size() >= prefix.size() && EqualNoCase(line.substr(0, prefix.size()), prefix);
}

std::string TakeLastHeader(KeyedList<std::string>& headers) {
  std::string last = std::move(headers.Item(headers.Count()));
  headers.Remove(headers.Count());
  return last;
}

void StoreHeader(KeyedList<std::string>& headers, std::string text, std::string_view key) {
  if (EqualNoCase(key, "received") || EqualNoCase(key, "return-path")) {
    headers.Add(std::move(text));
  } else if (!headers.HasKey(key)) {
    headers.Add(std::move(text), key);
  }
}

std::int32_t ReadHexNumber(std::string_view digits) {
  return ToInt32(ReadNumber("&H" + std::string(digits)));
}

std::int32_t ReadStatus(std::string_view headerLine) {
  constexpr std::string_view kName = "x-mozilla-status:";
  return ReadHexNumber(TrimView(headerLine.substr(std::min(headerLine.size(), kName.size()))));
}

std::uint64_t MailPosition(std::int32_t offset) {
  const std::int32_t position = ToInt32(std::int64_t{offset} + 1);
  if (position < 1) throw Failure(ErrorNumber::InvalidCall, "no mail at offset " + std::to_string(offset));
  return static_cast<std::uint64_t>(position);
}

void ReadPartEncoding(std::string_view line, PartEncoding& encoding) {
  const HeaderLine header = SplitHeaderLine(line);
  if (!EqualNoCase(header.name, "content-transfer-encoding")) return;
  encoding = EqualNoCase(header.value, "base64")             ? PartEncoding::Base64
             : EqualNoCase(header.value, "quoted-printable") ? PartEncoding::QuotedPrintable
                                                             : PartEncoding::None;
}

void PartContent::WriteLine(TextWriter& file, std::string_view line, PartEncoding encoding) {
  switch (encoding) {
    case PartEncoding::Base64:
      Base64DecodeToFile(file, line);
      break;
    case PartEncoding::QuotedPrintable:
      // RFC 2045: a "=" at the end is a soft line break, which is no part of the content.
      if (line.ends_with('=')) {
        QuotedPrintableDecodeInto(line.substr(0, line.size() - 1), decoded_);
        file.Write(decoded_);
      } else {
        QuotedPrintableDecodeInto(line, decoded_);
        file.WriteLine(decoded_);
      }
      break;
    case PartEncoding::None:
      file.WriteLine(line);
      break;
  }
}

BoundaryPair::BoundaryPair(std::string_view boundary)
    : opening_("--" + std::string(boundary)), closing_(opening_ + "--") {}

}  // namespace vorlent
