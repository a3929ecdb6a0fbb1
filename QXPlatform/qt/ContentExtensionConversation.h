#pragma once

#include <QSocketNotifier>
#include <string>

#include "QXPlatform/ui/ContentExtensionDriver.h"

namespace QXPlatform {

// Carries out the driver's commands that come on standard input, one JSON object a line, and answers one line
// each on standard output; a step taken in the window has such a line too. Main thread.
class ContentExtensionConversation {
 public:
  // The host must outlive this object.
  explicit ContentExtensionConversation(ContentExtensionHost& host);

  // Until the input has ended or the window is closed. Returns whether every answer could be written.
  bool run();

 private:
  void readInput();
  void answer(const std::string& line);

  ContentExtensionDriver driver_;
  std::string input_;  // that has no end of line yet
  QSocketNotifier notifier_;
};

}  // namespace QXPlatform
