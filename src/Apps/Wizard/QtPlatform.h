// The platform with windows: messages, file chooser, pointer and message loop through Qt.
#pragma once

#include <QElapsedTimer>

#include "Platform/SystemPlatform.h"

namespace vorlent::wizard {

// Needs a QApplication. All that needs no window is the system's own.
class QtPlatform : public SystemPlatform {
 public:
  MessageAnswer ShowMessage(std::string_view text, std::string_view title, MessageIcon icon,
                            MessageButtons buttons) override;
  FileDialogAnswer ShowFileDialog(const FileDialogRequest& request) override;
  void SetPointer(bool busy) override;
  // Handles what waits, but only every few milliseconds: a run yields a hundred times after each mail.
  void YieldOnce() override;

 private:
  QElapsedTimer lastYield_;
  bool busy_ = false;
};

}  // namespace vorlent::wizard
