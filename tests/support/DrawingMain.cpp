#include <QApplication>

#include "QXPlatform/ui/Application.h"
#include "tests/support/Test.h"

// One application object for the process, at twice the pixels, that never waits for a slide.
int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_SCALE_FACTOR", "2");
  if (!qEnvironmentVariableIsSet("QX_REDUCE_MOTION")) qputenv("QX_REDUCE_MOTION", "1");
  const auto application = QXPlatform::makeApplication(QXPlatform::ScreenUse::none);
  return RUN_ALL_TESTS();
}
