#pragma once

#include <cstddef>
#include <functional>
#include <memory>

#include "QXPlatform/notifications/UNNotificationServiceExtension.h"

namespace QXPlatform {

// Makes the extension object of one notification.
using ServiceExtensionFactory = std::function<std::shared_ptr<UNNotificationServiceExtension>()>;

// The process of a service extension: reads notifications from standard input, one JSON object a line, and
// answers one line each on standard output, as soon as each is there: with the notification's identifier, or
// with the number of a line that is none.
//
// The arguments --time-limit SECONDS (default 30) and --jobs N (default 1, at most `mostAtOnce`:
// notifications at the same time) set how, --attachments DIR where the downloads
// that they show go, as AttachmentStore has it. Ends when the input ends and no work is in flight, without
// waiting for host code that hangs. Returns the exit code: 0, 1 when a line was no notification, 2 for wrong
// arguments.
int serviceExtensionMain(int argc, const char* const* argv, const ServiceExtensionFactory& makeExtension,
                         std::size_t mostAtOnce);

template <typename Extension>
int serviceExtensionMain(int argc, const char* const* argv) {
  return serviceExtensionMain(
      argc, argv, [] { return std::make_shared<Extension>(); }, Extension::kMostNotificationsAtOnce);
}

}  // namespace QXPlatform
