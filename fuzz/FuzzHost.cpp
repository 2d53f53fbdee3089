// The texts that the standalone host reads: records, field lines, conditions, connection texts, and
// the mails that are searched. The first two lines are a key and a value, the rest is the text.

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "Common/StdModul.h"
#include "Fuzz.h"
#include "Platform/CodePage.h"
#include "Standalone/Condition.h"
#include "Standalone/ConnectionText.h"
#include "Standalone/FieldLines.h"
#include "Standalone/FileDescription.h"
#include "Standalone/ItemRecord.h"
#include "Standalone/MailText.h"
#include "Standalone/StandaloneItem.h"

namespace vorlent::fuzz {
namespace {

constexpr std::string_view kData = "Data";

using Fields = std::map<std::string, std::string>;

Fields FieldsOf(const ItemRecord& record) {
  Fields fields;
  std::int32_t data = 0;
  for (std::size_t i = 0; i < record.FieldCount(); ++i) {
    const std::string key(record.FieldKey(i));
    const std::string value = record.FieldValue(i);
    Require(record.Value(key) == value);
    Require(fields.emplace(key, value).second);
    if (!key.starts_with(kData) || key.size() == kData.size()) continue;
    ++data;
    Require(record.DataKey(data) == key.substr(kData.size()));
    Require(record.DataValue(data) == value && record.DataValue(record.DataKey(data)) == value);
  }
  Require(record.DataCount() == data);
  return fields;
}

ItemRecord Imported(std::string_view text) {
  ItemRecord record;
  record.Import(text);
  return record;
}

// Line ends become those of Windows on the way through a text.
Fields WithoutReturns(Fields fields) {
  for (auto& [key, value] : fields)
    std::erase(value, '\r');
  return fields;
}

// The text of a record is the record again.
void Records(std::string_view key, std::string_view value, std::string_view text) {
  ItemRecord record = Imported(text);
  Fields fields = FieldsOf(record);
  Require(WithoutReturns(FieldsOf(Imported(record.Text()))) == WithoutReturns(fields));
  // A key is written as it stands.
  if (key.empty() || key.find_first_of("|=\\") != std::string_view::npos) return;
  record.Set(key, value);
  fields[std::string(key)] = value;
  Require(FieldsOf(record) == fields);
  Require(WithoutReturns(FieldsOf(Imported(record.Text()))) == WithoutReturns(fields));
}

// Fields come back byte for byte.
void Lines(std::string_view key, std::string_view value, std::string_view text) {
  std::string lines;
  AppendFieldLine(lines, key, text);
  AppendFieldLine(lines, text, value);
  ItemRecord record;
  AddFieldLines(record, lines);
  Require(record.FieldCount() == 2);
  Require(record.FieldKey(0) == key && record.FieldValue(0) == text);
  Require(record.FieldKey(1) == text && record.FieldValue(1) == value);
  ItemRecord other;
  AddFieldLines(other, text);
  FileNameIn(std::string(text));
}

void Conditions(std::string_view text) {
  StandaloneItem item;
  item.ImportRecord("ID=1|Type=mail|Text=t|Keywords=a,b,Account=x|DataFrom=y");
  const bool holds = Condition(text).Holds(item);
  const std::string alternatives(text);
  Require(Condition(alternatives + "|$type=mail").Holds(item));
  Require(Condition("$type=mail|" + alternatives).Holds(item));
  // An alternative that doesn't hold adds nothing.
  Require(holds || !Condition("$type=url|" + alternatives).Holds(item));
}

std::string Braced(std::string_view value) {
  std::string braced(value);
  ReplaceText(braced, "}", "}}");
  return "{" + braced + "}";
}

// A path in braces is read whole, whatever it holds and wherever it stands.
void Connections(std::string_view value, std::string_view text) {
  ParseConnectionText(std::string(text));
  for (const std::string& connection :
       {"Database=" + Braced(text) + ";Timeout=7;" + "Other=1",
        " other = " + Braced(value) + " ; timeout = 7 ;DATABASE= " + Braced(text)}) {
    const ConnectionText parsed = ParseConnectionText(connection);
    Require(parsed.database == text && parsed.timeout == 7);
  }
}

// Only UTF-8 goes into the index.
void Words(std::string_view text) {
  for (const std::string& words : {TextOfMail(text), TextOfHtml(text)})
    Require(IsAscii(words) || IsMultiByteUtf8(words));
}

}  // namespace
}  // namespace vorlent::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text = vorlent::fuzz::Text(data, size);
  const std::string_view key = vorlent::CutLine(text);
  const std::string_view value = vorlent::CutLine(text);
  vorlent::fuzz::UnderBothRules([=] {
    vorlent::fuzz::Records(key, value, text);
    vorlent::fuzz::Lines(key, value, text);
    vorlent::fuzz::Conditions(text);
    vorlent::fuzz::Connections(value, text);
    vorlent::fuzz::Words(text);
  });
  return 0;
}
