#pragma once

#include <functional>
#include <string>

#include "QXPlatform/ui/ContentExtensionHost.h"

namespace QXPlatform {

// Opens the extension's view in a window of its size, in front where the activation token that the
// environment holds allows it, and runs the application until the window closes: by the user, by Escape, or
// by the extension's default action, after `performed` has been called. Main thread.
void runInWindow(ContentExtensionHost& host, const std::string& title,
                 const std::function<void()>& performed);

}  // namespace QXPlatform
