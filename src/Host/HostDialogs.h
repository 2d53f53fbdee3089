#pragma once

#include <string>
#include <string_view>

#include "Host/Object.h"
#include "Platform/Public.h"

namespace vorlent {

class VORLENT_PUBLIC HostDialogs : public Object {
 public:
  // Runs the wizard control of that ProgID in the host's frame and returns its parameter, "" if the user
  // cancelled.
  virtual std::string ShowWizard(std::string_view title, std::string_view progId,
                                 std::string_view parameter) = 0;

  // Lets the user pick or create a Location and returns its name, "" if none was chosen. The meaning of the
  // two further texts is the host's.
  virtual std::string ChooseLocation(std::string_view title, std::string_view first,
                                     std::string_view second) = 0;
};

}  // namespace vorlent
