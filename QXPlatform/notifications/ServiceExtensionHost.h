#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

#include "QXPlatform/dispatch/DispatchQueue.h"
#include "QXPlatform/foundation/Value.h"
#include "QXPlatform/notifications/ServiceExtensionMain.h"
#include "QXPlatform/notifications/UNNotificationServiceExtension.h"

namespace QXPlatform {

// What became of one notification: the content when the handler was first called.
struct ServiceExtensionResult {
  enum class Outcome { delivered, expired };

  std::string identifier;
  Outcome outcome;
  std::chrono::duration<double, std::milli> elapsed;
  NotificationProperties content;

  // {"identifier", "outcome", "elapsedMs", "content"}
  Dictionary toJSON() const;
};

// The operating system's side of a service extension: makes an object for each notification, calls its
// entries and waits for the content. Several notifications may be handled at once, each on the thread that
// calls.
class ServiceExtensionHost {
 public:
  static constexpr std::chrono::duration<double> kLongestTimeLimit = std::chrono::hours(24);

  // REQUIRES: 0 < timeLimit <= kLongestTimeLimit
  ServiceExtensionHost(ServiceExtensionFactory makeExtension, std::chrono::duration<double> timeLimit);

  // Blocks until the content handler is first called, at most as long as the time limit. When that is about
  // to end, by a second or the tenth of a short one, the extension is told; when it has handed nothing over
  // at its end either, the notification is shown as it came.
  ServiceExtensionResult run(const std::shared_ptr<const UNNotificationRequest>& request);

 private:
  struct Delivery;

  void tellExpired(const std::shared_ptr<UNNotificationServiceExtension>& extension);

  const ServiceExtensionFactory makeExtension_;
  const std::chrono::duration<double> timeLimit_;
  const DispatchQueue entryQueue_;
  std::mutex mutex_;
  // Extensions whose processors may still be at work. Guarded by mutex_.
  std::deque<std::shared_ptr<UNNotificationServiceExtension>> expired_;
};

}  // namespace QXPlatform
