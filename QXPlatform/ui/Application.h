#pragma once

#include <memory>
#include <string>

class QApplication;

namespace QXPlatform {

enum class ScreenUse {
  none,     // everything is drawn into memory
  windows,  // what is shown appears on the user's screen
};

// The one application object that a process with views needs, to be made first and destroyed last. It has the
// light appearance, and the reading direction of the environment's locale. When the screen cannot be used
// after all, the process ends with exit code 1 and one line on standard error, which begins with the name.
// Main thread.
std::unique_ptr<QApplication> makeApplication(ScreenUse screenUse, const std::string& name = "qx");

// Whether there is a screen to open windows on. To be asked before the application is made.
bool hasScreen();

}  // namespace QXPlatform
