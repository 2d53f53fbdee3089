// The items of a rehearsal.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "Standalone/StandaloneItem.h"

namespace vorlent {

class ArchiveRehearsal;

// Looks at the files that it is given until it is connected; those that should move go then.
class RehearsedItem : public StandaloneItem {
 public:
  RehearsedItem(std::weak_ptr<ArchiveRehearsal> rehearsal, std::string_view record);

  void SetConnected(bool connected) override;
  void TakeFile(std::string_view key, std::string_view path, std::string_view options,
                std::string_view metaData) override;
  bool WasThere() const override { return wasThere_; }

  const ItemRecord& Fields() const { return record_; }
  // That of the record.
  std::int64_t Fingerprint() const { return fingerprint_; }
  // Paths by data fields.
  const std::map<std::string, std::string, std::less<>>& Files() const { return files_; }
  // Descriptions of the files as they were taken.
  const ItemRecord& Taken() const { return taken_; }

 private:
  std::weak_ptr<ArchiveRehearsal> rehearsal_;
  std::int64_t fingerprint_ = 0;
  std::map<std::string, std::string, std::less<>> files_;
  ItemRecord taken_;
  bool wasThere_ = false;
};

}  // namespace vorlent
