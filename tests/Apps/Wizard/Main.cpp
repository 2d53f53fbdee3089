#include <gtest/gtest.h>

#include <QApplication>
#include <QStyleFactory>
#include <string_view>

#include "Apps/Wizard/WizardApp.h"

int main(int argc, char** argv) {
  // The program itself, for a test that needs a process of its own.
  if (argc == 2 && std::string_view(argv[1]) == "--run-wizard") return vorlent::RunWizardApp({});

  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  // The same look and the same dialogs on every machine.
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  const QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
