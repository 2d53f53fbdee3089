// A database of the host for tests: each call is kept as one line and passed on to another database.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Host/HostDatabase.h"
#include "Support/RecordingHost.h"

namespace vorlent::test {

// Lines read `Database.Open("kind","connection")`, `Database.Query("sql",2)`, `Database.Execute("sql")` and
// `Database.Close`.
class RecordingDatabase : public HostDatabase {
 public:
  // A database that refuses answers every Open with false.
  RecordingDatabase(CallLog& log, HostDatabasePtr inner, bool refuses)
      : log_(log), inner_(std::move(inner)), refuses_(refuses) {}

  bool Open(std::string_view kind, std::string_view connection) override {
    log_.Write("Database.Open(" + Quoted(kind) + "," + Quoted(connection) + ")");
    return !refuses_ && inner_->Open(kind, connection);
  }

  HostRecordsetPtr Query(std::string_view sql, std::int32_t value) override {
    log_.Write("Database.Query(" + Quoted(sql) + "," + std::to_string(value) + ")");
    return inner_->Query(sql, value);
  }

  bool Execute(std::string_view sql) override {
    log_.Write("Database.Execute(" + Quoted(sql) + ")");
    return inner_->Execute(sql);
  }

  void Close() override {
    log_.Write("Database.Close");
    inner_->Close();
  }

 private:
  CallLog& log_;
  HostDatabasePtr inner_;
  bool refuses_;
};

}  // namespace vorlent::test
