// How a command ends.
#pragma once

#include <array>
#include <string_view>

namespace vorlent::app {

enum class ExitCode : int { Done = 0, Partly = 1, Usage = 2, Unreadable = 3, Cancelled = 130 };

struct ExitCodeRow {
  ExitCode code;
  std::string_view meaning;
};

// All of them, as the help and the manual page tell them.
inline constexpr std::array kExitCodes = {
    ExitCodeRow{ExitCode::Done, "done"},
    ExitCodeRow{ExitCode::Partly, "nothing found or a part failed"},
    ExitCodeRow{ExitCode::Usage, "wrong use"},
    ExitCodeRow{ExitCode::Unreadable,
                "a Location or file could not be read or written, or was there already"},
    ExitCodeRow{ExitCode::Cancelled, "cancelled"},
};

}  // namespace vorlent::app
