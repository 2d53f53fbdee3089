#include "Connectors/Mozilla/StdMailPart.h"

#include <algorithm>
#include <utility>

#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Common/Width.h"
#include "Platform/CodePage.h"
#include "Platform/Failure.h"
#include "Platform/Rules.h"

namespace vorlent {

std::string_view WithoutTrailingBlanks(std::string_view line) {
  while (line.ends_with(' ') || line.ends_with('\t'))
    line.remove_suffix(1);
  return line;
}

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

namespace {

// Whether a header of this name is stored each time, and then isn't found by its name.
bool StandsWithoutKey(std::string_view name) {
  if (EqualNoCase(name, "address")) return CurrentRules().ownAddress == OwnAddress::IsText;
  return EqualNoCase(name, "received") || EqualNoCase(name, "return-path");
}

}  // namespace

bool StoreHeader(KeyedList<std::string>& headers, std::string text, std::string_view key) {
  if (StandsWithoutKey(key)) {
    headers.Add(std::move(text));
    return true;
  }
  return headers.TryAdd(std::move(text), key) || CurrentRules().repeatedHeaders == RepeatedHeaders::TakeAlong;
}

std::int32_t ReadHexNumber(std::string_view digits) {
  return ToInt32(ReadNumber("&H" + std::string(digits)));
}

bool FirstStatusCounts() {
  return CurrentRules().statusHeaders == StatusHeaders::First;
}

bool IsStatusLine(std::string_view line) {
  constexpr std::string_view kName = "x-mozilla-status";
  if (!BeginsNoCase(line, kName)) return false;
  return line.substr(kName.size()).starts_with(':') ||
         (FirstStatusCounts() && line.find(':') != std::string_view::npos &&
          SplitHeaderLine(line).name.size() == kName.size());
}

std::int32_t ReadStatus(std::string_view headerLine) {
  if (FirstStatusCounts()) return ReadHexNumber(SplitHeaderLine(headerLine).value);
  constexpr std::string_view kName = "x-mozilla-status:";
  return ReadHexNumber(TrimView(headerLine.substr(std::min(headerLine.size(), kName.size()))));
}

std::uint64_t MailPosition(std::int64_t offset) {
  if (offset < 0) throw Failure(ErrorNumber::InvalidCall, "no mail at offset " + std::to_string(offset));
  return static_cast<std::uint64_t>(Within32(static_cast<std::uint64_t>(offset) + 1));
}

std::string BoundaryIn(std::string_view contentType) {
  if (CurrentRules().boundaries == Boundaries::Exact) return GetHeaderParam(contentType, "boundary");
  std::string boundary;
  Swallow([&] { boundary = GetHeaderParam(contentType, "boundary"); });
  return boundary;
}

// RFC 2046: a boundary line may end in blanks.
BoundaryPair::BoundaryPair(std::string_view boundary)
    : endsInBlanks_(CurrentRules().boundaries == Boundaries::Rfc2046) {
  if (endsInBlanks_) boundary = WithoutTrailingBlanks(boundary);
  if (endsInBlanks_ && boundary.empty()) return;
  opening_ = "--" + std::string(boundary);
  closing_ = opening_ + "--";
}

std::string_view BoundaryPair::Comparable(std::string_view line) const {
  return endsInBlanks_ ? WithoutTrailingBlanks(line) : line;
}

namespace {

// Whether another part shows this one, which then stays with it in the mail.
bool IsReferredTo(const std::string& partHeader) {
  const std::string header = LowerCase(partHeader);
  return header.starts_with("content-id:") || header.find("\ncontent-id:") != std::string::npos;
}

// Its parts are brought out, and not all of them as one file.
bool IsMultipart(const std::string& partHeader) {
  return GetPartContentType(partHeader).starts_with("multipart/") && !GetPartBoundary(partHeader).empty();
}

// RFC 2183: what isn't meant to be shown with the mail is an attachment; so is what can't be.
bool IsAttachment(const std::string& partHeader) {
  const std::string type = GetPartContentType(partHeader);
  if (type.starts_with("multipart/")) return false;
  if (GetPartDisposition(partHeader) == "attachment" || type == "message/rfc822") return true;
  return !IsReferredTo(partHeader) && !type.empty() && !type.starts_with("text/") &&
         !type.starts_with("message/");
}

// Programs know a file by its ending, which mostly is the name of the type's second half.
std::string EndingFor(const std::string& partHeader) {
  const std::string type = GetPartContentType(partHeader);
  if (type == "message/rfc822") return ".eml";
  if (type.empty() || type == "text/plain") return ".txt";
  constexpr std::size_t kLongest = 5;
  const std::string ending = type.substr(type.find('/') + 1);
  const bool isPlain = std::ranges::all_of(ending, [](char c) { return c >= 'a' && c <= 'z'; });
  return isPlain && ending.size() <= kLongest ? "." + ending : "";
}

// Spares nearly all mails the decoding of their headers: they are text that is to be read.
bool MayBeSoleFile(const KeyedList<std::string>& headers) {
  for (const std::string& header : headers) {
    if (header.empty() || (header.front() != 'C' && header.front() != 'c')) continue;
    if (BeginsNoCase(header, "content-disposition")) return true;
    if (BeginsNoCase(header, "content-type") && !BeginsNoCase(SplitHeaderLine(header).value, "text/"))
      return true;
  }
  return false;
}

// RFC 2045: the fields that tell what content is begin so. No other part shows a whole mail by its ID.
std::string ContentFields(const KeyedList<std::string>& headers) {
  std::string fields;
  for (const std::string& header : headers) {
    if (BeginsNoCase(header, "content-") && !BeginsNoCase(header, "content-id"))
      fields.append(header).append(kLineEnd);
  }
  return fields;
}

}  // namespace

bool SoleFilesAreAttached() {
  return CurrentRules().soleFiles == SoleFiles::Attached;
}

std::string HeaderOfSoleFile(const KeyedList<std::string>& headers) {
  if (!SoleFilesAreAttached() || !MayBeSoleFile(headers)) return {};
  std::string fields = ContentFields(headers);
  const std::string type = GetPartContentType(fields);
  const bool isText = type.empty() || type.starts_with("text/");
  if (type.starts_with("multipart/") || type.starts_with("message/")) return {};
  if (isText && GetPartDisposition(fields) != "attachment") return {};
  constexpr std::int32_t kPosition = 1;
  return AttachmentName(fields, kPosition).empty() ? "" : fields;
}

std::string AttachmentName(const std::string& partHeader, std::int32_t position) {
  if (CurrentRules().namelessParts == NamelessParts::Inline) return GetPartFileName(partHeader);
  std::string name;
  Swallow([&] {
    if (!IsMultipart(partHeader)) name = GetPartFileName(partHeader);
  });
  if (name.empty() && IsAttachment(partHeader))
    name = "part" + std::to_string(position) + EndingFor(partHeader);
  return name;
}

}  // namespace vorlent
