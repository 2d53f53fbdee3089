// What the process behind ForeignProgram does with what it is told.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "Support/SqliteFile.h"

namespace vorlent {

// Before the number of milliseconds after which the process is to end; all else is SQL.
inline constexpr std::string_view kEndAfter = "end after ";

// Carries out a request; whether that went well. `endAfter` has the system end the process later.
inline bool CarryOut(SqliteFile& file, const std::string& request,
                     const std::function<void(int milliseconds)>& endAfter) {
  if (request.starts_with(kEndAfter)) {
    endAfter(std::stoi(request.substr(kEndAfter.size())));
    return true;
  }
  try {
    file.Run(request);
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

}  // namespace vorlent
