#include "Platform/Failure.h"

#include <array>

namespace vorlent {

namespace {

// The system's reasons that a person can do something about.
struct ReasonRow {
  std::errc reason;
  Hint hint;
};

constexpr std::array kReasons = {
    ReasonRow{std::errc::permission_denied, Hint::AllowAccess},
    ReasonRow{std::errc::operation_not_permitted, Hint::AllowAccess},
    ReasonRow{std::errc::read_only_file_system, Hint::MakeWritable},
    ReasonRow{std::errc::no_space_on_device, Hint::MakeRoom},
    ReasonRow{std::errc::not_a_directory, Hint::MakeFolder},
    ReasonRow{std::errc::device_or_resource_busy, Hint::CloseOther},
    ReasonRow{std::errc::text_file_busy, Hint::CloseOther},
};

}  // namespace

Hint HintFor(const std::error_code& error) {
  for (const auto& [reason, hint] : kReasons) {
    if (error == reason) return hint;
  }
  return Hint::None;
}

}  // namespace vorlent
