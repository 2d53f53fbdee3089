// Asks before mails are moved.
#pragma once

#include <QDialog>

#include "Connectors/Mozilla/ImportCommand.h"

namespace vorlent::wizard {

// Says what becomes of the mails of which mailboxes; accepted if the user wants that. Enter and Esc answer
// no.
class MoveQuestion : public QDialog {
 public:
  MoveQuestion(const ImportCommand& command, QWidget* parent);
};

}  // namespace vorlent::wizard
