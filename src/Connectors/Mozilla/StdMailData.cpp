// The item record of a mail.
#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Common/NumberText.h"
#include "Common/StdHttp.h"
#include "Common/StdModul.h"
#include "Connectors/Mozilla/FolderNames.h"
#include "Connectors/Mozilla/StdMail.h"
#include "Connectors/Mozilla/StdMailPart.h"
#include "Host/FileKeys.h"
#include "Host/HostObjects.h"
#include "Host/RecordKeys.h"
#include "Platform/Charsets.h"
#include "Platform/CodePage.h"
#include "Platform/Files.h"
#include "Platform/Rules.h"

namespace vorlent {

namespace {

// Bits of the status.
constexpr std::int32_t kRead = 1;
constexpr std::int32_t kFlagged = 4;

// The value that a step makes, "" if the step fails.
template <class Step>
std::string ValueOf(Step&& step) {
  std::string value;
  Swallow([&] { value = std::forward<Step>(step)(); });
  return value;
}

bool NamesAreAsSent() {
  return CurrentRules().attachmentHeaders == AttachmentHeaders::AsSent;
}

// A name in one line, as control characters say nothing.
std::string InOneLine(std::string name) {
  std::ranges::replace_if(
      name, [](char c) { return codepage::Code(c) < ' '; }, ' ');
  return name;
}

// The name of an attachment as the sender gave it, as a line of the description; "" if the part's header has
// none. By the rules of old it is what stands there, up to the end of the word or of the line.
std::string OriginalFileLine(std::string_view header) {
  if (NamesAreAsSent()) {
    std::string name;
    Swallow([&] { name = GetPartName(header); });
    return name.empty() ? "" : "\noriginalfile=" + InOneLine(name);
  }
  for (const std::string_view mark : {"filename=", "name="}) {
    const std::size_t found = header.find(mark);
    if (found == std::string_view::npos) continue;
    std::string rest(header.substr(found + mark.size()));
    std::string line = CutLine(rest);
    return "\noriginalfile=" + FromCharset(CutWord(line), "");
  }
  return {};
}

}  // namespace

// Writes one record. Every step is guarded by itself: one that fails leaves its field empty, or absent where
// the field is optional.
class StdMail::RecordWriter {
 public:
  RecordWriter(StdMail& mail, bool saveattachments) : mail_(mail), saved_(saveattachments) {}

  std::string Write(std::string_view kw);

 private:
  void Add(std::string_view key, std::string_view value) { AppendField(record_, key, value); }
  void AddData(std::string_view name, std::string_view value) { AppendDataField(record_, name, value); }
  void AddDataIfAny(std::string_view name, std::string_view value) {
    if (!value.empty()) AddData(name, value);
  }
  void AddAttachments();

  std::string Decoded(std::string_view header) const;
  std::string Identity() const;
  double Size() const;
  std::string Attributes() const;
  std::string DescribeMailFile(std::string_view savedName, std::string_view extension) const;
  std::string DescribeAttachment(std::int32_t position, const std::string& name);
  std::string NumberOf(std::int32_t position) const;
  std::string NameToBe(std::int32_t position, const std::string& name) const;
  std::string MoveAttachment(std::int32_t position, const std::string& name);
  std::string PathFor(const std::string& name, const std::string& source);
  void NoteUnmoved(const std::string& source, const std::string& name) const;

  StdMail& mail_;
  const bool saved_;
  std::int32_t number_ = 0;  // of the attachment at hand
  // The number that the last file of a name in lower case was given. Those below it are taken.
  std::unordered_map<std::string, int> lastNumbers_;
  std::string record_;
  std::string date_;
  std::string identity_;
};

std::string StdMail::GetData(std::string_view kw, bool saveattachments) {
  return RecordWriter(*this, saveattachments).Write(kw);
}

std::string StdMail::RecordWriter::Write(std::string_view kw) {
  mail_.ledger_.unmoved.clear();
  date_ = ValueOf([&] { return mail_.GetDate(); });
  identity_ = ValueOf([&] { return Identity(); });
  Add(record_key::kId, identity_);
  Add(record_key::kType, "mail");
  Add(record_key::kText, Decoded("subject"));
  Add(record_key::kKeywords, KeywordsOfRecord(kw));
  AddData(data_key::kFrom, Decoded("from"));
  AddData(data_key::kTo, Decoded("to"));
  AddDataIfAny(data_key::kCc, Decoded("cc"));
  AddDataIfAny(data_key::kBcc, Decoded("bcc"));
  AddData(data_key::kAttribute, ValueOf([&] { return Attributes(); }));
  AddData(data_key::kSize, NumberText(Size()));
  Add(record_key::kDate, date_);
  AddData(kMailFileKey, ValueOf([&] { return DescribeMailFile("mail.eml", ".eml"); }));
  if (mail_.hasHTML_) AddData(kHtmlFileKey, ValueOf([&] { return DescribeMailFile("mail.html", ".html"); }));
  AddAttachments();
  if (!mail_.GetHeader("envelope-to", true).empty()) AddData(data_key::kEnvelopeTo, Decoded("envelope-to"));
  if (!saved_) {
    AddData(data_key::kSourceFile, EscapeValue(mail_.mailboxFile_));
    AddData(data_key::kSourceOffset, mail_.GetHeader("Address"));
  }
  Add(record_key::kOwner, ValueOf([] { return HostObjects::Current().Global().UserName(); }));
  Add(record_key::kLog, ValueOf([] { return NowStamp(); }));
  return std::move(record_);
}

// Numbers the parts that have a file name, without gaps. Positions are held in 16 bits; a mail's parts beyond
// them can't be told.
void StdMail::RecordWriter::AddAttachments() {
  const TextList& parts = *mail_.attachments_;
  const std::int32_t last = std::min<std::int32_t>(parts.Count(), std::numeric_limits<std::int16_t>::max());
  if (saved_ && parts.Count() > last)
    mail_.ledger_.NoteLoss({.reason = "it has more parts than can be told"});
  for (std::int32_t position = 1; position <= last; ++position) {
    const std::string name = ValueOf([&] { return AttachmentName(parts.Item(position), position); });
    if (name.empty()) continue;
    ++number_;
    AddData(std::string(kAttachmentKey).append(std::to_string(number_)),
            ValueOf([&] { return DescribeAttachment(position, name); }));
  }
}

std::string StdMail::RecordWriter::Decoded(std::string_view header) const {
  return ValueOf([&] { return EscapeValue(DecodeEncodedWords(mail_.GetHeader(header))); });
}

// It has the sender's time in any case, so that a mail keeps it in every zone.
std::string StdMail::RecordWriter::Identity() const {
  const std::string sent = mail_.SentDate();
  const std::string stamp = sent.empty() ? "00000000000000" : DisplayToStamp(sent);
  std::string identity = stamp + "-" + FromCharset(mail_.GetHeader("message-id"), "");
  std::erase_if(identity,
                [](char c) { return std::string_view("%\\/:*?\"<>| #_").find(c) != std::string_view::npos; });
  return identity;
}

// By the rules of old with the separator of the next mail.
double StdMail::RecordWriter::Size() const {
  const bool isItsOwn = CurrentRules().readAhead == ReadAhead::Keeps;
  return mail_.readCount_ - (isItsOwn ? mail_.ledger_.nextSeparatorCount : 0);
}

std::string StdMail::RecordWriter::Attributes() const {
  const std::int32_t status = ReadHexNumber(mail_.GetHeader("x-mozilla-status"));
  std::string attributes;
  if ((status & kRead) != 0) attributes += 'R';
  if ((status & kFlagged) != 0) attributes += 'P';
  return attributes;
}

// A saved file with its properties; or, as there is none, the name to be used when it is made.
std::string StdMail::RecordWriter::DescribeMailFile(std::string_view savedName,
                                                    std::string_view extension) const {
  if (!saved_) {
    return EscapeValue(EncodeFileName(identity_ + std::string(extension)) + "\ndate=" + date_);
  }
  const std::string path = mail_.mailtmppfad_ + std::string(savedName);
  return EscapeValue(path + "\nfile=" + std::string(savedName) + "\ndate=" + date_ + mail_.GetFileInfo(path));
}

std::string StdMail::RecordWriter::DescribeAttachment(std::int32_t position, const std::string& name) {
  const std::string original = OriginalFileLine(mail_.attachments_->Item(position));
  if (saved_) return EscapeValue(MoveAttachment(position, name) + "\ndate=" + date_ + original);
  return EscapeValue(NameToBe(position, name) + "\ndate=" + date_ + original);
}

// The name was made safe once already; by the rules of old it is so again.
std::string StdMail::RecordWriter::NameToBe(std::int32_t position, const std::string& name) const {
  const std::string front = identity_ + "#" + NumberOf(position) + "_";
  return NamesAreAsSent() ? EncodeFileName(front) + name : EncodeFileName(front + name);
}

// By which the part is brought out. Where the mail was split into files, its position.
std::string StdMail::RecordWriter::NumberOf(std::int32_t position) const {
  const auto index = static_cast<std::size_t>(position) - 1;
  const std::vector<PartNumber>& numbers = mail_.partNumbers_;
  return index < numbers.size() ? numbers[index].Text() : std::to_string(position);
}

// Where the attachment in the file `source` goes. By the rules of old two files of one name are one file, so
// that the earlier one's content goes.
std::string StdMail::RecordWriter::PathFor(const std::string& name, const std::string& source) {
  const std::string path = mail_.mailtmppfad_ + name;
  if (CurrentRules().sameNames == SameNames::OneFile || EqualNoCase(path, source)) return path;
  const std::size_t dot = std::min(path.rfind('.'), path.size());
  const std::size_t end = dot > mail_.mailtmppfad_.size() ? dot : path.size();
  int& number = lastNumbers_.try_emplace(LowerCase(name), 1).first->second;
  const auto numbered = [&] {
    return number == 1 ? path : path.substr(0, end) + " (" + std::to_string(number) + ")" + path.substr(end);
  };
  std::string free = numbered();
  while (FileExists(free) && !EqualNoCase(free, source)) {
    ++number;
    free = numbered();
  }
  return free;
}

// Gives a temporary file the attachment's own name, and describes it. The name was made safe once already and
// is so again: the "%" of the first time becomes "%25".
std::string StdMail::RecordWriter::MoveAttachment(std::int32_t position, const std::string& name) {
  const std::string source = mail_.mailtmppfad_ + "att" + std::to_string(position);
  const std::string path = PathFor(EncodeFileName(GetFileName(name)), source);
  if (!EqualNoCase(path, source)) {
    if (FileExists(path))
      mail_.ledger_.NoteLoss({.reason = "one of two files called '" + name + "' is lost"});
    MoveFile(path, source);
  }
  mail_.AddTempfile(path);
  const std::string info = mail_.GetFileInfo(path);
  if (info.empty()) NoteUnmoved(source, name);
  return path + "\nfile=" + name + info;
}

// No file can be called "..", or by a name that is too long. The attachment is there all the same.
void StdMail::RecordWriter::NoteUnmoved(const std::string& source, const std::string& name) const {
  if (FileExists(source)) {
    mail_.ledger_.unmoved.insert_or_assign(std::string(kAttachmentKey).append(std::to_string(number_)),
                                           source);
  } else {
    mail_.ledger_.NoteLoss({.reason = "the attachment '" + name + "' could not be saved"});
  }
}

std::string StdMail::GetFileInfo(std::string_view file) const {
  std::uint64_t size = 0;
  if (file.empty() || !Swallow([&] { size = os::FileLength(file); })) return {};
  std::string info = "\r\nsize=" + NumberText(size);
  const std::string attributes = GetFileAttrText(file);
  if (!attributes.empty()) info += "\r\nattr=" + attributes;
  return info;
}

}  // namespace vorlent
