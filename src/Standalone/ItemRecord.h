// The fields of an item, held as the record string that they came in.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Host/RecordKeys.h"

namespace vorlent {

// Fields in order, found by their exact key. Values stay in the form of the record until they are asked for,
// so that an item costs one text and its record comes back byte for byte.
class ItemRecord {
 public:
  // Takes the fields of a record string; of a repeated key only the first. Fields held before stay after
  // them, unless the record has their key.
  void Import(std::string_view record);

  // The whole record string.
  std::string Text() const;

  // Value of a field, "" if absent.
  std::string Value(std::string_view key) const { return ValueOf(Find({}, key)); }
  bool Has(std::string_view key) const { return Find({}, key) != nullptr; }
  // Sets a field, after all others if it is new.
  void Set(std::string_view key, std::string_view value) { Set({}, key, value); }
  // Adds a field that the record doesn't have.
  void Add(std::string_view key, std::string_view value) { Append({}, key, value); }

  // All fields in order, positions from 0.
  std::size_t FieldCount() const { return fields_.size(); }
  std::string_view FieldKey(std::size_t index) const { return KeyOf(fields_[index]); }
  std::string FieldValue(std::size_t index) const { return ValueOf(&fields_[index]); }

  // The data fields: those whose key begins with "Data", named by what follows. Positions count from 1; one
  // that doesn't exist raises SubscriptOutOfRange.
  std::int32_t DataCount() const { return static_cast<std::int32_t>(dataFields_.size()); }
  std::string DataKey(std::int32_t pos) const;
  std::string DataValue(std::string_view name) const { return ValueOf(Find(record_key::kDataPrefix, name)); }
  std::string DataValue(std::int32_t pos) const;
  bool HasData(std::string_view name) const { return Find(record_key::kDataPrefix, name) != nullptr; }
  void SetData(std::string_view name, std::string_view value) { Set(record_key::kDataPrefix, name, value); }

 private:
  // Where key and value lie in text_. A plain value is as it was set, any other is escaped.
  struct Field {
    std::uint32_t keyAt, keySize, valueAt, valueSize;
    bool plain;
  };

  std::string_view KeyOf(const Field& field) const { return Slice(field.keyAt, field.keySize); }
  std::string_view Slice(std::uint32_t at, std::uint32_t size) const {
    return std::string_view(text_).substr(at, size);
  }
  std::string ValueOf(const Field* field) const;
  const Field* Find(std::string_view prefix, std::string_view key) const;
  const Field& DataField(std::int32_t pos) const;
  void Set(std::string_view prefix, std::string_view key, std::string_view value);
  void Append(std::string_view prefix, std::string_view key, std::string_view value);
  void Append(const Field& field);
  std::uint32_t AddText(std::string_view text);

  std::string text_;
  std::vector<Field> fields_;
  std::vector<std::uint32_t> dataFields_;  // indexes of the data fields
  // Where the last field was found: callers mostly ask for one field after the other.
  mutable std::uint32_t lastFound_ = 0;
};

}  // namespace vorlent
