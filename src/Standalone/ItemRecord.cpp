#include "Standalone/ItemRecord.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "Common/StdModul.h"
#include "Common/Width.h"

namespace vorlent {

namespace {

// The end of the field that begins at `start`: the first "|" with an even number of backslashes before it.
std::size_t FieldEnd(std::string_view record, std::size_t start) {
  for (std::size_t at = record.find('|', start); at != std::string_view::npos;
       at = record.find('|', at + 1)) {
    std::size_t first = at;
    while (first > start && record[first - 1] == '\\')
      --first;
    if ((at - first) % 2 == 0) return at;
  }
  return record.size();
}

// Whether a value as it stands in a record would take the "|" after it for its own. Only the last value of a
// record can be so, and it may no longer be the last.
bool EndsTorn(std::string_view value) {
  const std::size_t end = value.find_last_not_of('\\') + 1;
  return (value.size() - end) % 2 != 0;
}

// What most records have at least; that of a bookmark hardly more.
constexpr std::size_t kUsualFields = 8;

// Up to so many fields a key is looked for in them one by one. Nearly all records have a dozen, but a mail of
// thousands of attachments must not make it quadratic.
constexpr std::size_t kFewFields = 32;

}  // namespace

void ItemRecord::Import(std::string_view record) {
  ItemRecord imported;
  imported.text_.assign(record);
  ToWidth<std::uint32_t>(record.size());  // positions in the text have this width
  imported.fields_.reserve(kUsualFields);
  std::unordered_set<std::string_view> manyKeys;
  const auto isNew = [&](std::string_view key) {
    if (imported.fields_.size() < kFewFields) return !imported.Has(key);
    if (manyKeys.empty()) {
      for (const Field& field : imported.fields_)
        manyKeys.insert(imported.KeyOf(field));
    }
    return manyKeys.insert(key).second;
  };
  for (std::size_t start = 0; start < record.size();) {
    const std::size_t end = FieldEnd(record, start);
    const std::string_view pair = record.substr(start, end - start);
    const std::size_t keySize = std::min(pair.find('='), pair.size());
    const std::size_t valueAt = std::min(start + keySize + 1, end);
    if (!pair.empty() && isNew(pair.substr(0, keySize))) {
      imported.Append({static_cast<std::uint32_t>(start), static_cast<std::uint32_t>(keySize),
                       static_cast<std::uint32_t>(valueAt), static_cast<std::uint32_t>(end - valueAt),
                       false});
    }
    start = end + 1;
  }
  for (const Field& field : fields_) {
    const std::string_view key = KeyOf(field);
    if (!imported.Has(key)) imported.Add(key, ValueOf(&field));
  }
  *this = std::move(imported);
}

std::string ItemRecord::Text() const {
  std::string record;
  record.reserve(text_.size());
  for (const Field& field : fields_) {
    if (!record.empty()) record += '|';
    record.append(KeyOf(field)) += '=';
    const std::string_view value = Slice(field.valueAt, field.valueSize);
    if (field.plain || EndsTorn(value)) {
      record += EscapeValue(ValueOf(&field));
    } else {
      record += value;
    }
  }
  return record;
}

std::string ItemRecord::DataKey(std::int32_t pos) const {
  return std::string(KeyOf(DataField(pos)).substr(record_key::kDataPrefix.size()));
}

std::string ItemRecord::DataValue(std::int32_t pos) const {
  return ValueOf(&DataField(pos));
}

const ItemRecord::Field& ItemRecord::DataField(std::int32_t pos) const {
  if (pos < 1 || pos > DataCount()) {
    throw Failure(ErrorNumber::SubscriptOutOfRange, "no data field at position " + std::to_string(pos));
  }
  lastFound_ = dataFields_[static_cast<std::size_t>(pos) - 1];
  return fields_[lastFound_];
}

std::string ItemRecord::ValueOf(const Field* field) const {
  if (field == nullptr) return {};
  const std::string_view value = Slice(field->valueAt, field->valueSize);
  if (field->plain || value.find('\\') == std::string_view::npos) return std::string(value);
  return UnescapeValue(value);
}

const ItemRecord::Field* ItemRecord::Find(std::string_view prefix, std::string_view key) const {
  const auto matches = [&](const Field& field) {
    return field.keySize == prefix.size() + key.size() && KeyOf(field).starts_with(prefix) &&
           KeyOf(field).ends_with(key);
  };
  for (std::uint32_t i = lastFound_; i < fields_.size() && i < lastFound_ + 2; ++i) {
    if (matches(fields_[i])) return &fields_[lastFound_ = i];
  }
  for (std::uint32_t i = 0; i < fields_.size(); ++i) {
    if (matches(fields_[i])) return &fields_[lastFound_ = i];
  }
  return nullptr;
}

void ItemRecord::Set(std::string_view prefix, std::string_view key, std::string_view value) {
  if (Find(prefix, key) == nullptr) return Append(prefix, key, value);
  Field& field = fields_[lastFound_];
  field.valueAt = AddText(value);
  field.valueSize = static_cast<std::uint32_t>(value.size());
  field.plain = true;
}

void ItemRecord::Append(std::string_view prefix, std::string_view key, std::string_view value) {
  const std::uint32_t keyAt = AddText(prefix);
  AddText(key);
  const auto keySize = static_cast<std::uint32_t>(prefix.size() + key.size());
  const std::uint32_t valueAt = AddText(value);
  Append({keyAt, keySize, valueAt, static_cast<std::uint32_t>(value.size()), true});
}

void ItemRecord::Append(const Field& field) {
  const std::string_view key = KeyOf(field);
  if (key.starts_with(record_key::kDataPrefix) && key.size() > record_key::kDataPrefix.size()) {
    dataFields_.push_back(static_cast<std::uint32_t>(fields_.size()));
  }
  fields_.push_back(field);
}

std::uint32_t ItemRecord::AddText(std::string_view text) {
  ToWidth<std::uint32_t>(text_.size() + text.size());
  const auto at = static_cast<std::uint32_t>(text_.size());
  text_ += text;
  return at;
}

}  // namespace vorlent
