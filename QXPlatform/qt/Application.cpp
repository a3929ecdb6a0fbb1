#include "QXPlatform/ui/Application.h"

#include <QApplication>
#include <QLocale>
#include <cstdlib>
#include <iostream>
#include <string>

#include "QXPlatform/images/ImageProcess.h"
#include "QXPlatform/ui/Appearance.h"
#include "QXPlatform/ui/MainQueue.h"

namespace QXPlatform {

bool hasScreen() {
  if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
    const QString name = qEnvironmentVariable("QT_QPA_PLATFORM");
    return name != "offscreen" && name != "minimal";
  }
  return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

namespace {

// The toolkit's remarks about its surroundings are not the extension's to make.
void printSevere(QtMsgType type, const QMessageLogContext& /*context*/, const QString& message) {
  if (type == QtCriticalMsg || type == QtFatalMsg) std::cerr << message.toStdString() << '\n';
}

// For the line on standard error.
std::string& applicationName() {
  static std::string name;
  return name;
}

// While the application is made, what is fatal is that its screen cannot be used; what the toolkit has to say
// on that takes lines of advice.
void exitWithoutScreen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
  if (type != QtFatalMsg) return printSevere(type, context, message);
  std::cerr << applicationName() << ": cannot open a window: no view platform works with this screen\n";
  std::_Exit(EXIT_FAILURE);
}

}  // namespace

std::unique_ptr<QApplication> makeApplication(ScreenUse screenUse, const std::string& name) {
  applicationName() = name;
  // While there is a single thread.
  ImageProcess::shared().start();
  if (screenUse == ScreenUse::none) qputenv("QT_QPA_PLATFORM", "offscreen");
  // The toolkit keeps a reference to these; its own options are none of the program's.
  static int argc = 1;
  static char program[] = "qx";
  static char* argv[] = {program, nullptr};
  qInstallMessageHandler(exitWithoutScreen);
  auto application = std::make_unique<QApplication>(argc, argv);
  qInstallMessageHandler(printSevere);
  beginMainQueue();
  setUserInterfaceStyle(UserInterfaceStyle::light);
  QApplication::setLayoutDirection(QLocale::system().textDirection());
  return application;
}

}  // namespace QXPlatform
