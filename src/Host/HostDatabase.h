#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "Host/Object.h"
#include "Platform/Public.h"

namespace vorlent {

// The rows of a query, walked forward. A query stands before its first row until MoveFirst.
class VORLENT_PUBLIC HostRecordset : public Object {
 public:
  virtual std::int32_t RecordCount() = 0;
  virtual void MoveFirst() = 0;
  virtual void MoveNext() = 0;
  // Text of a column of the present row by its name, "" for NULL. A name that the query doesn't have, and any
  // name after the last row, raises.
  virtual std::string Field(std::string_view name) = 0;
  // The value of a time column as the text of its number, "" for NULL.
  virtual std::string FieldDate(std::string_view name) = 0;
  // True after the last row.
  virtual bool EndOfRows() = 0;
};

using HostRecordsetPtr = std::shared_ptr<HostRecordset>;

// A database connection of the host.
class VORLENT_PUBLIC HostDatabase : public Object {
 public:
  // Opens by a connection text such as "Driver={SQLite3 ODBC Driver};Database=<path>;Timeout=<milliseconds>".
  // False if it can't be opened.
  virtual bool Open(std::string_view kind, std::string_view connection) = 0;

  // Runs a query. The meaning of `value` is the host's; the component passes 2. A failed statement raises.
  virtual HostRecordsetPtr Query(std::string_view sql, std::int32_t value) = 0;

  // Runs one statement. A failed one raises a Failure with the database's error number.
  virtual bool Execute(std::string_view sql) = 0;

  // Ends the connection; a closed one stays closed.
  virtual void Close() = 0;
};

using HostDatabasePtr = std::shared_ptr<HostDatabase>;

}  // namespace vorlent
