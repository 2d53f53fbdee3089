#include <gtest/gtest.h>

#include <QApplication>
#include <QStyleFactory>

int main(int argc, char** argv) {
  qputenv("QT_LOGGING_RULES", "qt.qpa.*=false");
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  // The same look and the same dialogs on every machine.
  QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  const QApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
