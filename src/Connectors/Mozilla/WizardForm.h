// The four pages of the wizard: every control with its place, caption and start state.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "Connectors/Mozilla/WizardControls.h"
#include "Connectors/Mozilla/WizardSheet.h"
#include "Platform/Failure.h"

namespace vorlent {

// One line of the form. Boxes are those of the design, inside the page.
struct ControlSpec {
  std::string_view name;
  ControlKind kind;
  std::int16_t page;
  Box bounds;
  std::string_view caption;  // UTF-8
  bool set = false;          // an option button set, a check box ticked, a text box of several lines
};

// The whole form, page by page, each page in front of its controls; inside a page in the order of the tab
// key.
const std::vector<ControlSpec>& WizardControlTable();

// Height of the empty band above the pages.
inline constexpr int kPageTop = 840;

class WizardForm {
 public:
  WizardForm();

  // All controls in the order of the table.
  const std::vector<std::unique_ptr<Control>>& Controls() const { return controls_; }

  // The control of that name. Raises InvalidCall for a name that the form doesn't have, TypeMismatch for a
  // control of another kind.
  template <class Kind>
  Kind& Get(std::string_view name) const {
    auto* control = dynamic_cast<Kind*>(&Find(name));
    if (control == nullptr) throw Failure(ErrorNumber::TypeMismatch, "another kind of control");
    return *control;
  }

 private:
  Control& Find(std::string_view name) const;

  std::vector<std::unique_ptr<Control>> controls_;
};

}  // namespace vorlent
