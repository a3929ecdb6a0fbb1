#pragma once

#include <functional>
#include <memory>

#include "QXPlatform/ui/ContentExtensionHost.h"

namespace QXPlatform {

// Makes the extension object and the system's side around it.
using ContentExtensionHostFactory = std::function<std::unique_ptr<ContentExtensionHost>(int width)>;

// The process of a content extension: reads notifications from standard input, one JSON object a line, shows
// each, without a screen, and answers one line each on standard output:
//
//   {"identifier": "...", "outcome": "shown" | "collapsed", "preferredContentSize": [360, 345],
//    "responseOption": "doNotDismiss" | "dismiss" | "dismissAndForwardAction"}
//
// Each notification has an extension object of its own. With the argument --reuse one object is shown them
// all, as it is when a later notification replaces one that stands expanded. --width POINTS (default 360)
// says how much room there is.
//
// With --window it opens the one notification that it reads in a window on the user's screen, under the
// notification's title, and answers when that is closed; the line then has "defaultActionPerformed": whether
// the application is to be opened. What collapses opens no window, and has no such key.
//
// With --drive the lines are ContentExtensionDriver's commands, which play the user of one extension object;
// --window beside it lets them open a window.
//
// Returns the exit code: 0, 1 when a line was no notification or there is no screen for a window, 2
// for wrong arguments.
int contentExtensionMain(int argc, char** argv, const ContentExtensionHostFactory& makeHost);

template <typename Extension>
int contentExtensionMain(int argc, char** argv) {
  return contentExtensionMain(argc, argv, [](int width) {
    return std::make_unique<ContentExtensionHost>(std::make_shared<Extension>(), width);
  });
}

}  // namespace QXPlatform
